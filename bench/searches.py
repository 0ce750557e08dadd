#!/usr/bin/env python3
"""Runs whole searches with fixed seeds and prints what they cost as a table.

    bench/searches.py PROGRAM [MATRIX...] [--seeds N] [--search "mult=hold 1 replications 1"]
    bench/searches.py AFTER [MATRIX...] --against BEFORE

A matrix is a file that `proc` reads; without any, three made-up ones are searched. Each seed is a run of
its own; the seconds are those of the processor in user mode, with the reading of the matrix taken off.
`--scaling` fits the exponent of the time over the number of taxa of the matrices given.

`--against` compares two builds: each seed runs with both, one right after the other and by turns the first,
so that what else the machine does falls on both. `ratio` is the time of AFTER over that of BEFORE, the middle
one of all seeds; "same" means that each seed tried as many rearrangements and found the same score. Exit
status 1: a search differs, or one is slower by more than `--tolerance` per cent (2).
"""

import argparse
import math
import os
import random
import re
import shutil
import statistics
import subprocess
import sys
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


class matrix_bench:
    """Searches in one matrix, in a folder of their own."""

    def __init__(self, matrix, scratch, search):
        self.scratch, self.search = scratch, search
        shutil.copy(matrix, os.path.join(scratch, "data.zeb"))
        self.reading = {}
        self.taxa = math.nan

    def read(self, program):
        seconds, _, output = run(program, self.scratch, "mult=wagner replications 0")
        self.reading[program] = seconds
        self.taxa = number(r"Read (\d+) taxa", output)

    def row(self, program, seed):
        """Score, seconds, Mbytes and rearrangements of one search."""
        seconds, memory, output = run(program, self.scratch, QUIET, f"rseed {seed}", self.search)
        return (number(r"Best score[^:\n]*: ([\d.]+)", output), seconds - self.reading[program], memory,
                number(r"examined: ([\d,]+)", output))


def made_up(folder):
    """Matrices grown along random trees: many states, four states, and two states with much homoplasy."""
    names = []
    for name, taxa, characters, states, rate in (("states", 120, 250, 6, 0.12), ("bases", 250, 500, 4, 0.08),
                                                 ("binary", 150, 150, 2, 0.2)):
        draw = random.Random(taxa)
        rows = [[draw.randrange(states) for _ in range(characters)]]
        while len(rows) < taxa:
            parent = draw.choice(rows)
            for row in (parent, parent[:]):
                for c in range(characters):
                    if draw.random() < rate:
                        row[c] = draw.randrange(states)
            rows.append(row)
        path = os.path.join(folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(f"xread\n{characters} {taxa}\n")
            file.writelines(f"t{i} {''.join(map(str, row))}\n" for i, row in enumerate(rows))
            file.write(";\n")
        names.append(path)
    return names


def print_table(program, matrices, search, seeds):
    points = []
    print(f"{'matrix':<20}{'taxa':>6}{'mean':>12}{'best':>10}{'seconds':>10}{'rearr/s':>10}"
          f"{'Mbytes':>8}")
    for matrix in matrices:
        with tempfile.TemporaryDirectory() as scratch:
            searches = matrix_bench(matrix, scratch, search)
            searches.read(program)
            rows = [searches.row(program, seed) for seed in range(1, seeds + 1)]
        scores = [row[0] for row in rows]
        seconds = sum(row[1] for row in rows)
        rate = sum(row[3] for row in rows) / max(seconds, 1e-9) / 1e6
        print(f"{os.path.basename(matrix):<20}{searches.taxa:>6.0f}{sum(scores) / len(scores):>12.2f}"
              f"{min(scores):>10g}{seconds / len(rows):>10.4f}{rate:>9.0f}M"
              f"{max(row[2] for row in rows):>8.1f}")
        points.append((math.log(searches.taxa), math.log(max(seconds / len(rows), 1e-6))))
    return points


def compare(before, after, matrices, search, seeds, tolerance):
    """Prints both side by side; true if nothing differs and nothing is slower."""
    well = True
    print(f"{'matrix':<20}{'taxa':>6}{'before s':>10}{'after s':>10}{'ratio':>8}{'spread':>14}  results")
    for matrix in matrices:
        pairs = []
        with tempfile.TemporaryDirectory() as scratch:
            searches = matrix_bench(matrix, scratch, search)
            searches.read(before)
            searches.read(after)
            for seed in range(1, seeds + 1):
                first, second = (before, after) if seed % 2 else (after, before)
                rows = {first: searches.row(first, seed)}
                rows[second] = searches.row(second, seed)
                pairs.append((rows[before], rows[after]))
        ratios = sorted(a[1] / max(b[1], 1e-9) for b, a in pairs)
        middle = statistics.median(ratios)
        different = sum((b[0], b[3]) != (a[0], a[3]) for b, a in pairs)
        spread = f"{ratios[len(ratios) // 4]:.3f}-{ratios[-1 - len(ratios) // 4]:.3f}"
        print(f"{os.path.basename(matrix):<20}{searches.taxa:>6.0f}{sum(b[1] for b, _ in pairs):>10.2f}"
              f"{sum(a[1] for _, a in pairs):>10.2f}{middle:>8.3f}{spread:>14}  "
              + (f"{different} of {seeds} seeds differ" if different else "same"), flush=True)
        well = well and not different and middle <= 1 + tolerance / 100
    return well


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("matrices", nargs="*")
    parser.add_argument("--against", metavar="BEFORE")
    parser.add_argument("--seeds", type=int, default=20)
    parser.add_argument("--search", help="[mult=hold 1 replications 1; made-up matrices: 100 replications]")
    parser.add_argument("--scaling", action="store_true")
    parser.add_argument("--tolerance", type=float, default=2)
    options = parser.parse_args()
    program = os.path.abspath(options.program)
    with tempfile.TemporaryDirectory() as folder:
        matrices = options.matrices or made_up(folder)
        replications = 1 if options.matrices else 100  # what is made up is searched in a moment
        search = options.search or f"mult=hold 1 replications {replications}"
        if options.against:
            before = os.path.abspath(options.against)
            return 0 if compare(before, program, matrices, search, options.seeds, options.tolerance) else 1
        points = print_table(program, matrices, search, options.seeds)
    if options.scaling and len(points) > 1:
        mx = sum(x for x, _ in points) / len(points)
        my = sum(y for _, y in points) / len(points)
        slope = (sum((x - mx) * (y - my) for x, y in points) / sum((x - mx) ** 2 for x, _ in points))
        print(f"time grows with taxa to the power {slope:.2f}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
