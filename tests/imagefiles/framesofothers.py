"""Frames that other programs write, read by tessera-frameinfo: every pixel equal, the same side up in every format.

Usage: framesofothers.py FOLDER_OF_PROGRAMS [--only FORMAT[,FORMAT...]]
       framesofothers.py FOLDER_OF_PROGRAMS --real FOLDER   prints a table of the files there by us and by others
Ends with 77 (skipped) if a library is missing, after all others passed.
"""
import importlib
import json
import os
import subprocess
import sys
import tempfile
import warnings

BIN, SKIPPED = sys.argv[1], 77
MISSING = []


def library(name):
    try:
        return importlib.import_module(name)
    except ImportError:
        print("skipped, not installed:", name)
        MISSING.append(name)
        return None


np = library("numpy")
if not np:
    sys.exit(SKIPPED)
import framewriters  # noqa: E402  (needs numpy)

warnings.simplefilter("ignore")
WIDTH, HEIGHT = 61, 45
GREY = 64  # of pictures of 8 bits, by which they keep a place among those of colours
F_OF_SPOTS = ["11111", "1....", "1....", "1111.", "1....", "1....", "1...."]  # equal to none of its turned images


def pattern(most=60000, number=0):
    """An F of spots on a background that differs from pixel to pixel; no value is above `most`."""
    y, x = np.mgrid[:HEIGHT, :WIDTH]
    image = (7 * x + 13 * y + number) % 31
    for row, line in enumerate(F_OF_SPOTS):
        for column, dot in enumerate(line):
            if dot == "1":
                image[4 + 5 * row:6 + 5 * row, 10 + 7 * column:13 + 7 * column] = most - 257 * row - 11 * column \
                    if most > 2000 else most - row
    return image


def large(side, most):
    """The same for chips: no corner, edge or quadrant is like another."""
    y, x = np.mgrid[:side, :side]
    return ((x * 2654435761 ^ (y * 40503 + 977)) >> 7) % (most + 1)


class Failed(Exception):
    pass


def info(frames, pixels=None):
    command = [f"{BIN}/tessera-frameinfo", *(["--pixels", pixels] if pixels else []), *frames]
    run = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if run.returncode != 0:
        reason = run.stderr.strip().replace(os.path.dirname(frames[0]) + "/", "") or f"ended with {run.returncode}"
        raise Failed(reason.split("\n")[0])
    return [json.loads(line) for line in run.stdout.splitlines()]


def check(format, file, images, told):
    """Raises Failed unless the file has exactly these images."""
    frames = [file] if len(images) == 1 else [f"{file}#{n + 1}" for n in range(len(images))]
    pixels = file + ".pixels"
    lines = info(frames, pixels)
    read = np.fromfile(pixels, "<f4")
    if len(lines) != len(images) or any(line["images"] != len(images) for line in lines):
        raise Failed(f"{lines[0]['images']} images, not {len(images)}")
    for line, image in zip(lines, images):
        size = (line["height"], line["width"])
        if line["format"] != format or size != image.shape:
            raise Failed(f"{line['format']} of {size[1]} x {size[0]}, not {format} of {image.shape[::-1]}")
        if line["header_width"] > 0 and (line["header_height"], line["header_width"]) != size:
            raise Failed(f"{line['header_width']} x {line['header_height']} by the header")
        ours, read = read[:image.size].reshape(image.shape), read[image.size:]
        if not np.array_equal(ours, image.astype(np.float32), equal_nan=True):
            turned = {"upside down": image[::-1], "mirrored": image[:, ::-1], "turned": image[::-1, ::-1]}
            how = [name for name, other in turned.items() if np.array_equal(ours, other.astype(np.float32))]
            different = ours != image.astype(np.float32)
            y, x = np.argwhere(different)[0]
            raise Failed(how[0] if how else f"{different.sum()} pixels differ; at row {y}, column {x}: {ours[y, x]}, "
                         f"not {image[y, x]}")
        finite = image[np.isfinite(image)]
        if line["no_numbers"] != image.size - finite.size or abs(line["mean"] - finite.mean()) > 1e-5 * abs(finite.mean()):
            raise Failed(f"mean {line['mean']}, not {finite.mean()}")
    for key, values in told.items():
        values = values if isinstance(values, list) else [values] * len(images)
        for line, value in zip(lines, values):
            got = line["header"].get(key, {}).get("value")
            if got is None or abs(got - value) > 2e-6 * max(1, abs(value)):
                raise Failed(f"{key}: {got}, not {value}")


