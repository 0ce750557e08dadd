#!/usr/bin/env python3
"""Tasks and masters of jobs are killed, or stopped for good, at random moments: while they start, while data and
results travel, while they search. The rest is collected, the dead are named, nothing hangs and nothing is left.
Usage: kills_test.py --zeb PROGRAM --mode local|mpi|pvm [--runs N] [--masters N] [--seed N]"""

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

from job_processes import clear_away, environment, gateways_left, send_signal, start_daemon, stop_daemon, tasks_left, wait_until

MATRIX = pathlib.Path(__file__).resolve().parents[2] / "examples" / "beetles.xread"
LONGEST = 60  # seconds that no run may need
AFTER_MASTER = 5  # seconds after which nothing may be left of a dead one

options = None


def large_matrix(where):
    draw = random.Random(1)
    rows = "\n".join(f"t{i} " + "".join(draw.choices("0123", k=40000)) for i in range(60))
    (where / "large.xread").write_text(f"xread 40000 60\n{rows}\n;\nproc/;\n")


def jobs(draw, mode):
    """Jobs by names, the numbers of their tasks, and the text that runs them."""
    n = draw.randint(1, 4)
    forever = "mult=replications 100000; return;"
    nested = f"pzeb {mode}; pzeb begin n 2 = {forever} pzeb wait [3]; pzeb get !; return;"
    again = "pzeb again a = mult=replications 2; return;"
    return draw.choice((
        ({"a": n}, f"pzeb begin a {n} = {forever} pzeb wait [3]; pzeb get !;"),
        ({"a": n}, f"pzeb begin a {n} = mult=replications 2; return; pzeb wait; pzeb get;"),
        ({"a": n}, f"pzeb begin a {n} = randtrees 15000; return trees text; pzeb gwait;"),
        ({"a": n}, f"proc large.xread; pzeb begin a {n} = randtrees 3; return; pzeb wait; pzeb get;"),
        ({"a": 2}, f"pzeb begin a 2 = {nested} pzeb wait; pzeb get;"),
        ({"a": 3}, "randtrees 1; pzeb begin a 3 /swap 0 = return; pzeb wait; pzeb get;"),
        ({"a": 3}, f"mult 1; tchoose 0; pzeb begin a 3 /sector *3 0 = {forever} pzeb wait [2]; pzeb get !;"),
        ({"a": n}, f"pzeb begin a {n} = mult 1; return; pzeb wait; {again} pzeb wait; pzeb get;"),
        ({"a": n}, f"pzeb begin a {n} = {forever} macro=; loop 1 2 set 0 bestscore[a] + numerrors[a];"
                   "pzeb spy; pzeb getbufs; stop pzeb get !;"),
        ({"a": n, "b": 2}, f"pzeb begin a {n} = {forever} pzeb begin b 2 = {forever} pzeb wait [3]; pzeb get ! a; pzeb get ! b;"),
    ))


