#!/usr/bin/env python3
"""Measures what each way to search gains, in seconds of the processor (with the reading of the data taken off).

    bench/drivers.py PROGRAM table MATRIX [--starts N]
    bench/drivers.py PROGRAM curve MATRIX... [--seconds S] [--seeds N] [--search "xmult=hits 1000"] [--svg FILE]
    bench/drivers.py PROGRAM target MATRIX SCORE [--seeds N] [--search xmult]

A matrix is a file that `proc` reads, or TAXAxCHARACTERS: data that evolved on a random tree.

`table` starts each driver from the same trees, each of one replication of Wagner and TBR: steps gained, seconds,
and steps gained by second, means over the starts. Those that work on several trees get five, and their time has
that of making the other four in it.

`curve` tells the best score after so many seconds, for one replication of Wagner and TBR and for the search; as a
diagram with `--svg`. `peak` is the largest resident size, in Mbytes.

`target` runs the search with a score to give up at, and tells how long that took: median, worst, failures.
"""

import argparse
import math
import os
import random
import re
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import threading
import time

POOL = 5  # trees for those that need several
DRIVERS = {
    "bbreak": "bbreak=nomulpars", "ratchet": "ratchet", "ratchet auto": "ratchet=auto", "drift": "drift", "sectsch rss": "sectsch",
    "sectsch xss": "sectsch=xss", "sectsch gocomb": "sectsch=minsize 60 maxsize 120 gocomb 60", "rebuild": "rebuild=cycles 100 nohybrid",
    "tfuse": "tfuse", "hybrid": "hybrid=hybridize 50", "xmult": "xmult", "xmult level 3": "xmult=level 3"}
ON_POOL = ("tfuse", "hybrid")
FROM_SCRATCH = ("xmult", "xmult level 3")
STATUS = re.compile(r"\d+ +[A-Z]+ +\d+ of \d+ +\S+ +([\d.]*\d) +\d+:\d+")


def simulate(path, taxa, characters):
    """Data that evolved on a random tree: three changes a branch in the mean, on many branches none; a few sites change
    often, most of them rarely."""
    draw = random.Random(7)

    def evolved(row):
        row = bytearray(row)
        for _ in range(int(draw.expovariate(1 / 3))):
            row[int(characters * draw.random() ** 3)] = ord("0") + draw.randrange(4)
        return row

    rows, waiting = [], [(taxa, bytearray(b"0" * characters))]
    while waiting:
        tips, row = waiting.pop()
        if tips == 1:
            rows.append(row)
            continue
        left = draw.randint(1, tips - 1)
        waiting += [(left, evolved(row)), (tips - left, evolved(row))]
    draw.shuffle(rows)
    with open(path, "wb") as out:
        out.write(b"xread %d %d\n" % (characters, taxa))
        out.writelines(b"t%d %s\n" % (i, row) for i, row in enumerate(rows))
        out.write(b";\n")


class Run:
    """One run of the program; its output with the seconds it had used when it said it."""

    def __init__(self, program, folder, commands, limit=None):
        started = time.monotonic()
        process = subprocess.Popen([program], cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   text=True)
        process.stdin.write("\n".join(commands + ["quit;\n"]))
        process.stdin.close()
        if limit:
            threading.Thread(target=self.stop_after, args=(process, limit), daemon=True).start()
        self.lines = [(self.used(process.pid), line) for line in process.stdout]
        _, status, usage = os.wait4(process.pid, 0)
        self.seconds, self.peak = usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024
        self.wall = time.monotonic() - started
        self.output = "".join(line for _, line in self.lines)
        if status != 0 and not limit or re.search(r"Error reading|OOpps", self.output):
            sys.exit(f"{commands}: {self.output[-500:]}")

    @staticmethod
    def used(process):
        """Seconds, in hundredths."""
        with open(f"/proc/{process}/stat", encoding="utf-8") as file:
            words = file.read().rpartition(")")[2].split()
        return (int(words[11]) + int(words[12])) / os.sysconf("SC_CLK_TCK")

    def stop_after(self, process, limit):
        """Ends it when it has used so many seconds, however busy the machine is."""
        try:
            while self.used(process.pid) < limit:
                time.sleep(0.1)
            os.kill(process.pid, signal.SIGTERM)
        except OSError:  # it has ended
            pass

    def score(self):
        """The last that was told."""
        found = re.findall(r"[Ss]core(?: \(\w+\))?:? ([\d.]*\d)", self.output)
        return float(found[-1]) if found else math.nan


