"""Other programs read the exports made for them: DIALS, cctbx (XDS.INP), gemmi (CIF), tifffile.

Usage: readbyothers.py FOLDER_OF_PROGRAMS. A simulated series of a chiral crystal, turned to falling tilts, with drift.
Ends with 77 (skipped) where DIALS or another library is not installed.
"""
import json
import math
import os
import shutil
import subprocess
import sys
import tempfile

BIN, SKIPPED = os.path.abspath(sys.argv[1]), 77
try:
    import fabio
    import gemmi
    import numpy as np
    import tifffile
    from dials.array_family import flex
    from dxtbx.model.experiment_list import ExperimentListFactory
    from iotbx.xds import xds_inp
    from rstbx.cftbx.coordinate_frame_helpers import import_xds_inp
except ImportError as error:
    print("skipped, not installed:", error)
    sys.exit(SKIPPED)
if not all(shutil.which(program) for program in ("dials.show", "dials.refine", "dials.integrate")):
    print("skipped, no programs of DIALS")
    sys.exit(SKIPPED)
FRAMES, AXIS, ELLIPSE = 70, -38.5, 0.4


def run(*words, folder=None):
    answer = subprocess.run([str(word) for word in words], text=True, cwd=folder, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT)
    assert answer.returncode == 0, (words, answer.stdout[-3000:])
    return answer.stdout


def loaded(base):
    return (ExperimentListFactory.from_json_file(base + ".expt", check_format=False)[0],
            flex.reflection_table.from_file(base + ".refl"))


def as_arrays(experiment, table):
    """Places and indices as numpy has them, with the diffracted beams that dxtbx makes of the observed places."""
    panel, beam = experiment.detector[0], experiment.beam
    x, y, z = table["xyzobs.mm.value"].parts()
    s1 = panel.get_lab_coord(flex.vec2_double(x, y))
    s1 = np.array(s1 / s1.norms() * (1 / beam.get_wavelength()))
    return s1, np.array(z), np.array([list(h) for h in table["miller_index"]], float)


def turned(vectors, axis, angles):
    """Right-handed, row by row."""
    axis, c, s = np.array(axis), np.cos(angles)[:, None], np.sin(angles)[:, None]
    return c * vectors + s * np.cross(axis, vectors) + (1 - c) * (vectors @ axis)[:, None] * axis


def sharpness(experiment, table, sense):
    """Rms of the points of reciprocal space about the lattice that fits them best, 1/Å."""
    s1, angle, index = as_arrays(experiment, table)
    points = turned(s1 - np.array(experiment.beam.get_s0()),
                    sense * np.array(experiment.goniometer.get_rotation_axis()), -angle)
    lattice, *_ = np.linalg.lstsq(index, points, rcond=None)
    return math.sqrt(((points - index @ lattice) ** 2).mean())


def check_reflections(experiment, table):
    """dxtbx and the columns of the table agree, and DIALS predicts the same positions as we do."""
    s1, angle, index = as_arrays(experiment, table)
    assert np.abs(s1 - np.array(table["s1"])).max() < 1e-9
    assert np.allclose(angle, [experiment.scan.get_angle_from_array_index(z, deg=False)
                               for z in table["xyzobs.px.value"].parts()[2]], atol=1e-9)
    points = turned(s1 - np.array(experiment.beam.get_s0()), experiment.goniometer.get_rotation_axis(), -angle)
    assert np.abs(points - np.array(table["rlp"])).max() < 1e-9
    ours_x, ours_y, ours_z = (np.array(part) for part in table["xyzcal.mm"].parts())
    entering = np.array(table["entering"])
    table["xyzobs.mm.value"] = table["xyzcal.mm"]  # the passage next to it
    from dials.algorithms.refinement.prediction.managed_predictors import ExperimentsPredictorFactory
    from dxtbx.model.experiment_list import ExperimentList
    predictor = ExperimentsPredictorFactory.from_experiments(ExperimentList([experiment]))
    predictor(table)
    x, y, z = (np.array(part) for part in table["xyzcal.mm"].parts())
    assert np.abs(x - ours_x).max() < 1e-6 and np.abs(y - ours_y).max() < 1e-6
    assert np.abs(np.remainder(z - ours_z + np.pi, 2 * np.pi) - np.pi).max() < 1e-6
    assert len(set(entering)) == 2


