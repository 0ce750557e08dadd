#!/usr/bin/env python3
"""Drivers leave the local optima that they should. The matrix has four blocks of seven terminals. For each block, with
the outgroup, all 10,395 trees are scored, which shows its best trees and an island of trees that no TBR move leads out
of without a longer tree. What holds for the blocks holds for the whole: a tree restricted to a block is no better than
that block's best, and a TBR move of the whole is one move, or none, in each block.

Usage: traps.py ZEB"""

import os
import random
import re
import subprocess
import sys
import tempfile

TAXA = 8  # of a block, the outgroup being 0
SEEDS = (9, 48, 64, 79)  # of blocks that have such an island
BACKBONE = 20  # characters that hold each block together


def all_trees():
    """As nested pairs, beside terminal 0."""
    def with_one_more(tree, terminal):
        yield (tree, terminal)
        if isinstance(tree, tuple):
            yield from ((left, tree[1]) for left in with_one_more(tree[0], terminal))
            yield from ((tree[0], right) for right in with_one_more(tree[1], terminal))

    trees = [(1, 2)]
    for terminal in range(3, TAXA):
        trees = [more for tree in trees for more in with_one_more(tree, terminal)]
    return trees


def clades(tree):
    """As sets of bits; that of the whole is the last."""
    if isinstance(tree, int):
        return [1 << tree]
    left, right = map(clades, tree)
    return left + right + [left[-1] | right[-1]]


def key(tree):
    return frozenset(clades(tree))


def tree_of(sets):
    """From its clades."""
    def below(clade):
        inner = sorted((s for s in sets if s != clade and s & clade == s), key=int.bit_count)
        if not inner:
            return clade.bit_length() - 1
        return (below(inner[-1]), below(clade & ~inner[-1]))

    return below(max(sets))


def restricted(sets, taxa):
    """The branches of an unrooted tree restricted to some taxa, each as the side without the least of them."""
    least = taxa & -taxa
    sides = {s & taxa if not s & least else taxa & ~s for s in sets}
    return frozenset(side for side in sides if side)


def is_one_tbr_move(a, b):
    """Do both have a branch whose two sides are arranged alike in both?"""
    everything = (1 << TAXA) - 1
    return any(restricted(a, part) == restricted(b, part) and restricted(a, everything & ~part) == restricted(b, everything & ~part)
               for part in a & b)


class Block:
    def __init__(self, seed, trees):
        draw = random.Random(seed)
        self.characters = draw.randint(8, 24)
        self.rows = [draw.getrandbits(self.characters) for _ in range(TAXA)]
        self.everything = (1 << self.characters) - 1
        lengths = {key(tree): self.length(tree) for tree in trees}
        self.least = min(lengths.values())
        self.best = next(sets for sets, steps in lengths.items() if steps == self.least)
        self.trap = next(sets for sets, steps in lengths.items() if steps == self.least + 1 and self.is_trap(sets, lengths))

    def length(self, tree):
        """Fitch's count, all characters at once."""
        def joined(a, b):
            zeros, ones = a[0] & b[0], a[1] & b[1]
            apart = ~(zeros | ones) & self.everything
            return zeros | apart, ones | apart, a[2] + b[2] + apart.bit_count()

        def below(part):
            if isinstance(part, int):
                return ~self.rows[part] & self.everything, self.rows[part], 0
            return joined(below(part[0]), below(part[1]))

        return joined(below(tree), below(0))[2]

    @staticmethod
    def is_trap(start, lengths):
        """Is every tree that moves to trees as good lead to without a better one beside it?"""
        level = lengths[start]
        better = [sets for sets, steps in lengths.items() if steps < level]
        equal = [sets for sets, steps in lengths.items() if steps == level]
        island, waiting = {start}, [start]
        while waiting:
            tree = waiting.pop()
            if any(is_one_tbr_move(tree, other) for other in better):
                return False
            new = [other for other in equal if other not in island and is_one_tbr_move(tree, other)]
            island.update(new)
            waiting += new
        return True


