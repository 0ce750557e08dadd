#!/usr/bin/env python3
"""The program as scripts and shells see it: its outputs, exit status and signals.
Usage: process_test.py ZEB [TEST...]"""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ZEB = os.path.abspath(sys.argv.pop(1))


class ProcessTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="zeb_process_")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def write(self, **files):
        for name, text in files.items():
            (self.folder / (name + ".run")).write_text(text)

    def run_zeb(self, *arguments, **options):
        """Status, standard output and standard error of a run."""
        done = subprocess.run([ZEB, *arguments], cwd=self.folder, capture_output=True, text=True, timeout=60,
                              **{"input": "quote from the standard input;", **options})
        return done.returncode, done.stdout, done.stderr


class Batch(ProcessTest):
    def test_output_and_errors_are_apart(self):
        self.write(good="report -; quote said; warn =; txtsize 100; pause; lquote >; quote twice; lquote <;",
                   bad="report -; quote said; foo; quote never;")
        status, said, errors = self.run_zeb("--batch", "good.run")
        self.assertEqual((status, said.count("said"), said.count("twice")), (0, 1, 1))
        self.assertIn("not pausing", said)
        self.assertEqual(errors, "\nWARNING:\nResetting buffer size requires clearing it. \ntwice\n")
        status, said, errors = self.run_zeb("--batch", "bad.run")
        self.assertEqual((status, said), (255, "Reading from bad.run \nsaid\n"))
        self.assertIn("Error reading bad.run", errors)
        self.assertIn("Unknown command: foo", errors)

    def test_each_file_is_a_run_of_its_own(self):
        self.write(first="report -; txtsize 100; rseed 7; quit; quote never;", second="txtsize; rseed;",
                   bad="foo;", last="quote the last")
        status, said, errors = self.run_zeb("--batch", "first.run", "second.run")
        self.assertEqual((status, errors), (0, ""))
        self.assertIn("Buffer (200 Kb)", said)
        self.assertIn("Random seed is 1", said)
        self.assertNotIn("never", said)
        status, said, errors = self.run_zeb("--batch", "bad.run", "nofile.run", "last.run")
        self.assertEqual(status, 255)
        self.assertIn("the last", said)
        self.assertIn("Can't open nofile.run", errors)

    def test_a_label_for_errors_runs_and_the_run_has_failed(self):
        self.write(case="report -; macro=; goto [ case.run tidy; foo; quote never; "
                        "label tidy; quote tidied up; quit;")
        status, said, errors = self.run_zeb("--batch", "case.run")
        self.assertEqual((status, "tidied up" in said, "never" in said), (255, True, False))
        self.assertIn("Unknown command: foo", errors)

    def test_output_that_is_lost_is_an_error(self):
        self.write(case="quote said;")
        with open("/dev/full", "w") as full:
            done = subprocess.run([ZEB, "--batch", "case.run"], cwd=self.folder, stdout=full,
                                  stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(done.returncode, 255)
        self.assertIn(b"can't write the output", done.stderr)


class Signals(ProcessTest):
    """A signal ends a search, saves what it found, closes the log and tells by the exit status."""

    def setUp(self):
        super().setUp()
        rows = "\n".join(f"t{i} {i * 2654435761 % 2**40:040b}" for i in range(150))
        self.write(data=f"mxram 100; xread 40 150\n{rows}\n;\nhold 500; report +1/0/1;",
                   endless="mult=replications 100000 hold 2; quote never; quit;",
                   waiting="quote waits; pause 60; quote never;")

    def start(self, *arguments, wait_for=None, ignored=()):
        """The run, once its output, or the file `log`, has the text that is waited for."""
        def set_signals():  # whatever this process was started with
            for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
                signal.signal(number, signal.SIG_IGN if number in ignored else signal.SIG_DFL)

        run = subprocess.Popen([ZEB, *arguments], cwd=self.folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, preexec_fn=set_signals)
        self.addCleanup(run.communicate)
        self.addCleanup(run.kill)
        os.set_blocking(run.stdout.fileno(), False)
        self.said = b""
        end = time.monotonic() + 40
        while wait_for and wait_for not in self.said:
            self.assertLess(time.monotonic(), end, f"{arguments} said {self.said!r}")
            self.said += run.stdout.read() or b""
            log = self.folder / "log"
            if log.exists() and wait_for in log.read_bytes():
                break
            time.sleep(0.02)
        return run

    def finish(self, run, number):
        run.send_signal(number)
        status = run.wait(timeout=30)
        self.said += run.stdout.read() or b""
        self.assertEqual(status, 128 + number, self.said)

    def test_searches_in_every_mode(self):
        self.write(case="proc data.run; proc endless.run;", logged="log log; proc data.run; proc endless.run;")
        search = b"TBR"
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
            for arguments in (["--batch", "case.run"], ["proc case.run;"], ["bground log log; proc case.run;"]):
                run = self.start(*arguments, wait_for=search)
                self.finish(run, number)
                log = self.folder / "log"
                said = self.said + (log.read_bytes() if log.exists() else b"")
                self.assertIn(b"Ended by " + signal.Signals(number).name.encode(), said)
                self.assertNotIn(b"never", said)
                saved = f"zeb_trees_{run.pid}.tre"
                self.assertIn(b"saved to " + saved.encode(), said)
                text = (self.folder / saved).read_text()
                self.assertTrue(text.startswith("tread ") and text.endswith(";\nproc-;\n"), text[-50:])
                status, _, errors = self.run_zeb(input=f"proc data.run; proc {saved}; tsize; quit;")
                self.assertEqual(status, 0)
                self.assertNotIn("Error", errors)
                log.unlink(missing_ok=True)

    def test_trees_go_to_the_open_file_once(self):
        self.write(case="proc data.run; tsave *found.tre; proc endless.run;",
                   saved="proc data.run; randtrees 3; tsave *found.tre; save; proc waiting.run;",
                   auto="proc data.run; tsave ! 3600 auto; proc endless.run;")
        self.finish(self.start("--batch", "case.run", wait_for=b"TBR"), signal.SIGTERM)
        text = (self.folder / "found.tre").read_text()
        self.assertTrue(text.endswith(";\nproc/;\n") and text.count("(") > 100, text[-50:])
        self.finish(self.start("--batch", "saved.run", wait_for=b"waits"), signal.SIGTERM)
        self.assertEqual((self.folder / "found.tre").read_text().count("*"), 2)
        self.finish(self.start("--batch", "auto.run", wait_for=b"TBR"), signal.SIGTERM)
        self.assertTrue((self.folder / "auto-1").exists())
        self.assertEqual([name for name in os.listdir(self.folder) if name.startswith("zeb_trees")], [])

    def test_whatever_waits_ends_at_once(self):
        os.mkfifo(self.folder / "fifo")
        for arguments, text in ((["--batch", "waiting.run"], b"waits"), (["proc fifo;"], b"Lineage"), ([], b"zeb*>"),
                                (["--batch", "waiting.run", "endless.run"], b"waits")):
            for number in (signal.SIGTERM, signal.SIGINT):
                run = self.start(*arguments, wait_for=text)
                time.sleep(0.1)
                self.finish(run, number)
                self.assertNotIn(b"endless", self.said)

    def test_ignored_signals_stay_ignored(self):
        self.write(case="quote waits; pause 1; quote over;")
        run = self.start("--batch", "case.run", wait_for=b"waits", ignored=[signal.SIGHUP])
        run.send_signal(signal.SIGHUP)
        self.assertEqual(run.wait(timeout=30), 0)
        self.assertIn(b"over", run.stdout.read())


class SafeMode(ProcessTest):
    """Scripts that try to get out: each names what must not happen."""

    def setUp(self):
        super().setUp()
        self.outside = self.folder
        self.folder = self.outside / "inside"
        self.folder.mkdir()
        (self.outside / "secret.run").write_text("quote the secret;")
        (self.outside / "old").write_text("old")
        (self.folder / "old").write_text("old")
        (self.folder / "lead").symlink_to(self.outside / "secret.run")
        (self.folder / "hang").symlink_to(self.outside / "planted")
        (self.folder / "out").symlink_to(self.outside)
        (self.folder / "sub").mkdir()
        self.write(data="xread 4 4 a 0011 b 0101 c 1100 d 1010; randtrees 2;")

    def state_outside(self):
        return {name: (self.outside / name).read_bytes() for name in os.listdir(self.outside) if name != "inside"}

    def test_scripts_that_try_to_leave(self):
        before = self.state_outside()
        reading = ["proc ../secret.run", f"proc {self.outside}/secret.run", "proc lead", "proc out/secret.run",
                   "run ../secret.run", "rdir ..; secret", "cdir ..; proc secret.run", "cdir out; proc secret.run",
                   "cdir sub; proc ../../secret.run", "view ../secret.run", "proc &../old", "proc [../old",
                   "shortread ../old", "macro=; hifile ../old", "proc /etc/passwd", "proc out/../../secret.run",
                   "macro=; goto ../secret.run x"]
        writing = [f"{word}{name}" for name in ("../new", "../old", "old", "hang", "out/new", f"{self.outside}/new")
                   for word in ("log ", "log +", "tsave *", "tsave =", "tsave ", "export ", "export =", "export >",
                                "ttags=; tplot 0; ttags &", "tsave ! 1 ../", "export !")]
        shell = ["system touch ../shell", "macro=; system touch shell", "mxproc 3; sys touch shell"]
        for script in reading + writing + shell:
            self.write(case=f"proc data.run; {script}; save; quote reached;")
            status, said, errors = self.run_zeb("--safe", "--batch", "case.run")
            self.assertNotIn("the secret", said + errors, script)
            self.assertEqual(self.state_outside(), before, script)
            self.assertEqual((self.folder / "old").read_text(), "old", script)
            self.assertFalse((self.folder / "shell").exists(), script)
            if script in shell or script in ("proc ../secret.run", "proc lead", "log old", "log ../new", "tsave *old"):
                self.assertEqual(status, 255, script)
                self.assertIn("safe mode", errors, script)

    def test_what_is_allowed(self):
        self.write(case="proc data.run; log log; quote kept; log /; log +log; log /; tsave *new.tre; save; tsave /; "
                        "cdir sub; tsave *new.tre; save; tsave /; cdir ..; proc new.tre; quote done;")
        status, said, errors = self.run_zeb("--safe", "--batch", "case.run")
        self.assertEqual((status, "done" in said), (0, True), errors)
        for call in (["--safe", "--batch", "../secret.run"], ["--safe", "proc", "../secret.run,", "quit,"],
                     ["--safe", f"proc {self.outside}/secret.run; quit;"]):
            status, said, errors = self.run_zeb(*call)
            self.assertIn("the secret", said + errors, call)

    def test_variables_of_the_environment(self):
        for name, refusal in (("ZEB_SAFE", "safe mode"), ("ZEB_NO_SYSTEM", "ZEB_NO_SYSTEM")):
            for value in ("", "1"):
                _, _, errors = self.run_zeb("system touch shell; quit;", env=dict(os.environ, **{name: value}))
                self.assertIn(refusal, errors)
        self.assertFalse((self.folder / "shell").exists())


class Calls(ProcessTest):
    def test_words_that_call_the_program(self):
        for arguments, expected, said in ((["--help"], 0, "--batch"), (["--version"], 0, "zeb "),
                                          (["--batch"], 2, "needs the names"), (["--bacth", "x"], 2, "--bacth"),
                                          (["--version", "--oops"], 2, "--oops")):
            status, output, errors = self.run_zeb(*arguments)
            self.assertEqual(status, expected, arguments)
            self.assertIn(said, output if status == 0 else errors)
            self.assertEqual(errors if status == 0 else output, "", arguments)


if __name__ == "__main__":
    unittest.main(verbosity=2)
