#!/usr/bin/env python3
"""Runs every run file of the examples in a copy of the folder: each must end without an error and make
the files it names. Usage: examples.py ZEB EXAMPLES"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

zeb, examples = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
MADE = re.compile(r"(?:\blog |ttags &|lm(?:ark|box)[^;&]*& |tsave \*|export [&*=-]*)([\w.]+);")


def run(folder, *arguments):
    done = subprocess.run([zeb, *arguments], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=120)
    return done.returncode, done.stdout.decode()


def faults_of(run_file, folder):
    status, output = run(folder, "proc", f"{run_file.name},", "quit,")
    if status != 0 or re.search(r"^Error reading|^WARNING", output, re.MULTILINE):
        yield "ends with status " + str(status) + ":\n" + output
    for name in MADE.findall(run_file.read_text()):
        made = folder / name
        if not made.exists() or made.stat().st_size == 0:
            yield "doesn't make " + name
        elif name.endswith(".svg"):
            xml.etree.ElementTree.parse(made)


def data_of(folder, name):
    """The matrix, settings and names as the program writes them, without the title."""
    _, output = run(folder, "report-,", "proc", f"{name},", "log", "out.txt,", "xread*,", "log/,", "quit,")
    text = (folder / "out.txt").read_text()
    return re.sub(r"^'[^']*'\n", "", text, flags=re.MULTILINE) if "xread" in text else "no data: " + output


bad = 0
run_files = sorted(examples.glob("*.run"))
with tempfile.TemporaryDirectory() as scratch:
    folder = pathlib.Path(scratch, "examples")
    shutil.copytree(examples, folder)
    for run_file in run_files:
        for fault in faults_of(run_file, folder):
            bad += 1
            print(f"{run_file.name} {fault}")
    own, nexus = data_of(folder, "beetles.xread"), data_of(folder, "beetles.nex")
    if own != nexus or "cnames" not in own:
        bad += 1
        print("beetles.xread and beetles.nex aren't the same data")
print(f"{len(run_files)} run files, {bad} faults")
sys.exit(1 if bad or not run_files else 0)
