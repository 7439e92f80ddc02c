"""The stages of the workflow without snakemake, with a scripted program in place of tessera-batch.

stages.py    some seconds; needs nothing but Python
"""
import json
import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest

WORKFLOW = pathlib.Path(__file__).resolve().parents[2] / "workflow"
sys.path.insert(0, str(WORKFLOW))
import seriesfolder  # noqa: E402  (from the folder of the workflow)

# Writes what tessera-batch does: a project for a folder, results, a log, the summary; "plan" tells what comes between.
BATCH = """#!/usr/bin/python3
import json, os, pathlib, sys
words = dict(word.lstrip("-").split("=", 1) for word in sys.argv[1:] if "=" in word)
out, summary = (pathlib.Path(sys.argv[sys.argv.index(word) + 1]) for word in ("--out", "--json"))
plan = json.loads(pathlib.Path("plan").read_text())
if os.path.isdir(sys.argv[1]):
    (out / "quartz.ed3d").write_text("project")
last = words.get("to", "integrate")
for end in {"shifts": [".sc"], "peaks": [".pk"], "index": [".uc", ".hkl"], "integrate": ["_merged.hkl"]}[last]:
    (out / ("quartz" + end)).write_text(plan.get("content", "result"))
(out / "quartz.run.json").write_text(json.dumps({"files": []}))
(out / "quartz.log").write_text("log of " + last + "\\n")
if last == plan.get("at", last):
    if "zombie" in plan:  # as if the next job had begun
        record = out / ".workflow.json"
        record.write_text(record.read_text().replace('"run": "', '"run": "other-'))
    if "silent" in plan:
        sys.exit(plan["silent"])
    if "signal" in plan:
        summary.write_text(json.dumps({"stage": "none", "reached": False, "failed": "unfinished", "reason": ""}))
        os.kill(os.getpid(), plan["signal"])
    if "reason" in plan:
        summary.write_text(json.dumps({"stage": "open", "reached": False, "failed": last, "reason": plan["reason"]}))
        sys.exit(1)
summary.write_text(json.dumps({"stage": last, "reached": True, "warnings": [], "cell" + last: 1}))
"""
MARKS = {"peaks": "peaks.json", "cell": "cell.json", "intensities": "summary.json"}


