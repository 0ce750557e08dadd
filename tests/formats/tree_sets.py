#!/usr/bin/env python3
"""Random sets of trees (odd names, polytomies, supports, lengths) go through every writer and reader of
trees: each must come back with the same groups, labels and lengths, from our readers and from ape and
DendroPy, also after we or ape rerooted the trees. Programs that aren't installed are named and left out.
Usage: tree_sets.py ZEB [FIRST_SEED NUMBER]"""

import collections
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

from installed_readers import installed_readers

zeb = pathlib.Path(sys.argv[1]).resolve()
first_seed, count = (int(word) for word in (sys.argv[2:4] or ("1", "12")))

NAMES = ["A_b", "O'Brien", "x.y", "T(1)", "T_1_", "Zed", "12a", "e=mc", 'q"q', "A_B_c", "w:w", "k{1}", "per%cent", "a|b",
         "t,2", "at@x", "<x", "c*d", "back`tick", "Éloi", "n-1", "t~l"]
LABELS = {"none": lambda r: "", "whole": lambda r: str(r.randint(0, 100)), "fraction": lambda r: f"{r.random():.3f}",
          "some": lambda r: r.choice(["", "", str(r.randint(50, 100))]), "two": lambda r: f"{r.random():.2f}/{r.randint(0, 100)}",
          "odd": lambda r: r.choice(["Clade A", "it's", "(x)", "a,b", "12 a", "[n]", "x:y"])}
LENGTHS = {"none": lambda r: "", "short": lambda r: f"{r.random():.4f}", "whole": lambda r: str(r.randint(0, 50)),
           "tiny": lambda r: f"{r.random() * 1e-6:.3e}", "some": lambda r: r.choice(["", "0.5", "2"])}

Node = collections.namedtuple("Node", "taxon children label length")


def random_tree(rnd, taxa, label, length, root=True):
    if len(taxa) == 1:
        return Node(taxa[0], [], "", length(rnd))
    parts = [[] for _ in range(rnd.choice([2, 2, 2, 3, 4]))]
    for i, taxon in enumerate(rnd.sample(taxa, len(taxa))):
        (parts[i] if i < 2 else rnd.choice(parts)).append(taxon)
    children = [random_tree(rnd, part, label, length, False) for part in parts if part]
    return Node(None, children, "" if root else label(rnd), "" if root else length(rnd))


def quoted(word):
    return word if re.fullmatch(r"\w[\w.]*", word, re.ASCII) else "'" + word.replace("'", "''") + "'"


def text_of(node, names):
    text = "(" + ",".join(text_of(child, names) for child in node.children) + ")" if node.children else quoted(names[node.taxon])
    return text + (quoted(node.label) if node.label else "") + (":" + node.length if node.length else "")


TOKEN = re.compile(r"'((?:[^']|'')*)'|([(),:;])|\[[^\]]*\]|([^\s(),:;\[']+)")


def parsed(text, numbers):
    """The tree of a Newick text, its taxa by `numbers`."""
    stack, after = [[]], ""
    for token in TOKEN.finditer(text):
        word = token[1].replace("''", "'") if token[1] is not None else token[3]
        if token[2] == "(":
            stack.append([])
        elif token[2] == ")":
            children = stack.pop()
            stack[-1].append(Node(None, children, "", ""))
        elif token[2]:
            after = token[2]
            continue
        elif word is not None and after == ":":
            stack[-1][-1] = stack[-1][-1]._replace(length=word)
        elif word is not None and after == ")":
            stack[-1][-1] = stack[-1][-1]._replace(label=word)
        elif word is not None:
            stack[-1].append(Node(numbers[word], [], "", ""))
        after = token[2] or ""
    return stack[0][0]


def taxa_of(node):
    return frozenset([node.taxon]) if not node.children else frozenset().union(*map(taxa_of, node.children))


def clades(node):
    """Label and length by set of taxa."""
    found = {taxa_of(node): (node.label, node.length)}
    for child in node.children:
        found.update(clades(child))
    return found


def number(length):
    return round(float(length), 12) if length not in ("", "NA", "NaN", "None") else None


def splits(clade_values):
    """Labels and summed lengths by the split of each branch, wherever the root is. No label where two contradict."""
    everything = max(clade_values, key=len)
    found = {}
    for taxa, (label, length) in clade_values.items():
        if taxa == everything:
            continue
        split = frozenset([taxa, everything - taxa])
        labels, total = found.get(split, (set(), 0))
        found[split] = (labels | ({label} if label and len(taxa) > 1 else set()), total + (number(length) or 0))
    return {split: (labels, round(total, 9)) for split, (labels, total) in found.items()}


def at_both_ends(clade_values):
    """A label on one side of a root with two descendants stands on both, unless one is a taxon."""
    everything = max(clade_values, key=len)
    return {taxa: (label or (clade_values.get(everything - taxa, ("",))[0] if len(taxa) > 1 else ""), length)
            for taxa, (label, length) in clade_values.items()}