def put(path, content):
    with open(path, "wb") as file:
        file.write(content)


def smv_cases(path):
    told = {"wavelength": 0.0251, "tilt_start": -12.5, "tilt_step": 0.5, "exposure": 1.5}
    keys = {"WAVELENGTH": 0.0251, "OSC_START": -12.5, "PHI": -12.5, "OSC_RANGE": 0.5, "TIME": 1.5, "DISTANCE": 500,
            "PIXEL_SIZE": 0.055}
    for order, size in (("little_endian", 512), ("big_endian", 2048)):
        put(path, framewriters.smv(pattern(), order, size, **keys))
        yield f"{order}, header of {size}", [pattern()], told
    adsc, dtrek = library("fabio.adscimage"), library("fabio.dtrekimage")
    if adsc:
        adsc.AdscImage(data=pattern().astype(np.uint16), header={k: str(v) for k, v in keys.items()}).write(path)
        yield "fabio, ADSC", [pattern()], told
    for kind in ("u1", "u2", "i2", "u4", "i4") if dtrek else ():
        image = pattern({"u1": 255, "i2": 32000}.get(kind, 60000) if kind[1] != "4" else 1000000)
        dtrek.DtrekImage(data=image.astype(kind)).write(path)
        yield f"fabio, d*TREK {kind}", [image], {}


def cbf_cases(path):
    cbf = library("fabio.cbfimage")
    if cbf:
        for most in (60000, 2000000000):
            cbf.CbfImage(data=pattern(most).astype(np.int32)).write(path)
            yield f"fabio, up to {most}", [pattern(most).astype(np.float32)], {}


def tiff_cases(path):
    tifffile, pil, fabio = library("tifffile"), library("PIL.Image"), library("fabio.tifimage")
    kinds = {"u1": 255, "u2": 60000, "i2": 32000, "u4": 3000000, "i4": 3000000, "f4": 60000}
    if tifffile:
        for kind, most in kinds.items():
            for order in "<>":
                image = pattern(most) - (100 if kind in ("i2", "i4", "f4") else 0) + (0.25 if kind == "f4" else 0)
                tifffile.imwrite(path, image.astype(order + kind), byteorder=order, photometric="minisblack")
                yield f"tifffile, {order}{kind}", [image * (GREY if kind == "u1" else 1)], {}
        options = {"tiles": {"tile": (16, 32)}, "deflate": {"compression": "zlib"}, "strips": {"rowsperstrip": 4},
                   "deflate, predictor": {"compression": "zlib", "predictor": True}, "BigTIFF": {"bigtiff": True},
                   "tiles, deflate": {"tile": (16, 16), "compression": "zlib"}, "ImageJ": {"imagej": True},
                   "BigTIFF, big-endian": {"bigtiff": True, "byteorder": ">"}}
        for name, more in options.items():
            more = {"photometric": "minisblack", **more}
            tifffile.imwrite(path, pattern().astype(np.uint16), **more)
            yield f"tifffile, {name}", [pattern()], {}
            stack = [pattern(number=n) for n in range(3)]
            tifffile.imwrite(path, np.stack(stack).astype(np.uint16), **more)
            yield f"tifffile, {name}, three pages", stack, {}
    if pil:
        for kind, compression in [("u2", None), ("u2", "tiff_lzw"), ("u1", "tiff_lzw"), ("u2", "packbits"),
                                  ("u2", "tiff_adobe_deflate"), ("i4", None), ("f4", None)]:
            pil.fromarray(pattern(kinds[kind]).astype(kind)).save(path, compression=compression)
            yield f"PIL, {kind}, {compression}", [pattern(kinds[kind]) * (GREY if kind == "u1" else 1)], {}
    if fabio:
        fabio.TifImage(data=pattern().astype(np.uint16)).write(path)
        yield "fabio", [pattern()], {}


def png_cases(path):
    pil = library("PIL.Image")
    for kind, most in [("u1", 255), ("u2", 60000)] if pil else ():
        pil.fromarray(pattern(most).astype(kind)).save(path)
        yield f"PIL, {kind}", [pattern(most) * (GREY if kind == "u1" else 1)], {}


