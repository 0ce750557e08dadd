#!/usr/bin/env python3
"""The smaller analyses on random trees and data, against oracles that are slow and obvious.

Usage: oracles.py ZEB [--runs N] [--seed N] [--only NAME]; the number of a run is all that it depends on."""

import argparse
import itertools
import pathlib
import random
import re
import subprocess
import sys
import tempfile


def run(zeb, text):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "case.run")
        path.write_text(text + "\nquit;\n")
        done = subprocess.run([zeb, path.name], cwd=folder, capture_output=True, text=True, timeout=120)
    return done.stdout + done.stderr


# ---- trees are nested tuples; terminal 0 is the outgroup, sister of the rest ----

def random_tree(rnd, taxa, polytomies=0.0):
    parts = list(taxa)
    while len(parts) > 1:
        size = 2 if rnd.random() >= polytomies else min(3, len(parts))
        chosen = rnd.sample(range(len(parts)), size)
        joined = tuple(parts[i] for i in chosen)
        parts = [part for i, part in enumerate(parts) if i not in chosen] + [joined]
    return parts[0]


def rooted(rnd, n, polytomies=0.0):
    return (0, random_tree(rnd, range(1, n), polytomies))


def text_of(tree):
    return str(tree) if isinstance(tree, int) else "(" + " ".join(map(text_of, tree)) + ")"


def tread(trees):
    return "tread " + " * ".join(map(text_of, trees)) + ";"


def terminals(tree):
    return frozenset([tree]) if isinstance(tree, int) else frozenset().union(*map(terminals, tree))


def groups(tree, without=frozenset()):
    """Groups of two taxa or more, not all, after `without` is cut off."""
    found = set()

    def below(part):
        own = terminals(part) - without
        if not isinstance(part, int):
            for child in part:
                below(child)
        found.add(own)
    below(tree)
    everything = terminals(tree) - without
    return {group for group in found if 1 < len(group) < len(everything)}


def strict(trees, without=frozenset()):
    return set.intersection(*(groups(tree, without) for tree in trees))


def without_taxa(group_set, cut, everything):
    return {g - cut for g in group_set if 1 < len(g - cut) < len(everything - cut)}


def triplet(tree_groups, three):
    """The two that are together; none where all are alike."""
    for pair in itertools.combinations(three, 2):
        out = (set(three) - set(pair)).pop()
        if any(set(pair) <= group and out not in group for group in tree_groups):
            return pair
    return None


def branches_of_polytomies(trees, n):
    """For each node of the strict consensus with more than two branches: the branches."""
    clades = strict(trees) | {frozenset(range(n))} | {frozenset([t]) for t in range(n)}
    for node in clades:
        inner = [c for c in clades if c < node]
        branches = [c for c in inner if not any(c < d for d in inner)]
        if len(branches) > 2:
            yield sorted(branches, key=min)


def table_of(said, title):
    """A list shown as a table: value by number, those without one left out."""
    body = said.split(title)[1].split("\n \n")[0]
    values = {}
    for line in body.split("\n"):
        row = re.match(r"\s*(\d+) \|(.*)", line)
        if row:
            for i, value in enumerate(row[2].split()):
                if value != "--":
                    values[int(row[1]) + i] = float(value)
    return values


def blank_data(n):
    return f"xread 1 {n} " + " ".join(f"t{i} 0" for i in range(n)) + "; collapse none;"


# ---- the checks: each returns what is wrong, or nothing ----

def pruning(zeb, rnd):
    n = rnd.randint(5, 9)
    start = rooted(rnd, n)
    trees = [rooted(rnd, n) if rnd.random() < 0.3 else start for _ in range(rnd.randint(1, 3))] + [start]
    said = run(zeb, blank_data(n) + tread(trees) + "prupdn table; pcrprune table; resols table;")
    everything = frozenset(range(n))
    whole = strict(trees)
    for title, wanted in (
            ("Groups gained by leaving out the taxon",
             lambda cut: len(strict(trees, cut)) - len(without_taxa(whole, cut, everything))),
            ("Groups lost", lambda cut: len(whole) - len(without_taxa(whole, cut, everything)))):
        expected = {t: wanted(frozenset([t])) for t in range(1, n)}
        if table_of(said, title) != expected:
            return f"{title}: {table_of(said, title)} for {expected}"
    congruence = {t: 1.0 for t in range(n)}
    resolutions = []
    for branches in branches_of_polytomies(trees, n):
        shown = [min(branch) for branch in branches]
        cut = everything - frozenset(shown)
        of_trees = [groups(tree, cut) for tree in trees]
        resolutions.append(len({frozenset(g) for g in of_trees}))
        for branch, taxon in zip(branches, shown):
            three = [(taxon,) + two for two in itertools.combinations([t for t in shown if t != taxon], 2)]
            agreed = sum(len({triplet(g, sorted(t)) for g in of_trees} - {None}) < 2 for t in three) / len(three)
            for t in branch:
                congruence[t] = min(congruence[t], agreed)
    told = table_of(said, "Positional congruence of the taxa, the least over the polytomies")
    if any(abs(told[t] - congruence[t]) > 1e-5 for t in congruence):
        return f"congruence {told} for {congruence}"
    told = [] if "has no polytomy" in said else sorted(table_of(said, "by node of the strict consensus").values())
    if told != sorted(resolutions):
        return f"resolutions {told} for {resolutions}"
    return None


