"""Compares the tables of docs/formats.md with the files that the programs write, in both directions.

Usage: formatsdoc.py FOLDER_OF_PROGRAMS FOLDER_OF_THE_PROJECT. A comment before each table or example names what it is
of: <!-- keys: NAME --> of a JSON file, <!-- fields: NAME --> of a text file, <!-- keywords: NAME -->, <!-- names --> of
the variable parts of key paths, <!-- example: NAME -->.
"""
import array
import csv
import fnmatch
import json
import math
import os
import re
import shutil
import subprocess
import sys
import tempfile

BIN, PROJECT = (os.path.abspath(path) for path in sys.argv[1:3])
FAULTS = []
# Keys that no quick run produces. They must occur in the sources; if one of them is written, that is a fault.
RARE = {"run": {"withoutOption"}, "summary": {"quality.wilsonB"}, "calibration": set(), "truth": set(),
        "comparison": set(), "series": set(),
        "merge": {"crystals[].reason", "former", "groups[].known.next", "groups[].otherKinds", "groups[].reason",
                  "groups[].relation", "unfinished"}}


def fault(*words):
    FAULTS.append(" ".join(map(str, words)))


class Doc:
    """The tables and examples of the text."""

    def __init__(self, path):
        self.keys, self.fields, self.keywords, self.names, self.examples, self.files = {}, {}, {}, {}, {}, {}
        with open(path, encoding="utf-8") as file:
            blocks = re.split(r"^<!-- (.+) -->\n", file.read(), flags=re.M)[1:]
        for what, text in zip(blocks[::2], blocks[1::2]):
            kind, _, name = what.partition(": ")
            if kind == "example":
                self.examples[name] = self.indented(text)
                continue
            rows = self.table(text)
            if kind == "keys":
                self.keys[name] = {path: row for row in rows for path in row["words"]}
            elif kind == "names":
                self.names.update({row["words"][0]: re.findall("`(.+?)`", row["Values"]) for row in rows})
            else:
                getattr(self, kind)[name] = rows

    @staticmethod
    def indented(text):
        lines = text.split("\n")
        end = next((n for n, line in enumerate(lines) if line and not line.startswith("    ")), len(lines))
        return "\n".join(line[4:] for line in lines[:end]).rstrip("\n") + "\n"

    @staticmethod
    def table(text):
        lines = [line for line in text.split("\n\n")[0].split("\n") if line.startswith("|")]
        cells = [[cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]] for line in lines]
        rows = [dict(zip(cells[0], row)) for row in cells[2:]]
        for row, line in zip(cells[2:], rows):
            assert len(row) == len(cells[0]), row
            line["words"] = re.findall("`(.+?)`", row[0])
            assert line["words"] or "File" in line, row
        return rows


DOC = Doc(PROJECT + "/docs/formats.md")
MET, MET_NAMES = {name: set() for name in DOC.keys}, {name: set() for name in DOC.names}


def is_number(value):
    return isinstance(value, (int, float)) and not isinstance(value, bool)


SIMPLE = {"string": lambda v: isinstance(v, str), "boolean": lambda v: isinstance(v, bool), "number": is_number,
          "integer": lambda v: is_number(v) and v == int(v), "null": lambda v: v is None,
          "object": lambda v: isinstance(v, dict), "row": lambda v: isinstance(v, list)}


def fits(value, told):
    """Whether a value of JSON has the type given in a table: "6 numbers", "3 × 3 numbers", "number or null"."""
    words = re.fullmatch(r"(?:(\d+) )?(?:× (\d+) )?(pairs of )?(\w+?)(s?)( or (\w+?)s?)?", told)
    assert words, told
    rows, columns, pairs, one, many, _, other = words.groups()
    if not many:
        return SIMPLE[one](value) or bool(other and SIMPLE[other](value))
    if not isinstance(value, list) or (rows and len(value) != int(rows)):
        return False
    if columns or pairs:
        return all(isinstance(row, list) and len(row) == int(columns or 2) and all(map(SIMPLE[one], row))
                   for row in value)
    return all(SIMPLE[one](v) or bool(other and SIMPLE[other](v)) for v in value)


def told_path(name, prefix, key):
    """The path of the table that is meant by a key at a place, or None."""
    if prefix + key in DOC.keys[name]:
        return prefix + key
    for variable, values in DOC.names.items():
        if prefix + variable in DOC.keys[name] and key in values:
            MET_NAMES[variable].add(key)
            return prefix + variable
    return None


