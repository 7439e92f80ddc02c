#!/usr/bin/python3
"""Runs clang-tidy over many sources at a time: most of its work goes into the headers of Qt, which sources share.

lintunits.py BUILD SOURCE...    BUILD has compile_commands.json; exit status 1 if there are findings

Sources with the same flags and without common names in their unnamed namespaces are read as one. The path-sensitive
analyzer looks at nothing but main files and is left out here; "scripts/lint FILE..." has it. Where sources cannot be read
together after all, each is looked at alone.
"""
import collections
import json
import multiprocessing.pool
import os
import re
import shlex
import subprocess
import sys

MOST_SOURCES = 12  # a unit: more save little and want much memory
NAME = re.compile(r"^(?:[\w:<>,&* ]+?[ &*](\w+)\(|(?:struct|class|enum|enum class) (\w+)|using (\w+) =|#define (\w+)|"
                  r"(?:const|constexpr|thread_local|std::|Q)[\w:<>,&* ]*?[ &*](\w+)(?:\[| =|;|\{))", re.MULTILINE)


def own_names(source):
    """The names that a source keeps to itself."""
    with open(source, encoding="utf-8") as file:
        text = file.read()
    names = set(re.findall(r"^#define (\w+)", text, re.MULTILINE))
    for body in re.findall(r"^namespace \{\n(.*?)^\}  // namespace\n", text, re.MULTILINE | re.DOTALL):
        names.update(name for found in NAME.findall(body) for name in found if name)
    return names


def flags_of(entry):
    """The flags of a source's command, without compiler, source, output and precompiled headers."""
    words = shlex.split(entry["command"])
    start = next(n for n, word in enumerate(words) if word.startswith("-"))
    flags, skip = [], False
    for n, word in enumerate(words[start:], start):
        if skip:
            skip = False
        elif word in ("-o", "-c"):
            skip = True
        elif word == "-include" and "cmake_pch" in words[n + 1]:
            skip = True
        # What shadows a name of its own source the compiler tells; of another's source does no harm.
        elif word not in ("-Winvalid-pch", "-Wshadow"):
            flags.append(word)
    return tuple(flags)


def units(build, sources):
    """Lists of sources that can be read together, each with the flags."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = {os.path.realpath(os.path.join(e["directory"], e["file"])): e for e in json.load(file)}
    made = collections.defaultdict(list)
    for source in sources:
        entry = entries.get(os.path.realpath(source))
        if not entry:
            continue
        names = own_names(source)
        # Another folder is another set of headers.
        key = (flags_of(entry), os.path.dirname(source))
        for unit in made[key]:
            if len(unit["sources"]) < MOST_SOURCES and not unit["names"] & names:
                break
        else:
            unit = {"sources": [], "names": set(), "flags": key[0]}
            made[key].append(unit)
        unit["sources"].append(os.path.realpath(source))
        unit["names"] |= names
    return [unit for listed in made.values() for unit in listed]


def tidy(main, flags, included, checks):
    command = ["clang-tidy", "--quiet", *checks, main, "--", *flags]
    for source in included:
        command += ["-include", source]
    done = subprocess.run(command, capture_output=True, text=True)
    return done.returncode, done.stdout + "".join(
        line for line in done.stderr.splitlines(True) if " warnings generated" not in line)


def main():
    build, *sources = sys.argv[1:]
    folder = os.path.join(build, "lint")
    os.makedirs(folder, exist_ok=True)
    empty = os.path.join(os.path.realpath(folder), "empty.cpp")
    with open(empty, "w", encoding="utf-8"):
        pass
    config = "--config-file=" + os.path.realpath(".clang-tidy")

    def look(unit):
        checks = [config, "--checks=-clang-analyzer-*,-bugprone-suspicious-include", r"--header-filter=/(src|tools|bench|tests)/.*\.(h|cpp)$"]
        status, text = tidy(empty, unit["flags"], unit["sources"], checks)
        if "clang-diagnostic-error" in text and len(unit["sources"]) > 1:
            alone = [tidy(source, unit["flags"], [], checks) for source in unit["sources"]]
            return max(status for status, _ in alone), "".join(text for _, text in alone), len(alone)
        return status, text, 1

    faults, runs = 0, 0
    with multiprocessing.pool.ThreadPool(int(os.environ.get("JOBS", os.cpu_count()))) as pool:
        for status, text, count in pool.imap_unordered(look, units(build, sources)):
            faults += status != 0
            runs += count
            if status:
                print(text, flush=True)
    print(f"clang-tidy: {len(sources)} sources in {runs} runs, {faults} with findings")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
