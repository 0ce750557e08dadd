#!/usr/bin/env python3
"""Writes random data, in our own form and as NEXUS, and reads them back: cells, settings, names and trees must be the same.
Usage: round_trip.py ZEB [FIRST_SEED NUMBER]"""

import pathlib
import random
import re
import subprocess
import sys
import tempfile

zeb = pathlib.Path(sys.argv[1]).resolve()
first_seed, count = (int(word) for word in (sys.argv[2:4] or ("1", "25")))

NUMBERS = "0123456789ABCDEFGHIJKLMNOPQRSTUV"
SYMBOLS = {"dna": "ACGTRYMKSWBDHVN-", "proteins": "ACDEFGHIKLMNPQRSTVWYUZBX-"}
NAMES = ["A_b", "O`Brien", "x.y", "T(1)", "T,2", "Zed", "9", "12a", "e=mc", 'q`q', "A_B_c", "w:w", "k{1}", "per=cent"]


def random_row(rnd, kind, states, length):
    symbols = NUMBERS[:states] if kind == "numeric" else SYMBOLS[kind]
    single = symbols if kind == "numeric" else symbols[:4]
    cells = []
    for _ in range(length):
        u = rnd.random()
        if u < 0.12:
            cells.append("?" if u < 0.08 else "*")
        elif u < 0.25:
            cells.append("[" + "".join(rnd.sample(single, 2)) + "]")
        else:
            cells.append(rnd.choice(symbols))
    return "".join(cells)


def random_values(rnd, length):
    """A row of continuous characters; every third one goes beyond what is stored as it is."""
    def value(c):
        return f"{rnd.random() * (1, 60, 900)[c % 3]:.{rnd.randint(0, 3)}f}"

    def cell(c):
        u = rnd.random()
        return "?" if u < 0.1 else "*" if u < 0.15 else f"{value(c)}-{value(c)}" if u < 0.3 else value(c)
    return " ".join(cell(c) for c in range(length))


def random_list(rnd, elements, share):
    return " ".join(str(element) for element in elements if rnd.random() < share)


def random_data(rnd):
    """The maximum number of states, whether there are continuous characters, and a file of commands."""
    states = rnd.choice([8, 16, 32])
    kinds = ["numeric", "dna"] + (["proteins"] if states == 32 else [])
    blocks = [(rnd.choice(kinds), rnd.randint(1, 12)) for _ in range(rnd.randint(1, 3))]
    continuous = states == 32 and rnd.random() < 0.6
    if continuous:
        blocks = [("continuous", rnd.randint(1, 6))] + blocks * rnd.randint(0, 1)
    gaps = rnd.choice(["gaps", "nogaps"])
    taxa = rnd.sample(NAMES, rnd.randint(5, 9))
    nchar = sum(length for _, length in blocks)
    lines = [f"nstates num {states};", "xread", "'Random data, (made) by \"chance\"'", f"{nchar} {len(taxa)}"]
    numeric, start = [], 0
    for kind, length in blocks:
        lines.append(f"&[{kind} {gaps}]" if kind not in ("numeric", "continuous") else f"&[{kind}]")
        if kind == "continuous":
            lines += [f"{name} {random_values(rnd, length)}" for name in taxa]
            start += length
            continue
        shown = rnd.choice([states, 2, 10])
        lines += [f"{name} {random_row(rnd, kind, min(shown, states), length)}" for name in taxa]
        numeric += range(start, start + length) if kind == "numeric" else []
        start += length
    lines.append(";")
    for sign, chosen in (("+", random_list(rnd, numeric, 0.4)), ("]", random_list(rnd, range(nchar), 0.15)),
                         ("/2", random_list(rnd, range(nchar), 0.2)), ("/7", random_list(rnd, range(nchar), 0.1))):
        lines += [f"ccode {sign} {chosen};"] if chosen else []
    lines.append("taxcode - 2;")
    states_named = " its_there (none)" if blocks[-1][0] != "continuous" else ""
    lines.append(f"cnames {{{nchar - 1} head-size{states_named}; ;")
    order = rnd.sample(range(len(taxa)), len(taxa))
    lines.append("tread (" + " ".join(map(str, order[:-2])) + f" ({order[-2]} {order[-1]}));")
    return states, continuous, "\n".join(lines + ["proc/;", ""])


def run(folder, commands):
    done = subprocess.run([zeb], cwd=folder, input=commands.encode(), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=60)
    return done.stdout.decode()


def contents(folder, commands):
    """What the program writes of its data and trees, with the blocks of each row joined."""
    log = folder / "log.txt"
    log.unlink(missing_ok=True)
    output = run(folder, "report-;\n" + commands + "log log.txt;\nxread*;\ntplot*;\nlog/;\nquit;\n")
    text = log.read_text() if log.exists() else ""
    if "xread" not in text:
        return "no data: " + output
    head, _, rest = text.partition("\n;\n")
    lines = head.split("\n")
    start = lines.index("xread") + 1
    rows = {"title": ""}
    if lines[start].startswith("'"):
        rows["title"] = lines[start]
        start += 1
    for line in lines[start + 1:]:  # after the dimensions
        if not line.startswith("&"):
            name, cells = line.split(None, 1)
            rows[name] = rows.get(name, "") + cells
    # Whether gaps are states stands in the heads of blocks.
    gaps = sorted(set(re.findall(r"\b(?:no)?gaps\b", head)))
    return "\n".join([f"{name} {cells}" for name, cells in rows.items()] + gaps + [rest])


def without_quotes(text):
    """Names as the plain form has them, which knows no quotes."""
    def plain(name):
        return re.sub(r"[()\[\]{},:;='\"`]", "_", name[0]) if name[0] in NAMES else name[0]
    return "\n".join(re.sub(r"^\S+", plain, line) for line in text.split("\n"))


def faults(seed):
    rnd = random.Random(seed)
    states, continuous, data = random_data(rnd)
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "data.zeb").write_text(data)
        here = contents(folder, "proc data.zeb;\n")
        if here.startswith("no data"):
            yield "data", here
        for form in ("own", "*", "&*"):
            if form == "*" and continuous:
                continue  # refused
            if form == "own":
                (folder / "out.nex").write_text((folder / "log.txt").read_text())
            else:
                run(folder, f"proc data.zeb;\nexport {form} out.nex;\nquit;\n")
            back = contents(folder, f"nstates {states};\nproc out.nex;\n")
            if form == "*":  # without the title
                back = back.replace("title ", f"title {here.splitlines()[0][len('title '):]}", 1)
            if back != (without_quotes(here) if form == "&*" else here):
                yield f"form {form}", f"{data}\n--- written\n{here}\n--- read back\n{back}"


bad = 0
for seed in range(first_seed, first_seed + count):
    for what, text in faults(seed):
        bad += 1
        print(f"seed {seed}, {what}:\n{text}")
    if bad:
        break
print(f"{count} seeds, {bad} faults")
sys.exit(1 if bad or not count else 0)
