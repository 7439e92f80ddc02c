"""Prints a table of all series of the workflow to a file, by tessera-batch --summary.

Run by the rule "summary", which gives "snakemake".
"""
import os
import shlex
import subprocess

# A command line has an end, with room for the surroundings left; more series than that make a second table.
ROOM = os.sysconf("SC_ARG_MAX") // 2


def parts(names):
    part, room = [], ROOM
    for name in names:
        needed = len(os.fsencode(name)) + 9  # its end, and a pointer to it
        if part and needed > room:
            yield part
            part, room = [], ROOM
        part.append(name)
        room -= needed
    yield part


table = snakemake.output[0]
with open(table + ".part", "w", encoding="utf-8") as file:
    for part in parts(list(snakemake.input)):
        # Its exit status of 1 means that there are bad series, which the table reports.
        command = [*shlex.split(str(snakemake.config["batch"])), "--summary", *part]
        status = subprocess.run(command, stdout=file, check=False).returncode
        if status not in (0, 1):
            raise SystemExit(status)
os.replace(table + ".part", table)
