#!/usr/bin/env python3
"""Ends runs by signals at random moments: in the background, fed through a pipe, at the console, of a batch.

A run searches, saves trees to an open file, exports over an older file, and tells in its log what it has
saved. Whenever it ends, all trees that were told are in the file, the export is whole, the log goes as far
as was told, and the next run reads it all and clears what was left beside. SIGTERM and SIGHUP also save
what wasn't saved yet and end the log; so does SIGINT where nobody is at the console, where it only ends
the command.

Usage: kills.py ZEB [--runs N] [--seed N]; the seed and the number of the run stand in messages.
"""

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

ROWS = "\n".join(f"taxon_{i} {i * 2654435761 % 2**40:040b}" for i in range(40))
FILES = {
    "data.run": f"mxram 40; xread 40 40\n{ROWS}\n;\nhold 100; report-; rseed 3; proc/;\n",
    "work.run": "macro=; tsave *found.tre; tsave !1 *auto; loop 1 900000 mult=replications 2 hold 3; save; set 1 ntrees; quote SAVED '1'; "
                "export whole.nex; stop; quit;",
    "case.run": "log log; proc data.run; proc work.run;",
    "never.run": "log never; quote never;",
}
OLD = "#NEXUS\n[what was there before]\nend;\n"
SIGNALS = (signal.SIGTERM, signal.SIGHUP, signal.SIGINT, signal.SIGKILL)


def heed_signals():
    """Whatever this process was started with."""
    for number in SIGNALS[:3]:
        signal.signal(number, signal.SIG_DFL)


def start(zeb, mode, folder):
    """The process, and the descriptor of its console, if any."""
    def run(*arguments, **files):
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, **files}
        return subprocess.Popen([zeb, *arguments], cwd=folder, preexec_fn=heed_signals, start_new_session=True,
                                env={**os.environ, "TERM": "xterm"}, **streams)

    commands = "log log; proc data.run; proc work.run;"
    if mode == "background":
        return run("bground", commands), None
    if mode == "batch":
        return run("--batch", "case.run", "never.run"), None
    if mode == "pipe":
        process = run(stdin=subprocess.PIPE)
        process.stdin.write((commands + "\n").encode())
        process.stdin.flush()
        return process, None
    master, slave = pty.openpty()
    process = run(commands, stdin=slave, stdout=slave, stderr=slave)
    os.close(slave)
    return process, master


def wait_for(run, console, done, seconds):
    """Until `done()`, reading what the console shows; False where it takes too long."""
    end = time.monotonic() + seconds
    while not done():
        if time.monotonic() > end:
            return False
        if console is None:
            time.sleep(0.002)
        elif select.select([console], [], [], 0.002)[0]:
            try:
                os.read(console, 65536)
            except OSError:  # the other side is closed
                time.sleep(0.002)
    return True


def whole_trees(text):
    return sum(line.startswith("(") and line.count("(") == line.count(")") for line in text.split("\n"))


def faults_of(zeb, mode, number, delay):
    with tempfile.TemporaryDirectory(prefix="zeb_kills_", dir="/dev/shm" if os.path.isdir("/dev/shm") else None) as name:
        folder = pathlib.Path(name)
        for file, text in {**FILES, "whole.nex": OLD}.items():
            (folder / file).write_text(text)
        run, console = start(zeb, mode, folder)
        log = folder / "log"
        said = lambda: log.read_text() if log.exists() else ""
        try:
            if not wait_for(run, console, lambda: re.search(r"SAVED \d", said()), 30):
                return [f"saves nothing: {said()[-300:]}"]
            wait_for(run, console, lambda: False, delay)
            told = said()
            run.send_signal(number)
            if mode == "console" and number == signal.SIGINT:
                wait_for(run, console, lambda: run.poll() is not None, 0.5)
                os.write(console, b"quit;\r")
            if not wait_for(run, console, lambda: run.poll() is not None, 20):
                return ["doesn't end"]
        finally:
            run.kill()
            run.wait()
            if console is not None:
                os.close(console)
        return list(complaints(zeb, folder, mode, number, told, run.returncode))


def complaints(zeb, folder, mode, number, told, status):
    interrupted = mode == "console" and number == signal.SIGINT
    wanted = 0 if interrupted else -9 if number == signal.SIGKILL else 128 + number
    if status != wanted:
        yield f"ends with {status}"
    log = (folder / "log").read_text()
    if not log.startswith(told):
        yield "has lost a part of the log"
    found = (folder / "found.tre").read_text()
    saved = sum(map(int, re.findall(r"SAVED (\d+)", log)))
    if whole_trees(found) < saved:
        yield f"told of {saved} trees and left {whole_trees(found)}"
    if number != signal.SIGKILL and not found.endswith(";\nproc/;\n"):
        yield f"doesn't end the file of trees: {found[-40:]!r}"
    if number != signal.SIGKILL and not interrupted and f"Ended by {signal.Signals(number).name}" not in log:
        yield f"doesn't tell in the log: {log[-100:]!r}"
    whole = (folder / "whole.nex").read_text()
    if not (whole.startswith("#NEXUS") and whole.rstrip().endswith("end;")):
        yield f"left a part of a file: {whole[-40:]!r}"
    again = subprocess.run([zeb], cwd=folder, input=b"proc data.run; hold 9000; proc found.tre; tsize; proc whole.nex; export next.nex;\n",
                           capture_output=True, timeout=60)
    text = again.stderr.decode("utf-8", "replace")
    if "Error" in text or again.returncode != 0 or not (folder / "next.nex").exists():
        yield f"left what can't be read: {text[-300:]}"
    if (folder / "never").exists():
        yield "goes on with the next file"
    if any(file.startswith(".zeb-") for file in os.listdir(folder)):
        yield "left a part of a file that the next run doesn't clear"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zeb")
    parser.add_argument("--runs", type=int, default=24)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    zeb = os.path.abspath(options.zeb)
    failures = 0
    for i in range(options.runs):
        rnd = random.Random(f"{options.seed}/{i}")
        mode = ("background", "pipe", "console", "batch")[i % 4]
        # Who waits for the run of a batch can't tell it when it is killed itself.
        number = SIGNALS[i // 4 % (3 if mode == "batch" else 4)]
        for fault in faults_of(zeb, mode, number, rnd.random() * 0.4):
            failures += 1
            print(f"FAILED {options.seed}/{i}: {mode} ended by {signal.Signals(number).name} {fault}")
    print(f"{options.runs} runs, {failures} faults")
    return 1 if failures else 0


sys.exit(main())
