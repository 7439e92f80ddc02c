"""The workflow on one core: a machine that goes down in mid-run, a program that is killed, and a series that is broken.

resumption.py FOLDER_OF_PROGRAMS    exit status 77 where snakemake or tessera-merge is missing
"""
import collections
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

BIN = os.path.abspath(sys.argv[1])
WORKFLOW = pathlib.Path(__file__).resolve().parents[2] / "workflow"
# Stands for tessera-batch. Notes each call; the first time that it has found the cell of "first", it takes the stage and
# all of snakemake down, and the first time that it is asked for intensities of "second", it dies by itself.
COUNTED = """#!/bin/sh
case "$*" in
*--summary*) exec {bin}/tessera-batch "$@" ;;
*results/first*--to=index* | *--to=index*results/first*) stage=cell series=first ;;
*results/second*--from=geometry* | *--from=geometry*results/second*) stage=intensities series=second ;;
*) stage=other series=other ;;
esac
echo "$*" >> calls.txt
if [ $stage = intensities ] && [ ! -e killed ]; then touch killed; kill -9 $$; fi
{bin}/tessera-batch "$@"
status=$?
if [ $stage = cell ] && [ ! -e down ]; then touch down; kill -9 "$(cat pid)" $PPID; fi
exit $status
"""


def snakemake(*arguments):
    with open("log.txt", "ab") as log:
        process = subprocess.Popen(
            ["snakemake", "--snakefile", WORKFLOW / "Snakefile", "--profile", WORKFLOW / "profiles/local", "--cores", "1",
             *arguments, "--config", "batch=./counted", f"merge={BIN}/tessera-merge", "retries=1"],
            stdout=log, stderr=log)
        pathlib.Path("pid").write_text(str(process.pid))
        return process.wait()


def calls():
    """How often each stage of each series was called."""
    count = collections.Counter()
    for line in pathlib.Path("calls.txt").read_text().splitlines():
        words = line.split()
        stages = " ".join(word for word in words if word.startswith(("--from", "--to")))
        count[os.path.basename(words[words.index("--out") + 1]), stages] += 1
    return count


def simulate():
    subprocess.run([f"{BIN}/tessera-simulate", "--crystal", "quartz", "--frames", "31", "--size", "192", "--pixel-size", "0.011",
                    "--tilt-start", "-15", "--tilt-step", "1", "--beam-x", "96", "--beam-y", "95", "--out", "frames/first",
                    "--name", "quartz"], check=True, stdout=subprocess.DEVNULL)
    for name in ("broken", "second"):
        shutil.copytree("frames/first", f"frames/{name}")
    for frame in sorted(pathlib.Path("frames/broken").glob("*.mrc"))[::2]:
        os.truncate(frame, 20000)


def check(holds, words):
    if not holds:
        print("FAILED:", words)
        print(pathlib.Path("log.txt").read_text()[-3000:])
        sys.exit(1)


def main():
    pathlib.Path("counted").write_text(COUNTED.format(bin=BIN))
    os.chmod("counted", 0o755)
    simulate()
    check(snakemake() == -9, "the machine should have gone down")
    check(not os.path.exists("results/first/cell.json"), "a stage counts as done that was interrupted")
    check(snakemake("--unlock") == 0, "the lock of the run that was killed stays")
    check(snakemake() == 0, "the second run should go through")

    twice = {key for key, number in calls().items() if number == 2}
    check(twice == {("first", "--from=merge --to=index"), ("second", "--from=geometry")}, f"called twice: {twice}")
    check(set(calls().values()) == {1, 2}, "called more often than twice")
    check(("broken", "--from=merge --to=index") not in calls(), "the broken series should have gone no further")

    table = pathlib.Path("results/summary.txt").read_text().splitlines()
    check(table[1].split()[:2] == ["broken", "FAILED"] and "truncated" in table[1], f"table of all series: {table}")
    check(table[-1].startswith("3 series: 2 ok"), f"table of all series: {table}")
    check(list(pathlib.Path("merged").glob("*_merged.hkl")), "nothing was merged")
    # Both have the same frames, and were interrupted at other places.
    for name in os.listdir("results/first"):
        if not name.endswith((".json", ".log", ".ed3d")):  # they tell paths and times
            check(pathlib.Path("results/first", name).read_bytes() == pathlib.Path("results/second", name).read_bytes(),
                  f"{name} of the interrupted series differs")

    before = sum(calls().values())
    check(snakemake() == 0 and sum(calls().values()) == before, "a third run should find nothing to do")
    # Frames that come or go make a series new, and no other.
    os.remove("frames/second/quartz_0031.mrc")
    project = pathlib.Path("frames/second/quartz.ed3d")
    project.write_text("".join(line for line in project.read_text().splitlines(True) if "_0031" not in line))
    check(snakemake() == 0 and sum(calls().values()) == before + 3, "the changed series should be done anew, alone")


if not shutil.which("snakemake") or not os.path.exists(f"{BIN}/tessera-merge"):
    print("snakemake or tessera-merge is missing")
    sys.exit(77)
with tempfile.TemporaryDirectory() as place:
    os.chdir(place)
    main()
    os.chdir("/")
