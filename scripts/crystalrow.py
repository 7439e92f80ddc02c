"""One row of the table of crystals: results compared with the truth. Missing values are a dash.

crystalrow.py [--intensities] [--head] NAME SUMMARY COMPARISON
"""
import json
import sys

CELL = "  lengths  angles"


def head():
    """Three lines above the columns of the rows."""
    return "\n".join((
        f"{'':56s}cell from pairs of peaks at",
        f"{'':22s}{'found cell':<17s}{'refined cell':<17s}{'hunted pixels':<17s}{'fitted places':<17s}{'on a constant':<17s}"
        f"{'refined geometry':<26s}{'the same under its Bravais type':<35s}{'other':>8s}{'indexed':>9s}{'right':>10s}{'fit':>10s}{'recall at an SNR of':>24s}{'preci-':>10s}   Bravais",
        f"{'crystal':11s} {'lattice':8s}{6 * CELL}{'turned':>9s}{CELL}{'axis':>9s}{'lens':>9s}{'half':>8s}{'of all':>9s}{'indices':>10s}{'share':>10s}"
        f"{'>= 5':>8s}{'>= 10':>8s}{'>= 20':>8s}{'sion':>10s}   type"))


def read(file_name):
    try:
        with open(file_name, encoding="utf-8") as file:
            value = json.load(file)
    except (OSError, ValueError):
        return {}
    return value if isinstance(value, dict) else {}


def share(value, width):
    """A share of 1 as per cent, in a field of that width."""
    known = isinstance(value, (int, float)) and not isinstance(value, bool)
    return f"{100 * value:{width - 2}.1f} %" if known else f"{'-':>{width}s}"


def errors(table, length_key="lengthErrorPercent", angle_key="angleErrorDegrees", digits=3):
    """The largest deviations of the edges and of the angles of a cell."""
    if not table.get(length_key) or not table.get(angle_key):
        return f"{'-':>17s}"
    length, angle = (max(abs(value) for value in table[key]) for key in (length_key, angle_key))
    return f"{length:7.{digits}f} %{angle:7.{digits}f}°"


def geometry_errors(geometry):
    """Cell and orientation of the refined geometry; the cell of its basis where there is no other."""
    cell = geometry.get("cell") or {}
    if not cell.get("lengthErrorPercent"):
        cell = {"lengthErrorPercent": geometry.get("basisLengthErrorPercent"),
                "angleErrorDegrees": geometry.get("basisAngleErrorDegrees")}
    turned = geometry.get("orientationErrorDegrees")
    return errors(cell) + (f"{'-':>9s}" if turned is None else f"{turned:8.3f}°")


def constrained_errors(compare, summary):
    """The constrained cell, the axis, the remaining ellipse, and the rms of frames outside the fit (pixels)."""
    geometry = compare.get("geometry") or {}
    axis = (geometry.get("errors") or {}).get("axis")
    left = [(geometry.get(key) or {}).get("errorPercent") for key in ("stretching", "ellipse")]
    left = max((value for value in left if value is not None), default=None)
    told = summary.get("geometry") or {}
    rms = (told.get("constrained") or told.get("cell") or {}).get("rmsOtherHalf")
    return (errors(geometry.get("constrained") or {}) + (f"{'-':>9s}" if axis is None else f"{axis:8.3f}°") +
            (f"{'-':>9s}" if left is None else f"{left:7.3f} %") + (f"{'-':>8s}" if rms is None else f"{rms:8.3f}"))


def lattice_word(compare):
    if not compare.get("cellRead"):
        return "-"
    return "right" if compare.get("latticeRight") else compare.get("relation", "-")


def type_word(bravais):
    """The true type if it was proposed; otherwise the proposed one, with + if the true one was a candidate."""
    if "right" not in bravais:
        return "-"
    true, proposed = (bravais.get(key, {}).get("symbol") or "?" for key in ("true", "proposed"))
    if bravais["right"]:
        return f"{true} right"
    return f"{proposed}, is {true}" + (" +" if bravais.get("amongCandidates") else "")


