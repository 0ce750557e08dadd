#!/usr/bin/env python3
"""Searches of all kinds with random options, on random data of all kinds, some of them stopped on their way. The
score told is that of the best tree in memory, by the program and by an oracle; no search ends above its start; what
was set is set as before, the matrix is as before.

Usage: random_runs.py ZEB [--runs N] [--seed N] [--seconds S] [--only I]; the number of a run is all that it depends on."""

import argparse
import os
import pathlib
import pty
import random
import re
import select
import signal
import subprocess
import sys
import tempfile
import time

from parsimony import length, parsed
from random_cases import DRIVERS, Case

LISTINGS = ("xread*; costs*; piwe; xpiwe*; force; constrain; ccode; taxcode; rseed; subopt; collapse; hold; bbreak:; outgroup; timeout;"
            + " ".join(f"{name}:;" for name in DRIVERS))
SHOWN = 'quote =trees; tsave *trees; save; tsave/; length; scores; minmax -; quote =end;'
# Refusals that such options may meet with; nothing was done then.
REFUSALS = re.compile("Fusing a tree with itself|requires? max.trees|[Tt]ree (must be divided|in chunks)|depends on the root|with constraints|TWO trees"
                      "|Can't hybridize|Increase max|not available yet|No space|No node|can't run exclusive|(require|without)( tree)? constraints")
TOLD = re.compile(r"(?:Best score(?: \(\w+\))?:|best score:?|[Ss]aved \d+ trees? of score|trees? of score|score range)\s*"
                  r"([\d.]*\d)(?:-([\d.]*\d))?")


def numbers_of(text, title):
    """The table after a title: its values in order."""
    table = text.split(title)[1].split("\n \n")[0]
    rows = [line.split("|")[1].split() for line in table.split("\n") if re.match(r"\s*\d+ \|", line)]
    return [float(value) for row in rows for value in row]


