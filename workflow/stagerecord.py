"""What the workflow has made in the folder of a series: .workflow.json, so that nothing else is taken away.

    {"made": {NAME: [STAGE, SIZE, TIME]}, "running": {"stage": ..., "run": ..., "before": {NAME: [SIZE, TIME]}}}

A file is the workflow's as long as it is what it was when a stage left it, by size and time (whole seconds, as some
file systems keep no more); any other one is the user's. "running" stands there from before a stage begins until it is
done: where a stage was killed it tells what is new since.
"""
import json
import os
import re

RECORD = ".workflow.json"
STAGES = ("peaks", "cell", "intensities")
MARKS = {"peaks": "peaks.json", "cell": "cell.json", "intensities": "summary.json"}
LOGS = {stage: stage + ".log" for stage in STAGES}
# What the names of the files that tessera-batch writes end in, behind the name of the project.
ENDS = ("_refined.ed3d", "_refined.uc", "_refined.sc", "_integrated.hkl", "_merged.hkl", "_rejected.csv", ".run.json",
        ".series.json", ".log", ".sc", ".pk", ".uc", ".hkl", ".p4p", ".ipf", ".ins", ".cif", ".mtz")
# The same with the project that a run makes; kept files end in "~", unfinished ones in six letters.
OF_A_PROJECT = re.compile(r"(.+?)(%s|\.ed3d)(~|\.\w{6})?" % "|".join(map(re.escape, ENDS)))
# What has the same name for each project: hot pixels, and the summary of a run.
OF_ANY = re.compile(r"hotpixels(_bin\d+)?\.txt|\.stage-.*\.json")


def read_summary(name):
    """The table of a JSON file; an empty one where it is missing or no table."""
    try:
        with open(name, encoding="utf-8") as file:
            value = json.load(file)
    except (OSError, ValueError):
        return {}
    return value if isinstance(value, dict) else {}


def write_whole(name, value, lasting=True):
    """Writes a JSON file whole or not at all; a lasting one waits for the disk, so that it outlives the machine."""
    part = name + ".part"
    text = json.dumps(value, ensure_ascii=False, indent=1, sort_keys=True)
    try:
        data = text.encode()
    except UnicodeEncodeError:  # the name of a file that is not UTF-8
        data = json.dumps(value, indent=1, sort_keys=True).encode()
    try:
        with open(part, "wb") as file:
            file.write(data)
            file.flush()
            if lasting:
                os.fsync(file.fileno())
        os.replace(part, name)
    except OSError:
        remove(part)
        raise


def remove(name):
    """Takes a file away, if it is there."""
    try:
        os.remove(name)
    except FileNotFoundError:
        pass


class Record:
    """The record of a folder, and what can be done by it.

    is_project(name) tells whether a project that a run makes or reads could have this name.
    """

    def __init__(self, folder, is_project):
        self.folder = folder
        self.is_project = is_project
        whole = read_summary(self.path(RECORD))
        self.made = whole.get("made", {})
        self.running = whole.get("running", {})

    def path(self, name):
        return os.path.join(self.folder, name)

    def files(self):
        """Size and time of each file in the folder by its name. Marks are left out: snakemake touches them."""
        left_out = {RECORD, RECORD + ".part", *MARKS.values()}
        found = {}
        for entry in os.scandir(self.folder):
            if entry.name not in left_out and not entry.is_dir(follow_symlinks=False):
                try:
                    status = entry.stat(follow_symlinks=False)
                except FileNotFoundError:  # of a job that wakes up on a lost node
                    continue
                found[entry.name] = [status.st_size, int(status.st_mtime)]
        return found

    def of_others(self):
        """Names of the files that are not as a stage has left them."""
        return sorted(name for name, looks in self.files().items() if self.made.get(name, [None])[1:] != looks)

    def is_of_a_run(self, name):
        """Whether a run may write a file of this name."""
        match = OF_A_PROJECT.fullmatch(name)
        return bool(OF_ANY.fullmatch(name) or (match and self.is_project(match[1])) or name in LOGS.values())

    def in_the_way(self):
        """Names of the files of others that a stage would write over.

        Not a project, which tessera-batch steers clear of, nor hot pixels, which it takes as they are.
        """
        names = [name for name in self.of_others() if name.endswith(ENDS) and self.is_of_a_run(name)]
        return names + [MARKS[stage] for stage in STAGES
                        if os.path.lexists(self.path(MARKS[stage])) and not self.has_mark(stage)]

    def has_mark(self, stage):
        """Whether the mark of a stage exists and was written by the workflow."""
        return "workflow" in read_summary(self.path(MARKS[stage]))

    def told_by_runs(self):
        """Names of the files that were written according to the records of the runs in this folder."""
        told = set()
        for name in os.listdir(self.folder):
            if name.endswith(".run.json"):
                files = read_summary(self.path(name)).get("files", [])
                told |= {os.path.basename(file["path"]) for file in files
                         if isinstance(file, dict) and
                         os.path.realpath(os.path.dirname(file.get("path", ""))) == os.path.realpath(self.folder)}
        return told

    def written(self, before):
        """The files that are new or have changed since, and are named as what runs leave."""
        now, told = self.files(), self.told_by_runs()
        return {name: looks for name, looks in sorted(now.items())
                if before.get(name) != looks and (name in told or self.is_of_a_run(name))}

    def take(self, stage, before):
        """Records the files written since the start as made by a stage."""
        for name, looks in self.written(before).items():
            first = min(self.made.get(name, [stage])[0], stage, key=STAGES.index)
            self.made[name] = [first, *looks]
        there = set(os.listdir(self.folder))
        self.made = {name: value for name, value in self.made.items() if name in there}

    def take_interrupted(self):
        """The same for a stage that was killed."""
        if self.running:
            self.take(self.running["stage"], self.running["before"])
            self.running = {}

    def take_away(self, stage):
        """Removes the files that former runs of this stage and of later ones have made.

        Nothing of that shall be taken for a result of this one if it fails. What somebody has changed since stays.
        """
        later = STAGES[STAGES.index(stage):]
        others = set(self.of_others())
        for name in [name for name, (first, *_) in self.made.items() if first in later and name not in others]:
            remove(self.path(name))
            del self.made[name]
        for name in later:
            if self.has_mark(name):
                remove(self.path(MARKS[name]))

    def begin(self, stage, run):
        """Notes that a run of a stage begins."""
        self.running = {"stage": stage, "run": run, "before": self.files()}
        self.write()

    def is_running(self, run):
        """Whether it is still this run that is at work here: a job whose node was lost may wake up later."""
        return read_summary(self.path(RECORD)).get("running", {}).get("run") == run

    def end(self):
        """Notes that the stage is done."""
        self.take_interrupted()
        self.write()

    def write(self):
        """Writes the record. It waits for the disk only the first time, because a busy disk takes a second.

        Where the machine goes down and the file system then has no record, the next stage names what is in its way.
        """
        whole = {"made": self.made, **({"running": self.running} if self.running else {})}
        write_whole(self.path(RECORD), whole, lasting=not os.path.exists(self.path(RECORD)))
