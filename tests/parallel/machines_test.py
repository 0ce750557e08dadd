#!/usr/bin/env python3
"""Tasks over MPI on other machines: this one plays them, under other names, as the shell of the library starts its
daemons in spaces of names of their own. Usage: machines_test.py --zeb PROGRAM. Exit status 77: that isn't possible here."""

import argparse
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

from job_processes import clear_away, environment, send_signal, tasks_left, wait_until

MATRIX = pathlib.Path(__file__).resolve().parents[2] / "examples" / "beetles.xread"
SHELL = """#!/bin/sh
while [ "${1#-}" != "$1" ]; do shift; done
exec unshare --uts sh -c 'hostname "$0"; exec sh -c "$*"' "$@"
"""
FOREVER = "loop 1 1000 mult=replications 100000; stop return value (slavenum);"
AFTER_MASTER = 20  # seconds after which nothing may be left

options = None
faults = []


def check(ok, what, output):
    if not ok:
        faults.append(what)
        print("FAILED:", what, "\n" + output[-3000:])


def start(where, text):
    shell = where / "shell"
    shell.write_text(SHELL)
    shell.chmod(0o755)
    own = f"{os.uname().nodename} slots=4\n" if "myself" in text else ""  # for tasks elsewhere it would be theirs, too
    (where / "hostfile").write_text(f"{own}far1 slots=4\nfar2 slots=4\n")
    (where / "x.run").write_text(f"report-; proc {MATRIX};\nhold 1000; macro=; pzeb mpi; pzeb commtime 1;\n{text}\nquit;\n")
    return subprocess.Popen([options.zeb, "--batch", "x.run"], cwd=where, text=True, errors="replace",
                            env=environment(ZEB_SILENCE_SECONDS="6", OMPI_MCA_plm="rsh", OMPI_MCA_plm_rsh_agent=str(shell)),
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def tasks_elsewhere():
    def names_of(process):
        return os.readlink(f"/proc/{process}/ns/uts")

    return [task for task in tasks_left() if names_of(task) != names_of("self")]


def run_with_strikes(text, signals):
    """The output of a run, whose first tasks on other machines get the signals when it has made a file."""
    with tempfile.TemporaryDirectory() as folder:
        where = pathlib.Path(folder)
        process = start(where, text)
        wait_until(lambda: (where / "struck").exists() or process.poll() is not None, 30)
        for task, number in zip(tasks_elsewhere(), signals):
            send_signal(task, number)
        try:
            return process.communicate(timeout=90)[0]
        except subprocess.TimeoutExpired:
            process.kill()
            return process.communicate()[0] + "\n(timed out)"


def tasks_are_placed():
    output = run_with_strikes(
        "pzeb begin a 3 = mult 1; return; pzeb begin b 2 myself = mult 1; return; pzeb wait;"
        "set 0 tasktoh[a 0]+tasktoh[a 1]+tasktoh[a 2]; set 1 tasktoh[b 0]+tasktoh[b 1]; set 2 tasksin[0]; set 3 totcpus;"
        "quote placed '0' '1' '2' '3'; pzeb get b; pzeb get a;", [])
    check(re.search(rf"placed 3 0 3 {3 * os.cpu_count()}\s.*results from b \(2 .*results from a \(3 ", output, re.S),
          "tasks run on the machines of the host file", output)


def the_silent_count_as_dead():
    """Of those on other machines nothing else can be known: neither that one was killed nor that one was stopped."""
    output = run_with_strikes(
        f"pzeb begin a 6 = {FOREVER} system touch struck; pzeb wait [40] (tasksleft[a]==2); set 0 tasksleft[a]; quote left '0'; pzeb get !;",
        [signal.SIGKILL, signal.SIGSTOP, signal.SIGKILL, signal.SIGSTOP])
    check(re.search(r"left 2\s.*results from a \(2 .*crashed or died:( \d){4}\s", output, re.S), "silent tasks count as dead", output)
    for task in tasks_left():
        send_signal(task, signal.SIGCONT)
    check(wait_until(lambda: not tasks_left(), AFTER_MASTER), "no task is left after its master", output)


def a_dead_master_takes_its_tasks_along():
    with tempfile.TemporaryDirectory() as folder:
        process = start(pathlib.Path(folder), f"pzeb begin a 3 = pzeb mpi; pzeb begin n 2 = {FOREVER} pzeb wait; return; pzeb wait;")
        started = wait_until(lambda: len(tasks_left()) >= 9, 40)
        time.sleep(1)
        process.kill()
        check(started and wait_until(lambda: not tasks_left(), AFTER_MASTER), "tasks on other machines end with their master", process.communicate()[0])


def main():
    global options
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--zeb", required=True, type=os.path.abspath)
    options = parser.parse_args()
    if subprocess.run(["unshare", "--uts", "hostname", "far1"], stderr=subprocess.DEVNULL, check=False).returncode != 0:
        print("no other names of the machine can be had")
        return 77
    for case in (tasks_are_placed, the_silent_count_as_dead, a_dead_master_takes_its_tasks_along):
        case()
        clear_away()
    print(f"other machines: {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
