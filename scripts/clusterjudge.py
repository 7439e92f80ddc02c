"""Judges the runs of scripts/cluster-test: all done, nothing twice, the same bytes everywhere, the broken series told.

clusterjudge.py FOLDER BROKEN KILLED...    exit status 0 if all of that holds
"""
import collections
import hashlib
import json
import os
import re
import sys

RUNS = ("one", "slurm1", "slurm2", "killed")
# Values that depend on the run itself: times and paths.
OF_THE_RUN = (".log", ".run.json", ".merge.json", ".html", ".workflow.json")
SUMMARIES = ("peaks.json", "cell.json", "summary.json")


def calls(folder):
    """How often each stage of each series began, and how often it ended."""
    begun, ended = collections.Counter(), collections.Counter()
    with open(os.path.join(folder, "calls.txt"), encoding="utf-8") as file:
        for line in file:
            _, what, series, stages = line.split()[:4]
            (begun if what == "begins" else ended)[series, stages] += 1
    return begun, ended


def content(name, folder):
    """The bytes of a result, with paths relative to the folder of its run; a summary without its times."""
    with open(name, "rb") as file:
        data = file.read().replace(os.fsencode(folder), b"")
    if os.path.basename(name) in SUMMARIES:
        table = json.loads(data)
        table.pop("seconds", None)
        data = re.sub(rb"\d\d:\d\d:\d\d>", b"", json.dumps(table, sort_keys=True).encode())
    return data


def results(folder):
    """SHA-256 of each result by its name."""
    found = {}
    for part in ("results", "merged"):
        for place, _, files in os.walk(os.path.join(folder, part)):
            for file in files:
                name = os.path.join(place, file)
                if not file.endswith(OF_THE_RUN):
                    found[os.path.relpath(name, folder)] = hashlib.sha256(content(name, folder)).hexdigest()
    return found


def main():
    folder, broken, *killed = sys.argv[1:]
    all_series = sorted(os.listdir(os.path.join(folder, "frames")))
    faults = []
    expected = results(os.path.join(folder, RUNS[0]))
    for run in RUNS:
        place = os.path.join(folder, run)
        begun, ended = calls(place)
        twice = {key: number for key, number in ended.items() if number != 1}
        again = {key: number for key, number in begun.items() if number != 1}
        print(f"{run:8s}{sum(ended.values()):5d} stages done, {len(twice)} of them twice; begun again:",
              ", ".join(f"{series} ({stages})" for series, stages in again) or "none")
        if twice:
            faults.append(f"{run}: done twice: {twice}")
        if {series for series, _ in again} != (set(killed) if run == "killed" else set()):
            faults.append(f"{run}: begun again: {again}")
        left = [series for series in all_series
                if not os.path.exists(os.path.join(place, "results", series, "summary.json"))]
        if left:
            faults.append(f"{run}: not done: {left}")
        found = results(place)
        other = sorted(name for name in set(found) | set(expected) if found.get(name) != expected.get(name))
        print(f"{'':8s}{len(found):5d} files, {len(found) - len(other)} with the bytes of one core")
        if other:
            faults.append(f"{run}: other than on one core: {other[:10]}")
        with open(os.path.join(place, "results", "summary.txt"), encoding="utf-8") as file:
            failed = [line.split()[0] for line in file if " FAILED " in line]
        if failed != [broken]:
            faults.append(f"{run}: told as failed: {failed}, is {broken}")
        if not any(name.startswith("merged" + os.sep) and name.endswith(".hkl") for name in found):
            faults.append(f"{run}: nothing merged")
    print("\n".join(faults) or "All done, nothing twice, the same bytes, the broken series told.")
    sys.exit(1 if faults else 0)


main()
