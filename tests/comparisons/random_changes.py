#!/usr/bin/env python3
"""Compares data with copies that were changed at random: every change must be told and nothing else, and the
combined matrix must hold what the newer file has. Usage: random_changes.py ZEB [--runs N] [--seed N]
[--changes N]"""

import argparse
import copy
import dataclasses
import pathlib
import random
import re
import subprocess
import sys
import tempfile

SYMBOLS = "0123456789ABCDEFGHIJKLMNOPQRSTUV"
LETTERS = "abcdefghijklmnopqrstuvwxyz"


@dataclasses.dataclass
class Character:
    number: int  # the same in both copies, as are the numbers of taxa and states
    name: str
    continuous: bool
    states: list  # pairs of number and name, in their sequence
    weight: int = 1
    active: bool = True
    additive: bool = False
    steps: int = 0


@dataclasses.dataclass
class Data:
    taxa: list  # pairs of number and name
    characters: list
    cells: dict  # by numbers of taxon and character: None, a value, or a set of numbers of states
    done: set = dataclasses.field(default_factory=set)  # changes that can be made once only

    def once(self, *change):
        new = change not in self.done
        self.done.add(change)
        return new


def word(rng, used):
    while True:
        w = "".join(rng.choice(LETTERS) for _ in range(rng.randint(9, 14)))
        if w not in used:
            used.add(w)
            return w


def typo(rng, w):
    i = rng.randrange(len(w))
    kind = rng.randrange(3)
    return w[:i] + (rng.choice(LETTERS) if kind else "") + w[i + (kind < 2):]


def random_data(rng, used):
    """Two continuous characters, then discrete ones."""
    data = Data([[t, word(rng, used)] for t in range(rng.randint(15, 30))], [], {})
    for number in range(2 + rng.randint(15, 40)):
        continuous = number < 2
        count = 0 if continuous else rng.randint(2, 4)
        c = Character(number, word(rng, used), continuous, [[s, word(rng, used)] for s in range(count)])
        c.additive = count > 2 and rng.random() < .4
        data.characters.append(c)
        for t, _ in data.taxa:
            if rng.random() < .1:
                data.cells[t, number] = None
            elif continuous:
                data.cells[t, number] = rng.randint(100, 3000) / 1000
            else:
                data.cells[t, number] = set(rng.sample(range(count), 1 + (rng.random() < .1)))
    return data


def move(rng, items, item, first):
    items.remove(item)
    items.insert(rng.randint(first, len(items)), item)


def change(rng, data, used, fresh):
    """Makes one random change, if it can be made."""
    taxa, characters, cells = data.taxa, data.characters, data.cells
    discrete = characters[2:]
    t, c = rng.choice(taxa), rng.choice(discrete)
    cell = t[0], c.number
    kind = rng.choice(["entry"] * 5 + [
        "missing", "polymorphism", "taxon name", "name", "state name", "weight", "additive", "active", "steps",
        "order", "new state", "last state", "add taxon", "drop taxon", "move taxon", "add", "drop", "move",
        "scale", "value"])
    if kind == "entry":
        cells[cell] = {rng.choice(c.states)[0]}
    elif kind == "missing":
        cells[cell] = None
    elif kind == "polymorphism":
        cells[cell] = {s[0] for s in rng.sample(c.states, 2)}
    elif kind == "taxon name" and data.once(kind, t[0]):
        t[1] = typo(rng, t[1])
    elif kind == "name" and data.once(kind, c.number):
        c.name = typo(rng, c.name)
    elif kind == "state name":
        s = rng.choice(c.states)
        if data.once(kind, c.number, s[0]):
            s[1] = typo(rng, s[1])
    elif kind == "weight":
        c.weight = rng.randint(1, 5)
    elif kind == "additive":
        c.additive = not c.additive
    elif kind == "active":
        c.active = not c.active
    elif kind == "steps":
        c.steps = rng.randint(0, 3)
    elif kind == "order":
        rng.shuffle(c.states)
    elif kind in ("new state", "last state") and len(c.states) < 8:
        state = [next(fresh), word(rng, used)]
        c.states.insert(len(c.states) if kind == "last state" else rng.randint(0, len(c.states)), state)
        cells[cell] = {state[0]}
    elif kind == "add taxon":
        number = next(fresh)
        taxa.insert(rng.randint(0, len(taxa)), [number, word(rng, used)])
        for x in characters:
            cells[number, x.number] = rng.randint(100, 3000) / 1000 if x.continuous else {rng.choice(x.states)[0]}
    elif kind == "drop taxon" and len(taxa) > 8:
        taxa.remove(t)
    elif kind == "move taxon":
        move(rng, taxa, t, 0)
    elif kind == "add":
        x = Character(next(fresh), word(rng, used), False, [[next(fresh), word(rng, used)] for _ in range(2)])
        characters.insert(rng.randint(2, len(characters)), x)
        for number, _ in taxa:
            cells[number, x.number] = {rng.choice(x.states)[0]}
    elif kind == "drop" and len(discrete) > 6:
        characters.remove(c)
    elif kind == "move":
        move(rng, characters, c, 2)
    elif kind == "scale" and data.once(kind):
        factor, shift = rng.choice([2, 3, 10, .5]), rng.choice([0, 1, 2.5])
        for number, _ in taxa:
            if cells[number, 0] is not None:
                cells[number, 0] = cells[number, 0] * factor + shift
    elif kind == "value" and data.once(kind):
        cells[t[0], 1] = rng.randint(100, 3000) / 1000


