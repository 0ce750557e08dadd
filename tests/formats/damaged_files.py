#!/usr/bin/env python3
"""Foreign files with random damage: the program must neither crash nor hang, and must go on.
Usage: damaged_files.py ZEB SCRIPTS_FOLDER [FIRST_SEED NUMBER]. A file that fails is kept as damaged_SEED."""

import pathlib
import random
import subprocess
import sys
import tempfile

zeb, scripts = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
first_seed, count = (int(word) for word in (sys.argv[3:5] or ("1", "300")))

PIECES = [b"(", b")", b"[", b"]", b"'", b'"', b";", b",", b"=", b"{", b"}", b"-", b".", b"~", b"*", b":", b"\n", b"?", b"/",
          b"0", b"-1", b"999999999999", b"\\0", b"end;", b"begin trees;", b"matrix", b"ntax=4", b"nchar=100000000", b"all", b"\xff"]
SIGNS = {".fas": "&", ".phy": "!", ".nex": ""}
AFTER = ("report-;\nxread*;\nminmax;\nttags;\ntplot*;\nexport *w.nex;\nexport !w.fas;\nexport +&w.nex;\nproc w.nex;\n"
         "export + w.nex;\nproc w.nex;\nlength;\nquit;\n")


def damaged(rnd, data):
    data = bytearray(data)
    for _ in range(rnd.choice([1, 1, 2, 3, 6])):
        place, how = rnd.randrange(len(data) + 1), rnd.random()
        if how < 0.4:
            data[place:place] = rnd.choice(PIECES)
        elif how < 0.6:
            del data[place:place + rnd.randint(1, 20)]
        elif how < 0.8:
            data[place:place + 1] = rnd.choice(PIECES)
        elif how < 0.9:
            start = rnd.randrange(len(data) + 1)
            data[place:place] = data[start:start + rnd.randint(1, 60)]
        else:
            data = data[:place] or bytearray(b"#")
    return bytes(data)


def complaint(folder, rnd, sign):
    commands = f"nstates {rnd.choice([8, 16, 32])};\nproc {sign}damaged;\n" + AFTER
    try:
        done = subprocess.run([zeb], cwd=folder, input=commands.encode(), stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=20)
    except subprocess.TimeoutExpired:
        return "hangs"
    if done.returncode != 0 or b"nternal error" in done.stdout:
        return f"exit status {done.returncode}\n{done.stdout[-300:].decode(errors='replace')}"
    return None


bad = 0
files = sorted(file for file in scripts.glob("formats/*.files/*") if file.suffix in SIGNS)
for seed in range(first_seed, first_seed + count):
    rnd = random.Random(seed)
    file = rnd.choice(files)
    data = damaged(rnd, file.read_bytes())
    with tempfile.TemporaryDirectory() as scratch:
        pathlib.Path(scratch, "damaged").write_bytes(data)
        what = complaint(scratch, rnd, SIGNS[file.suffix])
    if what:
        bad += 1
        pathlib.Path(f"damaged_{seed}").write_bytes(data)
        print(f"seed {seed}, from {file.name}: {what}")
print(f"{count} damaged files, {bad} faults")
sys.exit(1 if bad or not files else 0)
