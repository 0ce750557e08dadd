#!/usr/bin/env python3
"""Runs the example at the end of each help text, as a run file with one argument, on the beetles with
trees in memory and the files that examples name: none may end in an error. What needs the macro language
is run again with it. Usage: help_examples.py ZEB HELP EXAMPLES"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

zeb, texts, examples = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
COMMAND_LINES = {"bground", "slaveproc"}  # words of the command line
PREPARE = "report-; proc beetles.xread; hold 50; mult=replications 3 hold 20; report=;"
FILES = {"values.txt": "1 2\n", "results.txt": "some text\n", "analysis.run": "quote %1 %2;\n"}


def run(folder, *arguments):
    done = subprocess.run([zeb, *arguments], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=120)
    return done.stdout.decode(), done.returncode


def output_of(example, language):
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch, "examples")
        shutil.copytree(examples, folder)
        pathlib.Path(scratch, "results").mkdir()
        shutil.copy(folder / "beetles.xread", folder / "data.zeb")
        for name, text in FILES.items():
            (folder / name).write_text(text)
        (folder / "prepare.run").write_text(PREPARE + "tsave =best.ctf;")
        run(folder, "proc", "prepare.run,", "quit,")
        (folder / "example.run").write_text(f"{PREPARE} macro{language};\nquote example:;\n{example}\n")
        output, status = run(folder, "run", "example.run", "2,", "quit,")
        return output.split("example:\n")[-1], status


bad = count = 0
for file in sorted(texts.glob("*.txt")):
    if file.stem in COMMAND_LINES:
        continue
    count += 1
    example = file.read_text().partition("\nExample:\n")[2]
    tries = []
    for language in "-=":
        tries.append(output_of(example, language))
        if tries[-1][1] == 0 and "Error reading" not in tries[-1][0]:
            break
    else:
        bad += 1
        print(f"{file.name}: {example}\n{tries[0][0]}\n{tries[1][0]}")
print(f"{count} examples, {bad} faults")
sys.exit(1 if bad or not count else 0)
