#!/usr/bin/env python3
"""Random matrices (DNA, proteins, standard states; odd names, gaps, sets of states) as other programs write them are
read here and sent through every writer of ours: each must come back with the cells and names that the file
had, here and in DendroPy and ape. A name may differ where a warning told so. Programs that aren't installed are named and left out. Usage: matrix_sets.py ZEB [FIRST_SEED NUMBER]"""

import json
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

from installed_readers import installed_readers

zeb = pathlib.Path(sys.argv[1]).resolve()
first_seed, count = (int(word) for word in (sys.argv[2:4] or ("1", "20")))

IUPAC = {"A": "A", "C": "C", "G": "G", "T": "T", "R": "AG", "Y": "CT", "M": "AC", "K": "GT", "S": "CG", "W": "AT", "B": "CGT",
         "D": "AGT", "H": "ACT", "V": "ACG", "N": "ACGT"}
CODE = {frozenset(states): code for code, states in IUPAC.items()}
AMINO = "ACDEFGHIKLMNPQRSTVWY"
NAMES = ["A_b", "O'Brien", "x.y", "T(1)", "T,2", "Zed", "9", "12a", "e=mc", 'q"q', "A_B_c", "w:w", "k{1}", "per%cent", "p q r", "Éloi",
         "n-1", "semi;colon", "&and", "a_name_that_is_longer_than_those_which_are_kept_1", "a_name_that_is_longer_than_those_which_are_kept_2",
         "[x]", "what?", "c^d", "~e!", "f@g", "#5", "tab\tbed", "日本", "<z>", "a|b"]
FAITHFUL = re.compile(r"[^\s;'\"$#%+/&-]{1,31}")  # no sign goes, and nothing is cut


def random_matrix(rnd):
    """Kind, names, and rows of cells: "?", "-" or a string of states, sorted."""
    kind = rnd.choice(["dna", "dna", "protein", "standard"])
    states = {"dna": "ACGT", "protein": AMINO, "standard": "0123456789"[:rnd.choice([2, 3, 10])]}[kind]
    names = rnd.sample(NAMES, rnd.randint(4, 9))

    def cell():
        u = rnd.random()
        if u < 0.1:
            return "?-"[u < 0.05]
        size = rnd.choice([2, 2, 3]) if u > 0.85 and len(states) > 2 else 1
        return "".join(sorted(rnd.sample(states, size)))
    rows = [[cell() for _ in range(rnd.randint(1, 40) if i == 0 else 1)] for i in range(1)]
    width = len(rows[0])
    rows += [[cell() for _ in range(width)] for _ in names[1:]]
    if kind == "dna" and all(c in "-?" or set(c) <= {"A", "C", "G", "T"} for c in rows[0]) and rnd.random() < 0.1:
        rows[0][0] = "A"
    return kind, names, rows


def quoted(name):
    return name if re.fullmatch(r"\w+", name, re.ASCII) and rnd_plain else "'" + name.replace("'", "''") + "'"


rnd_plain = True


def symbol(kind, cell, rnd):
    if len(cell) == 1:
        return cell.lower() if kind != "standard" and rnd.random() < 0.1 else cell
    if kind == "dna" and rnd.random() < 0.7:
        return CODE[frozenset(cell)]
    return rnd.choice(["{%s}", "(%s)"]) % cell


def as_nexus(rnd, kind, names, rows):
    width = len(rows[0])
    match = rnd.choice(["", " matchchar=."])
    interleaved = rnd.random() < 0.4
    step = rnd.randint(1, width) if interleaved else width
    kinds = {"dna": "dna", "protein": "protein", "standard": 'standard symbols="0123456789"'}
    text = ["#NEXUS", "[made] begin data;", f"dimensions ntax={len(names)} nchar={width};",
            f"format datatype={kinds[kind]} missing=? gap=-{match}{' interleave' if interleaved else ''};", "matrix"]
    for start in range(0, width, step):
        for i, (name, row) in enumerate(zip(names, rows)):
            cells = [("." if match and i and row[c] == rows[0][c] and rnd.random() < 0.5 else symbol(kind, row[c], rnd))
                     for c in range(start, min(start + step, width))]
            text.append(quoted(name) + "  " + rnd.choice(["", " "]).join(cells))
    return "procedure in.dat;", "\n".join(text + [";", "end;", ""])


def as_fasta(rnd, kind, names, rows):
    text = ""
    for name, row in zip(names, rows):
        cells = "".join(CODE[frozenset(c)] if len(c) > 1 else c for c in row)
        step = rnd.randint(1, 80)
        text += f">{name}\n" + "".join(cells[i:i + step] + "\n" for i in range(0, len(cells), step))
    return f"procedure & {'proteins' if kind == 'protein' else 'dna'} in.dat;", text


