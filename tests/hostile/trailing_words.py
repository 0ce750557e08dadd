#!/usr/bin/env python3
"""No command lets a word after its arguments run as a command of its own.

Walks the table of commands, each with many forms of arguments and the tail `rseed 4711`, which
must never set the seed: it is an argument, and refused or taken as one.
"""

import argparse
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import tempfile

from hostile_input import MATRIX, TREES, commands_of

# These leave the program, wait, take all that follows as their text, or are followed by commands.
LEFT_OUT = {"quit", "zzz", "system", "bground", "slaveproc", "pause", "view", "edit",
            "if", "else", "end", "loop", "endloop", "continue", "xend",
            "procedure"}  # `procedure/` leaves the file, with whatever follows
FORMS = ["", "=", "-", "/", "*", "+", "!", "&", ":", ".", "[", "]", "(", ")", "0", "1", "1 2", "x",
         "x 1", "a", "$x", "=x", "-x", "=1", "-1", "+1", "*1", "*a", "+ a", "[1", "/ x", "x++", "x--",
         "x = 1", "* a + 1", "vars 1", "ram 1", "loops 1", "prot 1", "prot", "list", ": y", "= 900 y",
         "tax_a", "<", ">", "|", "1 tax_a"]
TAIL_SEED = 4711


def lines_of(zeb, where, text):
    run = subprocess.run([zeb], input=text.encode(), cwd=where, stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, timeout=120)
    return run.stdout.decode(errors="replace")


def forms_that_leak(zeb, command):
    head = "timeout 1;\n" + MATRIX + TREES

    def leaks(forms):
        text = "".join(f"macro-;\nmacro=; var: x a[3];\n{command} {form} rseed {TAIL_SEED};\n;rseed;\n" for form in forms)
        with tempfile.TemporaryDirectory() as where:
            return f"seed is {TAIL_SEED}" in lines_of(zeb, where, head + text + "quit;\n")

    # One run with all forms, which change the state for those that follow; and each on its own
    # where something came of it.
    if not leaks(FORMS):
        return []
    return [form for form in FORMS if leaks([form])] or ["(all forms, one after the other)"]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--zeb", required=True, type=lambda p: str(pathlib.Path(p).resolve()))
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as where:
        commands = [c for c in commands_of(options.zeb, where) if c not in LEFT_OUT | {"rseed"}]
    if len(commands) < 100:
        sys.exit("the list of commands wasn't read")
    bad = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for command, forms in zip(commands, pool.map(lambda c: forms_that_leak(options.zeb, c), commands)):
            for form in forms:
                print(f"runs what follows as a command: {command} {form} rseed {TAIL_SEED};")
                bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
