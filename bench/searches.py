#!/usr/bin/env python3
"""Runs whole searches with fixed seeds and prints what they cost as a table.

    bench/searches.py PROGRAM MATRIX... [--seeds N] [--search "mult=hold 1 replications 1"]

A matrix is a file that `proc` reads. Each seed is a run of its own; the seconds are those of the
processor in user mode, with the reading of the matrix taken off. `--scaling` fits the exponent of
the time over the number of taxa of the matrices given.
"""

import argparse
import math
import os
import re
import shutil
import subprocess
import tempfile

QUIET = "report +0/1"


def run(program, scratch, *commands):
    """User seconds, peak memory in Mbytes and output of one run."""
    words = " ".join(command + "," for command in ("proc data.zeb",) + commands + ("quit",)).split()
    process = subprocess.Popen([program] + words, cwd=scratch, text=True, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT)
    output = process.stdout.read()
    _, _, usage = os.wait4(process.pid, 0)
    return usage.ru_utime, usage.ru_maxrss / 1024, output


def number(pattern, output):
    found = re.findall(pattern, output)
    return float(found[-1].replace(",", "")) if found else math.nan


def measure(program, matrix, search, seeds):
    with tempfile.TemporaryDirectory() as scratch:
        shutil.copy(matrix, os.path.join(scratch, "data.zeb"))
        reading, _, output = run(program, scratch, "mult=wagner replications 0")
        taxa = number(r"Read (\d+) taxa", output)
        rows = []
        for seed in range(1, seeds + 1):
            seconds, memory, output = run(program, scratch, QUIET, f"rseed {seed}", search)
            rows.append((number(r"Best score[^:\n]*: ([\d.]+)", output), seconds - reading, memory,
                         number(r"examined: ([\d,]+)", output)))
    return taxa, rows


def print_table(program, matrices, search, seeds):
    points = []
    print(f"{'matrix':<20}{'taxa':>6}{'mean':>12}{'best':>10}{'seconds':>10}{'rearr/s':>10}"
          f"{'Mbytes':>8}")
    for matrix in matrices:
        taxa, rows = measure(program, matrix, search, seeds)
        scores = [row[0] for row in rows]
        seconds = sum(row[1] for row in rows)
        rate = sum(row[3] for row in rows) / max(seconds, 1e-9) / 1e6
        print(f"{os.path.basename(matrix):<20}{taxa:>6.0f}{sum(scores) / len(scores):>12.2f}"
              f"{min(scores):>10g}{seconds / len(rows):>10.4f}{rate:>9.0f}M"
              f"{max(row[2] for row in rows):>8.1f}")
        points.append((math.log(taxa), math.log(max(seconds / len(rows), 1e-6))))
    return points


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("program")
    parser.add_argument("matrices", nargs="+")
    parser.add_argument("--seeds", type=int, default=20)
    parser.add_argument("--search", default="mult=hold 1 replications 1")
    parser.add_argument("--scaling", action="store_true")
    options = parser.parse_args()
    program = os.path.abspath(options.program)
    points = print_table(program, options.matrices, options.search, options.seeds)
    if options.scaling and len(points) > 1:
        mx = sum(x for x, _ in points) / len(points)
        my = sum(y for _, y in points) / len(points)
        slope = (sum((x - mx) * (y - my) for x, y in points) / sum((x - mx) ** 2 for x, _ in points))
        print(f"time grows with taxa to the power {slope:.2f}")


if __name__ == "__main__":
    main()
