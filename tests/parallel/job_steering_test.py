#!/usr/bin/env python3
"""Files that steer a background run steer its jobs, too: stop, pause and execute, each named after the process.
Usage: job_steering_test.py --zeb PROGRAM --mode local|mpi|pvm"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import threading
import time

from job_processes import environment, start_daemon, stop_daemon, tasks_left

MATRIX = pathlib.Path(__file__).resolve().parents[2] / "examples" / "beetles.xread"
FOREVER = "loop 1 1000 mult=replications 10000; stop return;"

options = None
faults = []


def parents(task):
    """What started a process: by its call over libraries, whose daemons are between, else by the system."""
    try:
        words = pathlib.Path(f"/proc/{task}/cmdline").read_bytes().split(b"\0")
        stat = pathlib.Path(f"/proc/{task}/stat").read_text()
    except OSError:
        return []
    return [int(stat.rsplit(")", 1)[1].split()[1]), *(int(w.split(b"@")[0]) for w in words if b"@" in w)]


class Run:
    """A background run whose commands follow each other as arguments; its jobs have names of their own."""

    def __init__(self, *commands):
        self.folder = tempfile.TemporaryDirectory(prefix="zeb_jobs_")
        self.where = pathlib.Path(self.folder.name)
        begin = ["log out.log;", f"proc {MATRIX};", f"hold 1000; pzeb {options.mode}; pzeb commtime 1;"]
        self.process = subprocess.Popen([options.zeb, "bground", *begin, *commands], cwd=self.where,
                                        stdin=subprocess.DEVNULL, env=environment())

    def file(self, word, process=None):
        return self.where / f"{word}_zeb_{process or self.process.pid}"

    def tasks(self):
        """Its tasks, and theirs."""
        family = [self.process.pid]
        found = [(task, parent) for task in tasks_left() for parent in parents(task)]
        for _ in range(2):
            family += [task for task, parent in found if parent in family and task not in family]
        return family[1:]

    def processor_time(self):
        return sum(int(pathlib.Path(f"/proc/{task}/stat").read_text().rsplit(")", 1)[1].split()[11])
                   for task in self.tasks())

    def expect(self, what, *patterns, status=0):
        try:
            ended = self.process.wait(timeout=90)
        except subprocess.TimeoutExpired:
            self.process.kill()
            ended = "timed out"
        log = (self.where / "out.log").read_text(errors="replace")
        if ended != status or not all(re.search(pattern, log, re.S) for pattern in patterns):
            faults.append(f"{what}: status {ended}\n{log[-3000:]}")


def stop_ends_a_wait_and_the_jobs():
    run = Run(f"pzeb begin a 2 = {FOREVER}", "pzeb wait;", "pzeb get; quit;")
    run.file("stop").touch()
    run.expect("stop file during wait", r"wait: user interrupt.*Got results from a \(2 ")


def stop_ends_the_jobs_that_get_waits_for():
    run = Run(f"pzeb begin a 2 = {FOREVER}", "pzeb get;", "length; quit;")
    run.file("stop").touch()
    run.expect("stop file during get", r"Got results from a \(2 ", "121")


def pause_holds_tasks_of_tasks_and_no_time_passes():
    run = Run(f"pzeb begin a 1 = pzeb {options.mode}; pzeb begin b 2 = {FOREVER} pzeb wait; pzeb get !; return text;",
              "pzeb wait [22]; pzeb get !; quit;")
    run.file("pause").touch()
    time.sleep(16)
    before = run.processor_time()
    time.sleep(2)
    if run.processor_time() > before + 2:
        faults.append("tasks go on while their master is paused")
    for task in run.tasks():  # nobody looks at these
        run.file("stop", task).touch()
    time.sleep(10)
    if run.process.poll() is not None or not run.tasks():
        faults.append("time passes while a run is paused")
    run.file("pause").unlink()
    run.expect("pause file", r"time is out.*pausing slave.*paused for [12]\d secs.*Got results from b \(2 .*Got results from a \(1 ")


def execute_finds_the_jobs():
    run = Run(f"pzeb begin a 2 = {FOREVER}", "pzeb wait [3];")
    run.file("execute").write_text("pzeb get !; quit;")
    run.expect("execute file", r"New instruction set taken up.*Got results from a \(2 ")


def main():
    global options
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--zeb", required=True, type=os.path.abspath)
    parser.add_argument("--mode", choices=("local", "mpi", "pvm"), default="local")
    options = parser.parse_args()
    if options.mode == "pvm" and not start_daemon():
        sys.exit("the daemon doesn't start")
    cases = [stop_ends_a_wait_and_the_jobs, stop_ends_the_jobs_that_get_waits_for,
             pause_holds_tasks_of_tasks_and_no_time_passes, execute_finds_the_jobs]
    threads = [threading.Thread(target=case) for case in cases]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if options.mode == "pvm":
        stop_daemon()
    print("\n".join(faults) if faults else f"{options.mode}: jobs are steered with their master")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
