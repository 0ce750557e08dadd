#!/usr/bin/env python3
"""Searches divided among workers: for random data and options, `cores 1`, 2 and 3 must give the same output,
log and trees, byte for byte but for times, also when a worker is killed on its way; trees are saved meanwhile; an interrupt ends all;
and no worker outlives its process. Usage: cores_test.py --zeb PROGRAM [--runs N] [--seed N]"""

import argparse
import os
import pathlib
import random
import re
import signal
import subprocess
import sys
import tempfile
import time

SECONDS = 120  # that no run may need
TIMES = (re.compile(r"\d+:\d\d:\d\d"), re.compile(r"[\d.]+ secs?\.?"))


def matrix(draw):
    """Characters grown along a random tree, of one kind or several, some cells missing."""
    taxa, characters, rate = draw.randint(5, 40), draw.randint(5, 60), draw.uniform(0.03, 0.4)
    states = draw.choice((2, 2, 4, 6))
    rows = [[draw.randrange(states) for _ in range(characters)]]
    while len(rows) < taxa:
        parent = draw.choice(rows)
        rows.append([draw.randrange(states) if draw.random() < rate else c for c in parent])
    cells = ["".join("?" if draw.random() < 0.05 else str(c) for c in row) for row in rows]
    lines = [f"xread {characters} {taxa}"] + [f"t{i} {row}" for i, row in enumerate(cells)] + [";"]
    if draw.random() < 0.2:
        values = [f"t{i} " + " ".join(f"{draw.uniform(0, 3):.2f}" for _ in range(4)) for i in range(taxa)]
        lines = ["nstates 32;", f"xread {characters + 4} {taxa}", "&[cont]", *values, "&[num]", *lines[1:]]
    return "\n".join(lines) + "\n"


def settings(draw):
    lines = [f"macro=; var: v[6]; hold {draw.choice((3, 10, 100, 1000))}; rseed {draw.randint(1, 10**6)};"]
    some = lambda chance, text: lines.append(text) if draw.random() < chance else None
    some(0.3, "ccode + 0.3;")
    some(0.2, "ccode /2 1.2;")
    some(0.25, f"piwe= {draw.randint(2, 12)};")
    some(0.2, f"subopt {draw.randint(1, 3)};")
    some(0.3, f"collapse {draw.randint(0, 6)};")
    some(0.2, "rseed:1;")
    some(0.2, "rseed [;")
    some(0.3, f"report +0/{draw.randint(1, 3)}/{draw.randint(0, 2)};")
    some(0.2, "force + [1 2 3]; constrain =;")
    return lines


def searches(draw):
    mult = lambda: (f"mult={draw.choice(('tbr', 'tbr', 'spr', 'wagner'))} hold {draw.randint(0, 12)} replications "
                    f"{draw.randint(1, 14)}{draw.choice(('', '', ' ratchet', ' drift', ' keepall'))};"
                    "mult:noratchet nodrift nokeepall;")
    xmult = lambda: (f"xmult=hits {draw.randint(1, 6)} replications {draw.randint(1, 4)} drift {draw.randint(1, 3)} "
                     f"{draw.choice(('', 'noautoconst nocss', 'verbose', 'hold 3', 'keepall', 'consense 2 conbase 1', 'chklevel 2', 'noupdate', 'hybrid', 'picktype', 'retouch 2', 'prvmix noxmix'))};"
                     "xmult:noretouch noprvmix xmix autoconst 1 css noverbose hold 1 nokeepall noconsense nochklevel update nohybrid nopicktype;")
    resample = lambda: (f"resample={draw.choice(('', '', 'allow '))}{draw.choice(('sym', 'jak', 'boot', 'poisson'))} replications {draw.randint(2, 8)}"
                        f"{draw.choice(('', ' frequency', ' nogc frequency'))}"
                        f"{draw.choice(('', ' [mult=replications 2 hold 3]', ' [mult=replications 2 hold 400]', ' [xmult=hits 1; best]', ' [mult 2; set v ntrees;]', ' []'))};")
    qnelsen = lambda: f"qnelsen={draw.choice(('tbr', 'spr', 'wagner'))} replications {draw.randint(2, 9)};"
    bsupport = lambda: f"bsupport <{draw.choice(('', '[mult=replications 2]'))} 0;"
    chosen = [draw.choice((mult, mult, xmult))()]
    for _ in range(3):
        one = draw.choice((mult, xmult, resample, qnelsen, bsupport))
        begin = "keep 0; mult 2;" if one is bsupport else "keep 0;" if one is xmult or draw.random() < 0.3 else ""
        chosen.append(begin + one())
        chosen.append("set v[0] numhits; set v[1] getarep; set v[2] accepted; set v[3] grandscore; set v[4] rearrangs;"
                      "set v[5] getrandom[1 1000]; quote 'v[0]' 'v[1]' 'v[2]' 'v[3]' 'v[4]' 'v[5]';")
    if draw.random() < 0.2:
        chosen.append(f"sectsch:[mult 1;{draw.choice(('', 'set v ntrees;'))}]; xmult=replications 3; quote 'v';")
    return chosen + ["mult 1; tsave *x.tre; save; tsave/;"]


def script(data, before, commands, cores, pause=""):
    head = "log x.log;\n" + data
    return head + f"cores {cores};\n" + "\n".join(before + commands) + f"\n{pause}quit;\n"


def start(zeb, text, where):
    """Without the leak check of sanitizers: it has a child for a moment, and waits for ever if that is killed."""
    (where / "x.run").write_text(text)
    options = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
    return subprocess.Popen([zeb, "--batch", "x.run"], cwd=where, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            env={**os.environ, "ASAN_OPTIONS": options})


