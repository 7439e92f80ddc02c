"""Writers of frame formats that no library of the distribution writes: DM3 and DM4, TVIPS, MIB, SMV with other headers.

Arrays have the row first that is on top on the screen; each writer returns the bytes of a file.
"""
import struct

import numpy as np


class Tags:
    """Tags of DM3 and DM4 files: what counts tags is big-endian, values are in the file's own order."""

    CODES = {"i2": 2, "i4": 3, "u2": 4, "u4": 5, "f4": 6, "f8": 7, "u1": 9, "i1": 10, "i8": 11, "u8": 12}
    PIXELS = {"i2": 1, "f4": 2, "u1": 6, "i4": 7, "i1": 9, "u2": 10, "u4": 11, "f8": 12}

    def __init__(self, version, order="<"):
        self.version, self.order, self.word = version, order, ">I" if version == 3 else ">Q"

    def words(self, *numbers):
        return b"".join(struct.pack(self.word, number) for number in numbers)

    def tag(self, kind, name, body):
        length = self.words(len(body)) if self.version == 4 else b""
        return struct.pack(">BH", kind, len(name)) + name.encode() + length + body

    def group(self, name, *children):
        return self.tag(20, name, b"\0\0" + self.words(len(children)) + b"".join(children))

    def value(self, name, info, data):
        return self.tag(21, name, b"%%%%" + self.words(len(info), *info) + data)

    def number(self, name, kind, number):
        return self.value(name, [self.CODES[kind]], np.array(number, self.order + kind).tobytes())

    def text(self, name, text):
        return self.value(name, [20, 4, len(text)], text.encode("utf-16" + ("le" if self.order == "<" else "be")))

    def image(self, data, scale=1.0, unit="1/nm"):
        kind = data.dtype.str[1:]
        axis = self.group("", self.number("Origin", "f4", 0), self.number("Scale", "f4", scale), self.text("Units", unit))
        pixels = np.ascontiguousarray(data, data.dtype.newbyteorder(self.order))
        return self.group(
            "ImageData", self.group("Calibrations", self.group("Dimension", axis, axis)),
            self.value("Data", [20, self.CODES[kind], data.size], pixels.tobytes()),
            self.number("DataType", "u4", self.PIXELS[kind]),
            self.group("Dimensions", *(self.number("", "u4", n) for n in reversed(data.shape))),
            self.number("PixelDepth", "u4", data.dtype.itemsize))

    def file(self, *children):
        root = b"\0\0" + self.words(len(children)) + b"".join(children)
        head = struct.pack(">I", self.version) + self.words(len(root)) + struct.pack(">I", self.order == "<")
        return head + root + bytes(8)


def dm(version, data, order="<", voltage=200000.0, scale=0.05):
    """An image or a stack behind its thumbnail, as cameras write them."""
    tags = Tags(version, order)
    thumbnail = tags.group("", tags.image(np.full((4, 6), 9, "u1")))
    microscope = tags.group("Microscope Info", tags.number("Voltage", "f4", voltage))
    image = tags.group("", tags.image(data, scale), tags.group("ImageTags", microscope))
    return tags.file(tags.group("ImageList", thumbnail, image),
                     tags.group("Thumbnails", tags.group("", tags.number("ImageIndex", "u4", 0))))


def tvips(version, parts, tilts=(), bits=16):
    """The files of a series, a list of images for each."""
    height, width = parts[0][0].shape
    head_size, files, count = 12 if version == 1 else 96, [], 0
    for part in parts:
        body = b""
        for image in part:
            head = struct.pack("<3I", count, 1600000000 + count, 0)
            if version == 2:
                head += struct.pack("<If2I5f", 0, 0, 850, 2, 10, 20, 30, tilts[count], 0)
            body += head.ljust(head_size, b"\0") + image.astype(f"<u{bits // 8}").tobytes()
            count += 1
        files.append(body)
    series = struct.pack("<13I", 256, version, width, height, bits, 0, 0, 1, 1, 15500, 200, 0, head_size)
    files[0] = series.ljust(256, b"\0") + files[0]
    return files


def mib(images, kind, layout="1x1", depth=12):
    """Processed frames (U08, U16, U32) or raw ones (R64) of a chip of 256 x 256 or of 2 x 2 of them."""
    height, width = images[0].shape
    chips, body = 4 if layout.startswith("2x2") else 1, b""
    for number, image in enumerate(images):
        sent = image[::-1]  # the lowest row first
        if kind == "R64":
            pixels = raw(sent if chips == 1 else quad(sent), depth)
            height, width = (256, 1024) if chips == 4 else (256, 256)
            width *= 2 if depth == 24 else 1
        else:
            pixels = sent.astype(">u%d" % (int(kind[1:]) // 8)).tobytes()
        size = 768 if chips == 4 else 384
        chip = "3RX," + "011," * 27
        text = (f"MQ1,{number + 1:06d},{size:05d},{chips:02d},{width:04d},{height:04d},{kind},{layout:>6},0F,"
                "2021-04-15 14:43:47.008505,0.050000,0,0,0," + "2.0E+0," * 8 + chip * chips +
                f"MQ1A,2021-04-15T13:43:47.008505401Z,50000000ns,{depth},")
        body += text.encode().ljust(size, b"\0") + pixels
    return body


def quad(sent):
    """Rows as the four chips send them: the last chip first, the upper ones turned by 180 degrees."""
    lower, upper = sent[:256], sent[256:][::-1, ::-1]
    return np.hstack([upper[:, :256], upper[:, 256:], lower[:, 256:], lower[:, :256]])


def raw(sent, depth):
    """Groups of 64 bits, reversed byte by byte, or pixel by pixel where pixels have two bytes."""
    flat = sent.reshape(-1).astype(np.uint32)
    if depth == 1:
        return np.packbits(flat.astype(np.uint8).reshape(-1, 64), axis=1, bitorder="little")[:, ::-1].tobytes()
    if depth == 6:
        return flat.astype(np.uint8).reshape(-1, 8)[:, ::-1].tobytes()
    parts = [flat] if depth == 12 else [flat >> 12, flat & 4095]
    return b"".join(part.astype(">u2").reshape(-1, 4)[:, ::-1].tobytes() for part in parts)


def smv(image, order="little_endian", header_bytes=512, **keys):
    height, width = image.shape
    lines = [f"HEADER_BYTES={header_bytes:5d}", "DIM=2", f"BYTE_ORDER={order}", "TYPE=unsigned_short", f"SIZE1={width}",
             f"SIZE2={height}", *(f"{key}={value}" for key, value in keys.items())]
    head = "{\n" + "".join(line + ";\n" for line in lines) + "}\n"
    return head.encode().ljust(header_bytes, b"\0") + image.astype((">" if order.startswith("b") else "<") + "u2").tobytes()