def check_xds(folder, experiment):
    """XDS.INP has the same detector, beam, axis and cell, in another frame of coordinates."""
    inp = xds_inp.reader()
    inp.read_file(folder + "/XDS.INP")
    assert inp.name_template_of_data_frames == ["q_????.img", "SMV"], inp.name_template_of_data_frames
    assert list(inp.data_range) == [1, FRAMES] and inp.oscillation_range > 0
    flip = np.diag([1, -1, -1])  # from that of imgCIF
    assert np.allclose(flip @ inp.rotation_axis, experiment.goniometer.get_rotation_axis(), atol=1e-5)
    start, width = experiment.scan.get_oscillation()
    assert np.allclose([inp.starting_angle, inp.oscillation_range], [start, width], atol=1e-5)
    # Detector by way of cctbx's own reading, which turns everything to an axis along x.
    info = import_xds_inp(folder + "/XDS.INP")
    turn = np.array(info.get("original_rotation")).reshape(3, 3) @ flip
    panel = experiment.detector[0]
    for key, ours in [("detector_origin", panel.get_origin()), ("detector_fast", panel.get_fast_axis()),
                      ("detector_slow", panel.get_slow_axis()),
                      ("rotation_axis", experiment.goniometer.get_rotation_axis())]:
        assert np.allclose(turn @ np.array(ours), list(info.get(key)), atol=2e-3), key
    lines = open(folder + "/XDS.INP").read().split("\n")
    axes = [[float(v) for v in line.split("=")[1].split()] for line in lines if "UNIT_CELL_" in line and "AXIS" in line]
    crystal = experiment.crystal
    for axis, ours in zip(axes, crystal.get_real_space_vectors()):
        assert np.allclose(flip @ axis, list(ours), atol=1e-3)


def check_corrections(base, experiment):
    """The tables for XDS undo the ellipse of the simulation."""
    tables = [fabio.open(f"{base}_{name}CORR.cbf").data / 100 for name in "XY"]
    px, py = (v - 0.5 for v in experiment.detector[0].get_beam_centre_px(experiment.beam.get_s0()))
    y, x = np.mgrid[:384, :384]
    x, y = x - px, y - py
    two, e = math.radians(60), ELLIPSE / 100  # longer along 30 degrees on the screen, y runs down
    for table, wanted in zip(tables, (-e * (math.cos(two) * x - math.sin(two) * y),
                                      e * (math.sin(two) * x + math.cos(two) * y))):
        assert table.shape == (384, 384) and np.abs(wanted).max() > 0.5
        assert np.abs(table - wanted).max() < 0.15, np.abs(table - wanted).max()


def check_cif(base, cell):
    """Zone axes and angles go with the matrix, in gemmi's reading."""
    block = gemmi.cif.read(base + "_dyn.cif_pets").sole_block()
    ub = np.array([[float(block.find_value(f"_diffrn_orient_matrix_UB_{i}{j}")) for j in (1, 2, 3)] for i in (1, 2, 3)])
    assert np.linalg.det(ub) > 0
    metric = np.linalg.inv(ub.T @ ub)
    edges = np.sqrt(np.diag(metric))
    assert np.allclose(edges, [float(block.find_value("_cell_length_" + n)) for n in "abc"], rtol=1e-4)
    names = ["id", "u", "v", "w", "precession_angle", "alpha", "beta", "omega", "scale"]
    rows = np.array([[float(v) for v in row] for row in block.find("_diffrn_zone_axis_", names)])
    beams = []
    for number, *uvw, semi, alpha, beta, omega, scale in rows:
        a, b, o = np.radians([alpha, beta, omega])
        rx = np.array([[1, 0, 0], [0, math.cos(a), -math.sin(a)], [0, math.sin(a), math.cos(a)]])
        ry = np.array([[math.cos(b), 0, math.sin(b)], [0, 1, 0], [-math.sin(b), 0, math.cos(b)]])
        rz = np.array([[math.cos(o), -math.sin(o), 0], [math.sin(o), math.cos(o), 0], [0, 0, 1]])
        zone = (rz @ rx @ ry @ ub)[2]
        assert np.allclose(zone / np.abs(zone).max(), uvw, atol=1e-4)
        beams.append((rz @ rx @ ry, semi))
    names = ["index_h", "index_k", "index_l", "intensity_meas", "intensity_sigma", "zone_axis_id"]
    refln = np.array([[float(v) for v in row] for row in block.find("_refln_", names)])
    assert len(refln) > 300 and set(refln[:, 5]) == set(rows[:, 0])
    # Each reflection passes the sphere, in -z from the source, while its frame turns.
    k, worst = 1 / float(block.find_value("_diffrn_radiation_wavelength")), 0
    for *hkl, meas, sigma, number in refln:
        turn, semi = beams[int(number) - 1]
        point = turn @ ub @ hkl
        error = k - np.linalg.norm(point - [0, 0, k])
        worst = max(worst, abs(error) / (np.linalg.norm(point) * math.radians(semi) + 1e-3))
        assert sigma > 0
    assert worst < 1.1, worst