def children(process):
    try:
        text = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text()
    except OSError:
        return []
    return [int(word) for word in text.split()]


def result(zeb, text, killer=None):
    """Output, log and tree file of one run, times masked; `killer` is called with the process while it runs."""
    with tempfile.TemporaryDirectory() as folder:
        where = pathlib.Path(folder)
        process = start(zeb, text, where)
        if killer:
            killer(process)
        output = process.communicate(timeout=SECONDS)[0].decode(errors="replace")
        files = [f"{p.name}:\n{p.read_bytes().decode(errors='replace')}" for p in sorted(where.iterdir())
                 if p.name != "x.run"]
        return mask("\n".join([output, *files, f"status {process.returncode}"]))


def mask(text):
    text = re.sub(r"\n?WARNING:\nWorker.*\n", "", text)
    text = re.sub(r"Searches use.*\n", "", text)
    for pattern in TIMES:
        text = pattern.sub("#", text)
    return re.sub(r"[ \t]+", " ", text)


def kill_one(draw):
    """Kills a worker at a random moment, and another one later."""
    def killer(process):
        for _ in range(2):
            time.sleep(draw.uniform(0.01, 0.4))
            found = children(process.pid)
            if found:
                try:
                    os.kill(draw.choice(found), signal.SIGKILL)
                except OSError:
                    pass
    return killer


def difference(a, b):
    for x, y in zip(a.splitlines(), b.splitlines()):
        if x != y:
            return f"< {x}\n> {y}"
    return "one is longer"


def check_equality(zeb, seed, where_to):
    draw = random.Random(seed)
    data, before, commands = matrix(draw), settings(draw), searches(draw)
    alone = result(zeb, script(data, before, commands, 1))
    bad = []
    for cores, killer in ((2, None), (3, None), (2, kill_one(draw))):
        shared = result(zeb, script(data, before, commands, cores), killer)
        if shared != alone:
            bad.append(f"seed {seed}, {cores} cores{', workers killed' if killer else ''}:\n"
                       + difference(alone, shared))
            if where_to:
                pathlib.Path(where_to, f"{seed}.run").write_text(script(data, before, commands, cores))
    return bad


def check_death_of_master(zeb):
    """Workers go with their process."""
    data = matrix(random.Random(3))
    with tempfile.TemporaryDirectory() as folder:
        process = start(zeb, script(data, [], ["qnelsen 100000;"], 3), pathlib.Path(folder))
        end = time.time() + 20
        while len(children(process.pid)) < 3 and time.time() < end:
            time.sleep(0.02)
        workers = children(process.pid)
        process.kill()
        process.wait()
        end = time.time() + 5
        while any(pathlib.Path(f"/proc/{w}/exe").exists() and os.path.exists(f"/proc/{w}/fd/1") for w in workers) \
                and time.time() < end:
            time.sleep(0.05)
        left = [w for w in workers if os.path.exists(f"/proc/{w}/fd/1")]
    return ([] if len(workers) == 3 else ["three workers weren't started"]) + [f"worker {w} is left" for w in left]


ENDLESS = ("xmult=hits 9 targetscore 1;", "sectsch:[mult 1;]; xmult=hits 9 targetscore 1;", "mult=replications 100000;",
           "resample=replications 100000 [mult 2];", "qnelsen 100000;", "mult=replications 1; resample=replications 100000;")


def check_auto_save(zeb):
    """Trees of searches that never come to an end are saved meanwhile, also those that workers have."""
    bad = []
    for cores in (1, 3):
        with tempfile.TemporaryDirectory() as folder:
            saved = pathlib.Path(folder, "s-1")
            text = script(matrix(random.Random(3)), ["tsave !1 *s;"], [ENDLESS[0]], cores)
            process = start(zeb, text, pathlib.Path(folder))
            end = time.time() + 20
            while not saved.exists() and time.time() < end:
                time.sleep(0.1)
            process.kill()
            process.communicate()
            if not saved.exists() or saved.read_text().count("(") < 2:
                bad.append(f"{cores} cores: no trees are saved")
    return bad


def check_stops(zeb, draw, runs):
    """An interrupt at any moment, also just before a search begins, ends the script, and all workers."""
    bad = []
    for _ in range(runs):
        commands, cores, wait = draw.choice(ENDLESS), draw.randint(1, 3), draw.uniform(0, 0.3)
        with tempfile.TemporaryDirectory() as folder:
            text = script(matrix(random.Random(3)), [], [commands], cores)
            process = start(zeb, text, pathlib.Path(folder))
            time.sleep(wait)
            workers = children(process.pid)
            process.send_signal(signal.SIGINT)
            try:
                process.communicate(timeout=30)
            except subprocess.TimeoutExpired:
                bad.append(f"{cores} cores, interrupt after {wait:.3f} s: {commands} goes on")
                process.kill()
                process.communicate()
            if process.returncode not in (-signal.SIGINT, -signal.SIGKILL, 128 + signal.SIGINT):
                bad.append(f"{commands} interrupted after {wait:.3f} s: status {process.returncode}")
            bad += [f"worker {w} is left" for w in workers if os.path.exists(f"/proc/{w}/fd/1")]
    return bad


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--zeb", type=os.path.abspath, required=True)
    parser.add_argument("--runs", type=int, default=12)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep", help="folder for scripts that differ")
    options = parser.parse_args()
    bad = check_death_of_master(options.zeb) + check_auto_save(options.zeb)
    bad += check_stops(options.zeb, random.Random(options.seed), options.runs)
    for seed in range(options.seed, options.seed + options.runs):
        bad += check_equality(options.zeb, seed, options.keep)
    print("\n".join(bad) if bad else f"{options.runs} searches: the same on one core and on several")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
