"""Sections of reciprocal space as tessera-batch writes them, read by other libraries.

Usage: sectionsbyothers.py FOLDER_OF_PROGRAMS. Ends with 77 (skipped) if a library is missing.
"""
import importlib
import json
import subprocess
import sys
import tempfile
import warnings

BIN, SKIPPED = sys.argv[1], 77


def library(name):
    try:
        return importlib.import_module(name)
    except ImportError:
        print("skipped, not installed:", name)
        return None


np, mrcfile, image = map(library, ["numpy", "mrcfile", "PIL.Image"])
if not np or not mrcfile or not image:
    sys.exit(SKIPPED)


def run(program, *arguments, status=0):
    result = subprocess.run([f"{BIN}/{program}", *map(str, arguments)], capture_output=True, text=True)
    assert result.returncode == status, result.stdout + result.stderr
    return result.stdout + result.stderr


with tempfile.TemporaryDirectory() as folder:
    # Quartz, P3221: a 4.913, c 5.405 Å; of 00l only l = 3n is allowed.
    run("tessera-simulate", "--crystal", "quartz", "--frames", 100, "--size", 320, "--tilt-start", -50,
        "--tilt-step", 1, "--pixel-size", 0.008, "--axis", -38.5, "--out", folder, "--name", "q")
    project = f"{folder}/q.ed3d"
    for wrong in ("hkl", "hk0,xyz", ""):
        assert "--sections" in run("tessera-batch", "--sections", wrong, project, status=2), wrong
    assert "cell" in run("tessera-batch", "--sections", "hk0", "--to", "merge", project, status=2)
    run("tessera-batch", "--setting", "conventional", "--sections", "hk0,h0l", "--section-d-min", 0.9, "--json",
        f"{folder}/s.json", "--report", f"{folder}/r.html", "--to", "index", project)
    with open(f"{folder}/s.json") as file:
        found = json.load(file)
    assert [section["plane"] for section in found["sections"]] == ["hk0", "h0l"]
    with open(f"{folder}/q.log") as file:
        log = file.read()
    with open(f"{folder}/r.html") as file:
        report = file.read()
    for section in found["sections"]:
        name = f"{folder}/q_{section['plane']}"
        assert section["files"] == [name + ".mrc", name + ".png"]
        for file in section["files"]:
            assert file in log and file.split("/")[-1] in report, file
        with warnings.catch_warnings():
            warnings.simplefilter("error")  # mrcfile warns of what is not as the format has it
            with mrcfile.open(name + ".mrc") as file:
                data, header, voxel = file.data.copy(), file.header, file.voxel_size
                labels = "\n".join(file.get_labels())
        assert data.dtype == np.float32 and data.shape == (2 * (-header.nystart) + 1, 2 * (-header.nxstart) + 1)
        assert abs(voxel.x - 0.008) < 1e-6 and abs(voxel.y - 0.008) < 1e-6
        assert np.isnan(data).any() and section["seen"] < 1
        assert np.isclose(np.nanmax(data), header.dmax) and np.isclose(np.nanmin(data), header.dmin)
        assert np.isclose(np.nanmean(data), header.dmean, rtol=1e-4)
        assert np.isclose(np.nanstd(data.astype(float)), header.rms, rtol=1e-4)
        # The maxima, by the cell of the labels alone, lie on whole indices.
        assert section["plane"] in labels
        a, b, c, alpha, beta, gamma = map(float, labels.split("Cell ")[1].split("\n")[0].split())
        angles = np.radians([alpha, beta, gamma])
        cosine = np.cos(angles)
        metric = np.outer([a, b, c], [a, b, c])
        metric *= [[1, cosine[2], cosine[1]], [cosine[2], 1, cosine[0]], [cosine[1], cosine[0], 1]]
        reciprocal = np.linalg.inv(metric)
        first, second = (0, 1) if section["plane"] == "hk0" else (0, 2)
        right = np.sqrt(reciprocal[first, first])
        shear = reciprocal[first, second] / right
        up = np.sqrt(reciprocal[second, second] - shear**2)
        rows, columns = np.mgrid[: data.shape[0], : data.shape[1]]
        y, x = (rows + header.nystart) * float(voxel.y), (columns + header.nxstart) * float(voxel.x)
        k = y / up
        h = (x - k * shear) / right
        # Tops of spots, away from the direct beam and its glow, which are the strongest of all.
        outside = np.hypot(x, y) > 0.2
        filled = np.nan_to_num(data, nan=-np.inf)
        strong = outside & (filled > np.nanpercentile(data[outside], 99))
        for step in ((0, 1), (1, 0), (1, 1), (1, -1)):
            for sign in (1, -1):
                strong &= filled >= np.roll(filled, (sign * step[0], sign * step[1]), axis=(0, 1))
        assert strong.sum() > 10, strong.sum()
        off = np.hypot((h - h.round()) * right, (k - k.round()) * up) / float(voxel.x)
        assert np.median(off[strong]) < 1 and np.percentile(off[strong], 90) < 2, off[strong]
        picture = np.asarray(image.open(name + ".png").convert("RGB")).astype(int)
        assert min(picture.shape[:2]) > 900
        assert (picture.reshape(-1, 3) == [190, 202, 220]).all(axis=1).sum() > 100, "no hatching"
    # The same bytes for every number of threads.
    before = [open(file, "rb").read() for section in found["sections"] for file in section["files"]]
    run("tessera-batch", "--setting", "conventional", "--sections", "hk0,h0l", "--section-d-min", 0.9, "--to",
        "index", "--jobs", 1, project)
    assert before == [open(file, "rb").read() for section in found["sections"] for file in section["files"]]