with tempfile.TemporaryDirectory() as folder:
    run(f"{BIN}/tessera-simulate", "--crystal", "quartz", "--frames", FRAMES, "--size", 384, "--tilt-start", 30,
        "--tilt-step", -0.9, "--pixel-size", 0.006, "--axis", AXIS, "--drift", 4, "--out", folder, "--name", "q",
        "--preset", "clean", "--drift", 4, "--ellipse-amp", ELLIPSE, "--ellipse-azimuth", 30, "--told-distortion", "on")
    out = folder + "/out"
    run(f"{BIN}/tessera-batch", folder + "/q.ed3d", "--out", out, "--export", "xds,dials,pets,cif", "--json",
        folder + "/q.json")
    with open(folder + "/q.json") as file:
        assert json.load(file)["exported"] == ["xds", "dials", "pets", "cif"]
    base = out + "/q"
    experiment, table = loaded(base)
    cell = experiment.crystal.get_unit_cell()
    right, wrong = sharpness(experiment, table, 1), sharpness(experiment, table, -1)
    print(f"{len(table)} reflections; points scatter by {right:.5f} 1/Å, about the opposite axis {wrong:.5f}")
    assert wrong > 3 * right
    check_xds(out, experiment)
    check_corrections(base, experiment)
    check_cif(base, cell)
    assert "P 1" in run("dials.show", base + ".expt", base + ".refl", folder=folder)
    answer = run("dials.refine", base + ".expt", base + ".refl", "detector.fix=distance", "scan_varying=False",
                 "output.reflections=refined.refl", folder=folder)
    refined, refined_table = loaded(folder + "/refined")
    print("cell", cell.parameters(), "refined by DIALS", refined.crystal.get_unit_cell().parameters())
    for ours, theirs in zip(cell.parameters(), refined.crystal.get_unit_cell().parameters()):
        assert abs(theirs / ours - 1) < 0.001, (ours, theirs)
    rest = refined_table.select(refined_table.get_flags(refined_table.flags.used_in_refinement))
    seen, calculated = (np.array(rest[name]) for name in ("xyzobs.px.value", "xyzcal.px"))
    rms = np.sqrt(((seen - calculated) ** 2).mean(axis=0))
    print(f"{len(rest)} used; rms {rms} px, px, images")
    assert len(rest) > 0.6 * len(table) and rms[0] < 0.3 and rms[1] < 0.3 and rms[2] < 0.5
    run("dials.integrate", base + ".expt", "profile.fitting=False", "nproc=1", folder=folder)
    integrated = flex.reflection_table.from_file(folder + "/integrated.refl")
    strong = {tuple(h): i for h, i in zip(table["miller_index"], table["intensity.sum.value"])}
    pairs = np.array([(strong[h], i) for h, i in zip(integrated["miller_index"], integrated["intensity.sum.value"])
                      if h in strong])
    correlation = np.corrcoef(pairs.T)[0, 1]
    print(f"{len(integrated)} integrated by DIALS; those of peaks correlate with them by {correlation:.3f}")
    assert len(pairs) > 0.5 * len(strong) and correlation > 0.7
    check_reflections(experiment, table)
    with open(base + ".pts") as file:
        lines = [line.split() for line in file if line.strip() and not line.startswith("#")]
    images = lines[lines.index(["imagelist"]) + 1:lines.index(["endimagelist"])]
    assert len(images) == FRAMES and all(os.path.isfile(out + "/" + image[0]) for image in images)
    keys = {line[0]: line[1] for line in lines if len(line) == 2}
    assert abs(float(keys["omega"]) - AXIS % 360) < 1.5 and float(keys["Aperpixel"]) == 0.006, keys
    tiff = tifffile.imread(out + "/" + images[3][0])
    raw = np.fromfile(folder + "/q_0004.mrc", "<i2", offset=1024).reshape(384, 384)[::-1]
    run(f"{BIN}/tessera-batch", folder + "/q.ed3d", "--out", out, "--from", "integrate", "--export", "cif",
        "--virtual-frames", 20, "--virtual-step", 15)
    block = gemmi.cif.read(base + "_dyn.cif_pets").sole_block()
    assert len(block.find_values("_diffrn_zone_axis_id")) == 1 + (FRAMES - 20) // 15
    check_cif(base, cell)
    # Negative pixels ask for 32 bits; hot pixels are repaired.
    assert tiff.dtype == (np.int32 if raw.min() < 0 else np.uint16), tiff.dtype
    assert tiff.shape == raw.shape and (tiff != raw).mean() < 1e-3, (tiff != raw).mean()