def run(folder, commands):
    done = subprocess.run([zeb], cwd=folder, input=commands.encode(), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=120)
    return done.stdout.decode()


def names_in(fasta):
    return [line[1:] for line in fasta.read_text().splitlines() if line.startswith(">")]


class Case:
    """The trees of one seed, and what was written of them."""

    def __init__(self, seed, folder):
        self.rnd = rnd = random.Random(seed)
        self.seed, self.folder = seed, folder
        folder.mkdir()
        taxa = rnd.sample(NAMES, rnd.randint(4, 12))
        self.label, self.length = rnd.choice(list(LABELS)), rnd.choice(list(LENGTHS))
        rows = "\n".join(f"{name} {rnd.choice('01')}{rnd.choice('01')}" for name in taxa)
        (folder / "data.zeb").write_text(f"xread 2 {len(taxa)}\n{rows}\n;\nexport ! names.fas;\nproc/;\n")
        run(folder, "proc data.zeb;\nquit;\n")
        self.names = names_in(folder / "names.fas")
        self.trees = []
        for _ in range(rnd.randint(1, 5)):
            used = range(len(taxa)) if rnd.random() < 0.8 else rnd.sample(range(len(taxa)), len(taxa) - 1)
            self.trees.append(random_tree(rnd, list(used), LABELS[self.label], LENGTHS[self.length]))
        (folder / "in.nwk").write_text("".join(text_of(tree, self.names) + ";\n" for tree in self.trees))
        outgroup = rnd.choice(sorted(frozenset.intersection(*map(taxa_of, self.trees))))
        self.output = run(folder, f"""proc data.zeb; proc [ in.nwk; export - all.nex; export &- plain.nex; export =- all.nwk;
export &= plain.nwk; export * data.nex; export &* plain_data.nex; tsave *own.tre; save; tsave/;
proc plain_data.nex; export ! plain.fas; export = plain_back.nwk;
proc data.nex; export = data_back.nwk; keep 0; proc all.nex; export = all_back.nwk; keep 0; proc [ all.nwk; export = again.nwk;
keep 0; proc own.tre; export = own.nwk; keep 0; proc [ in.nwk; outgroup {outgroup}; reroot; export = rooted.nwk; quit;
""")
        self.plain = names_in(folder / "plain.fas") if (folder / "plain.fas").exists() else []

    def read(self, file, names):
        """The trees of a file that we wrote."""
        text = (self.folder / file).read_text()
        found = re.findall(r"^tree \S+ = \[&R\]\s*(.*);$", text, re.M) if file.endswith("nex") else text.splitlines()
        numbers = {name: i for i, name in enumerate(names)}
        return [clades(parsed(tree, numbers)) for tree in found]

    def wanted(self, plain=False):
        for tree in self.trees:
            found = clades(tree)
            if plain:
                found = at_both_ends(found)
                found = {taxa: (re.sub(r"[\s()\[\]{}<>,:;='\"`*\\]", "_", label), length) for taxa, (label, length) in found.items()}
            yield found

    def own_faults(self):
        if re.search(r"^Error|^ERROR", self.output, re.M) or not self.plain:
            yield "errors:\n" + self.output
            return
        for file in ("all.nex", "all.nwk", "data.nex", "all_back.nwk", "again.nwk", "data_back.nwk"):
            if self.read(file, self.names) != list(self.wanted()):
                yield f"{file} has other trees:\n{(self.folder / file).read_text()}"
        for file in ("plain.nex", "plain.nwk", "plain_data.nex", "plain_back.nwk"):
            if self.read(file, self.plain) != list(self.wanted(True)):
                yield f"{file} has other trees:\n{(self.folder / file).read_text()}"
        if [set(tree) for tree in self.read("own.nwk", self.names)] != [set(tree) for tree in self.wanted()]:
            yield "own.nwk has other groups"
        yield from self.split_faults("rooted.nwk", [splits(tree) for tree in self.read("rooted.nwk", self.names)], self.wanted())

    def split_faults(self, what, found, wanted, with_lengths=True):
        """Faults of trees on other roots. A label that the two sides of a root don't agree about may be either."""
        for i, (have, clade_values) in enumerate(zip(found, wanted, strict=True)):
            for split, (labels, length) in splits(clade_values).items():
                got = have.get(split, (None, 0))
                trivial = min(map(len, split)) == 1
                if split not in have or (not trivial and labels and not (got[0] and got[0] <= labels)) or (not labels and got[0] and not trivial) \
                        or (with_lengths and abs(got[1] - length) > 1e-8):
                    yield f"{what}: tree {i} has {got} for {sorted(map(sorted, split))}, not {(labels, length)}"
                    return


