#!/usr/bin/env python3
"""Measures what implied weights, costs of changes and continuous characters cost a search.

    bench/weights.py PROGRAM [MATRIX...] [--replications N] [--seeds N]

Made-up matrices of 100 taxa: 200 plain characters, alone and with 20 more of 8 states each that are plain,
of weight 2, additive, or have costs of changes (all alike, a tree of states, symmetric, asymmetric); 50
continuous ones, alone and with the plain ones. MATRIX: more files that `proc` reads. Each is searched by length and by fit,
one replication of Wagner and TBR after the other; the seconds are those of one replication, on the
processor in user mode, with the reading taken off. `of plain` is the time over that of the 200 plain
characters, `fit/length` the time by fit over that by length. Exit status 1: one is above its limit.
"""

import argparse
import os
import random
import re
import shutil
import sys
import tempfile

from searches import number, run

TAXA, STATES = 100, 8
MOST_BY_FIT = 3          # times the search by length, for the matrices given
MOST_OF_COSTS = 30       # times the plain characters
MOST_OF_REDUCED = 1.25   # times as many plain or additive characters
MOST_OF_CONTINUOUS = 2   # seconds


def grown(draw, change, first):
    """Rows of values along a random tree; `change` gives a descendant's value from its ancestor's."""
    rows = [first]
    while len(rows) < TAXA:
        parent = draw.choice(rows)
        rows.append([change(value) for value in parent])
        parent[:] = [change(value) for value in parent]
    return rows


def states_of(draw, characters, states):
    return grown(draw, lambda value: draw.randrange(states) if draw.random() < 0.12 else value,
                 [draw.randrange(states) for _ in range(characters)])


def values_of(draw, characters):
    return grown(draw, lambda value: min(64.0, max(0.0, value + draw.gauss(0, 1.5))),
                 [draw.uniform(10, 50) for _ in range(characters)])


def path_costs():
    """A tree of states: a path of four, and one more state at each of them."""
    links = [(0, 1), (1, 2), (2, 3), (1, 4), (1, 5), (2, 6), (3, 7)]
    table = [[0 if a == b else STATES for b in range(STATES)] for a in range(STATES)]
    for a, b in links:
        table[a][b] = table[b][a] = 1
    for k in range(STATES):
        for a in range(STATES):
            for b in range(STATES):
                table[a][b] = min(table[a][b], table[a][k] + table[k][b])
    return table


def random_costs(draw, symmetric):
    table = [[0 if a == b else draw.randint(2, 4) for b in range(STATES)] for a in range(STATES)]
    return [[table[min(a, b)][max(a, b)] for b in range(STATES)] for a in range(STATES)] if symmetric else table


def costs_commands(table):
    changes = " ".join(f"{a}>{b} {table[a][b]}" for a in range(STATES) for b in range(STATES) if a != b)
    return "".join(f"costs {c} = {changes};\n" for c in range(200, 220))


def write(path, blocks, after=""):
    characters = sum(len(rows[0]) for _, rows in blocks)
    with open(path, "w", encoding="utf-8") as file:
        file.write(f"nstates {32 if blocks[0][0] == 'cont' else 8};\nxread\n{characters} {TAXA}\n")
        for kind, rows in blocks:
            file.write(f"&[{kind}]\n")
            for i, row in enumerate(rows):
                cells = " ".join(f"{value:.3f}" for value in row) if kind == "cont" else "".join(map(str, row))
                file.write(f"t{i} {cells}\n")
        file.write(";\n" + after)
    return path


def made_up(folder):
    draw = random.Random(5)
    plain, more = states_of(draw, 200, 4), states_of(draw, 20, STATES)
    values = values_of(draw, 50)
    both = [("num", [a + b for a, b in zip(plain, more)])]

    def place(name):
        return os.path.join(folder, name)

    return [write(place("plain"), [("num", plain)]),
            write(place("unordered"), both),
            write(place("weight_2"), both, "ccode /2 200.219;\n"),
            write(place("additive"), both, "ccode + 200.219;\n"),
            write(place("costs_alike"), both, costs_commands([[2 * (a != b) for b in range(STATES)]
                                                               for a in range(STATES)])),
            write(place("state_tree"), both, costs_commands(path_costs())),
            write(place("costs"), both, costs_commands(random_costs(draw, True))),
            write(place("asymmetric"), both, costs_commands(random_costs(draw, False))),
            write(place("continuous"), [("cont", values)]),
            write(place("mixed"), [("cont", values), ("num", plain)])]


def seconds_of(program, scratch, by_fit, replications, seeds):
    """Mean seconds of a replication, and the best score."""
    before = ["piwe=3"] if by_fit else []
    reading = min(run(program, scratch, *before, "mult=wagner replications 0")[0] for _ in range(3))
    seconds, scores = 0, []
    for seed in range(1, seeds + 1):
        own, _, output = run(program, scratch, *before, "report +0/1", f"rseed {seed}",
                             f"mult=replications {replications}")
        if re.search("rror|OOpps", output):
            sys.exit(output)
        seconds += own - reading
        scores.append(number(r"Best score[^:\n]*: ([\d.]+\d)", output))
    return seconds / seeds / replications, min(scores)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("matrices", nargs="*")
    parser.add_argument("--replications", type=int, default=20)
    parser.add_argument("--seeds", type=int, default=3)
    options = parser.parse_args()
    program = os.path.abspath(options.program)
    by_length, faults = {}, []
    print(f"{'matrix':<24}{'length':>12}{'seconds':>10}{'of plain':>10}{'fit':>12}{'seconds':>10}{'fit/length':>12}")
    with tempfile.TemporaryDirectory() as folder:
        for path in made_up(folder) + options.matrices:
            name = os.path.basename(path)
            with tempfile.TemporaryDirectory() as scratch:
                shutil.copy(path, os.path.join(scratch, "data.zeb"))
                length_time, length = seconds_of(program, scratch, False, options.replications, options.seeds)
                fit_time, fit = seconds_of(program, scratch, True, options.replications, options.seeds)
            by_length[name] = length_time
            print(f"{name:<24}{length:>12g}{length_time:>10.4f}{length_time / by_length['plain']:>10.2f}{fit:>12g}"
                  f"{fit_time:>10.4f}{fit_time / length_time:>12.2f}", flush=True)
            if path in options.matrices and fit_time > MOST_BY_FIT * length_time:
                faults.append(f"{name}: more than {MOST_BY_FIT} times the time under implied weights")
    for name, limit, unit in (("costs", MOST_OF_COSTS, "plain"), ("costs_alike", MOST_OF_REDUCED, "weight_2"),
                              ("state_tree", MOST_OF_REDUCED, "additive")):
        if by_length[name] > limit * by_length[unit]:
            faults.append(f"{name}: more than {limit} times the time of \"{unit}\"")
    if max(by_length["continuous"], by_length["mixed"]) > MOST_OF_CONTINUOUS:
        faults.append(f"continuous: more than {MOST_OF_CONTINUOUS} s")
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
