"""Folders of series: which ones there are, names that would not get through, size of the frames, memory of a job.

What the Snakefile and stage.py have in common. Nothing here needs snakemake.
"""
import collections
import hashlib
import os
import re
import struct

# What makes a folder a series; other files may lie beside the frames. Formats of cameras come before the pictures.
FRAME_SUFFIXES = (".mrc", ".mrcs", ".dm3", ".dm4", ".tif", ".tiff", ".tvips", ".img", ".cbf", ".h5", ".hdf5", ".nxs",
                  ".emd", ".mib", ".bmp", ".jpg", ".jpeg", ".gif", ".png")
PROJECT = ".ed3d"
HOT_PIXELS = "hotpixels.txt"
# Longer edges are no frame but a broken header.
LONGEST_EDGE = 65536
# Where nothing tells the size of a frame, a file of many would count as one of its whole length: not above the largest
# usual camera.
MOST_PIXELS_GUESSED = 4096**2
HEAD = 4096  # bytes, in which all headers below tell the size
# Stack, heap and read buffer of a thread, MB: as tessera-batch reckons when it chooses the number of its threads.
OF_THREAD = 16


def is_named(name, suffixes):
    """Whether a file is no hidden one (some systems put such beside each file) and has one of the suffixes."""
    return not name.startswith(".") and name.lower().endswith(suffixes)


def series_below(frames):
    """Names of the series, which are their folders seen from that of all, sorted.

    Links to folders are followed, except to one that the way there has come through.
    """
    found = []
    ways = {frames: {os.path.realpath(frames)}}  # the folders behind all links on the way to those still to be seen
    for folder, below, files in os.walk(frames, followlinks=True):
        way = ways.pop(folder)
        if folder != frames and any(is_named(name, (PROJECT, *FRAME_SUFFIXES)) for name in files):
            found.append(os.path.relpath(folder, frames))
            below.clear()
        for name in list(below):
            place = os.path.join(folder, name)
            real = os.path.realpath(place)
            if real in way:
                below.remove(name)
            else:
                ways[place] = way | {real}
    return sorted(found)


def fault_of_name(name):
    """Why a path cannot go through snakemake, its jobs' command lines and lists of one path a line; None if it can."""
    try:
        name.encode()
    except UnicodeEncodeError:
        return "is not UTF-8"
    if not name.isprintable():
        return "has a line break or another character that cannot be printed"
    # Braces are wildcards to snakemake. It hands names to the jobs of a cluster as a Python literal within a line of
    # the shell, where the others would become something else.
    bad = sorted(set(name) & set('{}"\\$`'))
    return f"has the character {bad[0]}" if bad else None


def fault_of_places(frames, results, merged):
    """What is wrong with the three folders of a run, as a line of text; None if nothing is."""
    places = {"frames": frames, "results": results, "merged": merged}
    for key, place in places.items():
        fault = fault_of_name(place)
        if not fault and (not place or place[0] in "-#"):
            fault = "is empty" if not place else f"begins with {place[0]}: put ./ before it"
        if fault:
            return f"{key} ({place!r}) {fault}"
    if not os.path.isdir(frames):
        return f"frames ({frames}): there is no such folder"
    # A stage takes away what it made in the folder of the results, and pictures of the merging would make a series.
    real = {key: os.path.realpath(place) for key, place in places.items()}
    for key in ("results", "merged"):
        if os.path.commonpath([real["frames"], real[key]]) in (real["frames"], real[key]):
            return f"frames ({frames}) and {key} ({places[key]}) must not lie in each other"
    return None


def fault_of_series(frames, results, merged, series):
    """What is wrong with the names of the series, as a line of text; None if nothing is."""
    if not series:
        return f"frames ({frames}): no folder below it has frames or a project"
    faults = []
    for name in series:
        fault = fault_of_name(name)
        if not fault and "," in name:  # it parts the wildcards of a job
            fault = "has a comma"
        if not fault and os.path.realpath(os.path.join(results, name)) == os.path.realpath(merged):
            fault = f"has its results where the merged data go ({merged})"
        if fault:
            faults.append(f"series {name!r} {fault}")
    if not faults:
        return None
    more = f" (and {len(faults) - 1} more series with such faults)" if len(faults) > 1 else ""
    return f"{faults[0]}: give its folder another name{more}"


def frame_files(folder):
    """Files of the commonest format in a folder, sorted; of formats with as many files that of cameras."""
    names = sorted(entry.name for entry in os.scandir(folder) if is_named(entry.name, FRAME_SUFFIXES))
    count = collections.Counter(os.path.splitext(name)[1].lower() for name in names)
    if not count:
        return []
    best = max(count, key=lambda suffix: (count[suffix], -FRAME_SUFFIXES.index(suffix)))
    return [os.path.join(folder, name) for name in names if name.lower().endswith(best)]


