"""Merges all series of the workflow: tessera-merge, run by the rule "merged", which gives "snakemake".

The list of the folders that went into it takes its name when all is done.
"""
import os
import shlex
import subprocess

config, done = snakemake.config, snakemake.output[0]
series = done + ".part"
with open(series, "w", encoding="utf-8") as file:
    file.writelines(os.path.dirname(name) + "\n" for name in snakemake.input)
command = [*shlex.split(str(config["merge"])), "--list", series, "--out", os.path.dirname(done),
           "--jobs", str(snakemake.threads), *shlex.split(str(config["merge_options"]))]
if config["known"]:
    command += ["--known", str(config["known"])]
subprocess.run(command, check=True)
os.replace(series, done)
