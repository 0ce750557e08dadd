#!/usr/bin/env python3
"""Compares data with trees, and holds the characters that favour either tree, the cells critical for their lengths and
for the synapomorphies of their own groups, and what both have in common against parsimony by the definition.
Usage: random_trees.py ZEB [--runs N] [--seed N]"""

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


def leaves(node):
    return leaves(node[0]) | leaves(node[1]) if isinstance(node, tuple) else frozenset([node])


def inner_nodes(node):
    if not isinstance(node, tuple):
        return []
    return [node, *inner_nodes(node[0]), *inner_nodes(node[1])]


def synapomorphies(tree, column):
    """By group, the states before and after, where all reconstructions of least steps have a change."""
    nodes = inner_nodes(tree)
    number = {leaves(node): i for i, node in enumerate(nodes)}
    below = {number[leaves(c)]: number[leaves(node)] for node in nodes for c in node if isinstance(c, tuple)}
    tips = [(number[leaves(node)], c) for node in nodes for c in node if not isinstance(c, tuple)]
    least, sets = None, []
    for states in itertools.product(range(3), repeat=len(nodes)):
        cost = sum(states[a] != states[b] for b, a in below.items())
        cost += sum(column[c] not in ("?", str(states[node])) for node, c in tips)
        if least is None or cost < least:
            least, sets = cost, [set() for _ in nodes]
        if cost == least:
            for known, state in zip(sets, states):
                known.add(state)
    return {leaves(nodes[b]): (sets[a], sets[b]) for b, a in below.items() if not sets[a] & sets[b] and least}


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


def faults_by_groups(zeb, seed, folder):
    """Synapomorphies of the groups that only one tree has, and how much the trees share."""
    rng = random.Random(seed)
    ntax, nchar = rng.randint(5, 6), rng.randint(3, 8)
    trees = [(0, random_tree(rng, rng.sample(range(1, ntax), ntax - 1))) for _ in range(2)]
    groups = [{leaves(node) for node in inner_nodes(tree[1])} for tree in trees]
    new = [[rng.choice("001") for _ in range(nchar)] for _ in range(ntax)]
    for c in range(0, nchar, 2):
        marked = rng.choice(sorted(groups[c % 4 == 0], key=sorted))
        for t in range(ntax):
            new[t][c] = "1" if t in marked else "0"
    old = [row[:] for row in new]
    for _ in range(rng.randint(1, 5)):
        old[rng.randrange(ntax)][rng.randrange(nchar)] = rng.choice("012?")
    write(folder / "new.zeb", new, trees[0])
    write(folder / "old.zeb", old, trees[1])
    run = subprocess.run([zeb, "dcomp", "]", "/1", "both.zeb", "new.zeb", "old.zeb,", "quit,"], cwd=folder, text=True,
                         stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)

    def changes(character, replaced=()):
        column = [(old if t in replaced else new)[t][character] for t in range(ntax)]
        return [synapomorphies(tree, column) for tree in trees]

    own = [groups[0] - groups[1], groups[1] - groups[0]]
    shared = len(groups[0] & groups[1]) - 1  # without that of all taxa but the outgroup
    evidence = [g in own[i] for c in range(nchar) for i, found in enumerate(changes(c)) for g in found]
    right = (shared / (shared + len(own[0]) + len(own[1])), evidence.count(False) / (len(evidence) or 1))
    told = [float(x) for x in re.findall(r"CSS?I=([\d.]+)", run.stdout)]
    faults = []
    if len(told) != 2 or any(abs(a - b) > 0.0006 for a, b in zip(told, right) if evidence):
        faults.append(f"CSI, CSSI: {told}, not {right}")
    critical = set()
    for c, t in itertools.product(range(nchar), range(ntax)):
        pairs = zip(changes(c), changes(c, (t,)), own)
        if new[t][c] != old[t][c] and any(a.get(g) != b.get(g) for a, b, wanted in pairs for g in wanted):
            critical.add((c, t))
    told = {(int(c), int(t)) for c, t in re.findall(r"Char\. (\d+), \w+, t(\d+):", run.stdout)}
    if told != critical:
        faults.append(f"critical by synapomorphies: {sorted(told)}, not {sorted(critical)}")
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
            place = pathlib.Path(folder)
            faults = faults_of(options.zeb.resolve(), seed, place) + faults_by_groups(options.zeb.resolve(), seed, place)
        if faults:
            failed += 1
            print(f"seed {seed}:", *faults, sep="\n  ")
    print(f"{options.runs} comparisons, {failed} with faults")
    return failed > 0


sys.exit(main())