def as_phylip(rnd, kind, names, rows):
    return (f"procedure ! {'proteins' if kind == 'protein' else 'dna'} in.dat;", f"{len(names)} {len(rows[0])}\n" + "".join(
        f"{name} {''.join(CODE[frozenset(c)] if len(c) > 1 else c for c in row)}\n" for name, row in zip(names, rows)))


def run(folder, commands):
    try:
        done = subprocess.run([zeb], cwd=folder, input=commands.encode(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
    except subprocess.TimeoutExpired as late:
        return f"no end: {commands}\n{(late.output or b'').decode()}"
    return done.stdout.decode()


CELL = re.compile(r"\[([^\]]*)\]|(.)")


def states_of(kind, text):
    """Cells as `xread *` writes them, as strings of states."""
    cells = []
    for several, one in CELL.findall(text):
        word = several or one
        if kind == "dna" and word in IUPAC:
            word = IUPAC[word]
        elif kind == "protein" and word in "BZ":
            word = {"B": "DN", "Z": "EQ"}[word]
        cells.append("".join(sorted(word)))
    return cells


def contents(kind, output):
    """Names and cells of what `xread *` wrote last; None where it wrote nothing."""
    lines = output[output.rfind("\nxread\n"):].split("\n") if "\nxread\n" in output else []
    rows = {}
    for line in lines:
        if line == ";":
            return rows
        found = re.match(r"(\S+) +(\S+)$", line)
        if found and not re.fullmatch(r"\d+ \d+", line) and not line.startswith("&["):
            rows[found[1]] = rows.get(found[1], []) + states_of(kind, found[2])
    return None


TOLD = "written otherwise"  # what `export` says of names that a form can't have
FORMS = {"own": ("log own; xread*; log/;", "procedure own;"), "nexus": ("export nexus;", "procedure nexus;"),
         "plain": ("export & plain;", "procedure plain;"), "standard": ("export ] standard;", None), "fasta": ("export ! fasta;", None),
         "phylip": ("export : phylip;", None)}


def faults(seed, folder, elsewhere):
    rnd = random.Random(seed)
    kind, names, rows = random_matrix(rnd)
    forms = [as_nexus]
    has_sets = any(len(c) > 1 for row in rows for c in row)
    if kind == "dna" or (kind == "protein" and not has_sets):
        forms.append(as_fasta)
        forms += [as_phylip] if not any(re.search(r"\s", name) for name in names) else []
    read, text = rnd.choice(forms)(rnd, kind, names, rows)
    (folder / "in.dat").write_text(text)
    nstates = "" if kind == "standard" else "nstates 32;\n"
    output = run(folder, f"report-;\n{read}\nxread*;\nquit;\n")
    here = contents(kind, output)
    if here is None:
        yield "not read", output
        return
    for (name, cells), wanted, row in zip(here.items(), names, rows):
        faithful = FAITHFUL.fullmatch(wanted) and len(wanted.encode()) < 32
        told = "will be changed" in output or "truncated" in output or (wanted.replace(" ", "_") == name)
        if name != wanted and (faithful or not told):
            yield f"name {wanted} became {name}", output
        if cells != ["".join(sorted(c)) for c in row]:
            yield f"cells of {name}: {cells} instead of {row}", text
    if len(here) != len(names):
        yield "taxa are missing", output
    said = run(folder, f"report-;\n{read}\n" + "\n".join(write for write, _ in FORMS.values()) + "\nquit;\n")
    for form, (_, back) in FORMS.items():
        word = "proteins" if kind == "protein" else kind
        if form in ("fasta", "phylip"):
            if kind == "standard" or (kind == "protein" and has_sets) or not (folder / form).exists():
                continue
            back = f"procedure {'&' if form == 'fasta' else '!'} {word} {form};"
        if back is None:
            continue
        again = contents(kind, run(folder, f"report-;\n{nstates}{back}\nxread*;\nquit;\n"))
        same = again is not None and list(again.values()) == list(here.values())
        if not same or (list(again) != list(here) and TOLD not in said):
            yield f"{form} is read back otherwise", f"{text}\n{said}\n--- here\n{here}\n--- back\n{again}\n{(folder / form).read_text()}"
    kept = elsewhere / f"{seed}"
    kept.mkdir()
    for form in ("plain", "fasta", "phylip"):
        if (folder / form).exists():
            shutil.copy(folder / form, kept / form)
    (kept / "wanted.json").write_text(json.dumps({"kind": kind, "sets": has_sets, "told": TOLD in said, "rows": here}))


# Each prints a line for each row that it reads: seed, form, name, and cells with a blank between them, parted by
# tabs; or seed, form, "!", and a complaint.
DENDROPY = """
import dendropy, json, pathlib
for folder in sorted(pathlib.Path(".").iterdir()):
    wanted = json.loads((folder / "wanted.json").read_text())
    kind = {"dna": dendropy.DnaCharacterMatrix, "protein": dendropy.ProteinCharacterMatrix,
            "standard": dendropy.StandardCharacterMatrix}[wanted["kind"]]
    for form in ("plain", "fasta"):
        if form == "fasta" and (wanted["kind"] == "standard" or wanted["kind"] == "protein" and wanted["sets"]):
            continue
        more = {"schema": "fasta"} if form == "fasta" else {"schema": "nexus", "preserve_underscores": True}
        try:
            matrix = kind.get(path=str(folder / form), **more)
        except Exception as complaint:
            print(folder.name, form, "!", " ".join(str(complaint).split()), sep="\\t")
            continue
        for taxon in matrix.taxon_namespace:
            cells = [s.symbol if s.symbol and s.symbol in "-?" else "".join(sorted(f.symbol for f in s.fundamental_states if f.symbol != "-"))
                     for s in matrix[taxon]]
            print(folder.name, form, taxon.label, " ".join(cells), sep="\\t")
"""
APE = """
suppressMessages(library(ape))
for (folder in list.files()) for (form in c("fasta", "phylip", "plain")) {
  file <- file.path(folder, form)
  dna <- grepl("dna", readLines(file.path(folder, "wanted.json"), warn = FALSE)[1], fixed = TRUE)
  if (!dna || !file.exists(file) || (form == "plain" && any(grepl("{", readLines(file), fixed = TRUE)))) next
  d <- tryCatch(if (form == "plain") read.nexus.data(file) else if (form == "fasta") as.character(as.list(read.FASTA(file)))
                else as.character(as.list(read.dna(file, "sequential"))), error = function(e) gsub("\\\\s+", " ", conditionMessage(e)))
  if (!is.list(d)) cat(folder, "\\t", form, "\\t!\\t", d, "\\n", sep = "") else
    for (name in names(d)) cat(folder, "\\t", form, "\\t", name, "\\t", paste(toupper(d[[name]]), collapse = " "), "\\n", sep = "")
}
"""


def complaints(read, elsewhere):
    """What another program read differently."""
    rows = {}
    for line in read.splitlines():
        if line.count("\t") != 3:
            continue  # what the program said besides
        seed, form, name, cells = line.split("\t")
        rows.setdefault((seed, form), []).append((name, cells))
    for (seed, form), found in rows.items():
        wanted = json.loads((elsewhere / seed / "wanted.json").read_text())
        ours = list(wanted["rows"].items())
        spelt = [(name, [IUPAC.get(c, c) if wanted["kind"] == "dna" else c for c in cells.split(" ")]) for name, cells in found]
        same = len(spelt) == len(ours) and all(
            (wanted["told"] or name == read_name) and [set(c) for c in cells] == [set(c) for c in row]
            for (read_name, cells), (name, row) in zip(spelt, ours))
        if not same:
            yield f"seed {seed}, {form}: {found}\n{(elsewhere / seed / form).read_text()}"


def main():
    bad = 0
    with tempfile.TemporaryDirectory(prefix="zeb_matrices_") as scratch:
        elsewhere = pathlib.Path(scratch, "elsewhere")
        elsewhere.mkdir()
        for seed in range(first_seed, first_seed + count):
            folder = pathlib.Path(scratch, f"run_{seed}")
            folder.mkdir()
            for what, text in faults(seed, folder, elsewhere):
                bad += 1
                print(f"--- seed {seed}, {what}\n{text:.3000}")
            shutil.rmtree(folder)
        for name, command in installed_readers(DENDROPY, APE):
            if command is None:
                print(f"{name} isn't installed: not asked")
                continue
            done = subprocess.run(command, cwd=elsewhere, capture_output=True, text=True, timeout=900)
            different = list(complaints(done.stdout, elsewhere))
            bad += len(different) + (done.returncode != 0)
            print(f"{name} reads {len({tuple(line.split(chr(9))[:2]) for line in done.stdout.splitlines() if chr(9) in line})} files")
            for text in different:
                print(f"--- {name}, {text:.3000}")
            if done.returncode:
                print(done.stderr[-3000:])
    print(f"{count} matrices, {bad} faults")
    return 1 if bad else 0


sys.exit(main())
