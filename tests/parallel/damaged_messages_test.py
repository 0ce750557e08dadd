#!/usr/bin/env python3
"""Messages of real jobs, changed at random, reach tasks and masters in the place of the right ones: whoever gets them
ends by itself, or tells an error, and never crashes or hangs. Usage: damaged_messages_test.py --zeb PROGRAM [--runs N]"""

import argparse
import collections
import os
import pathlib
import random
import select
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time

from job_messages import HEAD, KINDS, damaged, drain, end_of, send, socket_of, split, stopped_tasks
from job_processes import environment, wait_until

MATRIX = pathlib.Path(__file__).resolve().parents[2] / "examples" / "beetles.xread"
END = struct.pack("<i", 0x5a4542)
LONGEST = 30  # seconds that no process may need
JOBS = ("randtrees 3; pzeb begin a 1 /tgroups = {work} return;", "randtrees 1; pzeb begin a 2 /swap 0 = return;",
        "mult 1; tchoose 0; pzeb begin a 3 /sector *3 0 = {work} return;", "pzeb begin a 1 = {work} return text;")
WORK = "var: x; set x 3; mult=replications 3; loop 1 3 mult 1; stop"

KINDS_TO_MASTER = ("cut", "longer", "flipped", "out of turn")

options = None
faults = []
tried = collections.Counter()  # by receiver, tag and what was done to the message


