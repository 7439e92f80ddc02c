"""One stage of a series, as a job of the workflow: tessera-batch, and a summary that tells that it is done.

stage.py STAGE FRAMES SUMMARY THREADS ATTEMPT --batch=PROGRAM --options=... --images=... --retries=N

FRAMES is the folder of a series, or holds its project; the results go to the folder of SUMMARY. That file is
written last and whole, with what the stages before have found: a job that was interrupted leaves none, and the
next one begins with the files that the former stages have left.

Exit status: 0 done, also where the data are bad, which the summary tells; 75 not for the data's sake (killed, no
memory, no room on the disk), so that another try makes sense; else that of tessera-batch.
"""
import argparse
import glob
import json
import os
import shlex
import shutil
import subprocess
import sys

STAGES = {
    # name: (its summary, stages of tessera-batch, ends of the names of the files that it writes)
    "peaks": ("peaks.json", ["--to=peaks"], [".ed3d", ".sc", ".pk", ".run.json"]),
    "cell": ("cell.json", ["--from=merge", "--to=index"], [".uc", ".hkl", ".p4p", ".ipf"]),
    "intensities": ("summary.json", ["--from=geometry"],
                    ["_refined.ed3d", "_refined.uc", "_refined.sc", "_integrated.hkl", "_merged.hkl",
                     "_rejected.csv"]),
}
HOT_PIXELS = "hotpixels.txt"
# Words of the reasons for which a series fails, but not by its data.
OF_THE_MACHINE = ["memory", "cannot be had", "No space left", "Disk quota", "Input/output error", "Stale file handle",
                  "Too many open files"]
TRY_AGAIN = 75


def read_summary(name):
    try:
        with open(name, encoding="utf-8") as file:
            value = json.load(file)
    except (OSError, ValueError):
        return {}
    return value if isinstance(value, dict) else {}


def files_of(folder, pattern):
    return sorted(glob.glob(os.path.join(glob.escape(folder), pattern)))


def project_in(folder):
    """The project of a folder, if it has one; of several the first."""
    found = [name for name in files_of(folder, "*.ed3d") if not name.endswith("_refined.ed3d")]
    return found[0] if found else None


def tidy_up(folder, stage):
    """Takes away what former runs of this stage, and of those after it, have left.

    Nothing of that shall be taken for a result of this one if it fails. Files of structure solution may be the
    user's: with them tessera-batch knows what to do.
    """
    names = list(STAGES)[list(STAGES).index(stage):]
    bases = [name[:-len(".run.json")] for name in files_of(folder, "*.run.json")]
    old = [base + end for base in bases for name in names for end in STAGES[name][2]]
    old += [os.path.join(folder, file) for name in names for file in (STAGES[name][0], name + ".log")]
    if stage == "peaks":
        old.append(os.path.join(folder, HOT_PIXELS))
    for name in old:
        if os.path.lexists(name):
            os.remove(name)


def together(former, new):
    """What all stages so far have found; what is told twice counts as the later one has it."""
    whole = {**former, **new}
    for key in ("judgement", "seconds"):
        whole[key] = {**former.get(key, {}), **new.get(key, {})}
    whole["warnings"] = former.get("warnings", []) + new.get("warnings", [])
    verdicts = [part["verdict"] for part in whole["judgement"].values() if isinstance(part, dict)]
    worst = [verdict for verdict in ("bad", "doubtful", "good") if verdict in verdicts]
    if worst:
        whole["judgement"]["overall"] = worst[0]
    return whole


def run(program, arguments, folder, log):
    """tessera-batch once; its log becomes that of the stage. -> exit status, summary"""
    part = os.path.join(folder, ".stage.json")
    status = subprocess.run([*shlex.split(program), *arguments, "--out", folder, "--json", part],
                            stdout=subprocess.DEVNULL, check=False).returncode
    summary = read_summary(part)
    with open(os.path.join(folder, log), "a", encoding="utf-8") as whole:
        for name in files_of(folder, "*.log"):
            if os.path.basename(name)[:-len(".log")] not in STAGES:
                with open(name, encoding="utf-8", errors="replace") as file:
                    whole.write(file.read())
                os.remove(name)
    return status, summary


def arguments_of(stage, frames, folder, options, images):
    """The input of each run of a stage and the options that suit it."""
    given = project_in(frames)
    stages = STAGES[stage][1]
    if given:
        return [[given, *stages, *options]]
    made = project_in(folder)
    if stage == "peaks":
        # Hot pixels are read and listed beside the project: one is made first, and the peaks are searched with it.
        listed = os.path.join(frames, HOT_PIXELS)
        if os.path.exists(listed):
            shutil.copyfile(listed, os.path.join(folder, HOT_PIXELS))
        return [[frames, "--to=shifts", *options, *images], [None, "--from=peaks", "--to=peaks", *options]]
    if stage == "cell" or not made:
        return [[frames, *stages, *options, *images]]  # writes the project anew, with the axis that it finds
    return [[made, *stages, *options]]


def do(stage, arguments):
    folder = os.path.dirname(arguments.summary)
    options, images = shlex.split(arguments.options), shlex.split(arguments.images)
    runs = arguments_of(stage, arguments.frames, folder, options, images)
    whole = {}
    status = 0
    for one in runs:
        one[0] = one[0] or project_in(folder)
        status, found = run(arguments.batch, [*one, f"--jobs={arguments.threads}"], folder, f"{stage}.log")
        whole = together(whole, found)
        if status != 0:
            break
    return status, whole


def parsed():
    parser = argparse.ArgumentParser()
    parser.add_argument("stage", choices=STAGES)
    for name in ("frames", "summary"):
        parser.add_argument(name)
    for name in ("threads", "attempt"):
        parser.add_argument(name, type=int)
    for name in ("batch", "options", "images"):
        parser.add_argument(f"--{name}", default="")
    parser.add_argument("--retries", type=int, default=0)
    return parser.parse_args()


def main():
    arguments = parsed()
    stage, folder = arguments.stage, os.path.dirname(arguments.summary)
    os.makedirs(folder, exist_ok=True)
    before = list(STAGES).index(stage) - 1
    former = read_summary(os.path.join(folder, STAGES[list(STAGES)[before]][0])) if before >= 0 else {}
    tidy_up(folder, stage)
    part = os.path.join(folder, ".stage.json")
    if before >= 0 and former.get("workflow") != "go on":
        whole = former
    else:
        former.pop("workflow", None)
        status, found = do(stage, arguments)
        last = arguments.attempt > arguments.retries
        reason = str(found.get("reason", ""))
        if status < 0:
            reason = f"tessera-batch was ended by signal {-status}"
            found.update(reached=False, failed=found.get("stage", "open"), reason=reason)
        if status < 0 or any(words in reason for words in OF_THE_MACHINE):
            print(f"{folder}: {reason}", file=sys.stderr)
            if not last:
                sys.exit(TRY_AGAIN)
        elif status not in (0, 1):
            sys.exit(status)
        whole = together(former, found)
        whole["workflow"] = "go on" if status == 0 and stage != "intensities" else "ended"
    with open(part, "w", encoding="utf-8") as file:
        json.dump(whole, file, ensure_ascii=False, indent=1, sort_keys=True)
        file.flush()
        os.fsync(file.fileno())
    os.replace(part, arguments.summary)


main()
