#!/usr/bin/env python3
"""The program as scripts and shells see it: its outputs, exit status and signals.
Usage: process_test.py ZEB [TEST...]"""

import os
import pathlib
import subprocess
import sys
import tempfile
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
