#!/usr/bin/env python3
"""Messages of real jobs, changed at random, reach tasks and masters in the place of the right ones: whoever gets them
ends by itself, or tells an error, and never crashes or hangs. Usage: damaged_messages_test.py --zeb PROGRAM [--runs N]"""

import argparse
import ctypes
import os
import pathlib
import random
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time

from job_processes import environment

MATRIX = pathlib.Path(__file__).resolve().parents[2] / "examples" / "beetles.xread"
HEAD = "<iiQ"  # tag, nothing, length
LONGEST = 30  # seconds that no process may need
JOBS = ("randtrees 3; pzeb begin a 1 /tgroups = {work} return;", "randtrees 1; pzeb begin a 2 /swap 0 = return;",
        "mult 1; tchoose 0; pzeb begin a 3 /sector *3 0 = {work} return;", "pzeb begin a 1 = {work} return text;")
WORK = "var: x; set x 3; mult=replications 3; loop 1 3 mult 1; stop"

options = None
faults = []


def socket_of(task):
    """A copy of the end of the task's socket to its master."""
    number = int(pathlib.Path(f"/proc/{task}/cmdline").read_bytes().split(b"\0")[2].split()[0])
    process = os.pidfd_open(task)
    copy = ctypes.CDLL(None, use_errno=True).syscall(438, process, number, 0)
    os.close(process)
    return socket.socket(fileno=copy) if copy >= 0 else None


