#!/usr/bin/env python3
"""Background runs are steered by files: execute, stop and pause, each named after the process."""

import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import time

ZEB = os.path.abspath(sys.argv[1])
failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)


class BackgroundRun:
    """One run in a directory of its own; `finish` gives its status and log."""

    def __init__(self, *commands, user=None, **files):
        self.directory = tempfile.TemporaryDirectory(prefix="zeb_steering_")
        self.where = pathlib.Path(self.directory.name)
        for name, text in files.items():
            (self.where / name).write_text(text)
        program = ZEB
        if user is not None:  # in a directory where everybody may leave files
            self.where.chmod(0o1777)
            program = self.where / "zeb"
            subprocess.run(["cp", ZEB, program], check=True)
        self.process = subprocess.Popen([program, "bground", "log out.log;", *commands], cwd=self.where,
                                        stdin=subprocess.DEVNULL, user=user)

    def file(self, word):
        return self.where / f"{word}_zeb_{self.process.pid}"

    def finish(self):
        status = self.process.wait(timeout=90)
        return status, (self.where / "out.log").read_text()




def execute_file_is_taken_up_where_the_instructions_end():
    run = BackgroundRun("pause 2;")
    run.file("execute").write_text("quote one more; quit;")
    status, log = run.finish()
    expect(status == 0 and "one more" in log, f"execute file at the end: {status} {log!r}")
    expect(not run.file("execute").exists(), "the execute file is still there")
    copy = run.where / f".zebexec_1_zeb_{run.process.pid}"
    expect(copy.exists() and copy.read_text() == "quote one more; quit;", "no copy was made")


def target_of_errors_wins_over_the_end_of_the_run():
    run = BackgroundRun("macro=; goto [ tidy.run after; nothing_of_this_name; quote not read;",
                        **{"tidy.run": "quote not this; label after; quote tidied; quit;"})
    status, log = run.finish()
    expect(status == 0 and log.endswith("tidied\n"), f"target of errors: {status} {log!r}")


def quit_takes_up_execute_files_one_after_the_other():
    run = BackgroundRun("pause 2; quit;", next="quote the last;")
    run.file("execute").write_text(f"system mv next {run.file('execute').name}; quit;")
    status, log = run.finish()
    expect(status == 1 and "the last" in log and "Quitting ZEB" in log,
           f"execute files at quit: {status} {log!r}")


def stop_file_ends_the_run():
    run = BackgroundRun("proc long; quote never; quit;", long="pause 60; quote never;")
    run.file("stop").write_text("")
    status, log = run.finish()
    expect(status == 255, f"stop file: status {status}")
    expect("User interrupt..." in log and "never" not in log, f"stop file: {log!r}")
    expect(not run.file("stop").exists(), "the stop file is still there")


def after_a_stop_new_instructions_are_taken_up():
    run = BackgroundRun("pause 60; quote never; quit;")
    run.file("execute").write_text("quote one more; quit;")
    run.file("stop").write_text("")
    status, log = run.finish()
    expect(status == 0 and "one more" in log and "never" not in log,
           f"stop and execute files: {status} {log!r}")


def stop_file_ends_a_search_and_the_arguments_go_on():
    rows = "\n".join(f"t{i} {i * 2654435761 % 2**40:040b}" for i in range(300))
    run = BackgroundRun("proc data; proc long; quote then this; quit;",
                        data=f"mxram 100; xread 40 300\n{rows}\n;\n",
                        long="report +1/0/1; hold 9000; mult=replications 9000 hold 1; quote never;")
    run.file("stop").write_text("")
    status, log = run.finish()
    expect(status == 0 and "then this" in log and "never" not in log,
           f"stop file in a search: {status} {log!r}")


def pause_file_holds_the_run():
    run = BackgroundRun("pause 11; quote over; quit;")
    run.file("pause").write_text("")
    time.sleep(14)
    expect(run.process.poll() is None, "the pause file didn't hold the run")
    run.file("pause").unlink()
    status, log = run.finish()
    expect(status == 0 and "over" in log, f"pause file: {status} {log!r}")


