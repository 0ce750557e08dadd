#!/usr/bin/env python3
"""Other programs read what `export` writes: NEXUS in its plain form, Newick and FASTA, without a
complaint and with the same numbers of taxa, characters and trees. Readers that aren't installed are
named and left out. Usage: other_readers.py ZEB EXAMPLES"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

zeb, examples = (pathlib.Path(word).resolve() for word in sys.argv[1:3])

EXPORTS = """
proc beetles.xread; ccode /2 3 ] 5; rseed 1; mult=replications 3; export &* beetles_all.nex; export &= beetles.nwk;
ttags=; majority; ttags); export &< beetles_labels.nex; export &> beetles_lengths.nex; ttags-;
proc frogs.xread; mult=replications 3; export * frogs_all.nex; export &* frogs_plain.nex; export ! frogs.fas;
export &] frogs_numbers.nex;
proc costs_in.nex; export +&* costs.nex;
nstates 32; proc values.xread; export & values.nex; quit;
"""
FILES = {
    "costs_in.nex": """#NEXUS
begin data; dimensions ntax=5 nchar=4; format symbols="012"; matrix
a 0120
b 0111
c 1022
d 2202
e 1100;
end;
begin assumptions; usertype ladder (stepmatrix) = 3 . 1 2 1 . 1 i 1 .; ctype ladder: 1 3, ord: 2; end;
begin trees; tree one = (a,(b,(c,(d,e)))); end;
""",
    "values.xread": "xread 'heights and weights' 3 4 &[continuous]\na 1 2.5 30\nb 0.125 7 1000.5\nc 64.999 1 0\nd 3 3 3\n; proc/;\n",
}

# Each prints one line a file: its name, taxa, characters, trees; and the cells of one row.
DENDROPY = """
import warnings, dendropy
warnings.simplefilter("error", UserWarning)
for name in ("beetles_all.nex", "frogs_all.nex", "frogs_plain.nex", "frogs_numbers.nex", "costs.nex", "values.nex"):
    data = dendropy.DataSet.get(path=name, schema="nexus", preserve_underscores=True)
    m = data.char_matrices[0]
    print(name, len(m), m.max_sequence_size, sum(len(t) for t in data.tree_lists))
print("beetles.nwk", len(dendropy.TreeList.get(path="beetles.nwk", schema="newick")))
for name in ("beetles_labels.nex", "beetles_lengths.nex"):
    print(name, len(dendropy.TreeList.get(path=name, schema="nexus")))
m = dendropy.DnaCharacterMatrix.get(path="frogs.fas", schema="fasta")
print("frogs.fas", len(m), m.max_sequence_size)
"""
BIOPYTHON = """
import warnings
warnings.simplefilter("error", UserWarning)
from Bio import AlignIO, Phylo
from Bio.Nexus import Nexus
for name in ("beetles_all.nex", "frogs_all.nex", "frogs_plain.nex", "frogs_numbers.nex", "costs.nex"):
    n = Nexus.Nexus(name)
    print(name, len(n.matrix), n.nchar, len(n.trees))
print("values.nex -")
print("beetles.nwk", len(list(Phylo.parse("beetles.nwk", "newick"))))
for name in ("beetles_labels.nex", "beetles_lengths.nex"):
    print(name, len(list(Phylo.parse(name, "nexus"))))
m = AlignIO.read("frogs.fas", "fasta")
print("frogs.fas", len(m), m.get_alignment_length())
"""
APE = """
options(warn = 2)
suppressMessages(library(ape))
show <- function(...) cat(..., "\\n", sep = " ")
count <- function(t) if (inherits(t, "multiPhylo")) length(t) else 1
for (name in c("beetles_all.nex", "frogs_plain.nex", "costs.nex")) {
  d <- read.nexus.data(name)
  show(name, length(d), length(d[[1]]), count(read.nexus(name)))
}
d <- read.nexus.data("frogs_all.nex"); show("frogs_all.nex", length(d), length(d[[1]]), "-")
d <- read.nexus.data("frogs_numbers.nex"); show("frogs_numbers.nex", length(d), length(d[[1]]), 0)
show("values.nex", "-")
show("beetles.nwk", count(read.tree("beetles.nwk")))
for (name in c("beetles_labels.nex", "beetles_lengths.nex")) show(name, count(read.nexus(name)))
d <- as.matrix(read.FASTA("frogs.fas")); show("frogs.fas", nrow(d), ncol(d))
"""


def readers():
    """Name, command line, or None where it isn't installed."""
    pythons = dict.fromkeys([sys.executable, shutil.which("python3", path="/usr/bin") or sys.executable])
    for module, script in (("dendropy", DENDROPY), ("Bio", BIOPYTHON)):
        found = [p for p in pythons if subprocess.run([p, "-c", f"import {module}"], capture_output=True).returncode == 0]
        yield module, [found[0], "-c", script] if found else None
    r = shutil.which("Rscript")
    has_ape = r and subprocess.run([r, "-e", "library(ape)"], capture_output=True).returncode == 0
    yield "ape", [r, "-e", APE] if has_ape else None


def lines_of(text):
    return {line.split()[0]: line.split()[1:] for line in text.splitlines() if line.strip()}


def main():
    bad = 0
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch, "examples")
        shutil.copytree(examples, folder)
        for name, text in FILES.items():
            (folder / name).write_text(text)
        said = subprocess.run([zeb], cwd=folder, input=EXPORTS.encode(), stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=120).stdout.decode()
        trees = {name: str((folder / f"{name}_all.nex").read_text().count("\ntree ")) for name in ("beetles", "frogs")}
        wanted = {
            "beetles_all.nex": ["18", "40", trees["beetles"]],
            "frogs_all.nex": ["24", "480", trees["frogs"]],
            "frogs_plain.nex": ["24", "480", trees["frogs"]],
            "frogs_numbers.nex": ["24", "480", "0"],
            "costs.nex": ["5", "4", "1"],
            "values.nex": ["4", "3", "0"],
            "beetles.nwk": [trees["beetles"]],
            "beetles_labels.nex": ["1"],
            "beetles_lengths.nex": ["1"],
            "frogs.fas": ["24", "480"],
        }
        if "Error" in said or "0" in trees.values():
            print(said)
            return 1
        for name, command in readers():
            if command is None:
                print(f"{name} isn't installed: not asked")
                continue
            done = subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=300)
            read = lines_of(done.stdout)
            faults = [f"{file}: read {read.get(file)}, written {numbers}" for file, numbers in wanted.items()
                      if read.get(file, []) != numbers and "-" not in read.get(file, [])]
            if done.returncode != 0 or faults:
                bad += 1
                print(f"{name} complains:", *faults, done.stderr, sep="\n")
            else:
                print(f"{name} reads all {len(wanted)} files")
    return 1 if bad else 0


sys.exit(main())
