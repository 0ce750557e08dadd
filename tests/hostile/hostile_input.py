#!/usr/bin/env python3
"""Runs random bytes as run files, shuffled commands as run files and as typed lines (where an error
ends a line only), and random scripts of the macro language: no crash, no hang.

Every run must end by itself within the time allowed, with exit status 0 (an error in a file drops
the process arguments, and the typed lines end at once), and must not print an internal error. The
seed stands in the message; a text that fails is shrunk by halves and kept in the directory given.
"""

import argparse
import concurrent.futures
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

import random_macros

WORDS = ["=", "-", "/", "*", "[", "]", "!", "+", "&", "?", ":", ".", "0", "1", "2", "3", "-1", "99",
         "100000", "2147483648", "1e9", "0.5", "(", ")", "{", "}", "'", '"', "#1", "%1", "@T", "<",
         ">", "all", "tax_a", "case.run", "data.zeb", "out.txt", "t.tre", "(0 (1 2))", ",", ";", "\n"]
MATRIX = "xread 'title' 4 5 tax_a 0011 tax_b 01?1 tax_c 1100 tax_d 1[01]01 tax_e 0-10 ;\n"
TREES = "tread (0 (1 (2 (3 4)))) * (0 (4 (2 (3 1)))) ;\n"
# These leave the program or wait by their nature.
LEFT_OUT = {"quit", "zzz", "system", "bground", "slaveproc", "pause", "view", "edit"}


def commands_of(zeb, where):
    listing = subprocess.run([zeb, "help;", "quit;"], cwd=where, capture_output=True, timeout=30)
    listed = listing.stderr.decode().split("COMMANDS:\n", 1)[1].split("(* not available", 1)[0]
    return [word for word in listed.replace("*", " ").split() if re.fullmatch("[a-z]+", word)]


def random_bytes(source):
    alphabet = source.choice([bytes(range(256)), bytes(range(32, 127)), b";,/=*[]() \n019abquote"])
    return bytes(source.choice(alphabet) for _ in range(source.randrange(1, 3000)))


def shuffled_commands(source, commands, count):
    text = "timeout 1;\n"
    if source.random() < 0.7:
        text += MATRIX
    if source.random() < 0.5:
        text += TREES
    if source.random() < 0.3:
        text += "macro=;\n"
    for _ in range(source.randrange(1, count)):
        arguments = " ".join(source.choice(WORDS) for _ in range(source.randrange(0, 6)))
        blank = source.choice(["", " "])
        text += source.choice(commands) + blank + arguments + source.choice([";", ";", ";\n", "\n"])
    return text.encode()


def scripts(source, typed):
    text = random_macros.script(source, typed)
    if source.random() < 0.5:
        text = (MATRIX + TREES + text) if source.random() < 0.7 else MATRIX + text
    return text.encode("latin-1")


def complaint(zeb, text, typed, seconds):
    """What is wrong with the run of a text; empty if nothing."""
    with tempfile.TemporaryDirectory(prefix="zeb_hostile_") as where:
        pathlib.Path(where, "case.run").write_bytes(text)
        environment = dict(os.environ, ZEB_NO_SYSTEM="1", HOME=where)
        try:
            run = subprocess.run([zeb] if typed else [zeb, "proc", "case.run;", "quit;"], cwd=where,
                                 input=text if typed else b"", env=environment,
                                 capture_output=True, timeout=seconds)
        except subprocess.TimeoutExpired:
            return f"no end within {seconds} seconds"
        if run.returncode != 0:
            return f"exit status {run.returncode}\n" + run.stderr.decode("utf-8", "replace")[-2000:]
        if b"Internal error" in run.stderr + run.stdout:
            return "internal error\n" + run.stderr.decode("utf-8", "replace")[-1000:]
        return ""


def shrunk(zeb, text, typed, seconds):
    """Drops lines, then parts, as long as the text fails."""
    for separator in (b"\n", b";"):
        pieces = text.split(separator)
        step = max(1, len(pieces) // 2)
        while step:
            i = 0
            while i < len(pieces):
                fewer = pieces[:i] + pieces[i + step:]
                if fewer and complaint(zeb, separator.join(fewer), typed, seconds):
                    pieces = fewer
                else:
                    i += step
            step //= 2
        text = separator.join(pieces)
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--zeb", required=True)
    parser.add_argument("--runs", type=int, default=150, help="of each kind")
    parser.add_argument("--kinds", default="bytes,commands,typed,macros,typed_macros")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--seconds", type=float, default=60, help="allowed for one run")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--keep", help="directory for texts that fail, shrunk")
    options = parser.parse_args()
    zeb = os.path.abspath(options.zeb)
    with tempfile.TemporaryDirectory() as where:
        commands = [c for c in commands_of(zeb, where) if c not in LEFT_OUT]
    texts = []
    for i in range(options.runs):
        seed = f"{options.seed}/{i}"
        texts.append((f"bytes {seed}", random_bytes(random.Random(f"b{seed}")), False))
        for kind, count, typed in (("commands", 12, False), ("typed", 80, True)):
            text = shuffled_commands(random.Random(kind + seed), commands, count)
            texts.append((f"{kind} {seed}", text, typed))
        for kind, typed in (("macros", False), ("typed_macros", True)):
            texts.append((f"{kind} {seed}", scripts(random.Random(kind + seed), typed), typed))
    texts = [entry for entry in texts if entry[0].split()[0] in options.kinds.split(",")]
    failures = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        results = pool.map(lambda entry: complaint(zeb, entry[1], entry[2], options.seconds), texts)
        for (name, text, typed), wrong in zip(texts, results):
            if not wrong:
                continue
            failures += 1
            print(f"FAILED {name}: {wrong}")
            if options.keep:
                os.makedirs(options.keep, exist_ok=True)
                small = shrunk(zeb, text, typed, min(options.seconds, 10))
                pathlib.Path(options.keep, name.replace(" ", "_").replace("/", "_") + ".run"
                             ).write_bytes(small)
                print(small)
    print(f"{len(texts) - failures} of {len(texts)} texts end well")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
