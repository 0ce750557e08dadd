"""Real tasks for tests of jobs: a daemon of their own for PVM, and the processes that jobs start."""

import os
import pathlib
import shutil
import signal
import subprocess
import time

MARK = f"ZEB_TEST_MARK={os.getpid()}"


def environment(**more):
    """Of the program and of its tasks: with a mark, and with a virtual machine of PVM that is this test's own."""
    return {**os.environ, "PVM_ALLOW_ROOT": "1", "PVM_VMID": f"zeb{os.getpid()}",
            "ZEB_TEST_MARK": str(os.getpid()), **more}


def wait_until(ready, seconds):
    end = time.time() + seconds
    while time.time() < end and not ready():
        time.sleep(0.05)
    return ready()


def tasks_left():
    """Processes of this program that a job started, with the mark that this test gave them, in order of start."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if (entry.name.isdigit() and b"slaveproc" in (entry / "cmdline").read_bytes()
                    and MARK.encode() in (entry / "environ").read_bytes()):
                found.append(int(entry.name))
        except OSError:
            pass
    return sorted(found)


def send_signal(process, number):
    """Whether it was still there."""
    try:
        os.kill(process, number)
        return True
    except ProcessLookupError:
        return False


def clear_away():
    for task in tasks_left():
        send_signal(task, signal.SIGKILL)


def gateways_left():
    """Processes that pass messages of tasks over MPI on, of this test."""
    return [int(entry.name) for entry in pathlib.Path("/proc").iterdir()
            if entry.name.isdigit() and is_gateway(entry)]


def is_gateway(entry):
    try:
        return b"mpi_gateway" in (entry / "cmdline").read_bytes() and MARK.encode() in (entry / "environ").read_bytes()
    except OSError:
        return False


def start_daemon():
    pvm = shutil.which("pvmd") or "/usr/bin/pvmd"
    subprocess.Popen([pvm], env=environment(), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                     stderr=subprocess.DEVNULL, start_new_session=True)
    socket = pathlib.Path(f"/tmp/pvmd.{os.getuid()}.zeb{os.getpid()}")
    return wait_until(socket.exists, 20)


def stop_daemon():
    subprocess.run([shutil.which("pvm") or "/usr/bin/pvm"], input="halt\n", text=True, env=environment(),
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=30, check=False)
    pathlib.Path(f"/tmp/pvml.{os.getuid()}.zeb{os.getpid()}").unlink(missing_ok=True)