def check_keys(name, value, prefix="", stage=None, whole=True):
    """Checks an object of a JSON file: its keys are in the table, with the right type, and none that is always
    present is missing.

    stage: of the summary, the stage whose keys alone may be there. whole: False for an example or an unfinished part.
    """
    table = DOC.keys[name]
    for path, row in table.items():
        of_stage = not prefix and row.get("Stage", "run") != (stage or "run")
        if whole and path.startswith(prefix) and row["Present"] == "always" and not of_stage:
            key = path[len(prefix):]
            if not re.search(r"[.<\[]", key) and key not in value:
                fault(name, "has no", path, "though it is told to be always present")
    for key, part in value.items():
        path = told_path(name, prefix, key)
        if path is None:
            fault(f"{name}: {prefix}{key} is not told in docs/formats.md")
            continue
        row = table[path]
        MET[name].add(path)
        if stage and row["Stage"] != stage:
            fault(f"{name}: {path} is told to be of the stage {row['Stage']}, but stands in that of {stage}")
        if not fits(part, row["Type"]):
            fault(f"{name}: {path} is told to be {row['Type']}, but is {json.dumps(part)[:80]}")
        elif (name, path) == ("run", "stages[].found"):
            check_keys("summary", part, stage=value["name"], whole=whole and "reason" not in value)
        elif (name, path) == ("merge", "groups[].quality"):
            check_keys("summary", part, "quality.", whole=False)
        elif (name, path) == ("run", "former"):
            for former in part:
                check_keys("run", former, whole=whole)
        elif row["Type"] == "object":
            check_keys(name, part, path + ".", stage, whole)
        elif row["Type"] == "objects":
            for member in part:
                check_keys(name, member, path + "[].", stage, whole)


def is_of_type(word, told):
    if told == "number or empty":
        return not word or is_of_type(word, "number")
    pattern = {"integer": r"[-+]?\d+", "number": r"[-+]?\d+(\.\d+)?([eE][-+]?\d+)?", "hexadecimal": "[0-9A-F]{16}"}
    return re.fullmatch(pattern.get(told, r"\S.*"), word) is not None


def check_line(name, line, columns=True):
    """A line of a text file: the fields of the table, of their types, in their columns."""
    fields = DOC.fields[name]
    if columns and fields[0]["Columns"]:
        spans = [tuple(map(int, field["Columns"].split("–"))) for field in fields]
        words = [line[first - 1:last].strip() for first, last in spans]
        between = "".join(line[a[1]:b[0] - 1] for a, b in zip(spans, spans[1:]))
        right = all(line[last - 1:last].strip() for _, last in spans)  # numbers end where their columns do
        in_order = all(a[1] < b[0] for a, b in zip(spans, spans[1:]))
        if len(line) != spans[-1][1] or between.strip() or spans[0][0] != 1 or not (right and in_order):
            fault(f"{name}: the columns that are told do not cover {line!r}")
    else:
        words = line.split()
    if len(words) != len(fields):
        fault(f"{name}: {len(fields)} fields are told, but the line is {line!r}")
    for word, field in zip(words, fields):
        if not is_of_type(word, field["Type"]):
            fault(f"{name}: {field['words'][0]} is told to be {field['Type']}, but is {word!r} in {line!r}")
    return words


def lines_of(text):
    return [line for line in text.lstrip("\ufeff").split("\n") if line and not line.startswith("#")]


def check_project(text, met):
    for line in lines_of(text):
        keyword, *values = line.split()
        row = next((row for row in DOC.keywords["ed3d"] if row["words"][0] == keyword), None)
        if row is None:
            fault("ed3d:", keyword, "is not told")
            continue
        met.add(keyword)
        expected = {"number": ["number"], "word": ["word"], "": [], "name, 3 numbers": ["word"] + ["number"] * 3}
        types = expected[row["Value"]]
        if len(types) != len(values) or not all(map(is_of_type, values, types)):
            fault(f"ed3d: {keyword} is told to have {row['Value']!r}, but stands as {line!r}")


def check_rejected(text):
    header, *rows = csv.reader(text.splitlines())
    fields = DOC.fields["rejected"]
    if header != [field["words"][0] for field in fields]:
        fault("rejected: the titles are", header)
    flags = set(re.findall("`(.+?)`", fields[-1]["Meaning"]))
    for row in rows:
        if len(row) != len(fields) or not all(map(is_of_type, row, (field["Type"] for field in fields))):
            fault("rejected:", row)
        elif row[-1].split("; ")[0] not in flags:
            fault("rejected: the reason is not told:", row[-1])


def check_text(name, text):
    """A whole text file, or an example of one."""
    lines = lines_of(text)
    if not lines:
        fault(name, "is empty")
    if name == "sc":
        check_line("sc first", lines.pop(0))
    if name == "ed3d":
        check_project(text, set())
    elif name == "rejected":
        check_rejected(text)
    else:
        for line in lines:
            check_line(name, line)


