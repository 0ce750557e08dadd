#!/usr/bin/env python3
"""Runs the sessions shown in README.md and compares their output. 
Usage: readme.py README ZEB EXAMPLES [--accept], which puts the real output in.

A session is an indented block whose first line begins with "$ zeb"; it is run in a copy of the
examples. Seconds may differ."""

import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

readme, zeb, examples = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
SECONDS = re.compile(r"\d+\.\d+ secs")


def lines(text):
    text = SECONDS.sub("<time> secs", text.replace("\n\r", "\n"))
    found = [line.rstrip() for line in text.split("\n")]
    while found and not found[-1]:
        found.pop()
    while found and not found[0]:
        found.pop(0)
    return found


def sessions(text):
    block = []
    for line in text.split("\n") + ["end"]:
        if line.startswith("    ") or (block and not line.strip()):
            block.append(line[4:])
            continue
        if block and block[0].startswith("$ zeb "):
            yield block
        block = []


bad = count = 0
text = readme.read_text(encoding="utf-8")
for block in sessions(text):
    count += 1
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder, "examples")
        shutil.copytree(examples, copy)
        run = subprocess.run([zeb, *shlex.split(block[0])[2:]], cwd=copy, stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)
    shown, real = lines("\n".join(block[1:])), lines(run.stdout.decode())
    if shown != real and "--accept" in sys.argv:
        indented = lambda part: "".join(f"    {line}".rstrip() + "\n" for line in part)
        while not block[-1].strip():
            block.pop()
        text = text.replace(indented(block), indented([block[0], ""] + real))
        readme.write_text(text, encoding="utf-8")
    elif shown != real:
        bad += 1
        print("README.md shows for", block[0])
        print("\n".join(shown))
        print("but the program says")
        print("\n".join(real))
print(f"{count} sessions, {bad} of them aren't what the program says")
sys.exit(1 if bad or not count else 0)