DENDROPY = """
import sys, dendropy
def show(tree):
    for node in tree.postorder_node_iter():
        leaves = sorted(leaf.taxon.label for leaf in node.leaf_iter())
        label = node.edge.label if node.edge.label is not None else ""
        print("node", " ".join(leaves), label, node.edge.length, sep="\\t")
for folder in sys.argv[1:]:
    for name in ("plain.nex", "plain.nwk", "all.nex", "all.nwk"):
        trees = dendropy.TreeList.get(path=folder + "/" + name, schema="nexus" if name.endswith("nex") else "newick", preserve_underscores=True,
                                      is_assign_internal_labels_to_edges=True, rooting="force-rooted")
        print("file", folder, name, sep="\\t")
        for tree in trees:
            print("tree")
            show(tree)
"""
APE = """
suppressMessages(library(ape))
show <- function(t) {
  cat("tree\\n")
  n <- length(t$tip.label)
  parts <- prop.part(t)
  place <- function(node) if (is.null(t$edge.length) || !(node %in% t$edge[, 2])) NA else t$edge.length[match(node, t$edge[, 2])]
  for (i in seq_len(n)) cat("node", t$tip.label[i], "", place(i), sep = "\\t", "\\n")
  for (i in seq_len(t$Nnode)) cat("node", paste(t$tip.label[parts[[i]]], collapse = " "),
                                  if (is.null(t$node.label)) "" else t$node.label[i], place(n + i), sep = "\\t", "\\n")
}
options(digits = 15)
for (folder in commandArgs(TRUE)) for (name in c("plain.nex", "plain.nwk")) {
  path <- file.path(folder, name)
  trees <- if (name == "plain.nex") read.nexus(path, force.multi = TRUE) else read.tree(path, keep.multi = TRUE)
  cat("file", folder, name, sep = "\\t"); cat("\\n")
  for (t in trees) { show(t); show(root(t, t$tip.label[length(t$tip.label)], edgelabel = TRUE, resolve.root = FALSE)) }
}
"""


def other_faults(program, command, cases):
    folders = {str(case.folder): case for case in cases}
    done = subprocess.run([*command, *folders], capture_output=True, text=True, timeout=1800,
                          env={**os.environ, "LC_ALL": "C.UTF-8"})
    if done.returncode != 0:
        yield f"{program} ends with an error:\n{done.stderr[-3000:]}\n{done.stdout[-300:]}"
        return
    read = {}
    for line in done.stdout.splitlines():
        words = line.split("\t")
        if words[0] == "file":
            trees = read[(words[1], words[2].strip())] = []
        elif words[0] == "tree":
            trees.append({})
        elif words[0] == "node":
            trees[-1][words[1]] = (words[2] if words[2] != "NA" else "", words[3].strip())
    for (folder, file), trees in read.items():
        case = folders[folder]
        plain = file.startswith("plain")
        numbers = {name: i for i, name in enumerate(case.plain if plain else case.names)}
        try:
            trees = [{frozenset(numbers[name] for name in names.split(" ")): values for names, values in tree.items()} for tree in trees]
        except KeyError as missing:
            yield f"seed {case.seed}: {program} reads a name {missing} in {file}"
            continue
        wanted = list(case.wanted(plain))
        as_numbers = [{taxa: (label, number(length)) for taxa, (label, length) in tree.items()} for tree in trees]
        same = [{taxa: (label, number(length)) for taxa, (label, length) in tree.items()} for tree in wanted]
        reroots = program == "ape"  # DendroPy leaves labels where they were
        as_numbers = as_numbers[::2] if reroots else as_numbers
        if as_numbers != same and case.length != "some":
            yield f"seed {case.seed}: {program} reads {file} as\n{as_numbers}\nnot\n{same}"
        if reroots:
            yield from (f"seed {case.seed}, {program}: {fault}" for fault in
                        case.split_faults(file + " rerooted", [splits(tree) for tree in trees[1::2]], wanted, case.length != "some"))
    if not read:
        yield f"{program} reads nothing"


def main():
    bad = 0
    with tempfile.TemporaryDirectory() as scratch:
        cases = [Case(seed, pathlib.Path(scratch, str(seed))) for seed in range(first_seed, first_seed + count)]
        for case in cases:
            for fault in case.own_faults():
                bad += 1
                if bad < 5:
                    print(f"seed {case.seed}: {fault}\nfrom\n{(case.folder / 'in.nwk').read_text()}")
        for program, command in installed_readers(DENDROPY, APE):
            if command is None:
                print(f"{program} isn't installed: not asked")
                continue
            faults = list(other_faults(program, command, cases))
            bad += len(faults)
            print(f"{program}: {len(faults)} faults", *faults[:4], sep="\n")
    print(f"{count} sets of trees, {bad} faults")
    return 1 if bad or not count else 0


sys.exit(main())
