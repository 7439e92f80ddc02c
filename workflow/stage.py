"""One stage of a series, as a job of the workflow: tessera-batch, and a summary that marks it as done.

stage.py STAGE FRAMES SUMMARY THREADS ATTEMPT --batch=PROGRAM --options=... --images=... --retries=N

FRAMES is the folder of a series, or holds its project; the results go to the folder of SUMMARY. That file, the mark
of the stage, is written last and whole, with what the stages before have found: a job that was interrupted leaves
none, and the next one begins with the files that the former stages have left. What is the user's in that folder stays
as it is; see stagerecord.py.

Exit status: 0 done, also where the data are bad, which the summary tells; 75 not for the data's sake (killed, no
memory, no room on the disk), so that another try makes sense; 1 where the folder is not fit for it; else that of
tessera-batch.
"""
import argparse
import errno
import os
import re
import shlex
import shutil
import socket
import subprocess
import sys
import time

from seriesfolder import HOT_PIXELS, frame_files, identity, project_of
from stagerecord import LOGS, MARKS, STAGES, Record, read_summary, remove, write_whole

# Stages of tessera-batch for each stage of the workflow.
STAGES_OF_BATCH = {
    "peaks": ["--to=peaks"],
    "cell": ["--from=merge", "--to=index"],
    "intensities": ["--from=geometry"],
}
# Words of the reasons for which a series fails, but not by its data, in small letters.
OF_THE_MACHINE = ("memory", "cannot be had", "bad_alloc", "no space left", "disk quota", "input/output error",
                  "stale file handle", "stale nfs file handle", "too many open files",
                  "resource temporarily unavailable", "remote i/o error", "transport endpoint", "connection timed out", "read-only file system")
ERRORS_OF_THE_MACHINE = (errno.ENOMEM, errno.ENOSPC, errno.EDQUOT, errno.EIO, errno.ESTALE, errno.EMFILE, errno.ENFILE,
                         errno.EAGAIN, errno.EREMOTEIO, errno.ENOTCONN, errno.ETIMEDOUT, errno.EROFS)
TRY_AGAIN = 75
# The status 128 + N of a shell means that the program was ended by signal N.
SIGNAL_TOLD_BY_SHELL = 128


class Unfit(Exception):
    """Why a stage cannot be begun or ended; no fault of the data."""


def together(former, new):
    """The results of all stages so far; of values that occur twice, the later one is used."""
    whole = {**former, **new}
    for key in ("judgement", "seconds"):
        whole[key] = {**former.get(key, {}), **new.get(key, {})}
    whole["warnings"] = former.get("warnings", []) + new.get("warnings", [])
    verdicts = [part["verdict"] for part in whole["judgement"].values() if isinstance(part, dict)]
    worst = [verdict for verdict in ("bad", "doubtful", "good") if verdict in verdicts]
    if worst:
        whole["judgement"]["overall"] = worst[0]
    return whole


def names_of_projects(frames):
    """A test whether a run on this folder may take a name for its project.

    Of a project in the folder it is the project's. Without one tessera-batch makes it from what the names of the frames
    have in common, or the folder's, with the size of the frames and a word behind it that keeps it apart from others.
    """
    try:
        given = project_of(frames)
        files = [os.path.basename(name) for name in frame_files(frames)]
    except OSError:  # the run will tell what is wrong with the folder
        given, files = None, []

    def is_project(name):
        if given:
            return name == os.path.splitext(os.path.basename(given))[0]
        name = re.sub(r"(_\d+x\d+)?(_frames\d*)?$", "", name)
        return name != "" and (name == os.path.basename(frames) or any(file.startswith(name) for file in files))

    return is_project


def made_project(record):
    """The project that a stage has made in the folder of the results, if one did."""
    names = [name for name in sorted(record.made) if name.endswith(".ed3d") and not name.endswith("_refined.ed3d")]
    found = [record.path(name) for name in names if os.path.exists(record.path(name))]
    return found[0] if found else None


def gather_logs(record, stage, before):
    """Moves the logs that a run has written to the end of the stage's."""
    with open(record.path(LOGS[stage]), "a", encoding="utf-8") as whole:
        for name in record.written(before):
            if name.endswith(".log") and name not in LOGS.values():
                with open(record.path(name), encoding="utf-8", errors="replace") as file:
                    whole.write(file.read())
                remove(record.path(name))


def run(program, arguments, record, stage):
    """tessera-batch once; its log becomes that of the stage.

    The summary goes to a file that has the name of this run and is not there before, so that none of another run is
    taken for it. -> exit status, below 0 for a signal; summary
    """
    before = record.files()
    summary = record.path(f".stage-{record.running['run']}.json")
    remove(summary)
    try:
        status = subprocess.run([*shlex.split(program), *arguments, "--out", record.folder, "--json", summary],
                                stdout=subprocess.DEVNULL, check=False).returncode
    except (FileNotFoundError, PermissionError, IndexError) as error:
        raise Unfit(f"{program!r} cannot be run: {error}") from error
    found = read_summary(summary)
    remove(summary)
    gather_logs(record, stage, before)
    record.take(stage, before)
    return (SIGNAL_TOLD_BY_SHELL - status if status > SIGNAL_TOLD_BY_SHELL else status), found