class Bench:
    def __init__(self, program, matrix, folder, memory):
        self.program, self.folder = program, folder
        data = os.path.join(folder, "data.zeb")
        sizes = re.fullmatch(r"(\d+)x(\d+)", matrix)
        if sizes:
            simulate(data, int(sizes[1]), int(sizes[2]))
        else:
            shutil.copy(matrix, data)
        self.before = [f"report-; mxram {memory}; silent=all; proc data.zeb; silent-all; hold 100;"]
        self.reading = self.run().seconds

    def run(self, *commands, limit=None):
        return Run(self.program, self.folder, self.before + list(commands), limit)


def print_table(bench, starts):
    spent = {name: [0, 0, 0, math.inf] for name in DRIVERS}  # gained, seconds, rearrangements, best
    first = []
    for seed in range(1, starts + 1):
        start = bench.run(f"rseed {seed}; mult=replications 1 hold 1; tsave *start.tre; save; tsave/;")
        pool = bench.run(f"rseed {seed + 1000}; mult=replications {POOL - 1} hold 1 keepall; tsave *pool.tre; save; tsave/;")
        first.append(start.score())
        for name, command in DRIVERS.items():
            trees = "" if name in FROM_SCRATCH else "proc start.tre;" + (" proc pool.tre;" if name in ON_POOL else "")
            done = bench.run(f"{trees} rseed {seed}; {command};")
            own = spent[name]
            own[0] += start.score() - done.score()
            own[1] += done.seconds - bench.reading + (pool.seconds - bench.reading if name in ON_POOL else 0)
            own[2] += sum(float(n.replace(",", "")) for n in re.findall(r"examined: ([\d,]+)", done.output))
            own[3] = min(own[3], done.score())
    print(f"{starts} starts of mean score {statistics.mean(first):.2f}")
    print(f"{'driver':<16}{'gained':>9}{'seconds':>9}{'gained/s':>10}{'rearr/s':>10}{'best':>11}")
    for name, (gained, seconds, tried, best) in sorted(spent.items(), key=lambda row: -row[1][0] / row[1][1]):
        print(f"{name:<16}{gained / starts:>9.2f}{seconds / starts:>9.3f}{gained / seconds:>10.2f}{tried / seconds / 1e6:>9.0f}M{best:>11g}")


def curve_of(bench, run):
    """Best score by seconds, each time it became better."""
    points = []
    for at, line in run.lines:
        found = STATUS.match(line.strip())
        if found and (not points or float(found[1]) < points[-1][1]):
            points.append((max(0.01, at - bench.reading), float(found[1])))
    return points


def score_at(points, seconds):
    return next((score for at, score in reversed(points) if at <= seconds), math.nan)


def print_curves(bench, matrix, search, seconds, seeds):
    times = [t for t in (1, 2, 5, 10, 20, 30, 60, 120, 300, 600, 1200, 3600) if t <= seconds]
    print(f"{matrix:<40}" + "".join(f"{t:>8} s" for t in times) + f"{'peak':>8}")
    curves = []
    for command, most_seeds in (("mult=replications 1 hold 1", 1), (search, seeds)):
        for seed in range(1, most_seeds + 1):
            run = bench.run(f"rseed {seed}; report+1/0; {command};", limit=seconds + bench.reading)
            points = curve_of(bench, run)
            curves.append((f"{command}, seed {seed}", points))
            print(f"{command[:30]:<30} seed {seed:<4}" + "".join(f"{score_at(points, t):>10g}" for t in times) + f"{run.peak:>8.0f}", flush=True)
    return curves


