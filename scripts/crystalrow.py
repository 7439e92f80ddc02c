"""One row of the table of crystals: what was found, against the truth."""
import json
import sys


def main():
    name, summary_file, compare_file = sys.argv[1:4]
    with open(summary_file, encoding="utf-8") as file:
        summary = json.load(file)
    with open(compare_file, encoding="utf-8") as file:
        compare = json.load(file)

    def largest(key):
        return max((abs(value) for value in compare.get(key, [])), default=float("nan"))

    def pairs(key):
        errors = compare.get("peakPairs", {}).get(key)
        if not errors:
            return f"{'-':>17s}"
        length, angle = (max(abs(value) for value in errors[one])
                         for one in ("lengthErrorPercent", "angleErrorDegrees"))
        return f"{length:7.3f} %{angle:7.3f}°"

    if name == "silicon":  # the first of the list
        print(f"{'':54s}from peak pairs: hunted      fitted      beside a constant")
        print("                     found cell       refined cell     pixels           positions        "
              "background       indexed  right    peaks found at SNR of")
        print("crystal     lattice  lengths  angles  lengths  angles  " + "lengths  angles  " * 3 +
              "of all   indices  >= 5   >= 10  >= 20")
    print(f"{name:11s} {'right' if compare['latticeRight'] else compare['relation']:8s}"
          f"{largest('lengthErrorPercent'):6.2f} %{largest('angleErrorDegrees'):7.2f}°"
          f"{largest('refinedLengthErrorPercent'):7.3f} %{largest('refinedAngleErrorDegrees'):7.3f}°"
          + "".join(pairs(key) for key in ("wholePixels", "subPixels", "subPixelsConstant")) +
          f"{100 * summary.get('indexedShare', 0):7.1f} %{100 * compare['rightShare']:8.1f} %"
          + "".join(f"{100 * row['share']:5.1f} %" for row in compare["found"]), flush=True)


main()