def read(path):
    with open(path, encoding="utf-8", newline="") as file:
        text = file.read()
    if "\r" in text or not text.endswith("\n"):
        fault(path, "has other line ends than LF")
    return text


def run(program, *words, status=(0,)):
    answer = subprocess.run([f"{BIN}/{program}", *map(str, words)], text=True, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, errors="replace", env={**os.environ, "LC_ALL": "C.UTF-8"})
    assert answer.returncode in status, (program, words, answer.returncode, answer.stdout[-2000:])
    return answer.stdout


def check_json(name, path):
    text = read(path)
    value = json.loads(text)
    if '\n    "' not in text or (name != "truth" and list(value) != sorted(value)):
        fault(path, "is not indented, or its keys are not in order")
    check_keys(name, value)
    return value


def solve(project, out, *words, status=(0,)):
    """A run of the driver with its summary and its record, both checked."""
    name = os.path.basename(project)[:-5]
    run("tessera-batch", project, "--out", out, "--json", f"{out}/{name}.json", "--jobs", 2, *words, status=status)
    summary, record = check_json("summary", f"{out}/{name}.json"), check_json("run", f"{out}/{name}.run.json")
    return summary, record


def check_truth(path):
    truth = check_json("truth", path)
    for rows, columns in (("spots", "spotColumns"), ("reflections", "reflectionColumns"),
                          ("crossings", "crossingColumns")):
        told = [field["words"][0] for field in DOC.fields[rows]]
        last = ["lattice"] if rows == "spots" and "secondLattice" not in truth else []
        if truth[columns] + last != told:
            fault("truth: the columns of", rows, "are", truth[columns])
        types = [field["Type"] for field in DOC.fields[rows]][:len(truth[columns])]
        if not all(len(row) == len(types) and all(map(fits, row, types)) for row in truth[rows]):
            fault("truth: a row of", rows, "is not as told")
    return truth


def check_geometry_of_chapter(project, base):
    """Places of .ipf, direct beam of .sc and basis of .uc give the indices by the formulas of the chapter."""
    values = {line.split()[0]: line.split()[1:] for line in lines_of(read(project))}
    size, wavelength = float(values["CCDPIXELSIZE"][0]), float(values["WAVELENGTH"][0])
    tilts = [float(line.split()[4]) for line in lines_of(read(project)) if line.startswith("FILE ")]
    # The axis that merging used: the test's project names none.
    axis = math.radians(json.loads(read(base + ".run.json"))["parameters"]["axis"]["value"])
    (x0, y0), *shifts = [list(map(float, line.split())) for line in lines_of(read(base + ".sc"))]
    a, b, c = [list(map(float, line.split()[1:])) for line in lines_of(read(base + ".uc"))]
    cross = lambda p, q: [p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]]
    dot = lambda p, q: sum(i * j for i, j in zip(p, q))
    volume, right, peaks = dot(a, cross(b, c)), 0, lines_of(read(base + ".ipf"))
    for line in peaks:
        frame, h, k, l, d_star, x, y, *_ = map(float, line.split())
        _, dx, dy = shifts[int(frame) - 1]
        u, v, theta = x - x0 - dx, y - y0 - dy, math.radians(tilts[int(frame) - 1])
        px = size * (u * math.cos(axis) - v * math.sin(axis))
        py = size * (u * math.sin(axis) + v * math.cos(axis))
        f = 1 / wavelength / math.sqrt(px**2 + py**2 + 1 / wavelength**2)
        z = (1 - f) / wavelength
        point = [px * f, py * f * math.cos(theta) - z * math.sin(theta),
                 py * f * math.sin(theta) + z * math.cos(theta)]
        index = [dot(point, cross(p, q)) / volume for p, q in ((b, c), (c, a), (a, b))]
        # The direct beam and each shift are rounded to hundredths of a pixel.
        near = abs(math.hypot(*point) - d_star) < 0.02 * size
        right += near and all(abs(i - j) < 0.3 for i, j in zip(index, (h, k, l)))
    if right < 0.97 * len(peaks) or len(peaks) < 100:
        fault(f"by the formulas of the chapter {right} of {len(peaks)} peaks get their indices")


def float_frame(source, target, factor):
    """A frame of 16 bit as one of single precision with small values."""
    with open(source, "rb") as file:
        head, pixels = bytearray(file.read(1024)), array.array("h", file.read())
    head[12:16] = (2).to_bytes(4, "little")
    with open(target, "wb") as file:
        file.write(head + array.array("f", [pixel * factor for pixel in pixels]).tobytes())