def twins(zeb, rnd):
    """Those set aside come back beside their twins, and the score stays."""
    n, c = rnd.randint(6, 10), rnd.randint(3, 6)
    rows = [[rnd.choice("01?") for _ in range(c)] for _ in range(n)]
    for t in range(n):
        if rnd.random() < 0.4:
            rows[t] = rows[rnd.randrange(n)]
    texts = ["".join(row) for row in rows]
    said = run(zeb, f"xread {c} {n} " + " ".join(f"t{i} {row}" for i, row in enumerate(texts))
               + "; riddup; taxcode; mult=replications 1; keep 1; length; riddup -; length;")
    if "Cannot have less than" in said or "No taxa have" in said:
        return None
    distinct = {row for row in texts if row.strip("?")}
    kept = len(distinct) + sum(not row.strip("?") for row in texts)
    active = int(re.findall(r"(\d+) terminal taxa are active", said)[0])
    if active != kept:
        return f"{active} active taxa for {kept}"
    lengths = [table for table in re.findall(r"Tree lengths.*?\| *(\d+)", said, re.DOTALL)]
    if len(lengths) != 2 or lengths[0] != lengths[1]:
        return f"lengths {lengths}"
    return None


def fitch(tree, rows):
    """Steps of binary rows of sets on a binary tree."""
    steps = 0

    def below(part):
        nonlocal steps
        if isinstance(part, int):
            return rows[part]
        a, b = map(below, part)
        steps += sum(not (x & y) for x, y in zip(a, b))
        return [x & y or x | y for x, y in zip(a, b)]
    below(tree)
    return steps


def pruned(tree, clade):
    """The tree without a clade that it has."""
    if tree == clade:
        return None
    if isinstance(tree, int):
        return tree
    parts = [part for part in (pruned(child, clade) for child in tree) if part is not None]
    return parts[0] if len(parts) == 1 else tuple(parts)


def attached(tree, clade):
    """All trees with the clade on a branch, the root's left out; the branch by its taxa."""
    if isinstance(tree, int):
        return
    for i, child in enumerate(tree):
        rest = tree[:i] + tree[i + 1:]
        yield terminals(child), rest + ((child, clade),)
        for where, inner in attached(child, clade):
            yield where, rest + (inner,)


def moves(zeb, rnd):
    n, c = rnd.randint(5, 8), rnd.randint(2, 6)
    texts = ["".join(rnd.choice("01") for _ in range(c)) for _ in range(n)]
    rows = [[{cell} for cell in text] for text in texts]
    tree = rooted(rnd, n)
    within = rnd.randint(0, 2)
    said = run(zeb, f"xread {c} {n} " + " ".join(f"t{i} {row}" for i, row in enumerate(texts))
               + f"; collapse none; {tread([tree])} taxname =; chkmoves within {within} show 0; taxname -; chkmoves table within {within};")
    told = sorted(v for v in table_of(said, "Moves by node of tree 0").values() if v)
    furthest = sorted(v for v in table_of(said, "Groups that the longest move goes over").values() if v)
    length, own = fitch(tree, rows), groups(tree)
    counts, longest = [], []
    for clade in walk(tree[1]):
        if clade == tree[1]:
            continue
        rest = pruned(tree, clade)
        found = []
        for where, moved in attached(rest, clade):
            distance = len(own - groups(moved))
            if distance and where != frozenset([0]) and fitch(moved, rows) <= length + within:
                found.append(distance)
        if found:
            counts.append(len(found))
            longest.append(max(found))
    if told != sorted(counts) or furthest != sorted(longest):
        return f"{told} {furthest} for {sorted(counts)} {sorted(longest)}"
    return None


