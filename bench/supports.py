#!/usr/bin/env python3
"""CPU seconds of supports on one matrix: resampling by each scheme with the default search, and Bremer supports
by swapping. The time of the same run without them is taken off.

  bench/supports.py PROGRAM MATRIX [--replications N] [--only sym|jak|boot|poisson|bremer]
"""

import argparse
import pathlib
import resource
import subprocess
import tempfile

SCHEMES = ("sym", "jak", "boot", "poisson")


def cpu_seconds(program, commands):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with tempfile.TemporaryDirectory() as where:
        run = pathlib.Path(where) / "x.run"
        run.write_text(commands + "quit;\n")
        subprocess.run([program, "--batch", run.name], cwd=where, check=True, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=lambda p: str(pathlib.Path(p).resolve()))
    parser.add_argument("matrix", type=lambda p: pathlib.Path(p).resolve())
    parser.add_argument("--replications", type=int, default=100)
    parser.add_argument("--only", choices=(*SCHEMES, "bremer"))
    options = parser.parse_args()
    head = f"report -; mxram 400; proc {options.matrix}; mult=replications 2 hold 1;\n"
    without = cpu_seconds(options.program, head)
    for what in (*SCHEMES, "bremer"):
        if options.only not in (None, what):
            continue
        command = ("subopt 10; bsupport ! 0;\n" if what == "bremer"
                   else f"resample={what} replications {options.replications};\n")
        name = "bsupport !, subopt 10" if what == "bremer" else f"{what}, {options.replications} replicates"
        print(f"{name:30} {cpu_seconds(options.program, head + command) - without:8.2f} s", flush=True)


if __name__ == "__main__":
    main()