class Stages(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(place.name)
        pathlib.Path("batch").write_text(BATCH)
        os.chmod("batch", 0o755)
        self.frames, self.results = pathlib.Path("frames/one"), pathlib.Path("results/one")
        self.frames.mkdir(parents=True)
        for number in range(3):
            (self.frames / f"quartz_{number}.mrc").write_bytes(b"frame")

    def stage(self, name, attempt=3, **plan):
        """Runs a stage, the last of its attempts unless another is given. -> exit status, what it said"""
        pathlib.Path("plan").write_text(json.dumps(plan))
        done = subprocess.run([sys.executable, WORKFLOW / "stage.py", name, self.frames, self.results / MARKS[name],
                               "1", str(attempt), "--batch=./batch", "--retries=2"],
                              stderr=subprocess.PIPE, text=True, check=False)
        self.assertNotIn("Traceback", done.stderr)
        return done.returncode, done.stderr.strip()

    def summary(self, name):
        return json.loads((self.results / MARKS[name]).read_text())

    def all_stages(self):
        self.assertEqual([self.stage(name) for name in MARKS], [(0, "")] * 3)

    def test_from_frames_to_intensities(self):
        self.all_stages()
        whole = self.summary("intensities")
        self.assertTrue({"cellpeaks", "cellindex", "cellintegrate"} <= set(whole), whole)
        self.assertEqual((self.results / "peaks.log").read_text(), "log of shifts\nlog of peaks\n")
        left = {path.name for path in self.results.iterdir()}
        ends = (".ed3d", ".sc", ".pk", ".uc", ".hkl", "_merged.hkl", ".run.json")
        self.assertEqual(left, {f"quartz{end}" for end in ends} |
                         {*MARKS.values(), "peaks.log", "cell.log", "intensities.log", ".workflow.json"})

    def test_no_summary_of_another_run_is_believed(self):
        self.results.mkdir(parents=True)
        stale = json.dumps({"stage": "integrate", "reached": True, "warnings": []})
        (self.results / ".stage.json").write_text(stale)
        for status in (0, 1):
            self.assertEqual(self.stage("peaks", attempt=1, silent=status)[0], 75)
            self.assertFalse((self.results / "peaks.json").exists())
            self.assertEqual(self.stage("peaks", silent=status)[0], 0)
            self.assertEqual([self.summary("peaks")[key] for key in ("reached", "workflow", "failed")],
                             [False, "ended", "peaks"])
        self.assertEqual(self.stage("cell")[0], 0)
        self.assertFalse(self.summary("cell")["reached"])
        # The results of a former stage are not taken for those of this one.
        self.stage("peaks")
        self.stage("cell", silent=1)
        self.assertFalse(self.summary("cell")["reached"])

    def test_faults_of_the_machine_are_tried_again(self):
        reasons = ["not enough memory for 3 images", "std::bad_alloc", "x: Resource temporarily unavailable",
                   "NO SPACE LEFT on device", "Cannot allocate memory", "x.mrc: Input/output error"]
        for plan in [{"reason": reason} for reason in reasons] + [{"signal": 9}, {"silent": 137}]:
            self.assertEqual(self.stage("peaks", attempt=2, **plan)[0], 75, plan)
            self.assertFalse((self.results / "peaks.json").exists(), plan)
            self.assertEqual(self.stage("peaks", **plan)[0], 0, plan)
            self.assertIn(plan.get("reason", "signal 9"), self.summary("peaks")["reason"])
        self.assertEqual(self.stage("peaks", attempt=1, reason="x.mrc: truncated")[0], 0)
        self.assertEqual(self.summary("peaks")["workflow"], "ended")
        self.assertEqual(self.stage("peaks", silent=2)[0], 2)

    def test_what_a_failed_stage_has_made_before_is_gone(self):
        self.all_stages()
        self.assertEqual(self.stage("cell", at="index", reason="no cell", content="new")[0], 0)
        for name in ("quartz_merged.hkl", "summary.json", "intensities.log"):
            self.assertFalse((self.results / name).exists(), name)
        self.assertTrue((self.results / "quartz.pk").exists())

    def test_what_is_the_users_stays(self):
        users = {"hotpixels.txt": "1 2 3", "notes.log": "mine", "other.ed3d": "mine", "test.hkl": "mine",
                 "quartz.res": "mine"}
        self.results.mkdir(parents=True)
        for name, text in users.items():
            (self.results / name).write_text(text)
        (self.frames / "hotpixels.txt").write_text("1 5 5")
        for _ in range(2):
            self.all_stages()
            self.stage("peaks", reason="no peak")
        self.assertEqual({name: (self.results / name).read_text() for name in users}, users)
        # Without one of the user's it is that of the frames, and goes with them.
        (self.results / "hotpixels.txt").unlink()
        self.stage("peaks")
        self.assertEqual((self.results / "hotpixels.txt").read_text(), "1 5 5")
        (self.frames / "hotpixels.txt").unlink()
        self.stage("peaks")
        self.assertFalse((self.results / "hotpixels.txt").exists())

    def test_names_that_are_no_utf8(self):
        self.results.mkdir(parents=True)
        users = os.path.join(os.fsencode(self.results), b"gr\xfcn.txt")
        with open(users, "wb") as file:
            file.write(b"mine")
        self.all_stages()
        self.assertTrue(os.path.exists(users))

    def test_a_link_that_leads_nowhere(self):
        os.symlink("gone.mrc", self.frames / "quartz_9.mrc")
        self.all_stages()
        os.remove(self.frames / "quartz_9.mrc")
        self.assertIn("frames have changed", self.stage("intensities")[1])

    def test_nothing_of_the_users_is_written_over(self):
        self.results.mkdir(parents=True)
        for name in ("quartz.pk", "quartz.run.json", "quartz.log", "peaks.log", "cell.json"):
            (self.results / name).write_text("{}")
            status, said = self.stage("peaks")
            self.assertEqual((status, said.count("\n")), (1, 0), said)
            self.assertIn(name, said)
            self.assertEqual((self.results / name).read_text(), "{}")
            (self.results / name).unlink()
        self.all_stages()
        (self.results / "quartz.hkl").write_text("changed by hand")
        self.assertEqual(self.stage("peaks")[0], 1)
        self.assertEqual((self.results / "quartz.hkl").read_text(), "changed by hand")

    def test_a_stage_that_was_killed_leaves_no_files_behind(self):
        self.stage("peaks")
        record = self.results / ".workflow.json"
        before = json.loads(record.read_text())["made"]
        # The files that remain when stage and program are killed in the middle.
        files = {name: looks[1:] for name, looks in before.items()}
        record.write_text(json.dumps({"made": before, "running": {"stage": "cell", "run": "dead-1", "before": files}}))
        for name in ("quartz.uc", "quartz.log", "quartz.hkl.Ab3x9Z", ".stage-dead-1.json", "notes.txt"):
            (self.results / name).write_text("half")
        self.assertEqual(self.stage("cell", content="whole"), (0, ""))
        self.assertEqual((self.results / "quartz.uc").read_text(), "whole")
        self.assertEqual((self.results / "cell.log").read_text(), "log of index\n")
        left = {path.name for path in self.results.iterdir()}
        self.assertFalse({"quartz.hkl.Ab3x9Z", ".stage-dead-1.json"} & left, left)
        self.assertTrue((self.results / "notes.txt").exists())

    def test_a_job_that_was_given_up_marks_nothing(self):
        status, said = self.stage("peaks", at="peaks", zombie=True)
        self.assertEqual(status, 1)
        self.assertIn("another job", said)
        self.assertFalse((self.results / "peaks.json").exists())

    def test_frames_that_change_between_stages(self):
        self.stage("peaks")
        (self.frames / "quartz_1.mrc").write_bytes(b"another frame")
        status, said = self.stage("cell")
        self.assertEqual(status, 1)
        self.assertIn("frames have changed", said)
        self.assertFalse((self.results / "peaks.json").exists())
        self.assertEqual(self.stage("cell")[0], 1)
        self.all_stages()

    def test_a_program_that_is_missing(self):
        os.remove("batch")
        status, said = self.stage("peaks")
        self.assertEqual(status, 1)
        self.assertIn("cannot be run", said)


class Names(unittest.TestCase):
    def test_names(self):
        for name in ("a b", "Anna's", "-x", "Kyanit 3 °C", "結晶", "x=1;y&z", "a/b (2) #3", "~", "*?[0]"):
            self.assertIsNone(seriesfolder.fault_of_series("f", "r", "m", [name]), name)
        for name in ("x{y}z", "}", "a\nb", "a\tb", 'say "a"', "a$b", "a`b", "a\\b", "a,b", "\udce4"):
            fault = seriesfolder.fault_of_series("f", "r", "m", ["good", name, name])
            self.assertIn(repr(name), fault)
            self.assertIn("1 more", fault)
            self.assertNotIn("\n", fault)
            fault.encode()
        self.assertIn("no folder", seriesfolder.fault_of_series("f", "r", "m", []))
        self.assertIn("merged", seriesfolder.fault_of_series("f", "r", "r/merged", ["merged"]))

    def test_places(self):
        with tempfile.TemporaryDirectory() as place:
            for name in ("frames/one", "other"):
                os.makedirs(f"{place}/{name}")
            os.symlink(f"{place}/frames", f"{place}/link")

            def fault(frames, results, merged):
                return seriesfolder.fault_of_places(*(f"{place}/{name}" for name in (frames, results, merged)))

            self.assertIsNone(fault("frames", "results", "merged"))
            self.assertIsNone(fault("frames", "frames2", "frames2/merged"))
            for names in (("frames", "frames", "m"), ("frames", "frames/results", "m"), ("frames", "link/results", "m"),
                          ("frames/one", "frames", "m"), ("frames", "r", "frames/m")):
                self.assertIn("must not lie in each other", fault(*names))
            self.assertIn("no such folder", fault("missing", "r", "m"))
            self.assertIn("cannot be printed", fault("frames", "r\n", "m"))
        self.assertIn("./", seriesfolder.fault_of_places("-f", "r", "m"))

    def test_series_are_folders_with_frames_or_projects(self):
        with tempfile.TemporaryDirectory() as place:
            for name in ("a/x.MRC", "b/c/x.ed3d", "b/c/d/x.mrc", "e/notes.txt", "top.mrc"):
                os.makedirs(os.path.dirname(f"{place}/{name}"), exist_ok=True)
                pathlib.Path(place, name).write_text("")
            self.assertEqual(seriesfolder.series_below(place), ["a", "b/c"])
            # Links are followed, but not round and round: each pair of them would double what is found.
            os.symlink("../a", f"{place}/e/link")
            for name in ("b/up", "e/up", "e/all"):
                os.symlink("..", f"{place}/{name}")
            os.symlink("../b", f"{place}/e/b")
            os.symlink("../e", f"{place}/b/e")
            self.assertEqual(seriesfolder.series_below(place), ["a", "b/c", "b/e/link", "e/b/c", "e/link"])


class Memory(unittest.TestCase):
    # Lines of "key: number".
    CONFIG = {key: float(value) for key, value in
              re.findall(r"^(\w+): ([\d.]+)$", (WORKFLOW / "config.yaml").read_text(), re.MULTILINE)}

    def pixels(self, **files):
        with tempfile.TemporaryDirectory() as place:
            for name, data in files.items():
                pathlib.Path(place, name).write_bytes(data)
            return seriesfolder.frame_pixels(place)

    def test_size_by_header(self):
        def tiff(order, big):
            kind = {"<": b"II", ">": b"MM"}[order]
            sizes = [(256, 3, struct.pack(order + "H", 700)), (257, 4, struct.pack(order + "I", 500))]
            if big:
                return kind + struct.pack(order + "HHHQQ", 43, 8, 0, 16, 2) + b"".join(
                    struct.pack(order + "HHQ", tag, type_, 1) + value.ljust(8, b"\0") for tag, type_, value in sizes)
            return kind + struct.pack(order + "HIH", 42, 8, 2) + b"".join(
                struct.pack(order + "HHI", tag, type_, 1) + value.ljust(4, b"\0") for tag, type_, value in sizes)

        pad = bytes(100)
        headers = {
            "stack.mrc": struct.pack("<3i", 700, 500, 900) + bytes(1000000),
            "big-endian.mrc": struct.pack(">3i", 700, 500, 1) + pad,
            "stack.tvips": struct.pack("<4I", 256, 2, 700, 500) + pad,
            "one.mib": b"MQ1,000001,00384,01,0700,0500,U16,   1x1" + pad,
            "one.img": b"{\nHEADER_BYTES=512;\nSIZE1=700;\nSIZE2=500;\n}" + pad,
            "one.cbf": b"###CBF\r\nX-Binary-Size-Fastest-Dimension: 700\r\n"
                       b"X-Binary-Size-Second-Dimension: 500\r\n" + pad,
            "one.png": b"\x89PNG\r\n\x1a\n" + struct.pack(">I4sII", 13, b"IHDR", 700, 500) + pad,
            "one.bmp": b"BM" + bytes(16) + struct.pack("<ii", 700, -500) + pad,
            **{f"{big}{name}.tif": tiff(order, big) + pad
               for order, name in (("<", "little"), (">", "big")) for big in (0, 1)},
        }
        for name, data in headers.items():
            self.assertEqual(self.pixels(**{name: data}), 350000, name)

    def test_size_without_header(self):
        self.assertEqual(self.pixels(**{"a.dm4": bytes(5000)}), 5000)
        self.assertEqual(self.pixels(**{"a.mrc": struct.pack("<2i", -3, 10**6)}), 8)
        self.assertEqual(self.pixels(**{"a.tif": b"II*\0" + b"\xff" * 20}), 24)
        self.assertEqual(self.pixels(**{"a.tif": b"II+\0" + b"\xff" * 20}), 24)  # a directory beyond all files
        self.assertEqual(self.pixels(**{"a.mrc": b""}), 0)
        self.assertEqual(self.pixels(**{"a.ed3d": b"WAVELENGTH 0.025"}), 0)
        with tempfile.TemporaryDirectory() as place:  # a film of 10 GB; the file has no blocks
            with open(place + "/film.h5", "wb") as file:
                file.truncate(10**10)
            self.assertEqual(seriesfolder.frame_pixels(place), 4096**2)

    def test_which_frame(self):
        frame = struct.pack("<3i", 20, 10, 1)
        preview = b"\x89PNG\r\n\x1a\n" + struct.pack(">I4sII", 13, b"IHDR", 3, 3)
        self.assertEqual(self.pixels(**{"a.png": preview, "b.mrc": frame, "c.mrc": frame}), 200)
        with tempfile.TemporaryDirectory() as place:
            os.makedirs(place + "/series")
            pathlib.Path(place, "stack.mrc").write_bytes(frame)
            pathlib.Path(place, "series/a.ed3d").write_text("FILELIST\nFILE ../stack.mrc#1 0 0 0\nENDFILELIST\n")
            self.assertEqual(seriesfolder.frame_pixels(place + "/series"), 200)

    def test_memory_of_a_job_holds_what_was_measured(self):
        # Edge, threads, MB of tessera-batch as bench/README.md has them.
        for edge, threads, measured in ((512, 1, 36), (1024, 2, 68), (2048, 1, 101), (4096, 1, 293), (4096, 2, 488)):
            asked = seriesfolder.job_memory({**self.CONFIG, "memory": 60}, edge**2, threads)
            self.assertGreater(asked, measured)
            self.assertLess(asked, 1.5 * measured + 60)
        self.assertLess(seriesfolder.job_memory(self.CONFIG, 4096**2, 1), 700)


if __name__ == "__main__":
    unittest.main()
