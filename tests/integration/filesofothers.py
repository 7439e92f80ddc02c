"""cctbx reads the files of an integrated series, merges them with the agreement of the summary, and solves the structure.

Usage: filesofothers.py FOLDER_OF_PROGRAMS [CRYSTAL...]. Ends with 77 (skipped) where cctbx is not installed.
"""
import json
import os
import subprocess
import sys
import tempfile

SKIPPED = 77
try:
    import gemmi
    import numpy as np
    import iotbx.cif
    import iotbx.mtz
    from cctbx.eltbx import e_scattering
    import solving
except ImportError as error:
    print("skipped, not installed:", error)
    sys.exit(SKIPPED)

BIN, CRYSTALS = sys.argv[1], sys.argv[2:] or ["quartz", "forsterite"]
FORMULA = {"silicon": "Si", "pyrope": "Mg3Al2Si3O12", "sodalite": "Na4Al3Si3O12Cl", "beryl": "Be3Al2Si6O18",
           "quartz": "SiO2", "calcite": "CaCO3", "akermanite": "Ca2MgSi2O7", "anatase": "TiO2",
           "forsterite": "Mg2SiO4", "natrolite": "Na2Al2Si3O12", "diopside": "MgCaSi2O6", "kyanite": "Al2SiO5"}
SEEDS, WORST_ATOM = 8, 0.3  # Å


def run(*words):
    answer = subprocess.run(words, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert answer.returncode == 0, (words, answer.stdout[-3000:])


def made(crystal, folder):
    """The base name of the files of a simulated series, its summary and its truth."""
    base = f"{folder}/{crystal}"
    run(f"{BIN}/tessera-simulate", "--crystal", crystal, "--frames", "120", "--out", folder, "--name", crystal)
    run(f"{BIN}/tessera-batch", f"{base}.ed3d", "--formula", FORMULA[crystal], "--json", f"{base}.json")
    with open(f"{base}.json") as summary, open(f"{base}_truth.json") as truth:
        return base, json.load(summary)["quality"], json.load(truth)


def merged(intensities):
    return intensities.as_non_anomalous_array().merge_equivalents()


def check_scattering(base):
    """The factors of the .ins are those of another table of the same volume."""
    with open(base + ".ins") as file:
        lines = file.read().replace(" =\n", " ").split("\n")
    s = np.arange(0, 1, 0.05)
    for _, element, *numbers in (line.split() for line in lines if line.startswith("SFAC")):
        a, b, c = np.array(numbers[0:8:2], float), np.array(numbers[1:8:2], float), float(numbers[8])
        ours = (a * np.exp(-b * s[:, None]**2)).sum(axis=1) + c
        table = e_scattering.ito_vol_c_2011_table_4_3_2_2_entry_as_gaussian(label=element)
        theirs = np.array([table.at_stol(x) for x in s])
        assert np.abs(ours / theirs - 1).max() < 0.02, element


def check_reading(base, quality):
    """All files have the same cell, group and intensities, and the agreement of the summary."""
    unmerged = solving.read_shelx(base + "_integrated")
    result = merged(unmerged)
    ours = result.array()
    print(f"Rint {result.r_int():.4f}, told {quality['rInt']:.4f}; {unmerged.size()} observations, told "
          f"{quality['observed']}; unique {ours.size()}, told {quality['unique']}", flush=True)
    assert unmerged.size() == quality["observed"]
    assert abs(result.r_int() - quality["rInt"]) < 0.005
    cif = iotbx.cif.reader(file_path=base + ".cif")
    from_cif = [array for array in cif.as_miller_arrays() if array.is_xray_intensity_array()][0]
    from_mtz = [array for array in iotbx.mtz.object(base + ".mtz").as_miller_arrays()
                if array.info().labels[0] == "IMEAN"][0]
    for other in (from_cif, from_mtz):
        assert other.space_group() == unmerged.space_group()
        assert other.unit_cell().is_similar_to(unmerged.unit_cell(), 1e-3, 0.1)
        other = merged(other).array()
        one, two = ours.common_sets(other)
        # The merged lists include reflections that the group forbids; cctbx keeps them in both.
        assert one.size() >= 0.98 * ours.size(), (one.size(), ours.size(), other.size())
        difference = np.abs(np.array(one.data()) - np.array(two.data())) / np.array(two.sigmas())
        correlation = np.corrcoef(one.data(), two.data())[0, 1]
        print(f"  merged list: correlation {correlation:.5f}, median difference {np.median(difference):.3f} sigma")
        assert correlation > 0.999 and np.median(difference) < 0.5
    block = gemmi.cif.read(base + ".cif").sole_block()
    assert abs(float(block.find_value("_diffrn_reflns_av_R_equivalents")) - quality["rInt"]) < 1e-3
    assert len(block.find_loop("_refln_F_squared_meas")) == gemmi.read_mtz_file(base + ".mtz").nreflections
    return unmerged


def solved(intensities, truth):
    """The best of some starts: atoms without a peak, greatest and rms distance, and the start."""
    count = len(solving.atoms_in_cell(truth))
    best = None
    for seed in range(1, SEEDS + 1):
        peaks = solving.peaks_of(solving.solve(intensities, seed), int(1.3 * count) + 4)
        found = solving.worst_atom(peaks, intensities.unit_cell().parameters(), truth), seed
        best = min(best or found, found)
        if best[0][0] == 0 and best[0][1] < WORST_ATOM:
            break
    return best, count


for crystal in CRYSTALS:
    with tempfile.TemporaryDirectory() as folder:
        folder = os.environ.get("TESSERA_KEEP", folder)
        base, quality, truth = made(crystal, folder)
        print(crystal, quality.get("spaceGroup"), "true", truth["spaceGroup"], "Laue", quality.get("laueClass"))
        check_scattering(base)
        intensities = check_reading(base, quality)
        best, count = solved(intensities, truth)
        print(f"  {count} atoms; without a peak, greatest and rms distance, start: {best}", flush=True)
        assert best[0][0] == 0 and best[0][1] < WORST_ATOM
