"""A table of frame files that cameras and other programs wrote, by tessera-frameinfo and by other readers."""
import glob
import importlib
import os
import struct
import tempfile
import zipfile

import numpy as np


def by_fabio(path):
    return "fabio", [importlib.import_module("fabio").open(path).data]


def by_mrcfile(path):
    with importlib.import_module("mrcfile").open(path, permissive=True) as file:
        return "mrcfile", list(np.atleast_3d(file.data.T).T[:, ::-1].copy())  # stored bottom up


def by_tifffile(path):
    return "tifffile", [page.asarray() for page in importlib.import_module("tifffile").TiffFile(path).pages]


def by_pil(path):
    return "PIL", [np.asarray(importlib.import_module("PIL.Image").open(path))]


def by_h5py(path):
    """A master with links and a mask, a stack with the images along the last axis, or the largest data set."""
    h5py = importlib.import_module("h5py")
    importlib.import_module("bitshuffle.h5")
    with h5py.File(path) as file:
        if "Data/Image" in file:
            stacks = [group["Data"] for group in file["Data/Image"].values()]
            largest = max(stacks, key=lambda data: data.shape[2])
            return "h5py", [largest[:, :, n] for n in range(largest.shape[2])]
        data, images = file["entry/data"], []
        for name in sorted(data):
            if data.get(name, getlink=True).__class__.__name__ != "ExternalLink" or name in data:
                images += list(np.atleast_3d(data[name][()].T).T)
        mask = file.get("entry/instrument/detector/detectorSpecific/pixel_mask")
        dead = np.zeros(images[0].shape, bool) if mask is None else (mask[()] & 0xFFFF) != 0
        top = np.iinfo(images[0].dtype).max if images[0].dtype.kind in "ui" else np.inf
        return f"h5py, {images[0].dtype}", [np.where(dead | (image == top), np.nan, image) for image in images]


def by_tags(path):
    """DM3 and DM4: the image of the largest element of the list, by the plain layout of the tags."""
    with open(path, "rb") as file:
        content = file.read()
    version = struct.unpack_from(">I", content)[0]
    word = {3: ">I", 4: ">Q"}[version]
    step = struct.calcsize(word)
    order = "<" if struct.unpack_from(">I", content, 4 + step)[0] == 1 else ">"
    numbers = {2: "i2", 3: "i4", 4: "u2", 5: "u4", 6: "f4", 7: "f8", 8: "u1", 9: "u1", 10: "i1", 11: "i8", 12: "u8"}

    def words(place, count):
        return struct.unpack_from(">" + word[1] * count, content, place) if count else ()

    def children(place):
        count, place, found = words(place + 2, 1)[0], place + 2 + step, []
        for number in range(count):
            kind, length = struct.unpack_from(">BH", content, place)
            name = content[place + 3:place + 3 + length].decode("latin1") or str(number)
            place += 3 + length + (step if version == 4 else 0)
            if kind == 20:
                value, place = children(place)
            else:
                n = words(place + 4, 1)[0]
                info, place = words(place + 4 + step, n), place + 4 + step * (n + 1)
                value, size = None, 0
                if info[0] in numbers:
                    size = np.dtype(numbers[info[0]]).itemsize
                    value = np.frombuffer(content, order + numbers[info[0]], 1, place)[0]
                elif info[0] == 15:
                    size = sum(np.dtype(numbers[code]).itemsize for code in info[4::2])
                elif info[0] == 20:
                    codes = info[5:-1:2] if info[1] == 15 else info[1:2]
                    size = sum(np.dtype(numbers[code]).itemsize for code in codes) * info[-1]
                    value = (place, size)
                place += size
            found.append((name, value))
        return dict(found), place

    tree, _ = children(4 + step + 4)
    images = [image["ImageData"] for image in tree["ImageList"].values() if image.get("ImageData", {}).get("Data")]
    data = [image for image in images if image["DataType"] != 23][-1]  # 23: colour, a thumbnail
    pixels = {1: "i2", 2: "f4", 3: "c8", 6: "u1", 7: "i4", 9: "i1", 10: "u2", 11: "u4", 12: "f8", 13: "c16"}[data["DataType"]]
    shape = [int(n) for n in data["Dimensions"].values()][::-1]
    image = np.frombuffer(content, order + pixels, int(np.prod(shape)), data["Data"][0]).reshape(shape)
    return "a parser of its tags", list(np.atleast_3d(image.T).T)