def walk(tree):
    yield tree
    if not isinstance(tree, int):
        for child in tree:
            yield from walk(child)


def cliques(zeb, rnd):
    """The largest sets of characters that some tree has without homoplasy, over all sets and trees."""
    n, c = rnd.randint(4, 6), rnd.randint(3, 6)
    missing = rnd.choice(("", "?"))
    texts = ["".join(rnd.choice("0011" + missing + rnd.choice(("", "2"))) for _ in range(c)) for _ in range(n)]
    rows = [[{"0", "1", "2"} if cell == "?" else {cell} for cell in text] for text in texts]
    said = run(zeb, f"xread {c} {n} " + " ".join(f"t{i} {row}" for i, row in enumerate(texts)) + "; kleex noplot;")
    if "No characters" in said:
        return None
    told = int(re.search(r"best of weight (\d+)", said)[1])
    left_out = re.search(r"(\d+) characters? left out", said)
    columns = [[row[i] for row in rows] for i in range(c)]

    def least(column):
        return min(len(s) for k in (1, 2, 3) for s in itertools.combinations("012", k) if all(set(s) & x for x in column)) - 1

    def most(column):
        return len(column) - max(sum(s in x for x in column) for s in "012")
    informative = [col for col in columns if most(col) > least(col)]
    if c - len(informative) != (int(left_out[1]) if left_out else 0):
        return "other characters are informative"
    best = 0
    for tree in all_rooted(n):
        free = sum(fitch(tree, [[x] for x in col]) == least(col) for col in informative)
        best = max(best, free)
    exact = "Exact:" in said
    if told < best or (exact and told != best):
        return f"{told} ({'exact' if exact else 'bound'}) for {best}"
    return None


def all_rooted(n):
    trees = [(0, 1)]
    for t in range(2, n):
        trees = [made for tree in trees for where, made in attached(tree, t) if where != frozenset([0])]
    return trees


def shapes(zeb, rnd):
    n = rnd.randint(3, 12)
    tree = random_tree(rnd, range(n), rnd.choice((0, 0.3)))
    taxa = max(n, 4)
    said = run(zeb, blank_data(taxa) + tread([tree]) + "".join(f"shpcomp {name};" for name in INDICES))
    depths, wanted = [], dict.fromkeys(INDICES, 0)

    def height(part):
        return 0 if isinstance(part, int) else 1 + max(map(height, part))

    def below(part, depth):
        if isinstance(part, int):
            depths.append(depth)
            return 1
        sizes = [below(child, depth + 1) for child in part]
        if len(part) != 2:
            wanted["colless"] = None
        elif wanted["colless"] is not None:
            wanted["colless"] += abs(sizes[0] - sizes[1])
        if depth:
            wanted["cophenetic"] += sum(sizes) * (sum(sizes) - 1) / 2
            wanted["height"] += 1 / height(part)
        wanted["cherries"] += len(part) == 2 and sizes == [1, 1]
        return sum(sizes)
    below(tree, 0)
    wanted["sackin"], wanted["depth"] = sum(depths), max(depths)
    wanted["variance"] = sum(d * d for d in depths) / n - (sum(depths) / n) ** 2
    for name, title in INDICES.items():
        told = table_of(said, title + " by tree").get(0)
        if (told is None) != (wanted[name] is None) or (told is not None and abs(told - wanted[name]) > 1e-4):
            return f"{name} {told} for {wanted[name]}"
    return None


INDICES = {"colless": "Colless", "sackin": "Sackin", "cophenetic": "Cophenetic", "height": "B1", "cherries": "Cherries",
           "depth": "Depth", "variance": "Variance"}
CHECKS = {"pruning": pruning, "twins": twins, "moves": moves, "cliques": cliques, "shapes": shapes}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zeb")
    parser.add_argument("--runs", type=int, default=25)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", choices=CHECKS)
    arguments = parser.parse_args()
    zeb = str(pathlib.Path(arguments.zeb).resolve())
    faults = 0
    for name, check in CHECKS.items():
        if arguments.only not in (None, name):
            continue
        for number in range(arguments.seed, arguments.seed + arguments.runs):
            wrong = check(zeb, random.Random(f"{name} {number}"))
            if wrong:
                faults += 1
                print(f"{name}, run {number}: {wrong}")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