def written_cell(c, states):
    if states is None:
        return "?"
    symbols = "".join(SYMBOLS[i] for i, s in enumerate(c.states) if s[0] in states)
    return symbols if len(symbols) == 1 else f"[{symbols}]"


def write(data, path):
    lines = ["nstates 32; xread", f"{len(data.characters)} {len(data.taxa)}", "&[continuous]"]
    for t, name in data.taxa:
        values = [data.cells[t, c.number] for c in data.characters[:2]]
        lines.append(name + "".join(" ?" if v is None else f" {v:.4f}" for v in values))
    lines.append("&[numeric]")
    for t, name in data.taxa:
        lines.append(name + " " + "".join(written_cell(c, data.cells[t, c.number]) for c in data.characters[2:]))
    lines.append(";")
    for i, c in enumerate(data.characters):
        lines.append(f"ccode {'+-'[not c.additive]} {'[]'[not c.active]} /{c.weight} ={c.steps} {i};")
    lines.append("cnames")
    for i, c in enumerate(data.characters):
        lines.append(f"{{{i} {c.name} {' '.join(s[1] for s in c.states)} ;")
    path.write_text("\n".join(lines) + "\n;\nproc/;\n")


def sequences_differ(a, b):
    here, there = [s[0] for s in a.states], [s[0] for s in b.states]
    shifts = {there.index(s) - here.index(s) for s in here if s in there}
    if len(shifts) != 1:
        return len(shifts) > 1
    shift = shifts.pop()
    return any(0 <= there.index(s) - shift < len(here) for s in there if s not in here)


COUNTS = {  # what is counted, and how the report tells it
    "taxa+": r"adds (\d+) taxa", "taxa-": r"taxa \(and deletes (\d+)\)",
    "chars+": r"adds (\d+) chars", "chars-": r"chars\. \(and deletes (\d+)\)",
    "missing+": r"resolves (\d+) missing", "missing-": r"eliminates (\d+) entries",
    "states": r"(\d+) un-matched states", "weight": r"(\d+) different character weights",
    "additive": r"(\d+) chars\. with different additivity", "active": r"(\d+) chars\. active in one",
    "steps": r"(\d+) chars\. with different internal", "sequences": r"(\d+) different sequence",
    "scales": r"(\d+) continuous characters with", "cells": r"(\d+) matrix cells with different",
}