def arguments_of(stage, frames, record, options, images):
    """The input of each run of a stage, None for the project that was made, and the options that suit it."""
    given = project_of(frames)
    stages = STAGES_OF_BATCH[stage]
    if given:
        return [[given, *stages, *options]]
    if stage == "peaks":
        # Hot pixels are read and listed beside the project: one is made first, and the peaks are searched with it.
        listed, own = os.path.join(frames, HOT_PIXELS), record.path(HOT_PIXELS)
        if os.path.exists(listed) and not os.path.lexists(own):
            shutil.copyfile(listed, own)
        return [[frames, "--to=shifts", *options, *images], [None, "--from=peaks", "--to=peaks", *options]]
    if stage == "cell" or not made_project(record):
        return [[frames, *stages, *options, *images]]  # writes the project anew, with the axis that it finds
    return [[None, *stages, *options]]


def do(stage, arguments, record):
    """All runs of a stage, up to the first that fails. -> exit status, what they have found"""
    options, images = shlex.split(arguments.options), shlex.split(arguments.images)
    whole, status = {}, 0
    for one in arguments_of(stage, arguments.frames, record, options, images):
        one[0] = one[0] or made_project(record)
        if not one[0]:
            raise Unfit("tessera-batch has made no project from the frames")
        status, found = run(arguments.batch, [*one, f"--jobs={arguments.threads}"], record, stage)
        whole = together(whole, judged(stage, status, found))
        if status != 0:
            break
    return status, whole


def judged(stage, status, found):
    """The summary of a run, with the reason of its end if the run could not write it."""
    told = isinstance(found.get("stage"), str) and isinstance(found.get("reached"), bool)
    unfinished = not told or found.get("failed") == "unfinished"
    if status < 0:
        reason = f"tessera-batch was ended by signal {-status}"
    elif status in (0, 1) and unfinished:
        reason = f"tessera-batch ended with status {status} and left no summary"
    else:
        return found
    return {**({} if unfinished else found), "reached": False, "failed": stage, "reason": reason}


def is_of_the_machine(status, found):
    """Whether a run failed for other reasons than its data, so that it may go well the next time."""
    reason = str(found.get("reason", ""))
    return status < 0 or reason.endswith("left no summary") or any(words in reason.lower() for words in OF_THE_MACHINE)


def former_summary(stage, frames, record):
    """What the stage before has left, if that was for the same frames as they are now."""
    if stage == STAGES[0]:
        return {}
    before = STAGES[STAGES.index(stage) - 1]
    former = read_summary(record.path(MARKS[before]))
    if not isinstance(former.get("workflow"), str):
        raise Unfit(f"{MARKS[before]} is missing, or not of this workflow; the same command again begins the series anew")
    if former.get("madeFrom", {}).get("frames", frames) != frames:
        for one in STAGES:
            if record.has_mark(one):
                remove(record.path(MARKS[one]))
        raise Unfit(f"the frames have changed since the stage {before}; the same command again begins with them")
    return former


def finish(stage, arguments, record, former, made_from):
    """Does the stage, unless the series has ended before. -> its summary, all stages before it included"""
    if former and former["workflow"] != "go on":
        return former
    status, found = do(stage, arguments, record)
    if is_of_the_machine(status, found):
        print(f"{record.folder}: {found['reason']}", file=sys.stderr)
        if arguments.attempt <= arguments.retries:
            sys.exit(TRY_AGAIN)
    elif status not in (0, 1):
        sys.exit(status)
    whole = together(former, found)
    whole.setdefault("stage", "none")
    whole["madeFrom"] = made_from
    whole["workflow"] = "go on" if status == 0 and found["reached"] and stage != STAGES[-1] else "ended"
    return whole


def parsed():
    """The command line; its options are those of the workflow's configuration."""
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


def work(arguments):
    """The stage from its beginning to its mark."""
    stage, folder = arguments.stage, os.path.dirname(arguments.summary)
    os.makedirs(folder, exist_ok=True)
    record = Record(folder, names_of_projects(arguments.frames))
    record.take_interrupted()
    in_the_way = record.in_the_way()
    if in_the_way:
        more = f" and {len(in_the_way) - 1} more" if len(in_the_way) > 1 else ""
        raise Unfit(f"{in_the_way[0]}{more} would be written over, but this workflow has not made it, or it was "
                    f"changed since; take it away, or give another folder of results")
    frames = identity(arguments.frames) if os.path.isdir(arguments.frames) else ""
    former = former_summary(stage, frames, record)
    record.take_away(stage)
    name = f"{socket.gethostname()}-{os.getpid()}-{time.time_ns()}"
    record.begin(stage, name)
    made_from = {"frames": frames,
                 "options": {**former.get("madeFrom", {}).get("options", {}),
                             stage: f"{arguments.options} {arguments.images}".strip()}}
    whole = finish(stage, arguments, record, former, made_from)
    if not record.is_running(name):
        raise Unfit(f"another job has begun the stage {stage} since")
    write_whole(arguments.summary, whole)
    record.end()


def main():
    arguments = parsed()
    try:
        work(arguments)
    except Unfit as error:
        sys.exit(f"{os.path.dirname(arguments.summary)}: {error}")
    except OSError as error:
        print(f"{os.path.dirname(arguments.summary)}: {error}", file=sys.stderr)
        sys.exit(TRY_AGAIN if error.errno in ERRORS_OF_THE_MACHINE else 1)


if __name__ == "__main__":
    main()