def by_struct(path):
    """MIB, processed or raw of one bit."""
    with open(path, "rb") as file:
        content = file.read()
    place, images = 0, []
    while place < len(content):
        field = content[place:place + 100].split(b",")
        size, width, height, kind = int(field[2]), int(field[4]), int(field[5]), field[6].strip().decode()
        count = width * height // 8 if kind == "R64" else width * height * int(kind[1:]) // 8
        pixels, place = content[place + size:place + size + count], place + size + count
        if kind == "R64":
            bits = (np.frombuffer(pixels, ">u8")[:, None] >> np.arange(64, dtype=np.uint64)) & np.uint64(1)
            image = bits.astype(np.uint8).reshape(height, width)
            if width == 1024:
                four, three, two, one = np.split(image, 4, axis=1)
                image = np.vstack([np.hstack([one, two]), np.hstack([three[::-1, ::-1], four[::-1, ::-1]])])
        else:
            image = np.frombuffer(pixels, ">u%d" % (int(kind[1:]) // 8)).reshape(height, width)
        images.append(image[::-1])
    return "struct", images


READERS = {".img": by_fabio, ".cbf": by_fabio, ".mrc": by_mrcfile, ".mrcs": by_mrcfile, ".tif": by_tifffile,
           ".tiff": by_tifffile, ".png": by_pil, ".h5": by_h5py, ".emd": by_h5py, ".dm3": by_tags, ".dm4": by_tags,
           ".mib": by_struct}


def three(values):
    return "{:g}, {:g}, {:.8g}".format(*values)


def row(path, info, failed):
    """Cells of a line, and whether all pixels are equal."""
    name = os.path.basename(path)
    try:
        by, images = READERS[os.path.splitext(path)[1].lower()](path)
        theirs = [np.nanmin(images), np.nanmax(images), np.nanmean(np.array(images, complex).real)]
        kind = f"{images[0].shape[1]} x {images[0].shape[0]} x {len(images)} | {images[0].dtype}"
        theirs = "complex" if images[0].dtype.kind == "c" else three(theirs)
    except Exception as error:  # whatever the other reader throws
        by, images, kind, theirs = "-", [], "- | -", f"{type(error).__name__}: {error}"
    with tempfile.NamedTemporaryFile() as pixels:
        try:
            count = info([path])[0]["images"]
            lines = info([f"{path}#{n + 1}" for n in range(count)] if count > 1 else [path], pixels.name)
        except failed as error:
            return f"- | {name} | {kind} | {error} | {theirs} | {by} | not read", theirs == "complex"
        ours = np.fromfile(pixels.name, "<f4")
    statistics = [min(line["minimum"] for line in lines), max(line["maximum"] for line in lines),
                  np.average([line["mean"] for line in lines], weights=[line["width"] * line["height"] - line["no_numbers"]
                                                                        for line in lines])]
    verdict = "DIFFERENT"
    for word, turned in (("all equal, rows in the other order", [image[::-1] for image in images]), ("all equal", images)):
        if images and np.array_equal(ours, np.array(turned, np.float32).ravel(), equal_nan=True):
            verdict = word
    # the header of an MRC file defines which row is on top; mrcfile ignores it
    good = verdict == "all equal" or (verdict != "DIFFERENT" and by == "mrcfile")
    return f"{lines[0]['format']} | {name} | {kind} | {three(statistics)} | {theirs} | {by} | {verdict}", good


def print_table(folder, info, failed):
    """Also files in archives there. Returns 1 when any image differs from the other reader's."""
    wrong = 0
    print("| format | file | size | type | minimum, maximum, mean by us | by the other | the other | pixels |\n" + "|---" * 8 + "|")
    with tempfile.TemporaryDirectory() as unpacked:
        for archive in glob.glob(folder + "/*.zip"):
            zipfile.ZipFile(archive).extractall(unpacked)
        paths = sorted(glob.glob(folder + "/*")) + sorted(glob.glob(unpacked + "/**/*", recursive=True))
        for path in paths:
            if os.path.splitext(path)[1].lower() in READERS and "_data_0" not in path:
                text, good = row(path, info, failed)
                wrong += not good
                print(f"| {text} |")
    return 1 if wrong else 0
