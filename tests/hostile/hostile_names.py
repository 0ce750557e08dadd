#!/usr/bin/env python3
"""Files whose names and texts are made to be taken for commands: read in every foreign format and as
matrices of our own, shown, written in every form, read back with and without the macro language, and
put in by its expansions. Nothing of a name may run (a marker file would appear), no control character
may come out, and what is written must be read back with the same names, which are the ones of the file
or those that a warning tells. Usage: hostile_names.py ZEB [--runs N] [--seed N]"""

import argparse
import pathlib
import random
import re
import subprocess
import sys
import tempfile

MARK = "PWN"
PIECES = [";", "'", '"', ",", ".,", "$", "#1", "%1", "$taxon", "'1'", '"x"', "(", ")", "[", "]", "{", "}", "*", "=",
          ">", "<", "&", "&[dna]", "@1 2", "...", "____", "+", "-", "/", "\\", "|", "!", "?", ":", "^", "~", "\t", "\x01", "\x04",
          "\x1b[2J", "\x1b]0;t\x07", "\x7f", "\u0085", "\u009b31m", "\u2028", "\u202e", "é", "e\u0301", "日本", " ", "  ",
          "system touch " + MARK, "system,touch," + MARK, 'system"touch"$IFS"' + MARK + '"', "quit", "proc/", "end", "begin zeb",
          "a", "B", "7", "x" * 40]
WHOLE = ["x;system\ttouch\t" + MARK + ";", 'x;system"touch"$IFS"' + MARK + '";', "a.,system touch " + MARK + ".,",
         "';system touch " + MARK + ";'", "], system touch " + MARK + ",", "x,system touch " + MARK + ",", "quit;", "proc/;", "end;",
         "$taxon 0", "'(1+1)'", "%(1)", "#1"]
CONTROLS = re.compile("[\x00-\x08\x0b-\x1f\x7f-\x9f\u2028\u202e]")


def hostile(rnd, barred):
    """A text without the signs that can't stand in its place at all."""
    text = rnd.choice(WHOLE) if rnd.random() < 0.4 else "".join(rnd.choices(PIECES, k=rnd.randint(1, 5)))
    for sign in barred:
        text = text.replace(sign, "_")
    return text.strip() or "n"


def quoted(text):
    return "'" + text.replace("'", "''") + "'"


def distinct(rnd, barred):
    names = []
    while len(names) < 6:
        names.append(f"{hostile(rnd, barred)}{len(names)}" if rnd.random() < 0.8 else f"n{len(names)}")
    return names


def random_file(rnd):
    """A command that reads a file, and the file."""
    form = rnd.choice(["fasta", "phylip", "nexus", "nexus", "xread"])
    rows = ["".join(rnd.choices("ACGT-", k=5)) for _ in range(6)]
    if form == "fasta":
        return "procedure & dna in.dat;", "".join(f">{n}\n{r}\n" for n, r in zip(distinct(rnd, "\n"), rows))
    if form == "phylip":
        return "procedure ! dna in.dat;", "6 5\n" + "".join(f"{n} {r}\n" for n, r in zip(distinct(rnd, " \t\n"), rows))
    if form == "xread":
        names = distinct(rnd, " \t\n\x1b\x01\x04;")
        return "procedure in.dat;", "nstates 8;\nxread 'a;system touch PWN;\x1b[2J' 5 6\n&[dna]\n" + "".join(
            f"{n} {r}\n" for n, r in zip(names, rows)) + ";\nproc/;\n"
    names = [quoted(n) for n in distinct(rnd, "\n")]
    word = lambda: quoted(hostile(rnd, "\n"))
    tree = f"(({names[0]}:1,{names[1]}){word()}:2,({names[2]},({names[3]},({names[4]},{names[5]}){word()}){word()}:0.5))"
    return "procedure in.dat;", "\n".join(
        ["#NEXUS", "begin data;", f"title {word()};", "dimensions ntax=6 nchar=5;", "format datatype=dna gap=-;",
         f"charstatelabels 1 {word()} / {word()} {word()}, 3 {word()};", "matrix"] +
        [f"{n} {r}" for n, r in zip(names, rows)] +
        [";", "end;", "begin " + rnd.choice(["notes", word()]) + "; text " + word() + "; end;",
         f"begin sets; charset {word()} = 1-2; taxset {word()} = 1 2; end;",
         "begin assumptions; " + rnd.choice([f"typeset {word()} = ord: 1;", f"typeset * {word()} = {word()}: 1;"]) + " end;",
         "begin trees;", f"tree {word()} = {tree};", "end;", ""])


# Each in a line of its own: an error ends the line.
SHOWN = "info; xread*; xread-; ccode; cnames; cnames*; taxcode; taxcode|; agroup; agroup*; xgroup; xgroup*; blocks; blocks*; tplot; tplot*; " \
        "ttags; ttags/; outgroup; tgroup; taxname; cscores; minmax; length; tread (0 (1 2) (3 4 5)); apo; change 0 0; majority; strict; "