def mrc_cases(path):
    mrcfile = library("mrcfile")
    kinds = {"i1": 127, "i2": 32000, "f4": 60000, "u2": 60000, "f2": 2000, ">i2": 32000, ">f4": 60000, ">u2": 60000}
    for kind, most in kinds.items() if mrcfile else ():
        for count, extended in ((1, 0), (3, 0), (1, 888), (3, 1024)):
            stack = [pattern(most, n) - (20 if "i" in kind else 0) for n in range(count)]
            with mrcfile.new(path, overwrite=True) as file:
                data = np.stack(stack)[:, ::-1].astype(kind)  # sections are stored bottom up
                file.set_data(data if count > 1 else data[0])
                if count > 1:
                    file.set_image_stack()
                if extended:
                    file.set_extended_header(np.full(extended, 77, np.uint8))
            yield f"mrcfile, {kind}, {count} sections, extended header of {extended}", stack, {}


def dm_cases(version, path):
    for kind, most in {"u1": 255, "i1": 127, "i2": 32000, "u2": 60000, "i4": 3000000, "u4": 3000000, "f4": 60000,
                       "f8": 60000}.items():
        for order in "<>":
            image = pattern(most) - (20 if "u" not in kind else 0)
            put(path, framewriters.dm(version, image.astype(kind), order))
            yield f"{order}{kind}", [image], {"kilovolts": 200, "pixel_size": 0.005}  # 0.05 1/nm
    if version == 4:
        stack = [pattern(number=n) for n in range(3)]
        put(path, framewriters.dm(4, np.stack(stack).astype(np.uint16)))
        yield "stack", stack, {"kilovolts": 200}


def tvips_cases(path):
    stack, tilts = [pattern(number=n) for n in range(5)], [-3, -1.5, 0, 1.5, 3]
    first = path.replace(".tvips", "_000.tvips")
    for part, file in enumerate(framewriters.tvips(2, [stack[:2], stack[2:4], stack[4:]], tilts)):
        put(path.replace(".tvips", f"_{part:03d}.tvips"), file)
    yield "version 2, three files", stack, {"tilt": tilts, "kilovolts": 200, "detector_pixel": 15.5}, first
    put(path, framewriters.tvips(1, [[pattern(255)]], bits=8)[0])
    yield "version 1, bytes", [pattern(255)], {"kilovolts": 200}


def mib_cases(path):
    for kind, depth, most in (("U08", 1, 1), ("U08", 6, 63), ("U16", 12, 4095), ("U32", 24, 2**24 - 1)):
        stack = [pattern(most, n) % (most + 1) for n in range(3)]
        told = {"exposure": 0.05, "detector_pixel": 55, **({"saturation": most} if depth > 1 else {})}
        put(path, framewriters.mib(stack, kind, depth=depth))
        yield f"{kind}, depth {depth}", stack, told
        for layout, side in (("1x1", 256), ("2x2", 512)):
            stack = [large(side, most), large(side, most)[::-1]]
            put(path, framewriters.mib(stack, "R64", layout, depth))
            yield f"R64, {layout}, depth {depth}", stack, told
    put(path, framewriters.mib([large(514, 4095)], "U16", "2x2G"))
    yield "U16, quad with a gap", [large(514, 4095)], {}


