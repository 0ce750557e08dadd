"""Messages of jobs over sockets: caught, taken apart, damaged, and sent in the place of the right ones."""

import ctypes
import os
import pathlib
import signal
import socket
import struct
import time

HEAD = "<iiQ"  # tag, nothing, length
KINDS = ("cut", "longer", "flipped", "shorter", "number")


def socket_of(task):
    """A copy of the end of the task's socket to its master."""
    number = int(pathlib.Path(f"/proc/{task}/cmdline").read_bytes().split(b"\0")[2].split()[0])
    process = os.pidfd_open(task)
    copy = ctypes.CDLL(None, use_errno=True).syscall(438, process, number, 0)
    os.close(process)
    return socket.socket(fileno=copy) if copy >= 0 else None


def stopped_tasks(master, count):
    """Its tasks in order of start, stopped as early as possible."""
    children = pathlib.Path(f"/proc/{master.pid}/task/{master.pid}/children")
    until = time.time() + 10
    stopped = []
    while len(stopped) < count and time.time() < until and master.poll() is None:
        for task in children.read_text().split():
            try:
                if int(task) not in stopped and b"slaveproc" in pathlib.Path(f"/proc/{task}/cmdline").read_bytes():
                    os.kill(int(task), signal.SIGSTOP)
                    stopped.append(int(task))
            except FileNotFoundError:  # of a child that was no task
                pass
    return stopped


def end_of(task):
    try:
        os.kill(task, signal.SIGKILL)
    except ProcessLookupError:
        pass


def split(sent):
    found = []
    while len(sent) >= 16:
        tag, _, length = struct.unpack(HEAD, sent[:16])
        if len(sent) < 16 + length:
            break
        found.append((tag, sent[16:16 + length]))
        sent = sent[16 + length:]
    return found


def damaged(draw, kind, body):
    body = bytearray(body)
    at = draw.randrange(len(body) + 1)
    if kind == "cut":
        del body[at:]
    elif kind == "longer":
        body += draw.randbytes(draw.randrange(1, 40))
    elif kind == "flipped":
        body[at:at + 1] = bytes(b ^ 1 << draw.randrange(8) for b in body[at:at + 1])
    elif kind == "shorter":
        del body[at:at + draw.randrange(1, 8)]
    elif kind == "number":
        value = draw.choice((-1, 0, 1, 2, 7, 1000, 2**31 - 1, -2**31, draw.randrange(-100, 100)))
        at -= at % draw.choice((1, 4, 4))
        body[at:at + 4] = struct.pack("<i", value)
    return bytes(body)


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