def start_master(text, where):
    (where / "x.run").write_text(f"report-; proc {MATRIX};\nmacro=; hold 1000; pzeb local; pzeb commtime 1; pzeb timeout 4;\n{text}\nquit;\n")
    return subprocess.Popen([options.zeb, "--batch", "x.run"], cwd=where, env=environment(ZEB_SILENCE_SECONDS="4"),
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def messages_to_task(text):
    """What a master sends to its first task at the beginning."""
    for _ in range(20):  # a task may be quicker
        with tempfile.TemporaryDirectory() as folder:
            master = start_master(text + " pzeb wait;", pathlib.Path(folder))
            end = next((socket_of(task) for task in stopped_tasks(master, 1)), None)
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


def changed(draw, body, tag):
    for _ in range(draw.choice((0, 1, 1, 2, 5))):
        kind = draw.choice(KINDS)
        tried["task", tag, kind] += 1
        body = damaged(draw, kind, body)
    return body


def random_signal(draw):
    code = draw.choice((0, 2, 3, 4, 4, 4, 5, 6, 7, 8, 9, 10, 11, 16, 32, 64, 128, 256, 257, 512, draw.randrange(-5, 2000)))
    text = draw.choice((b"x 5", b"x", b"", b"x[", b";;", b"99999999", b"0"))
    payload = {4: struct.pack("<i", draw.randrange(-2, 13)), 10: struct.pack("<i", len(text)) + text,
               11: struct.pack("<i", len(text)) + text + struct.pack("<iii", 1, draw.randrange(-2, 5), -1)}
    return 5, struct.pack("<i", code) + changed(draw, payload.get(code, b"\0\0\0\0"), 5)


def start_task(folder):
    ours, theirs = socket.socketpair()
    task = subprocess.Popen([options.zeb, "local_slaveproc", str(theirs.fileno())], pass_fds=[theirs.fileno()], cwd=folder,
                            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    theirs.close()
    return ours, task


def a_task_gets_damaged_messages(draw, begin):
    with tempfile.TemporaryDirectory() as folder:
        ours, task = start_task(folder)
        spared = draw.choice((None, 1, 7, 5))  # the tag of messages that stay right
        sent = [(tag, body if tag == spared else changed(draw, body, tag)) for tag, body in begin]
        sent += [random_signal(draw) for _ in range(draw.randrange(6))]
        if draw.random() < 0.2:
            tag = draw.choice((1, 7, draw.randrange(-3, 40)))
            tried["task", tag, "out of turn"] += 1
            sent.insert(draw.randrange(len(sent) + 1), (tag, draw.randbytes(draw.randrange(100))))
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


def a_task_waits_in_vain(data, packet):
    """For the rest of what its parent sends, which then goes."""
    for sent, reports in ((struct.pack(HEAD, 1, 0, len(data)) + data, True), (struct.pack(HEAD, 1, 0, len(data)) + data[:50], False),
                          (struct.pack(HEAD, 1, 0, len(data)) + data + struct.pack(HEAD, 7, 0, len(packet) - 4) + packet[:-4], True), (b"", False)):
        with tempfile.TemporaryDirectory() as folder:
            ours, task = start_task(folder)
            ours.sendall(sent)
            send(ours, 5, struct.pack("<i", 6))  # the parent waits for the result
            ours.settimeout(LONGEST if reports else 2)
            told = b""
            try:
                while not (result := dict(split(told)).get(6)):
                    told += ours.recv(1 << 16)
            except TimeoutError:
                result = None
            ours.close()
            status = wait_until(lambda: task.poll() is not None, LONGEST) and task.returncode
            task.kill()
            task.communicate()
        said = result is not None and b"Could not receive trees from parent" in result
        yield f"ends with {status}, and tells {result}" if status != 255 or said != reports else None, [(1, sent)]


def right_messages(load):
    """By tag: what a task sends to its parent."""
    text = struct.pack("<ii", 1, 3) + b"abc"
    status = struct.pack("<iQQiii", 1, 0, 1, 1, 1, 0) + struct.pack("<i", 4) + b"mult" + struct.pack("<d", 5)
    result = struct.pack("<iiiii", 18, 1, 1, 0, 0) + struct.pack("<iii", 0, 0, 0) + load + text + END
    whole = struct.pack("<i", 1)
    queries = {20 + query: whole for query in (0, 4, 5, 6, 7, 8)}
    return {3: struct.pack("<i", 2) + b"vm" + struct.pack("<i", 0), 6: result, 10: status, 12: whole + load, 13: struct.pack("<id", 1, 5.0),
            15: struct.pack("<ii", 0, 0), 16: text, 21: struct.pack("<QQ", 1, 1), 22: struct.pack("<d", 5), **queries}


class StandIn:
    """Speaks to a master in the place of a task that is stopped. Messages of one tag are damaged."""

    def __init__(self, draw, end, right, tag, kind):
        self.draw, self.end, self.right, self.tag, self.kind = draw, end, right, tag, kind
        self.come = b""
        self.wait = b"\0\0\0\0"  # the number of the master's "wait"
        self.say(3)
        self.say(15)

    def say(self, tag):
        if self.kind == "out of turn":
            send(self.end, self.tag, self.right[self.tag])
            tried["master", self.tag, self.kind] += 1
        body = self.right[tag] + (self.wait if tag == 10 else b"")
        if tag == self.tag and self.kind in KINDS:
            body = damaged(self.draw, self.kind, body)
            tried["master", tag, self.kind] += 1
        send(self.end, tag, body)

    def listen(self):
        """False: the master has gone."""
        try:
            bytes_come = self.end.recv(1 << 20)
        except OSError:
            bytes_come = b""
        self.come += bytes_come
        for tag, body in split(self.come):
            self.come = self.come[16 + len(body):]
            if tag == 5:
                self.obey(*struct.unpack("<i", body[:4]), body[4:])
        return bytes_come != b""

    def obey(self, code, more):
        if code == 4:
            query = struct.unpack("<i", more[:4])[0]
            self.say(16 if query == 10 else 20 + query)
        elif code in (6, 7, 9, 11):
            self.wait = more[:4] if code == 7 else self.wait
            self.say({6: 6, 7: 10, 9: 12, 11: 13}[code])


def a_master_gets_damaged_messages(draw, load, damages):
    """From tasks of one job, each with a damage of its own, but for one that is right."""
    count = len(damages) + 1
    ask = "".join(f"set 0 bestscore[a {i}]+numreps[a {i}]; slaveget [a {i}] x q; " for i in range(count))
    text = (f"report-; proc {MATRIX};\nmacro=; hold 1000; pzeb local; pzeb commtime 1; pzeb timeout 2; var: x;\npzeb begin a {count} = {WORK} return;\n"
            f"system touch begun;\nsystem sleep 1;\n{ask}\npzeb wait [2];\npzeb spy;\npzeb getbufs;\n"
            f"set 0 bestscore[a {count - 1}]; quote best '0';\npzeb get;\nquit;\nquit;\n").replace("; ", ";\n")
    with tempfile.TemporaryDirectory() as folder:
        where = pathlib.Path(folder)
        (where / "input").write_text(text)
        with (where / "input").open() as given, (where / "output").open("w") as told:
            master = subprocess.Popen([options.zeb], cwd=folder, env=environment(ZEB_SILENCE_SECONDS="4"), stdin=given, stdout=told, stderr=told)
        wait_until((where / "begun").exists, 20)  # else a task might be stopped in the middle of a message
        tasks = stopped_tasks(master, count)
        right = right_messages(load)
        speakers = {StandIn(draw, socket_of(task), right, *damage) for task, damage in zip(tasks, [*damages, (0, "none")])}
        until = time.time() + LONGEST
        while master.poll() is None and time.time() < until:
            ready = select.select([s.end for s in speakers], [], [], 0.2)[0] if speakers else time.sleep(0.1) or ()
            speakers = {s for s in speakers if s.end not in ready or s.listen()}
        hangs = master.poll() is None
        master.kill()
        status = master.wait()
        output = (where / "output").read_text(errors="replace")
        for task in tasks:
            end_of(task)
    well = not hangs and status == 0 and "Got results from a (" in output and "best 5" in output
    return None if well else f"a master {'hangs' if hangs else f'ends with {status}'}: {output[-1500:]}", damages


def note(kind, seed, fault, sent):
    if fault:
        faults.append(f"{kind} {seed}: {fault}")
        print(faults[-1], [(tag, body[:60]) for tag, body in sent], flush=True)


def tell_what_was_tried(of_master):
    """Whatever wasn't is a fault."""
    of_tasks = [("task", tag, kind) for tag in (1, 5, 7) for kind in ("cut", "longer", "flipped")]
    never = [what for what in of_tasks + [("master", *what) for what in of_master] if not tried[what]]
    note("never tried", "", str(never) if never else None, [])
    for receiver in ("task", "master"):
        tags = sorted({tag for who, tag, _ in tried if who == receiver})
        print(f"damages by tag, to a {receiver}:", {t: sum(n for (who, tag, _), n in tried.items() if (who, tag) == (receiver, t)) for t in tags})


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
    for case, outcome in enumerate(a_task_waits_in_vain(*(body for _, body in begins[0]))):
        note("a task that waits in vain", case, *outcome)
    draw = random.Random(options.seed)
    load = begins[1][1][1][28:-4]  # of a packet with one tree: without what stands before it, and the end
    wanted = [(tag, kind) for tag in right_messages(load) for kind in KINDS_TO_MASTER]
    draw.shuffle(wanted)
    for i in range(0, len(wanted), 8):
        note("master", i, *a_master_gets_damaged_messages(draw, load, wanted[i:i + 8]))
    tell_what_was_tried(wanted)
    print(f"{options.runs} processes with damaged messages: {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