def start(text, where):
    text = f"report-; proc {MATRIX};\nhold 20000; pzeb {options.mode};\npzeb commtime 1;\n{text}\nquit;\n"
    (where / "x.run").write_text(text)
    large_matrix(where)
    return subprocess.Popen([options.zeb, "--batch", "x.run"], cwd=where, text=True, errors="replace",
                            env=environment(ZEB_JOIN_SECONDS="4", ZEB_SILENCE_SECONDS="8"),
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def strike(draw, signals):
    """Sends the signals to one task each; what was hit."""
    alive = tasks_left()
    hit = []
    for number in signals:
        if alive:
            one = alive.pop(draw.randrange(len(alive)))
            if send_signal(one, number):
                hit.append(one)
    return hit


def numbers_after(words, text):
    found = re.search(words + r"((?: \d+)+)", text)
    return [int(word) for word in found[1].split()] if found else []


def faults_of_output(output, wanted, hit):
    """Each task was collected, is named as dead, or was waited for in vain."""
    bad = []
    pieces = dict(re.findall(r"Getting results from (\w+)\s(.*?)(?=Getting results from|\Z)", output, re.S))
    if "couldn't spawn any jobs" in output:
        return [] if hit else ["no job was started"]
    for job, tasks in wanted.items():
        spawned = re.search(rf"spawned only (\d+)", output)
        tasks = int(spawned[1]) if spawned else tasks
        text = pieces.get(job, "")
        got = re.search(r"Got results from \w+ \((\d+)", text)
        dead = numbers_after("crashed or died:", text)
        missed = re.search(r"could not get results from (\d+) tasks \(timed-out\)", text)
        total = (int(got[1]) if got else 0) + len(dead) + (int(missed[1]) if missed else 0)
        if not got or total != tasks or len(dead) > len(hit):
            bad.append(f"job {job}: {tasks} tasks, got {got and got[1]}, dead {dead}, "
                       f"missed {missed and missed[1]}, hit {len(hit)}")
    return bad


def finish(process, longest):
    try:
        return process.communicate(timeout=longest)[0], process.returncode
    except subprocess.TimeoutExpired:
        process.kill()
        return process.communicate()[0], "timed out"


def tasks_are_hit(seed):
    """One run with kills; what is wrong with it."""
    draw = random.Random(seed)
    wanted, text = jobs(draw, options.mode)
    signals = draw.choice(([signal.SIGKILL], [signal.SIGKILL], [signal.SIGKILL] * 2, [signal.SIGSTOP],
                           [signal.SIGSTOP, signal.SIGKILL]))
    moment = draw.choice((0, draw.uniform(0, 0.3), draw.uniform(0, 1), draw.uniform(0, 4)))
    if signal.SIGSTOP in signals:
        text = "pzeb timeout 5;" + re.sub(r"pzeb wait;", "pzeb wait [8];", text).replace("pzeb gwait", "pzeb wait [8]; pzeb get !")
    with tempfile.TemporaryDirectory() as folder:
        began = time.time()
        process = start(text, pathlib.Path(folder))
        wait_until(lambda: tasks_left() or process.poll() is not None, 20)
        time.sleep(moment)
        hit = strike(draw, signals)
        output, status = finish(process, LONGEST)
        took = time.time() - began
    bad = faults_of_output(output, wanted, hit)
    if status != (255 if "couldn't spawn" in output else 0):
        bad.append(f"exit status {status}")
    for task in tasks_left():
        send_signal(task, signal.SIGCONT)  # tasks of tasks that were stopped end when they go on
    if not wait_until(lambda: not tasks_left() and not gateways_left(), AFTER_MASTER):
        bad.append(f"processes are left: {tasks_left()}, {gateways_left()}")
        clear_away()
    names = [signal.Signals(s).name for s in signals[:len(hit)]]
    if options.verbose or bad:
        print(f"seed {seed}: {names} after {moment:.2f} s, {took:.1f} s: {bad or 'right'}", flush=True)
    if bad:
        print(text, "\n", output[-2500:], "\n", flush=True)
    return len(hit), bad


def master_is_killed(seed):
    """Seconds until all of its tasks, and theirs, have ended; None: they haven't."""
    draw = random.Random(seed)
    deep = draw.random() < 0.5
    work = draw.choice(("mult=replications 100000;", "randtrees 15000;", "pzeb wait [60];", "system sleep 50;"))
    inner = f"pzeb {options.mode}; pzeb begin n 2 = {work} return; pzeb wait; pzeb get;" if deep else work
    with tempfile.TemporaryDirectory() as folder:
        process = start(f"pzeb begin a 2 = {inner} return; pzeb wait; pzeb get;", pathlib.Path(folder))
        wait_until(lambda: tasks_left(), 20)
        time.sleep(draw.choice((0, draw.uniform(0, 1), draw.uniform(0, 5))))
        if draw.random() < 0.5:
            tasks = tasks_left()
            if tasks and deep:
                send_signal(tasks[0], signal.SIGSTOP)
                send_signal(tasks[0], signal.SIGCONT)
        before = len(tasks_left())
        killed = time.time()
        process.send_signal(draw.choice((signal.SIGKILL, signal.SIGTERM)))
        process.stdout.close()
        if draw.random() < 0.5:
            process.wait()  # else it stays a process that has ended
        ended = wait_until(lambda: not tasks_left() and not gateways_left(), 60)
        seconds = time.time() - killed
        process.wait()
    clear_away()
    print(f"master {seed}: {before} tasks, {'two levels' if deep else 'one level'}, {work} {seconds:.1f} s {'' if ended else 'LEFT'}", flush=True)
    return seconds if ended else None


def main():
    global options
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--zeb", required=True, type=os.path.abspath)
    parser.add_argument("--mode", choices=("local", "mpi", "pvm"), default="local")
    parser.add_argument("--runs", type=int, default=6)
    parser.add_argument("--masters", type=int, default=2)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--verbose", action="store_true")
    options = parser.parse_args()
    if options.mode == "pvm" and not start_daemon():
        sys.exit("the daemon doesn't start")
    try:
        runs = [tasks_are_hit(options.seed + i) for i in range(options.runs)]
        ends = [master_is_killed(options.seed + i) for i in range(options.masters)]
    finally:
        if options.mode == "pvm":
            stop_daemon()
    bad = sum(bool(faults) for _, faults in runs)
    late = sum(seconds is None or seconds > AFTER_MASTER for seconds in ends)
    print(f"{options.mode}: {len(runs)} runs, {sum(hits for hits, _ in runs)} tasks hit, {bad} faults; "
          f"{len(ends)} masters killed, {late} with tasks after {AFTER_MASTER} s, longest {max(filter(None, ends), default=0):.1f} s")
    return 1 if bad or late else 0


if __name__ == "__main__":
    sys.exit(main())