class Run:
    def __init__(self, number):
        self.rnd = rnd = random.Random(number)
        self.stop = rnd.choice(("key", "file")) if rnd.random() < 0.1 else None
        self.case = case = Case(rnd, 60 if self.stop else 22)
        self.driver = rnd.choice(list(DRIVERS))
        self.options = DRIVERS[self.driver](rnd)
        if self.stop:
            self.options += " hits 100000" if self.driver == "xmult" else ""
        self.before = case.matrix() + case.settings() + case.start() + f"\n{self.driver}:{self.options};\n"

    def scripts(self):
        # Settings are shown at both ends; the trees that are there before count for the end.
        return {"data.run": self.before, "show.run": f"{SHOWN}\nquote =settings;\n{LISTINGS}\nquote =done;\n",
                "search.run": f"quote =search;\n{self.driver};\nquote =over;\n"}

    def said(self, zeb, folder):
        for name, text in self.scripts().items():
            (folder / name).write_text(text)
        commands = ["log log;", "proc data.run;", "proc show.run;", "proc search.run;", "proc show.run;", "quit;"]
        if self.stop == "key":
            self.stop_by_key(zeb, folder, " ".join(commands[:-2]))
        elif self.stop == "file":
            self.run_in_background(zeb, folder, " ".join(commands))
        else:
            self.status = subprocess.run([zeb], cwd=folder, input="\n".join(commands), stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL, timeout=60, text=True).returncode
        return (folder / "log").read_text()

    def run_in_background(self, zeb, folder, commands):
        process = subprocess.Popen([zeb, "bground", commands], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        if self.stop and self.wait_for(folder, "=search", process):
            time.sleep(self.rnd.random() * 0.2)
            (folder / f"stop_zeb_{process.pid}").write_text("")
        try:
            self.status = process.wait(timeout=60)
        finally:
            process.kill()
            process.wait()

    def wait_for(self, folder, text, process):
        end = time.monotonic() + 20
        while time.monotonic() < end and process.poll() is None:
            if (folder / "log").exists() and text in (folder / "log").read_text():
                return True
            time.sleep(0.005)
        return False

    def stop_by_key(self, zeb, folder, commands):
        master, slave = pty.openpty()
        process = subprocess.Popen([zeb, commands], cwd=folder, stdin=slave, stdout=slave, stderr=slave, start_new_session=True,
                                   env={**os.environ, "TERM": "xterm"})
        os.close(slave)
        said, stop_at, end, type_at = b"", None, time.monotonic() + 60, 0
        try:
            while process.poll() is None and time.monotonic() < end:
                if select.select([master], [], [], 0.01)[0]:
                    try:
                        said += os.read(master, 65536)
                    except OSError:
                        break
                after = said.partition(b"=search\n")[2]
                now = time.monotonic()
                if b"zeb*>" in after and now > type_at:
                    os.write(master, b"\rproc show.run; quit;\r")
                    type_at = now + 5  # what is typed too early is lost
                elif stop_at is None and b"=search\n" in said:
                    stop_at = now + self.rnd.random() * 0.2
                elif stop_at and stop_at < now and not type_at:
                    process.send_signal(signal.SIGINT)
                    stop_at = now + 2  # one that comes before the search begins stops nothing
        finally:
            process.kill()
            self.status = process.wait()
            os.close(master)


def complaints(run, text, trees_file):
    case = run.case
    parts = text.split("=trees")
    if len(parts) == 2 and run.stop == "file" and REFUSALS.search(text):
        return  # an error ends a run in the background
    if len(parts) != 3 or "=done" not in parts[2]:
        yield "doesn't come to the end"
        return
    shown = parts[1].partition("=search")[0], parts[2]
    if shown[0].partition("=settings")[2].partition("=done")[0] != shown[1].partition("=settings")[2].partition("=done")[0] \
            and "chklevel" not in run.options:
        yield "settings or data aren't as before"
    said = parts[1].partition("=search")[2]
    if re.search("[Ii]nternal error|ALWAYS_CHECK|OOpps", text):
        yield "internal error"
    refused = re.search(r"Error reading data.run.*?\n\s*\^\s*\n(.*)", text)
    if refused and not REFUSALS.search(refused[1]):
        yield f"error: {refused[1]}"
    failed = re.search(r"Error reading search.run.*?\n\s*\^\s*\n(.*)", said, re.S)
    if failed and not REFUSALS.search(failed[1]):
        yield f"error: {failed[1].strip()[:200]}"
    scores, lengths = ([numbers_of(part, title) for part in shown] for title in ("Tree scores", "Tree lengths"))
    if not scores[1]:
        yield "no trees are left"
        return
    trees = [parsed(line.rstrip("*;")) for line in trees_file.splitlines() if line.startswith("(")]
    yield from wrong_scores(case, trees, scores[1], lengths[1], parts[2])
    started_from_trees = run.driver not in ("mult", "xmult")
    if started_from_trees and min(scores[1]) > min(scores[0]) + 1e-5 and not failed:
        yield f"ends at {min(scores[1])}, above its start at {min(scores[0])}"
    if not failed:
        yield from wrong_told(run, said, scores[1])


def wrong_scores(case, trees, scores, lengths, text):
    if len(trees) != len(scores):
        yield f"{len(trees)} trees and {len(scores)} scores"
        return
    shown = 6e-6 if case.is_fractional else 1e-9  # fits and values have a few decimals
    told_least = {int(c): float(n) for c, n in re.findall(r"(\d+): ([\d.]+)/", text.partition("Minimum/Maximum")[2])}
    least = []
    for i, c in enumerate(case.characters):
        own = c.least_steps(case.active_taxa())
        least.append(own if own is not None else told_least.get(i, 0) / max(1, c.weight))
    for number in sorted(case.rnd.sample(range(len(trees)), min(3, len(trees)))):
        tree = trees[number]
        steps = length(case.characters, tree)
        score = case.implied.score(case.characters, tree, least) if case.implied else steps
        if abs(steps - lengths[number]) > max(shown, 6e-4):
            yield f"tree {number}: length {lengths[number]}, by the oracle {steps}"
        if abs(score - scores[number]) > shown:
            yield f"tree {number}: score {scores[number]}, by the oracle {score}"


def wrong_told(run, said, scores):
    found = [(float(a), float(b or a)) for a, b in TOLD.findall(said)]
    if not found:
        yield f"tells no score: {said.strip()[:300]!r}"
        return
    best = found[-1][0]
    if abs(best - min(scores)) > 1.1e-5:
        yield f"told {best}, trees in memory have {min(scores)}"
    if found[-1][1] > best and max(scores) < found[-1][1] - 1.1e-5:
        yield f"told scores up to {found[-1][1]}, trees in memory have up to {max(scores)}"


def try_run(zeb, number):
    run = Run(number)
    with tempfile.TemporaryDirectory(prefix="zeb_drivers_") as name:
        folder = pathlib.Path(name)
        try:
            text = run.said(zeb, folder)
        except subprocess.TimeoutExpired:
            return run, ["doesn't end within a minute"]
        faults = [f"ends with {run.status}"] if run.status != 0 and not run.stop else []
        trees = folder / "trees"
        return run, faults + list(complaints(run, text, trees.read_text() if trees.exists() else ""))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("zeb")
    parser.add_argument("--runs", type=int, default=10**9)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--seconds", type=float, help="[20, where no number of runs is given]")
    parser.add_argument("--keep", help="write the scripts of the first run into this folder, and end")
    options = parser.parse_args()
    zeb = os.path.abspath(options.zeb)
    if options.keep:
        for name, text in Run(options.seed).scripts().items():
            (pathlib.Path(options.keep) / name).write_text(text)
        return 0
    seconds = options.seconds or (20 if options.runs == 10**9 else 10**9)
    end, done, failures = time.monotonic() + seconds, 0, 0
    while done < options.runs and (time.monotonic() < end or done < 5):
        number = options.seed + done
        run, faults = try_run(zeb, number)
        done += 1
        for fault in faults:
            failures += 1
            print(f"FAILED {number}: {run.driver}={run.options} {'stopped by ' + run.stop if run.stop else ''}: {fault}", flush=True)
    print(f"{done} runs, {failures} faults")
    return 1 if failures else 0


sys.exit(main())
