"""Merges all series of the workflow: tessera-merge, run by the rule "merged". Its log is written last and whole."""
import os
import shlex
import subprocess

config, log = snakemake.config, snakemake.output.log
folder = os.path.dirname(log)
series = os.path.join(folder, "series.txt")
with open(series, "w", encoding="utf-8") as file:
    file.writelines(os.path.dirname(name) + "\n" for name in snakemake.input)
command = [*shlex.split(config["merge"]), "--list", series, "--out", folder, "--jobs", str(snakemake.threads)]
if config["known"]:
    command += ["--known", config["known"]]
with open(log + ".part", "w", encoding="utf-8") as file:
    subprocess.run([*command, *shlex.split(config["merge_options"])], stdout=file, stderr=subprocess.STDOUT, check=True)
os.replace(log + ".part", log)