def links_and_files_of_others_are_not_obeyed():
    run = BackgroundRun("pause 2;", victim="mine", orders="quote planted; quit;")
    run.file("execute").symlink_to("orders")
    status, log = run.finish()
    expect(status == 1 and "planted" not in log and "Cannot take up" in log,
           f"a linked execute file: {status} {log!r}")
    run = BackgroundRun("pause 2;", victim="mine")
    (run.where / f".zebexec_1_zeb_{run.process.pid}").symlink_to("victim")
    run.file("execute").write_text("quote one more; quit;")
    status, log = run.finish()
    expect(status == 0 and "one more" in log and (run.where / "victim").read_text() == "mine",
           f"a link under the name of the copy: {status} {log!r}")
    if os.geteuid() == 0:
        run = BackgroundRun("pause 2;")
        run.file("execute").write_text("quote planted; quit;")
        os.chown(run.file("execute"), 12345, 12345)
        status, log = run.finish()
        expect(status == 1 and "planted" not in log, f"an execute file of another user: {log!r}")


def two_users_share_a_directory():
    """Neither orders nor obstacles of another user count; those of the own user do."""
    if os.geteuid() != 0:
        return
    user, other = 12345, 23456

    def leave(run, word, text, owner):
        run.file(word).write_text(text)
        os.chown(run.file(word), owner, owner)

    run = BackgroundRun("pause 12; quote over;", user=user)
    for word in ("stop", "pause"):
        leave(run, word, "", other)
    copy = run.where / f".zebexec_1_zeb_{run.process.pid}"
    copy.write_text("quote planted; quit;")
    copy.chmod(0o666)
    os.chown(copy, other, other)
    leave(run, "execute", "quote one more; quit;", user)
    status, log = run.finish()
    expect(status == 0 and "over" in log and "one more" in log and "planted" not in log,
           f"files of two users: {status} {log!r}")
    run = BackgroundRun("pause 2;", user=user)
    leave(run, "execute", "quote planted; quit;", user)
    os.link(run.file("execute"), run.where / "second name")
    status, log = run.finish()
    expect(status == 1 and "planted" not in log, f"a second name of a file of the user: {status} {log!r}")


def what_an_earlier_process_left_goes():
    with tempfile.TemporaryDirectory(prefix="zeb_steering_") as name:
        where = pathlib.Path(name)

        def leave_files():
            for file in (f"stop_zeb_{os.getpid()}", f"execute_zeb_{os.getpid()}", f".zebexec_1_zeb_{os.getpid()}"):
                (where / file).write_text("quote old; quit;")
                os.utime(where / file, (1, 1))

        process = subprocess.run([ZEB, "bground", "log out.log; pause 1;"], cwd=where, preexec_fn=leave_files,
                                 stdin=subprocess.DEVNULL, timeout=60)
        left = sorted(file.name for file in where.iterdir())
        expect(process.returncode == 1 and left == ["out.log"], f"left by an earlier process: {left}")


def a_log_that_cannot_be_had_ends_the_run():
    for log in ("none/out.log", "/dev/full"):
        process = subprocess.run([ZEB, "bground", f"log {log}; quote never; quit;"], timeout=60,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        expect(process.returncode == 255 and log.encode() in process.stderr,
               f"log {log}: {process.returncode} {process.stderr!r}")


def main():
    tests = [execute_file_is_taken_up_where_the_instructions_end,
             quit_takes_up_execute_files_one_after_the_other,
             stop_file_ends_the_run,
             after_a_stop_new_instructions_are_taken_up,
             stop_file_ends_a_search_and_the_arguments_go_on,
             pause_file_holds_the_run,
             links_and_files_of_others_are_not_obeyed,
             two_users_share_a_directory,
             what_an_earlier_process_left_goes,
             target_of_errors_wins_over_the_end_of_the_run,
             a_log_that_cannot_be_had_ends_the_run]
    threads = [threading.Thread(target=test) for test in tests]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for failure in failures:
        print("FAILED", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