def project_of(folder):
    """The project of a folder of frames, if it has one; of several the first."""
    names = sorted(entry.name for entry in os.scandir(folder)
                   if is_named(entry.name, PROJECT) and not entry.name.endswith("_refined" + PROJECT))
    return os.path.join(folder, names[0]) if names else None


def first_frame(folder):
    """The file of the first frame of a series: of its project if it has one; None without any."""
    project = project_of(folder)
    if project:
        with open(project, encoding="utf-8", errors="replace") as file:
            for line in file:
                words = line.split()
                if len(words) > 1 and words[0] == "FILE":
                    return os.path.join(folder, re.sub(r"#[1-9][0-9]*$", "", words[1]))
    return next(iter(frame_files(folder)), None)


def identity(folder):
    """A check sum of what a series is made from: names, sizes and times of frames, projects, hot pixels."""
    lines = []
    for entry in os.scandir(folder):
        if entry.name == HOT_PIXELS or is_named(entry.name, (PROJECT, *FRAME_SUFFIXES)):
            try:
                status = entry.stat()
            except FileNotFoundError:  # a link that leads nowhere: the run tells what it makes of it
                status = entry.stat(follow_symlinks=False)
            lines.append(f"{entry.name}\0{status.st_size}\0{int(status.st_mtime)}\n")
    return hashlib.sha256("".join(sorted(lines)).encode(errors="surrogateescape")).hexdigest()


def size_in_tiff(head, file):
    """Columns and rows of the first image of a TIFF or BigTIFF file; None if they are not in the file."""
    order = "<" if head[:2] == b"II" else ">"
    big = struct.unpack_from(order + "H", head, 2)[0] == 43
    file.seek(struct.unpack_from(order + "Q", head, 8)[0] if big else struct.unpack_from(order + "I", head, 4)[0])
    count = struct.unpack(order + "Q" if big else order + "H", file.read(8 if big else 2))[0]
    length = 20 if big else 12
    size = {}
    for _ in range(min(count, 100)):  # sorted by their tags, of which these two are among the first
        entry = file.read(length)
        tag, kind = struct.unpack_from(order + "HH", entry)
        if tag in (256, 257):
            size[tag] = struct.unpack_from(order + {3: "H", 16: "Q"}.get(kind, "I"), entry, 12 if big else 8)[0]
    return (size[256], size[257]) if len(size) == 2 else None


def size_in_header(head, file):
    """Columns and rows of a frame, by the header of MRC, TIFF, TVIPS, MIB, SMV, CBF, PNG, BMP or GIF; else None."""
    if head[:4] in (b"II*\0", b"MM\0*", b"II+\0", b"MM\0+"):
        return size_in_tiff(head, file)
    if head[:4] == b"\x89PNG":
        return struct.unpack_from(">II", head, 16)
    if head[:2] == b"BM":
        columns, rows = struct.unpack_from("<ii", head, 18)
        return columns, abs(rows)
    if head[:3] == b"GIF":
        return struct.unpack_from("<HH", head, 6)
    if head[:4] == b"MQ1,":
        return tuple(map(int, head.split(b",")[4:6]))
    if struct.unpack_from("<I", head)[0] == 256 and struct.unpack_from("<I", head, 4)[0] in (1, 2) and \
            file.name.lower().endswith(".tvips"):
        return struct.unpack_from("<II", head, 8)
    for words in ((rb"SIZE1\s*=\s*(\d+)", rb"SIZE2\s*=\s*(\d+)"),
                  (rb"X-Binary-Size-Fastest-Dimension:\s*(\d+)", rb"X-Binary-Size-Second-Dimension:\s*(\d+)")):
        found = [re.search(word, head) for word in words]
        if all(found):
            return tuple(int(match[1]) for match in found)
    if file.name.lower().endswith((".mrc", ".mrcs")):
        for order in "<>":
            size = struct.unpack_from(order + "ii", head)
            if all(0 < edge <= LONGEST_EDGE for edge in size):
                return size
    return None


def frame_pixels(folder):
    """Pixels of a frame of a series, by the header of the first; 0 for a series without frames.

    A file of many frames has the size of one in its header, too. Of formats without a header that is read here, or with
    a broken one, as if each byte of the file were a pixel, up to MOST_PIXELS_GUESSED.
    """
    name = first_frame(folder)
    if not name:
        return 0
    with open(name, "rb") as file:
        head = file.read(HEAD)
        try:
            size = size_in_header(head, file)
        except (struct.error, ValueError, OverflowError):  # the last from places that no file can have
            size = None
    if size and len(size) == 2 and all(0 < edge <= LONGEST_EDGE for edge in size):
        return size[0] * size[1]
    return min(os.path.getsize(name), MOST_PIXELS_GUESSED)


def job_memory(config, pixels, threads):
    """MB that a stage that reads frames needs with so many threads."""
    frames = config["frames_in_memory"] + config["frames_per_thread"] * (threads - 1)
    return int(config["memory"] + OF_THREAD * threads + frames * pixels * 4 / 2**20)
