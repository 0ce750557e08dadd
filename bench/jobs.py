#!/usr/bin/env python3
"""What jobs of tasks on this machine cost: the efficiency of a job (the time of one task, divided by that of
several which each do the same work), and the master's own use of a processor while it waits. Needs a quiet machine
with as many processors as tasks. With --traffic, the messages of a job by tag and size (needs strace).

  bench/jobs.py PROGRAM MATRIX [--tasks 2] [--rounds 3] [--work "xmult=replications 4 hits 1"] [--mode local]
"""

import argparse
import collections
import os
import pathlib
import re
import subprocess
import tempfile
import time



def job(options, tasks, traced=None):
    """Wall seconds from the start of the tasks to the last result, and CPU seconds of the master in that time."""
    with tempfile.TemporaryDirectory() as where:
        (pathlib.Path(where) / "x.run").write_text(
            f"report-; proc {options.matrix}; hold 1000; pzeb {options.mode};"
            f"pzeb begin a {tasks} = rseed 1; {options.work}; return; quote begins; pzeb wait; quote ends; pzeb get; quit;")
        command = [options.program, "--batch", "x.run"]
        if traced:
            command = ["strace", "-f", "-qq", "-e", "trace=sendto", "-e", "signal=none", "-s", "0", "-o", traced, *command]
        process = subprocess.Popen(command, cwd=where, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        begins = cpu = None
        for line in process.stdout:
            if line.startswith("begins"):
                begins, cpu = time.time(), cpu_of_masters(process.pid)
            if line.startswith("ends"):
                wall, cpu = time.time() - begins, cpu_of_masters(process.pid) - cpu
        process.wait()
        return wall, cpu


def cpu_of_masters(top):
    """CPU seconds of the process and its child that runs the file, without the tasks."""
    total = 0.0
    for entry in pathlib.Path("/proc").iterdir():
        try:
            fields = (entry / "stat").read_text().rsplit(")", 1)[1].split()
            own = entry.name == str(top) or fields[1] == str(top)
            if own and b"slaveproc" not in (entry / "cmdline").read_bytes():
                total += (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
        except (OSError, IndexError):
            pass
    return total


def efficiency(options):
    for _ in range(options.rounds):
        one, _ = job(options, 1)
        several, cpu = job(options, options.tasks)
        print(f"1 task {one:.2f} s, {options.tasks} tasks {several:.2f} s: efficiency {one / several:.3f};"
              f" master's CPU while waiting {100 * cpu / several:.2f} %")


def traffic(options):
    with tempfile.TemporaryDirectory() as where:
        trace = pathlib.Path(where) / "trace"
        job(options, options.tasks, str(trace))
        # Each message is sent as a head of 16 bytes and its body, by process and descriptor.
        sizes = collections.defaultdict(list)
        for line in trace.read_text().splitlines():
            found = re.search(r"sendto\(\d+, .*, (\d+), .* = (\d+)$", line)
            if found:
                sizes[int(found[2])].append(line)
        for size, lines in sorted(sizes.items()):
            print(f"{len(lines):6d} sends of {size} bytes")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=lambda p: str(pathlib.Path(p).resolve()))
    parser.add_argument("matrix", type=lambda p: pathlib.Path(p).resolve())
    parser.add_argument("--tasks", type=int, default=2)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--work", default="xmult=replications 4 hits 1")
    parser.add_argument("--mode", choices=("local", "mpi", "pvm"), default="local")
    parser.add_argument("--traffic", action="store_true")
    options = parser.parse_args()
    (traffic if options.traffic else efficiency)(options)


if __name__ == "__main__":
    main()
