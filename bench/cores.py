#!/usr/bin/env python3
"""Wall time of searches on one core and on several, the programs by turns.

  bench/cores.py PROGRAM MATRIX [--cores 2] [--runs 3] [--scale 1]

Each search runs `--runs` times with each number of cores, by turns; `speed` is the least time on one core over
the least on several, since what else a machine does can only add to them. Reading the matrix is taken off. Exit
status 1: outputs differ in more than times. `--scale` multiplies the numbers of replications."""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import time

SEARCHES = (("mult", "mult=replications {};", 100), ("resample", "resample=replications {};", 100),
            ("qnelsen", "qnelsen {};", 60), ("xmult", "xmult=hits {};", 8),
            ("bsupport <", "rseed 7; mult=hold 1 replications 1; bsupport <[mult=hold 1 replications {}] 0;", 1))


def run(program, matrix, cores, commands):
    """Wall seconds, and the output without times."""
    with tempfile.TemporaryDirectory() as where:
        script = pathlib.Path(where) / "x.run"
        script.write_text(f"mxram 300; report +0/0/0; proc {matrix};\nsilent =all; cores {cores}; silent -all;\n"
                          f"{commands} cores 1;\nquit;\n")
        begin = time.monotonic()
        done = subprocess.run([program, "--batch", script.name], cwd=where, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False)
        seconds = time.monotonic() - begin
    text = done.stdout.decode(errors="replace")
    for line in text.splitlines():
        if line.startswith("Worker"):
            print(line)
    return seconds, re.sub(r"\d+:\d\d:\d\d|[\d.]+ secs?\.?", "#", text)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=lambda p: str(pathlib.Path(p).resolve()))
    parser.add_argument("matrix", type=lambda p: pathlib.Path(p).resolve())
    parser.add_argument("--cores", type=int, default=2)
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--scale", type=float, default=1)
    parser.add_argument("--only", help="one of: " + ", ".join(name for name, _, _ in SEARCHES))
    options = parser.parse_args()
    reading = min(run(options.program, options.matrix, 1, "")[0] for _ in range(options.runs))
    print(f"{'search':<14}{'1 core, s':>12}{f'{options.cores} cores, s':>12}{'speed':>8}  output")
    same = True
    for name, command, number in SEARCHES:
        if options.only not in (None, name):
            continue
        commands = command.format(max(1, round(number * options.scale)))
        seconds, outputs = {1: [], options.cores: []}, set()
        for _ in range(options.runs):
            for cores in seconds:
                took, output = run(options.program, options.matrix, cores, commands)
                seconds[cores].append(took - reading)
                outputs.add(output)
        one, several = min(seconds[1]), min(seconds[options.cores])
        same = same and len(outputs) == 1
        print(f"{name:<14}{one:>12.2f}{several:>12.2f}{one / several:>8.2f}  "
              f"{'same' if len(outputs) == 1 else 'DIFFERENT'}", flush=True)
    return 0 if same else 1


if __name__ == "__main__":
    sys.exit(main())