class Composite:
    """The blocks side by side; terminal 0 is the outgroup of each."""

    def __init__(self, blocks):
        self.blocks = blocks
        self.least = sum(block.least for block in blocks) + BACKBONE * len(blocks)

    def matrix(self):
        width = sum(block.characters + BACKBONE for block in self.blocks)
        rows = ["t0 " + self.row(None, 0)]
        rows += [f"t{b * (TAXA - 1) + t} " + self.row(block, t) for b, block in enumerate(self.blocks) for t in range(1, TAXA)]
        return f"report-; mxram 50; xread {width} {len(rows)}\n" + "\n".join(rows) + "\n; hold 200;\n"

    def row(self, own, terminal):
        return "".join(f"{block.rows[terminal if block is own else 0]:0{block.characters}b}" + str(int(block is own)) * BACKBONE
                       for block in self.blocks)

    def tree(self, solved):
        """With some blocks at their best, and the others in their traps."""
        def text(part, shift):
            return str(part + shift) if isinstance(part, int) else f"({text(part[0], shift)} {text(part[1], shift)})"

        parts = [text(tree_of(block.best if b in solved else block.trap), b * (TAXA - 1)) for b, block in enumerate(self.blocks)]
        return f"(0 (({parts[0]} {parts[1]})({parts[2]} {parts[3]})))"


FAR_DRIFT = "drift:rfitdiff 1 fitdiff 2"  # by default drift accepts no move out of a trap that few characters make
SEARCHES = (  # from the tree that is trapped in all blocks
    "ratchet", "ratchet=auto", "ratchet=autoconst 3", "ratchet=fusefreq 3", "ratchet=tradrat upfactor 20 downfactor 20",
    f"{FAR_DRIFT}; drift", f"{FAR_DRIFT}; drift=noequals", f"{FAR_DRIFT}; drift=autoconst 3 iterations 100", "sectsch=minsize 8 maxsize 14 selfactor 5",
    "sectsch=xss 4+8-2", "sectsch=minsize 8 maxsize 14 gocomb 6 selfactor 5",
    f"{FAR_DRIFT}; sectsch=minsize 8 maxsize 14 godrift 6 selfactor 1", "rebuild=cycles 200 nohybrid", "mult=replications 30",
    "mult=replications 3 ratchet", "xmult=hits 3", "xmult=level 3")
FROM_POOL = ("tfuse=noswap", "tfuse", "tfuse=choose repeat noswap", "hybrid=hybridize 100*3/4")  # each tree has one block solved


def least_after(zeb, data, trees, search, seed):
    with tempfile.TemporaryDirectory() as folder:
        commands = f"{data}tread {' * '.join(trees)};\nrseed {seed}; {search};\nquote =lengths; length; quit;\n"
        said = subprocess.run([zeb], cwd=folder, input=commands, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              timeout=100).stdout
    rows = re.findall(r"^ *\d+ \|(.*)", said.partition("=lengths")[2], re.M)
    return min((float(value) for row in rows for value in row.split()), default=None)


def main():
    zeb = os.path.abspath(sys.argv[1])
    trees = all_trees()
    whole = Composite([Block(seed, trees) for seed in SEEDS])
    data = whole.matrix()
    trapped = whole.tree(())
    pool = [whole.tree((b,)) for b in range(len(SEEDS))]
    cases = [("bbreak", [trapped], whole.least + len(SEEDS))]  # the trap holds
    cases += [(search, [trapped], whole.least) for search in SEARCHES]
    cases += [(search, pool, whole.least) for search in FROM_POOL]
    failures = 0
    for search, start, wanted in cases:
        for seed in (1, 2, 3):
            found = least_after(zeb, data, start, search, seed)
            if found != wanted:
                failures += 1
                print(f"FAILED {search}, seed {seed}: {found}, not {wanted}")
    print(f"{3 * len(cases)} searches, {failures} faults")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