def hdf5_cases(path):
    h5py, shuffle = library("h5py"), library("bitshuffle.h5")
    if not h5py:
        return
    stack = np.stack([pattern(number=n) for n in range(3)])
    filters = {"plain": {}, "chunks": {"chunks": (1, HEIGHT, WIDTH)}, "odd chunks": {"chunks": (2, 16, 20)},
               "deflate": {"chunks": (1, HEIGHT, WIDTH), "compression": "gzip", "shuffle": True}}
    if shuffle:
        filters["bitshuffle, LZ4"] = {"chunks": (1, HEIGHT, WIDTH), "compression": 32008, "compression_opts": (0, 2)}
        filters["bitshuffle, LZ4, small blocks"] = {**filters["bitshuffle, LZ4"], "compression_opts": (64, 2)}
    for name, more in filters.items():
        for kind in ("u2", "u4", "i4", "f4") if name != "plain" else ("u1", "u2", ">u2", "i2", "f4", "f8"):
            images = stack % 200 if kind == "u1" else stack % 30000 if kind == "i2" else stack
            with h5py.File(path, "w") as file:
                file.create_dataset("entry/data/data", data=images.astype(kind), **more)
            yield f"{name}, {kind}", list(images), {}
    with h5py.File(path, "w") as file:
        file["entry/data/data"] = stack[0].astype(np.uint16)
    yield "one image of two dimensions", [stack[0]], {}
    folder, base = os.path.split(path[:-3])
    for number in (1, 2):  # a master with links, and a mask
        with h5py.File(f"{folder}/{base}_data_{number:06d}.h5", "w") as file:
            part = stack[:2] if number == 1 else stack[2:]
            part = np.where(np.arange(WIDTH) == 7, 2**32 - 1, part)  # dead by their value
            data = file.create_dataset("entry/data/data", data=part.astype(np.uint32),
                                       **filters.get("bitshuffle, LZ4", filters["chunks"]))
            data.attrs["image_nr_low"], data.attrs["image_nr_high"] = (1, 2) if number == 1 else (3, 3)
    mask = np.zeros((HEIGHT, WIDTH), np.uint32)
    mask[20:22] = 1
    with h5py.File(f"{folder}/{base}_master.h5", "w") as file:
        for number in (1, 2):
            file[f"entry/data/data_{number:06d}"] = h5py.ExternalLink(f"{base}_data_{number:06d}.h5", "/entry/data/data")
        detector = file.create_group("entry/instrument/detector")
        detector["bit_depth_image"], detector["count_time"], detector["detectorSpecific/pixel_mask"] = 32, 0.1, mask
        detector["detectorSpecific/nimages"], detector["detectorSpecific/ntrigger"] = 3, 1
        for axis in "xy":
            detector[f"{axis}_pixel_size"] = 75e-6
            detector[f"{axis}_pixel_size"].attrs["units"] = "m"
    masked = np.where((mask > 0) | (np.arange(WIDTH) == 7), np.nan, stack)
    yield "master with links and a mask", list(masked), {"detector_pixel": 75}, f"{folder}/{base}_master.h5"
    velox = path[:-3] + ".emd"
    with h5py.File(velox, "w") as file:
        file["Version"] = np.array(['{"version": "8", "format": "Velox"}'], h5py.string_dtype())
        group = file.create_group("Data/Image/0123456789abcdef0123456789abcdef")
        group["Data"] = np.moveaxis(stack, 0, 2).astype(np.uint16)
        meta = json.dumps({"Optics": {"AccelerationVoltage": "300000"}, "Stage": {"AlphaTilt": "0.1"}}).encode()
        group["Metadata"] = np.tile(np.frombuffer(meta.ljust(2000, b"\0"), np.uint8)[:, None], (1, 3))
    yield "Velox", list(stack), {"kilovolts": 300, "tilt": float(np.degrees(0.1))}, velox


FORMATS = {"SMV": ("img", smv_cases), "CBF": ("cbf", cbf_cases), "TIFF": ("tif", tiff_cases), "PNG": ("png", png_cases),
           "MRC": ("mrc", mrc_cases), "DM3": ("dm3", lambda path: dm_cases(3, path)),
           "DM4": ("dm4", lambda path: dm_cases(4, path)), "TVIPS": ("tvips", tvips_cases), "MIB": ("mib", mib_cases),
           "HDF5": ("h5", hdf5_cases)}


def main():
    only = sys.argv[3].split(",") if sys.argv[2:3] == ["--only"] else list(FORMATS)
    failures = 0
    for format in only:
        suffix, cases = FORMATS[format]
        good = 0
        with tempfile.TemporaryDirectory() as folder:
            for number, (name, images, told, *file) in enumerate(cases(f"{folder}/frame.{suffix}")):
                try:
                    check(format, file[0] if file else f"{folder}/frame.{suffix}", images, told)
                    good += 1
                except Failed as failed:
                    print(f"{format}, {name}: {failed}")
                    failures += 1
        print(f"{format}: {good} files read")
    return 1 if failures else SKIPPED if MISSING else 0


if __name__ == "__main__":
    if sys.argv[2:3] == ["--real"]:
        import realframes  # noqa: E402
        sys.exit(realframes.print_table(sys.argv[3], info, Failed))
    sys.exit(main())