def write(path, text):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def check_files(folder, name):
    """All files of a folder of results, and all suffixes of results in the sources, are in the table."""
    words = [word for row in DOC.files["all"] for word in row["words"]]
    with open(PROJECT + "/src/records/resultfile.h", encoding="utf-8") as file:
        files = [name + suffix for suffix in re.findall(r'"([._][\w.]+)"', file.read())]
    assert len(files) > 15, files
    for file in files + os.listdir(folder):
        told = any(fnmatch.fnmatch(file, word.replace("NAME", name)) or (word[0] == "_" and file == name + word)
                   for word in words)
        if not told and file != name + ".json":  # of --json, whose name is free
            fault("the table of all files does not have", file)


def run_plain_series(folder):
    """One crystal, all stages and files, the axis found; then a new integration."""
    run("tessera-simulate", "--crystal", "quartz", "--frames", 41, "--size", 256, "--pixel-size", 0.008,
        "--tilt-start", -20, "--tilt-step", 1, "--hot-pixels", 8, "--out", folder, "--name", "q")
    text, base, keywords = read(folder + "/q.ed3d"), folder + "/out/q", set()
    check_project(text, keywords)
    write(folder + "/q.ed3d", re.sub("ROTATIONAXIS .*", "ROTATIONMODE continuous", text))
    summary, _ = solve(folder + "/q.ed3d", folder + "/out", "--to", "refine", "--sections", "hk0", "--export", "ipf",
                       "--save-calibration", base + ".calib.json", "--formula", "SiO2", "--constant-background",
                       "--known-cell", "4.916,4.916,5.405,90,90,120")
    assert summary["reached"], summary
    check_files(folder + "/out", "q")
    check_json("calibration", base + ".calib.json")
    check_truth(folder + "/q_truth.json")
    for name in ("sc", "pk", "uc", "hkl", "p4p", "ipf"):
        check_text(name, read(f"{base}.{name}"))
    for ending, name in (("_refined.uc", "uc"), ("_refined.sc", "sc"), ("_integrated.hkl", "hklf"),
                         ("_merged.hkl", "hklf"), ("_rejected.csv", "rejected")):
        check_text(name, read(base + ending))
    if not read(base + ".uc").startswith("\ufeff#") or lines_of(read(base + ".uc"))[2][:2] != "c*":
        fault("the cell file does not begin as told")
    check_text("hotpixels", read(folder + "/hotpixels.txt"))
    check_project(read(folder + "/q.ed3d"), keywords)
    check_project(read(base + "_refined.ed3d"), keywords)
    for row in DOC.keywords["ed3d"]:
        if row["words"][0] not in keywords:
            fault("ed3d:", row["words"][0], "is told, but no project has it")
    check_geometry_of_chapter(folder + "/q.ed3d", base)
    write(folder + "/q.comparison", run("tessera-compare", folder + "/q_truth.json", base, "--summary", base + ".json",
                                        "--json", status=(0, 1)))
    check_json("comparison", folder + "/q.comparison")
    _, record = solve(folder + "/q.ed3d", folder + "/out", "--from", "integrate")
    assert record["former"], "nothing is left of the former run"


def run_hard_series(folder):
    """Two crystals of a supercell, a lens, a wrong axis, and the cell of the average structure."""
    run("tessera-simulate", "--crystal", "quartz", "--frames", 41, "--size", 256, "--pixel-size", 0.008,
        "--tilt-start", -20, "--tilt-step", 1, "--second-lattice", 0.6, "--supercell", 2, "--odd-share", 0.01,
        "--ellipse-amp", 1, "--barrel", 1, "--wander", 1, "--told-axis-offset", 1, "--blank-frame", 41, "--out", folder,
        "--name", "h")
    summary, _ = solve(folder + "/h.ed3d", folder, "--accept", "--cell", folder + "/out/q.uc")
    check_truth(folder + "/h_truth.json")
    write(folder + "/h.comparison", run("tessera-compare", folder + "/h_truth.json", folder + "/h", "--summary",
                                        folder + "/h.json", "--json", status=(0, 1)))
    check_json("comparison", folder + "/h.comparison")


def run_choice(folder):
    """A part of the plain series, summed and binned; then another part, so that the former results are of no use."""
    options = ("--frames", "1-40", "--skip", "3", "--bin", 2, "--accept", "--to", "peaks")
    summary, _ = solve(folder + "/q.ed3d", folder + "/part", *options, "--sum", 2, status=(0, 1))
    assert "2 × 2" in summary["choice"], summary
    solve(folder + "/q.ed3d", folder + "/part", *options, status=(0, 1))
    check_json("series", folder + "/part/q.series.json")