def start_master(text, where):
    (where / "x.run").write_text(f"report-; proc {MATRIX};\nmacro=; hold 1000; pzeb local; pzeb commtime 1; pzeb timeout 4;\n{text}\nquit;\n")
    return subprocess.Popen([options.zeb, "--batch", "x.run"], cwd=where, env=environment(ZEB_SILENCE_SECONDS="4"),
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def stopped_task(master):
    """Its first task, stopped as early as possible, with a copy of the socket."""
    children = pathlib.Path(f"/proc/{master.pid}/task/{master.pid}/children")
    until = time.time() + 10
    while time.time() < until and master.poll() is None:
        for task in children.read_text().split()[:1]:
            if b"slaveproc" in pathlib.Path(f"/proc/{task}/cmdline").read_bytes():
                os.kill(int(task), signal.SIGSTOP)
                return socket_of(int(task))
    return None


def messages_to_task(text):
    """What a master sends to its first task at the beginning."""
    for _ in range(20):  # a task may be quicker
        with tempfile.TemporaryDirectory() as folder:
            master = start_master(text + " pzeb wait;", pathlib.Path(folder))
            end = stopped_task(master)
            time.sleep(0.5)
            bytes_sent = b""
            if end:
                end.settimeout(1)
                try:
                    bytes_sent = end.recv(1 << 22, socket.MSG_PEEK)
                except TimeoutError:
                    pass
            master.kill()
            master.communicate()
        found = split(bytes_sent)
        if [tag for tag, _ in found[:2]] == [1, 7]:
            own, its = struct.pack("<i", os.getpid()), struct.pack("<i", master.pid)
            return [(tag, body.replace(its, own, 1)) for tag, body in found[:2]]
    sys.exit("no message could be caught")


def split(sent):
    found = []
    while len(sent) >= 16:
        tag, _, length = struct.unpack(HEAD, sent[:16])
        found.append((tag, sent[16:16 + length]))
        sent = sent[16 + length:]
    return found


def changed(draw, body):
    body = bytearray(body)
    for _ in range(draw.choice((0, 1, 1, 2, 5))):
        kind, at = draw.randrange(6), draw.randrange(len(body) + 1)
        if kind == 0:
            del body[at:]
        elif kind == 1:
            body += draw.randbytes(draw.randrange(40))
        elif kind == 2:
            body[at:at + 1] = draw.randbytes(1)
        elif kind == 3:
            del body[at:at + draw.randrange(8)]
        else:
            value = draw.choice((-1, 0, 1, 2, 7, 1000, 2**31 - 1, -2**31, draw.randrange(-100, 100)))
            at -= at % draw.choice((1, 4, 4))
            body[at:at + 4] = struct.pack("<i", value)
    return bytes(body)


def random_signal(draw):
    code = draw.choice((0, 2, 3, 4, 4, 4, 5, 6, 7, 8, 9, 10, 11, 16, 32, 64, 128, 256, 257, 512, draw.randrange(-5, 2000)))
    text = draw.choice((b"x 5", b"x", b"", b"x[", b";;", b"99999999", b"0"))
    payload = {4: struct.pack("<i", draw.randrange(-2, 13)), 10: struct.pack("<i", len(text)) + text,
               11: struct.pack("<i", len(text)) + text + struct.pack("<iii", 1, draw.randrange(-2, 5), -1)}
    return 5, struct.pack("<i", code) + changed(draw, payload.get(code, b"\0\0\0\0"))


def send(end, tag, body):
    try:
        end.sendall(struct.pack(HEAD, tag, 0, len(body)) + body)
    except OSError:
        pass


def drain(end, seconds):
    end.settimeout(0.05)
    until = time.time() + seconds
    while time.time() < until:
        try:
            if not end.recv(1 << 16):
                return
        except TimeoutError:
            pass
        except OSError:
            return


def a_task_gets_damaged_messages(draw, begin):
    ours, theirs = socket.socketpair()
    with tempfile.TemporaryDirectory() as folder:
        task = subprocess.Popen([options.zeb, "local_slaveproc", str(theirs.fileno())], pass_fds=[theirs.fileno()], cwd=folder,
                                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        theirs.close()
        spared = draw.choice((None, 1, 7, 5))  # the tag of messages that stay right
        sent = [(tag, body if tag == spared else changed(draw, body)) for tag, body in begin]
        sent += [random_signal(draw) for _ in range(draw.randrange(6))]
        if draw.random() < 0.2:
            sent.append((draw.randrange(-3, 40), draw.randbytes(draw.randrange(100))))
        for tag, body in sent:
            send(ours, tag, body)
        if draw.random() < 0.1:
            ours.sendall(struct.pack(HEAD, 1, 0, 2**draw.randrange(31, 64)))
        drain(ours, draw.choice((0, 0.1, 0.5)))
        ours.close()
        try:
            said = task.communicate(timeout=LONGEST)[1]
        except subprocess.TimeoutExpired:
            task.kill()
            return "a task hangs", sent
        # A large number where memory is asked for: the system may refuse it, and that is said.
        return (f"a task is ended by signal {-task.returncode}: {said[-300:]}" if task.returncode < 0 else None), sent


def a_master_gets_damaged_messages(draw):
    result = struct.pack("<iiiiiiiiiii", 18, 1, 1, 0, 0, 0, 0, 0, 0, 1, 0) + struct.pack("<i", 0x5a4542)
    status = struct.pack("<iQQiii", 1, 0, 1, 1, 1, 0) + struct.pack("<i", 4) + b"mult" + struct.pack("<d", 5)
    trees = struct.pack("<iiii", 1, 1, 0, 35) + struct.pack("<35i", *range(35))
    text = struct.pack("<ii", 1, 3) + b"abc"
    bodies = {3: struct.pack("<i", 2) + b"vm" + struct.pack("<i", 0), 6: result, 10: status, 12: trees, 13: struct.pack("<id", 1, 5.0),
              15: struct.pack("<ii", 0, 0), 16: text, 17: status, **{20 + q: struct.pack("<d", 1) for q in range(10)}}
    text = ("pzeb begin a 1 = loop 1 1000 mult=replications 10000; stop return; var: x; pzeb wait [1]; set x bestscore[a] + numreps[a];"
            "pzeb spy; pzeb getbufs; pzeb status; pzeb get;")
    with tempfile.TemporaryDirectory() as folder:
        master = start_master(text, pathlib.Path(folder))
        end = stopped_task(master)
        sent = []
        until = time.time() + 12
        while end and master.poll() is None and time.time() < until:
            tag = draw.choice(list(bodies))
            sent.append((tag, changed(draw, bodies[tag])))
            send(end, *sent[-1])
            drain(end, 0.02)
        try:
            output = master.communicate(timeout=LONGEST)[0].decode(errors="replace")
        except subprocess.TimeoutExpired:
            master.kill()
            output = master.communicate()[0].decode(errors="replace")
            return f"a master hangs: {output[-500:]}", sent[-5:]
        ended_well = master.returncode == 0 and "Got results from a (" in output
        told_error = master.returncode == 255 and re.search("P-ZEB: |[Ee]rror|No job", output)
        return (None if ended_well or told_error else f"a master ends with {master.returncode}: {output[-500:]}"), sent[-5:]


def note(kind, seed, fault, sent):
    if fault:
        faults.append(f"{kind} {seed}: {fault}")
        print(faults[-1], [(tag, body[:60]) for tag, body in sent], flush=True)


def main():
    global options
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--zeb", required=True, type=os.path.abspath)
    parser.add_argument("--runs", type=int, default=60)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    begins = [messages_to_task(job.format(work=WORK)) for job in JOBS]
    for seed in range(options.seed, options.seed + options.runs):
        draw = random.Random(seed)
        note("task", seed, *a_task_gets_damaged_messages(draw, draw.choice(begins)))
        if seed % 15 == 0:
            note("master", seed, *a_master_gets_damaged_messages(draw))
    print(f"{options.runs} processes with damaged messages: {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
