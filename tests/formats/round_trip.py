#!/usr/bin/env python3
"""Writes random data, in our own form and as NEXUS, and reads them back: cells, settings, names, trees and what each
character costs on them must be the same.
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


def random_costs(rnd, states):
    """Items of "costs": trees of states, all alike, and any."""
    names = NUMBERS[:min(states, rnd.choice([2, 4, 4, 9]))]
    if rnd.random() < 0.3:
        return f"* {rnd.randint(1, 4)}" + (f" {names[0]}/{names[1]} 5" if rnd.random() < 0.3 else "")
    cost = [[0 if i == j else 1 if abs(i - j) == 1 else 32700 for j in range(len(names))] for i in range(len(names))]
    for via in range(len(names)):
        cost = [[min(c, row[via] + cost[via][j]) for j, c in enumerate(row)] for row in cost]
    if rnd.random() < 0.6:
        cost = [[rnd.choice([0, 1, 2, 9, 12000, 32700]) for _ in row] for row in cost]
    items = [f"{a}>{b} {cost[i][j]}" for i, a in enumerate(names) for j, b in enumerate(names) if i != j]
    return " ".join(items) + rnd.choice(["", f" <{rnd.randint(1, 20)}"])


def cost_commands(rnd, states, characters):
    """For two groups of characters, one by a named step matrix; some with more settings, some not in use."""
    lines = []
    for number in range(2):
        chosen = random_list(rnd, characters, 0.4)
        if not chosen:
            continue
        if number:
            lines.append(f"smatrix =3 (a_matrix) 0/{NUMBERS[states - 1]} 3 {random_costs(rnd, states)}; smatrix +3 {chosen};")
        else:
            lines.append(f"costs {chosen} = {random_costs(rnd, states)};")
        some = rnd.choice(chosen.split())
        lines.append(rnd.choice(["", f"ccode ) {some};", f"ancstates {some} [1];", f"usminmax {some} = 2;", f"usminmax > {states - 1} {some};"]))
    return lines + rnd.choice([[], ["fillsank =;"], ["cstree -;", "costs &;"]])


def random_data(rnd):
    """The maximum number of states, whether there are continuous characters, a list of the others, and a file of commands."""
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
    lines += cost_commands(rnd, states, numeric) if rnd.random() < 0.6 else []
    lines.append("taxcode - 2;")
    states_named = " its_there (none)" if blocks[-1][0] != "continuous" else ""
    lines.append(f"cnames {{{nchar - 1} head-size{states_named}; ;")
    order = rnd.sample(range(len(taxa)), len(taxa))
    lines.append("tread (" + " ".join(map(str, order[:-2])) + f" ({order[-2]} {order[-1]}));")
    first = blocks[0][1] if continuous else 0
    discrete = f"{first}.{nchar - 1}" if first < nchar else ""
    return states, continuous, discrete, "\n".join(lines + ["proc/;", ""])


def run(folder, commands):
    done = subprocess.run([zeb], cwd=folder, input=commands.encode(), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=60)
    return done.stdout.decode()


# NEXUS has no place for these, and says costs in other words.
WITHOUT_COST_SETTINGS = "ancstates -{0}; usminmax {0} = -; usminmax >-; fillsank -; cstree +; costs |;"
COST_COMMAND = re.compile(r"^(costs|smatrix|fillsank|ccode \))[^;]*;\n", re.M)


def contents(folder, commands):
    """What the program writes of its data and trees, with the blocks of each row joined."""
    log = folder / "log.txt"
    log.unlink(missing_ok=True)
    output = run(folder, "report-;\n" + commands + "log log.txt;\nxread*;\ntplot*;\ncscores;\nlog/;\nquit;\n")
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
    states, continuous, discrete, data = random_data(rnd)
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "data.zeb").write_text(data)
        here = contents(folder, "proc data.zeb;\n")
        if here.startswith("no data"):
            yield "data", here
        for form in ("own", "+*", "+&*"):
            if form == "+*" and continuous:
                continue  # refused
            more = WITHOUT_COST_SETTINGS.format(discrete) if discrete and form != "own" else ""
            if form == "own":
                (folder / "out.nex").write_text((folder / "log.txt").read_text())
            else:
                run(folder, f"proc data.zeb;\nexport {form} out.nex;\nquit;\n")
                here = COST_COMMAND.sub("", contents(folder, "proc data.zeb;\n" + more))
            back = contents(folder, f"nstates {states};\nproc out.nex;\n" + more)
            if form == "+*":  # without the title
                back = back.replace("title ", f"title {here.splitlines()[0][len('title '):]}", 1)
            if form != "own":
                back = COST_COMMAND.sub("", back)
            if back != (without_quotes(here) if form == "+&*" else here):
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