def intensities_head():
    """Two lines above the rows of intensities."""
    return "\n".join((
        f"{'':12s}{'integrated, each passage':87s}{'merged':42s}{'symmetry'}",
        f"{'crystal':12s}{'lines':>6s}{'d min':>7s}{'correl.':>9s}{'R(F)':>7s}{'by sig.':>8s}{'dev.²':>7s}{'I/sig.':>7s}"
        f"{'I > 2 sigma of crossed':>24s}{'compl.':>9s}{'to d min':>9s}  {'correl.':>7s}{'R(F)':>7s}{'by sig.':>8s}{'dev.²':>7s}"
        f"{'compl.':>9s}  {'Rint':>6s}  {'Laue':16s}group"))


def number(table, key, width, digits):
    value = table.get(key)
    known = isinstance(value, (int, float)) and not isinstance(value, bool)
    return f"{value:{width}.{digits}f}" if known else f"{'-':>{width}s}"


def symmetry_words(symmetry):
    """Laue class and rank of the true space group among the proposed ones; the proposed ones if wrong."""
    if not symmetry:
        return "-"
    laue = symmetry["trueLaueClass"] + " right" if symmetry["laueClassRight"] else \
        f"{symmetry['laueClass'] or '-'}, is {symmetry['trueLaueClass']}"
    rank = symmetry["spaceGroupRank"]
    return f"{laue:16s}{symmetry['trueSpaceGroup']} " + (f"on place {rank}" if rank else "not among them")


def intensities_row(name, compare):
    judged = compare.get("intensities", {})
    integrated, merged, symmetry = (judged.get(key, {}) for key in ("integrated", "merged", "symmetry"))
    observed = f"{integrated['crossedObserved']} / {integrated['crossed']}" if "crossed" in integrated else "-"

    def deviations(table):
        return (number(table, "rF", 7, 3) + number(table, "rFForetold", 8, 3) +
                number(table, "meanSquaredDeviation", 7, 2))

    return (f"{name:12s}" + number(integrated, "lines", 6, 0) + number(integrated, "dMin", 7, 2) +
            number(integrated, "correlation", 9, 4) + deviations(integrated) +
            number(integrated, "medianIOverSigma", 7, 1) + f"{observed:>15s}" +
            share(integrated.get("observedShare"), 9) + share(integrated.get("completeness"), 9) +
            share(integrated.get("completenessWithin"), 9) + "  " +
            number(merged, "correlation", 7, 4) + deviations(merged) + share(merged.get("completeness"), 9) + "  " +
            number(symmetry.get("told", {}), "rInt", 6, 3) + "  " + symmetry_words(symmetry))


def main():
    arguments = [one for one in sys.argv[1:] if not one.startswith("--")]
    options = [one for one in sys.argv[1:] if one.startswith("--")]
    name, summary_file, compare_file = arguments[:3]
    summary, compare = read(summary_file), read(compare_file)
    if "--intensities" in options:
        if "--head" in options:
            print(intensities_head())
        print(intensities_row(name, compare), flush=True)
        return
    found = [row.get("share") for row in compare.get("found", [])]
    pairs = compare.get("peakPairs", {})
    if name == "silicon" or "--head" in options:  # the first of the list
        print(head())
    has_cell = compare.get("relation", "none") != "none"
    print(f"{name:11s} {lattice_word(compare):9s}" + errors(compare if has_cell else {}, digits=2) +
          errors(compare if compare.get("refined") else {}, "refinedLengthErrorPercent",
                 "refinedAngleErrorDegrees") +
          "".join(errors(pairs.get(key, {})) for key in ("wholePixels", "subPixels", "subPixelsConstant")) +
          geometry_errors(compare.get("geometry") or {}) + constrained_errors(compare, summary) +
          share(summary.get("indexedShare"), 9) + share(compare.get("rightShare"), 10) +
          share(summary.get("fitShare"), 10) +
          "".join(share(value, 8) for value in (found + [None] * 3)[:3]) +
          share(compare.get("precision"), 10) + "   " + type_word(compare.get("bravais", {})), flush=True)


main()
