#!/usr/bin/python3
"""Runs clang-tidy over many sources at a time: most of its work goes into the headers of Qt, which sources share.

lintunits.py [--alone] BUILD SOURCE...    BUILD has compile_commands.json; exit status 1 if there are findings

Sources with the same flags that sourceunits.py puts together are read as one. The path-sensitive analyzer
looks at nothing but main files and is left out so; with --alone each is read by itself, with the analyzer. Where sources
cannot be read together after all, each is looked at alone.
"""
import collections
import json
import multiprocessing.pool
import os
import re
import shlex
import subprocess
import sys

import sourceunits

def flags_of(entry):
    """The flags of a source's command, without compiler, source and output."""
    words = shlex.split(entry["command"])
    start = next(n for n, word in enumerate(words) if word.startswith("-"))
    flags, skip = [], False
    for word in words[start:]:
        if skip:
            skip = False
        elif word in ("-o", "-c"):
            skip = True
        # The compiler reports a name that shadows one of the same source; one of another source does no harm.
        elif word not in ("-Wshadow", "-Wno-subobject-linkage"):
            flags.append(word)
    return tuple(flags)


def entries_of(build):
    """The entries of a build by source; sources that the compiler reads joined have that of the unit."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        listed = json.load(file)
    entries = {}
    for entry in listed:
        path = os.path.realpath(os.path.join(entry["directory"], entry["file"]))
        entries[path] = entry
        if "/Unity/" in path:
            with open(path, encoding="utf-8") as file:
                entries.update((os.path.realpath(name), entry) for name in re.findall('#include "(.*)"', file.read()))
    return entries


def units(entries, sources):
    """What can be read together: sources and their flags."""
    alike = collections.defaultdict(list)
    for source in sources:
        alike[flags_of(entries[source])].append(source)
    return [{"sources": unit, "flags": flags} for flags, listed in alike.items()
            for unit in sourceunits.units(listed)]


def tidy(main, flags, included, checks):
    command = ["clang-tidy", "--quiet", *checks, main, "--", *flags]
    for source in included:
        command += ["-include", source]
    done = subprocess.run(command, capture_output=True, text=True)
    return done.returncode, done.stdout + "".join(
        line for line in done.stderr.splitlines(True) if " warnings generated" not in line)


def main():
    together = "--alone" not in sys.argv
    build, *sources = (word for word in sys.argv[1:] if word != "--alone")
    entries = entries_of(build)
    sources = [path for path in map(os.path.realpath, sources) if path in entries]

    def look_together(unit):
        checks = ["--checks=-clang-analyzer-*,-bugprone-suspicious-include",
                  r"--header-filter=/(src|tools|bench|tests)/.*\.(h|cpp)$"]
        *included, main_file = unit["sources"]
        status, text = tidy(main_file, unit["flags"], included, checks)
        if "clang-diagnostic-error" in text and included:
            alone = [tidy(source, unit["flags"], [], checks) for source in unit["sources"]]
            return max(status for status, _ in alone), "".join(text for _, text in alone), len(alone)
        return status, text, 1

    def look(source):
        return *tidy(source, flags_of(entries[source]), [], []), 1

    faults, runs = 0, 0
    with multiprocessing.pool.ThreadPool(int(os.environ.get("JOBS", os.cpu_count()))) as pool:
        results = (pool.imap_unordered(look_together, units(entries, sources)) if together
                   else pool.imap_unordered(look, sources))
        for status, text, count in results:
            faults += status != 0
            runs += count
            if status:
                print(text, flush=True)
    print(f"clang-tidy: {len(sources)} sources in {runs} runs, {faults} with findings")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
