#!/usr/bin/env python3
"""Compares data with trees, and holds the characters that favour either tree and the cells critical for their lengths
against parsimony by the definition. Usage: random_trees.py ZEB [--runs N] [--seed N]"""

import argparse
import itertools
import pathlib
import random
import re
import subprocess
import sys
import tempfile

ANY = {0, 1, 2}


def random_tree(rng, items):
    if len(items) == 1:
        return items[0]
    cut = rng.randint(1, len(items) - 1)
    return random_tree(rng, items[:cut]), random_tree(rng, items[cut:])


def written(tree):
    return f"({written(tree[0])} {written(tree[1])})" if isinstance(tree, tuple) else str(tree)


def steps(tree, column):
    """Of an unordered character (Fitch 1971)."""
    count = 0

    def states(node):
        nonlocal count
        if not isinstance(node, tuple):
            return ANY if column[node] == "?" else {int(column[node])}
        a, b = states(node[0]), states(node[1])
        count += not a & b
        return a & b or a | b

    states(tree)
    return count


def write(path, rows, tree):
    lines = [f"xread {len(rows[0])} {len(rows)}"] + [f"t{i} {''.join(row)}" for i, row in enumerate(rows)]
    names = [f"{{{c} name{chr(65 + c) * 6} zero one two ;" for c in range(len(rows[0]))]
    path.write_text("\n".join(lines + [";", "cnames", *names, ";", f"tread {written(tree)};", "proc/;"]) + "\n")


def listed(text):
    return {int(c): int(n) for n, c in re.findall(r"\n\s+(\d+)  Char\. (\d+),", text)}


def faults_of(zeb, seed, folder):
    rng = random.Random(seed)
    ntax, nchar = rng.randint(5, 9), rng.randint(3, 12)
    new = [[rng.choice("0012") for _ in range(nchar)] for _ in range(ntax)]
    old = [row[:] for row in new]
    for _ in range(rng.randint(1, 8)):
        old[rng.randrange(ntax)][rng.randrange(nchar)] = rng.choice("012?")
    trees = [(0, random_tree(rng, rng.sample(range(1, ntax), ntax - 1))) for _ in range(2)]
    write(folder / "new.zeb", new, trees[0])
    write(folder / "old.zeb", old, trees[1])
    run = subprocess.run([zeb, "dcomp", "]", "/2", "both.zeb", "new.zeb", "old.zeb,", "quit,"], cwd=folder, text=True,
                         stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)

    def excess(character, replaced=()):
        """Steps that the second tree needs beyond the first, some taxa having what the older file has."""
        column = [(old if t in replaced else new)[t][character] for t in range(ntax)]
        return steps(trees[1], column) - steps(trees[0], column)

    favoured = [{c: sign * excess(c) for c in range(nchar) if sign * excess(c) > 0} for sign in (1, -1)]
    parts = run.stdout.partition("Stats.")[0].split("Characters favoring")
    faults = [f"favoured: {told}, not {right}" for told, right in
              zip([listed(parts[1]), listed(parts[2].partition("critical")[0])], favoured) if told != right]
    told = {(int(c), int(t)) for c, t in re.findall(r"Char\. (\d+), \w+, t(\d+):", run.stdout)}
    for c in range(nchar):
        differing = [t for t in range(ntax) if new[t][c] != old[t][c]]
        right = set()
        for together in range(1, 5):
            for taxa in itertools.combinations(differing, together):
                if excess(c, taxa) != excess(c):
                    right.update(taxa)
            if right:
                break
        if {t for x, t in told if x == c} != right:
            faults.append(f"critical in character {c}: {sorted(t for x, t in told if x == c)}, not {sorted(right)}")
    return faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zeb", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=50)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    failed = 0
    for seed in range(options.seed, options.seed + options.runs):
        with tempfile.TemporaryDirectory() as folder:
            faults = faults_of(options.zeb.resolve(), seed, pathlib.Path(folder))
        if faults:
            failed += 1
            print(f"seed {seed}:", *faults, sep="\n  ")
    print(f"{options.runs} comparisons, {failed} with faults")
    return failed > 0


sys.exit(main())