def svg_of(title, curves, seconds):
    """Scores against the logarithm of time; the worst that is shown is that of the first search after a tenth of the time."""
    width, height, margin = 640, 400, 60
    points = [point for _, curve in curves for point in curve]
    low, high = min(score for _, score in points), max(score_at(curve, seconds) for _, curve in curves if curve)
    high += (high - low) * 0.5 + 1
    first = math.log(0.5)

    def place(at, score):
        x = margin + (math.log(max(0.5, at)) - first) / (math.log(seconds) - first) * (width - 2 * margin)
        return f"{x:.1f},{margin + (high - min(score, high)) / (high - low) * (height - 2 * margin):.1f}"

    text = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height + 20 * len(curves)}" font-family="sans-serif" font-size="12">',
            f'<text x="{margin}" y="30" font-size="15">{title}: score by seconds</text>']
    for at in (t for t in (1, 10, 60, 600, 3600) if t <= seconds):
        text.append(f'<text x="{place(at, low).split(",")[0]}" y="{height - margin + 20}" text-anchor="middle">{at}</text>')
    for score in (low, (low + high) / 2, high):
        text.append(f'<text x="{margin - 5}" y="{place(1, score).split(",")[1]}" text-anchor="end">{score:g}</text>')
    for i, (name, curve) in enumerate(curves):
        curve = curve + [(seconds, curve[-1][1])] if curve else []
        colour = f"hsl({i * 360 // len(curves)},70%,40%)"
        stairs = [place(at, score) for (at, _), (_, score) in zip(curve[1:], curve)]
        corners = [corner for (at, score), stair in zip(curve, stairs + [None]) for corner in (place(at, score), stair) if corner]
        text.append(f'<polyline fill="none" stroke="{colour}" points="{" ".join(corners)}"/>')
        text.append(f'<text x="{margin}" y="{height + 20 * i}" fill="{colour}">{name}</text>')
    return "\n".join(text + ["</svg>\n"])


def print_target(bench, search, score, seeds, limit):
    seconds, failures = [], 0
    for seed in range(1, seeds + 1):
        run = bench.run(f"rseed {seed}; {search}{' ' if '=' in search else '='}giveupscore {score};", limit=limit)
        failures += not run.score() <= score + 1e-5
        seconds.append(run.seconds - bench.reading)
    seconds.sort()
    print(f"{search} to {score:g}: median {statistics.median(seconds):.2f} s, worst {seconds[-1]:.2f} s, {seeds} seeds, {failures} failures")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("what", choices=("table", "curve", "target"))
    parser.add_argument("matrices", nargs="+")
    parser.add_argument("--starts", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--seeds", type=int, default=2)
    parser.add_argument("--search")
    parser.add_argument("--memory", type=int, default=600, help="Mbytes that the program may take for data and searches")
    parser.add_argument("--svg")
    options = parser.parse_args()
    program = os.path.abspath(options.program)
    target = float(options.matrices.pop()) if options.what == "target" else None
    for number, matrix in enumerate(options.matrices):
        with tempfile.TemporaryDirectory() as folder:
            bench = Bench(program, matrix, folder, options.memory)
            if options.what == "table":
                print_table(bench, options.starts)
            elif options.what == "target":
                print_target(bench, options.search or "xmult", target, options.seeds, options.seconds)
            else:
                curves = print_curves(bench, os.path.basename(matrix), options.search or "xmult=hits 1000", options.seconds, options.seeds)
                if options.svg:
                    stem, ending = os.path.splitext(options.svg)
                    with open(f"{stem}{number or ''}{ending}", "w", encoding="utf-8") as file:
                        file.write(svg_of(os.path.basename(matrix), curves, options.seconds))


if __name__ == "__main__":
    main()