def expected(new, old):
    n = dict.fromkeys(COUNTS, 0)
    new_taxa, old_taxa = {t for t, _ in new.taxa}, {t for t, _ in old.taxa}
    newer, older = ({c.number: c for c in d.characters} for d in (new, old))
    shared = new_taxa & old_taxa
    n["taxa+"], n["taxa-"] = len(new_taxa - old_taxa), len(old_taxa - new_taxa)
    n["chars+"], n["chars-"] = len(newer.keys() - older.keys()), len(older.keys() - newer.keys())
    for number in newer.keys() & older.keys():
        a, b = newer[number], older[number]
        for setting in ("weight", "additive", "active", "steps"):
            n[setting] += getattr(a, setting) != getattr(b, setting)
        n["states"] += len({s for s, _ in a.states} ^ {s for s, _ in b.states})
        n["sequences"] += a.additive and sequences_differ(a, b)
        pairs = [(new.cells[t, number], old.cells[t, number]) for t in shared]
        n["missing+"] += sum(x is not None and y is None for x, y in pairs)
        n["missing-"] += sum(x is None and y is not None for x, y in pairs)
        both = [(x, y) for x, y in pairs if x is not None and y is not None]
        different = sum(abs(x - y) > .0011 if a.continuous else x != y for x, y in both)
        if number == 0 and different:
            n["scales"] += 1
        else:
            n["cells"] += different
    return n


def combined_cells(path):
    """Names of states by names of taxon and character, of the discrete characters."""
    text = path.read_text()
    names = re.findall(r"\{\d+ (\S+)((?: \S+)*?) ;", text)
    cells, first = {}, 0
    for block in text[:text.index("\n;")].split("&[")[1:]:
        width = 0
        for line in block.split("\n")[1:]:
            taxon, _, rest = line.partition(" ")
            entries = rest.split() if block.startswith("cont") else re.findall(r"\[[^\]]*\]|[^ ]", rest)
            width = len(entries) or width
            for (name, states), entry in zip(names[first:], entries):
                if states:
                    states = states.split()
                    cells[taxon, name] = None if entry == "?" else {states[SYMBOLS.index(x)] for x in entry.strip("[]")}
        first += width
    return cells


def wanted_cells(new, old):
    names = {t: name for d in (old, new) for t, name in d.taxa}
    characters = {c.number: c for d in (old, new) for c in d.characters}
    states = {(c.number, s): name for d in (old, new) for c in d.characters for s, name in c.states}
    cells = {(names[t], c.name): None for t in names for c in characters.values() if not c.continuous}
    for d in (old, new):
        for t, _ in d.taxa:
            for c in d.characters[2:]:
                entry = d.cells[t, c.number]
                cells[names[t], characters[c.number].name] = (
                    None if entry is None else {states[c.number, s] for s in entry})
    return cells


def numbers_from(first):
    while True:
        yield first
        first += 1


def faults_of(zeb, seed, changes, folder):
    rng, used, fresh = random.Random(seed), set(), numbers_from(1000)
    data = random_data(rng, used)
    changed = copy.deepcopy(data)
    for _ in range(changes):
        change(rng, changed, used, fresh)
    new, old = (changed, data) if rng.random() < .5 else (data, changed)
    write(new, folder / "new.zeb")
    write(old, folder / "old.zeb")
    run = subprocess.run([zeb, "dcomp", "]", "both.zeb", "new.zeb", "old.zeb,", "quit,"], cwd=folder, text=True,
                         stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
    told = {}
    for kind, pattern in COUNTS.items():
        found = re.search(pattern, run.stdout)
        told[kind] = int(found[1]) if found else 0
    wanted = expected(new, old)
    faults = [f"{kind}: {told[kind]}, not {wanted[kind]}" for kind in COUNTS if told[kind] != wanted[kind]]
    if "Final combined matrix" not in run.stdout:
        return [run.stdout[-400:]]
    cells, right = combined_cells(folder / "both.zeb"), wanted_cells(new, old)
    faults += [f"{place}: {cells.get(place)}, not {entry}" for place, entry in right.items() if cells.get(place) != entry]
    return faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zeb", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=20)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--changes", type=int, default=200)
    options = parser.parse_args()
    failed = 0
    for seed in range(options.seed, options.seed + options.runs):
        with tempfile.TemporaryDirectory() as folder:
            faults = faults_of(options.zeb.resolve(), seed, options.changes, pathlib.Path(folder))
        if faults:
            failed += 1
            print(f"seed {seed}:", *faults[:5], sep="\n  ")
    print(f"{options.runs} comparisons, {failed} with faults")
    return failed > 0


sys.exit(main())