def run_merging(folder):
    """The plain series twice, of which one list was changed, and a table of known cells."""
    shutil.copytree(folder + "/out", folder + "/copy")
    with open(folder + "/copy/q_integrated.hkl", "a", encoding="utf-8") as file:
        file.write(" ")
    write(folder + "/known.csv", "quartz,4.9,4.9,5.4,90,90,120,P 32 2 1\n")
    run("tessera-merge", folder + "/out", folder + "/copy", "--out", folder + "/merged", "--known", folder + "/known.csv",
        "--formula", "SiO2", "--formula-units", 3, "--d-min", 1, "--space-group", 154, "--laue", "-3m1")
    record = check_json("merge", folder + "/merged/merged.merge.json")
    assert record["inputs"]["unread"] and record["groups"][0]["known"], record


def run_examples(folder):
    """The project, mask, cell and hot pixels of the text, with frames of small values; then without one frame."""
    for name, file in (("ed3d", "e.ed3d"), ("msk", "e.msk"), ("uc", "e.uc"), ("hotpixels", "hotpixels.txt")):
        write(f"{folder}/{file}", DOC.examples[name])
    for n in (1, 2, 3):
        float_frame(f"{folder}/../q_{n:04d}.mrc", f"{folder}/frame_{n:04d}.mrc", 1e-5)
    options = ("--mask", folder + "/e.msk", "--cell", folder + "/e.uc", "--accept")
    summary, record = solve(folder + "/e.ed3d", folder + "/out", *options, status=(0, 1))
    used = {os.path.basename(file["path"]) for file in record["inputs"]["files"]}
    if not {"e.ed3d", "e.msk", "e.uc", "hotpixels.txt"} <= used:
        fault("of the examples these were read alone:", used)
    if record["parameters"]["rotation"]["value"] != "stepped":
        fault("the line ROTATIONMODE of the example was not read")
    if summary["fitShare"] < 0.5 or summary["frameScale"] != 1e5:
        fault("the peaks of the examples do not lie on their cell")
    write(folder + "/two.ed3d", re.sub("FILE frame_0003.*\n", "", DOC.examples["ed3d"]))
    solve(folder + "/two.ed3d", folder + "/out", *options, status=(0, 1))
    os.truncate(folder + "/frame_0002.mrc", 2000)
    summary, _ = solve(folder + "/e.ed3d", folder + "/cut", *options, status=(1,))
    assert summary["failed"] == "shifts" and not summary["reached"], summary
    os.remove(folder + "/frame_0002.mrc")
    summary, _ = solve(folder + "/e.ed3d", folder + "/none", *options, status=(1,))
    assert summary["failed"] == "open" and not summary["reached"], summary


def check_examples():
    for name, text in DOC.examples.items():
        if name in DOC.keys:
            check_keys(name, json.loads(text), whole=False)
        else:
            check_text(name, text)
    for name in list(DOC.keys) + list(DOC.fields):
        if name not in DOC.examples and name.split()[0] not in (*DOC.examples, "comparison", "peaks3d", "side",
                                                                "spots", "reflections", "crossings"):
            fault(name, "has no example")


def check_that_all_was_met():
    sources = ""
    for path, _, files in os.walk(PROJECT + "/src"):
        for file in files:
            if file.endswith((".cpp", ".h")):
                with open(os.path.join(path, file), encoding="utf-8") as source:
                    sources += source.read()
    for name, rare in RARE.items():
        for path in sorted(set(DOC.keys[name]) - MET[name] - rare):
            fault(f"{name}: {path} is told, but nothing has it")
        for path in sorted(rare):
            if path in MET[name] or path not in DOC.keys[name] or f'"{path.split(".")[-1]}"' not in sources:
                fault(f"{name}: {path} is no rare key")
    for variable, values in DOC.names.items():
        for value in set(values) - MET_NAMES[variable]:
            if f'"{value}"' not in sources:
                fault(f"{variable}: {value} is told, but nothing has it")


with tempfile.TemporaryDirectory() as scratch:
    os.mkdir(scratch + "/examples")
    check_examples()
    for met in MET.values():
        met.clear()
    run_plain_series(scratch)
    run_choice(scratch)
    run_merging(scratch)
    run_hard_series(scratch)
    run_examples(scratch + "/examples")
    check_that_all_was_met()
print("\n".join(dict.fromkeys(FAULTS)) or "all tables of docs/formats.md are as the files")
sys.exit(1 if FAULTS else 0)