EXPANDED = """quote $taxon 0 $taxon 1; quote $character 0 $state 0 0 $state 0 1; quote $dataset; quote $agroup 0 $xgroup 0 $block 0;
tread (0 (1 2) (3 4 5)); quote $ttag 6 $ttag 7; quote $ttag 8; set 1 $A $taxon 2; quote $1; set 1 $$ttag 7; quote $1; set 1 $$dataset;
quote $1; set 1 $$character 0 $state 0 1; quote $1; $1; loop 0 5 quote $taxon #1; stop; taxcode - $taxon 1; outgroup $taxon 2;
tread (0 $taxon 1 (2 3 4 5)); ttags *!; ttags +7 $ttag 7 $taxon 3 ; ttags; ttags >$dataset ; ttags; taxname + 0 $taxon 3 x; xread*; """
WRITTEN = {  # what writes a file, and what reads it back
    "own": ("log own.out; xread*; log/;", "procedure own.out;"),
    "settings": ("log settings.out; xread*; agroup*; xgroup*; cnames*; taxcode|; blocks*; log/;", "procedure settings.out;"),
    "nexus": ("export nexus.out;", "procedure nexus.out;"),
    "plain": ("export &* plain.out;", "procedure plain.out;"),
    "fasta": ("export ! fasta.out;", "procedure & dna fasta.out;"),
    "trees": ("taxname=; tsave *trees.out; save; tsave/; taxname-;", "procedure own.out; procedure trees.out;"),
    "newick": ("export = newick.out;", "procedure own.out; procedure [ newick.out;"),
    "tags": ("log tags.out; ttags/; log/;", "procedure own.out; procedure tags.out;"),
    "tagtree": ("export - tagtree.out;", "procedure own.out; procedure tagtree.out;"),
}

def lines(commands):
    return commands.replace("; ", ";\n") + "\n"


def run(zeb, folder, text, arguments=()):
    done = subprocess.run([zeb, *arguments], cwd=folder, input=text.encode("utf-8", "surrogateescape"), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=60)
    return done.returncode, done.stdout.decode("utf-8", "backslashreplace")


def names_of(output):
    """The names of taxa in what `xread*` showed last; none if it wasn't."""
    start = output.rfind("\nxread")
    lines = output[start:].split("\n")[2:] if start >= 0 else []
    names = []
    for line in lines:
        if line.startswith(";"):
            return names
        if re.match(r"\S+\s+\S+$", line) and not re.match(r"\d+ \d+$|&|'", line):
            names.append(line.split()[0])
    return None


def faults(zeb, rnd):
    read, text = random_file(rnd)
    with tempfile.TemporaryDirectory(prefix="zeb_names_") as scratch:
        folder = pathlib.Path(scratch)
        (folder / "in.dat").write_bytes(text.encode("utf-8", "surrogateescape"))

        def step(what, commands, arguments=()):
            status, output = run(zeb, folder, commands, arguments)
            if status:
                yield f"{what}: exit status {status}", output
            if any(MARK in path.name for path in folder.iterdir()):
                yield f"{what}: a name was run", output
            if CONTROLS.search(output.replace("\r", "")):
                yield f"{what}: control characters come out", output
            outputs[what] = output

        outputs = {}
        head = "report-;\n"
        yield from step("read", f"{head}{read}\nxread*;\nquit;\n")
        names = names_of(outputs["read"])
        if names is None:
            if "Error reading" not in outputs["read"]:
                yield "no data and no error", outputs["read"]
            return
        yield from step("shown", f"{read}\n{lines(SHOWN)}taxname=;\ncnames=;\n{lines(SHOWN)}quit;\n")
        yield from step("expanded", f"{read}\nmacro=;\n{lines(EXPANDED)}macro-;\nquit;\n")
        yield from step("expanded in arguments", "", [f"{read} macro=; set 1 $A $taxon 2; $1; set 1 $$taxon 3 $dataset; $1, taxcode - $taxon 4; quote $taxon 0 $taxon 1; quit;"])
        yield from step("written", f"{head}{read}\n" + "\n".join(write for write, _ in WRITTEN.values()) + "\nquit;\n")
        for what, (_, back) in WRITTEN.items():
            if not (folder / f"{what}.out").exists():
                continue
            for macro in ("", "macro=; "):
                yield from step(f"{what} read back {macro}", f"{head}{macro}{back}\nmacro-; xread*;\nquit;\n")
                found = names_of(outputs[f"{what} read back {macro}"])
                # What can't have a name as it is tells so.
                told = "written otherwise" in outputs["written"] and what in ("plain", "fasta")
                if found != names and not (told and found and len(found) == len(names)):
                    yield f"{what} read back {macro}: {names} became {found}", outputs[f"{what} read back {macro}"]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zeb", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=25)
    parser.add_argument("--seed", type=int, default=1)
    chosen = parser.parse_args()
    bad = 0
    for seed in range(chosen.seed, chosen.seed + chosen.runs):
        rnd = random.Random(seed)
        for what, output in faults(chosen.zeb.resolve(), rnd):
            bad += 1
            print(f"--- seed {seed}, {what}\n{output!a:.3000}")
    print(f"{chosen.runs} files of hostile names, {bad} faults")
    sys.exit(1 if bad else 0)


if __name__ == "__main__":
    main()
