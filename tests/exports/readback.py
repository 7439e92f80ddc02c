"""What tessera-batch exports, read by other libraries and compared with sums of their own.

Usage: readback.py FOLDER_OF_PROGRAMS. Ends with 77 (skipped) if a library is missing, after all others passed.
"""
import importlib
import math
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


np, mrcfile, fabio, image, gemmi = map(library, ["numpy", "mrcfile", "fabio", "PIL.Image", "gemmi"])
if not np or not mrcfile:
    sys.exit(SKIPPED)
warnings.simplefilter("ignore")  # the headers have no map word
WAVELENGTH, PIXEL, AXIS, LOW, HIGH, EDGE = 0.0251, 0.008, -38.5, -20.0, 3000.0, 90
TILTS = [-20 + n for n in range(40)]


def run(program, *arguments):
    subprocess.run([f"{BIN}/{program}", *map(str, arguments)], check=True, stdout=subprocess.DEVNULL)


def stack(name):
    with mrcfile.open(name, permissive=True) as file:
        return file.data[..., ::-1, :].copy()  # sections are stored bottom up


def to_byte(values):
    values = np.asarray(values, np.float32)
    scale = np.float32(255) / np.float32(HIGH - LOW)
    scaled = (values - np.float32(LOW)).astype(float) * float(scale)
    return np.clip(np.trunc(scaled), 0, 255).astype(np.uint8)


def mapped(frame, centre, tilt):
    """Voxel indices of all pixels, in double precision, from the sphere's equation."""
    y, x = np.mgrid[: frame.shape[0], : frame.shape[1]]
    u, v, phi, theta = (x - centre[0]) * PIXEL, (y - centre[1]) * PIXEL, math.radians(AXIS), math.radians(tilt)
    wx, wy = u * math.cos(phi) - v * math.sin(phi), u * math.sin(phi) + v * math.cos(phi)
    radius = 1 / WAVELENGTH
    shrink = radius / np.sqrt(wx**2 + wy**2 + radius**2)
    ex, ey, ez = wx * shrink, wy * shrink, radius * (1 - shrink)
    r = [ex, ey * math.cos(theta) - ez * math.sin(theta), ey * math.sin(theta) + ez * math.cos(theta)]
    voxel = np.trunc(np.array(r) / PIXEL + EDGE / 2).astype(int)
    return voxel, ((voxel >= 0) & (voxel < EDGE)).all(axis=0)


with tempfile.TemporaryDirectory() as folder:
    run("tessera-simulate", "--crystal", "quartz", "--frames", len(TILTS), "--size", 256, "--tilt-start", TILTS[0],
        "--tilt-step", 1, "--pixel-size", PIXEL, "--drift", 4, "--out", folder, "--name", "q", "--preset", "clean")
    out = folder + "/out"
    run("tessera-batch", folder + "/q.ed3d", "--out", out, "--export", "ipf")
    limits = ["--contrast-min", LOW, "--contrast-max", HIGH, "--volume-edge", EDGE, "--export-folder", folder]
    only = [folder + "/q.ed3d", "--out", out, "--export-only", *limits]
    run("tessera-batch", *only, "--export", "smv,volume,scaled", "--export", "pictures")
    raw = stack(out + "/q.mrc")
    run("tessera-batch", *only, "--export", "volume,pictures", "--export-format", "tif", "--volume-type", "scaled")

    frames = [np.squeeze(stack(f"{folder}/q_{n + 1:04d}.mrc")) for n in range(len(TILTS))]
    with open(out + "/q.sc", encoding="ascii") as file:
        rows = [[float(word) for word in line.split()] for line in file]
    centre, shifts = rows[0], [row[1:] for row in rows[1:]]
    assert max(abs(s) for shift in shifts for s in shift) > 1, "a series without drift tests nothing"

    volume = np.zeros((EDGE,) * 3, np.float32)
    for frame, shift, tilt in zip(frames, shifts, TILTS):
        (ix, iy, iz), inside = mapped(frame, [centre[0] + shift[0], centre[1] + shift[1]], tilt)
        np.maximum.at(volume, (iz[inside], iy[inside], ix[inside]), frame[inside].astype(np.float32))
    assert raw.shape == volume.shape and raw.dtype == np.float32
    assert (volume > 0).mean() > 0.1 and (raw != volume).mean() < 1e-4, (raw != volume).mean()
    assert (stack(out + "/q.mrc") == to_byte(raw)).all()
    assert np.squeeze(stack(folder + "/q_0001_s.mrc")).shape == (128, 128)

    for n, (frame, shift) in enumerate(zip(frames, shifts)):
        if fabio:
            smv = fabio.open(f"{out}/q_{n + 1:04d}.img")
            moved = np.roll(frame, [-math.trunc(shift[1]), -math.trunc(shift[0])], axis=(0, 1))
            assert (smv.data == np.clip(moved, 0, 65535).astype(np.uint16)).all(), n
            header = [("PHI", TILTS[n]), ("DISTANCE", 0.055 / PIXEL / WAVELENGTH), ("BEAM_CENTER_X", centre[0])]
            assert all(abs(float(smv.header[key]) - value) < 0.011 for key, value in header), smv.header
        for kind in ("png", "tif") if image else ():
            picture = image.open(f"{folder}/q_{n + 1:04d}.{kind}")
            assert (np.asarray(picture.convert("L")) == to_byte(frame)).all(), (n, kind)

    if gemmi:
        with open(out + "/q.p4p", encoding="ascii") as file:
            cell = gemmi.UnitCell(*map(float, file.read().split()[1:]))
        with open(out + "/q.ipf", encoding="ascii") as file:
            peaks = [line.split() for line in file if not line.startswith("#")]
        seen = {tuple(map(int, peak[1:4])): float(peak[4]) for peak in peaks}
        off = [abs(1 / cell.calculate_d(list(hkl)) - d) / PIXEL for hkl, d in seen.items() if any(hkl)]
        assert np.median(off) < 0.5 and max(off) < 5, sorted(off)
        with open(out + "/q.hkl", encoding="ascii") as file:  # Fortran's 3I4, 2F8.2; sigma 0 ends the list
            listed = [tuple(int(line[k:k + 4]) for k in (0, 4, 8)) for line in file if float(line[20:28]) > 0]
        assert len(listed) == len(set(listed)) > 50 and {hkl for hkl in seen if any(hkl)} <= set(listed)

sys.exit(0 if fabio and image and gemmi else SKIPPED)
