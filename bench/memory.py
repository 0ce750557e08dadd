#!/usr/bin/env python3
"""Measures the peak memory of reading, searching, scoring and consensus against what `mxram` tells.

    bench/memory.py PROGRAM [--taxa N] [--characters N] [--only WORD]

Characters evolve on a random tree, so that searches end soon. Each job is a run of its own: once with the
memory that the program takes by itself, and once with little, which is a tenth more than the data need.
`peak` is the largest resident size, `told` what "mxram;" says. Refusals for lack of memory ("out of ram", in
place of the ratio) are what little memory may lead to.
Exit status 1: a job failed, or a peak is more than `--tolerance` per cent (25) above `told`, after 12 Mbytes for
the program itself, its libraries and its text buffer.
"""

import argparse
import os
import random
import re
import subprocess
import sys
import tempfile

PROGRAM = 12  # Mbytes that it may take beside the data
TREES = "hold 20; rseed 1; randtrees 5;"
JOBS = {
    "read": "",
    "write data": "silent=all; xread*; silent-all;",
    "write NEXUS": "export data.nex;",
    "least and most steps": "silent=all; minmax; silent-all;",
    "tree lengths": TREES + "length;",
    "steps by character": TREES + "silent=all; cscores; silent-all;",
    "homoplasy by character": TREES + "silent=all; chomo; silent-all;",
    "condense": TREES + "collapse 4; condense;",
    "strict consensus": TREES + "collapse 1; nelsen;",
    "majority rule": TREES + "collapse 1; majority;",
    "sets of nodes": TREES + "silent=all; xread:0; silent-all;",
    "Wagner trees": "hold 20; rseed 1; mult=wagner replications 1;",
    "mult": "hold 20; rseed 1; timeout 0:01:00; mult=replications 1;",
    "bbreak": TREES + "timeout 0:00:20; bbreak;",
    "collapse by swapping": TREES + "keep 1; collapse 5; condense;",
}


def write_matrix(path, taxa, characters, generator):
    """Of each branch one cell in a hundred is drawn anew. The rows of one path from the root are in memory."""
    changes = max(1, characters // 100)

    def evolved(row):
        row = bytearray(row)
        for _ in range(changes):
            row[generator.randrange(characters)] = ord("0") + generator.randrange(4)
        return row

    with open(path, "wb") as out:
        out.write(b"xread %d %d\n" % (characters, taxa))
        waiting = [(taxa, bytearray(b"0" * characters))]
        number = 0
        while waiting:
            tips, row = waiting.pop()
            if tips == 1:
                out.write(b"t%d " % number + row + b"\n")
                number += 1
                continue
            left = generator.randrange(1, tips)
            waiting += [(left, evolved(row)), (tips - left, evolved(row))]
        out.write(b";\n")


def run(program, folder, script):
    """Peak in Mbytes (of 1,000,000 bytes), output and whether all commands ran."""
    with open(os.path.join(folder, "job.run"), "w") as job:
        job.write(script + "\nquit;\n")
    process = subprocess.Popen([program, "--batch", "job.run"], cwd=folder, text=True, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    output = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    return usage.ru_maxrss * 1024 / 1e6, output, status == 0


def megabytes(output, what):
    return float(re.findall(what, output)[-1])


def measure(program, folder, name, memory, tolerance):
    """Prints a line; false where the peak is too high."""
    peak, output, done = run(program, folder, f"{memory} proc data.xread; mxram; {JOBS[name]} mxram;")
    size = megabytes(output, r"max. ram = ([\d.]+)")
    refused = not done and "out of ram" in output
    fine = (done or refused) and peak <= size * (1 + tolerance / 100) + PROGRAM
    verdict = "out of ram" if refused else f"{peak / size:.2f}" if done else "failed"
    print(f"{name:24}{size:12.1f}{peak:12.1f}{verdict:>12}{'' if fine else '  too much'}", flush=True)
    if not done and not refused:
        print("\n".join(output.splitlines()[-5:]))
    return fine


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("program")
    parser.add_argument("--taxa", type=int, default=500)
    parser.add_argument("--characters", type=int, default=40000)
    parser.add_argument("--only", default="")
    parser.add_argument("--tolerance", type=float, default=25)
    options = parser.parse_args()
    program = os.path.abspath(options.program)
    fine = True
    with tempfile.TemporaryDirectory() as folder:
        write_matrix(os.path.join(folder, "data.xread"), options.taxa, options.characters, random.Random(1))
        _, output, _ = run(program, folder, "proc data.xread; mxram;")
        needed = megabytes(output, r"([\d.]+) Mbytes in use")
        print(f"{options.taxa} taxa, {options.characters} characters; in Mbytes")
        for title, memory in (("by itself", ""), ("little", f"mxram]; mxram {1.1 * needed + 1:.0f};")):
            print(f"\nmemory {title:17}{'told':>12}{'peak':>12}{'ratio':>12}")
            for name in JOBS:
                if options.only in name:
                    fine = measure(program, folder, name, memory, options.tolerance) and fine
    return 0 if fine else 1


if __name__ == "__main__":
    sys.exit(main())
