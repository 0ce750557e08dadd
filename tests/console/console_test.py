#!/usr/bin/env python3
"""Drives the console on a pseudo-terminal, as a user would. Usage: console_test.py ZEB [TEST...]"""

import os
import pathlib
import pty
import signal
import subprocess
import sys
import tempfile
import termios
import time
import unittest

from terminal import Session

ZEB = os.path.abspath(sys.argv.pop(1))


def has_terminals():
    """False on machines that give no pseudo-terminals, as where /dev/pts isn't mounted."""
    try:
        ends = pty.openpty()
    except OSError:
        return False
    for end in ends:
        os.close(end)
    return True


HAS_TERMINALS = has_terminals()


class ConsoleTest(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.folder = self.scratch.name

    def tearDown(self):
        self.scratch.cleanup()

    def session(self, *arguments, **options):
        if not HAS_TERMINALS:
            self.skipTest("this machine gives no pseudo-terminals")
        session = Session([ZEB, *arguments], self.folder, **options)
        self.addCleanup(session.close)
        return session

    def start(self, *arguments, **options):
        session = self.session(*arguments, **options)
        session.wait_for_prompt()
        return session

    def write(self, name, text):
        pathlib.Path(self.folder, name).write_text(text)

    def read(self, name):
        return pathlib.Path(self.folder, name).read_bytes()

    def numbered_lines(self, count):
        self.write("lines.run", "".join("quote line %i of many;\n" % n for n in range(1, count + 1)))


class Editing(ConsoleTest):
    def test_keys_edit_the_line(self):
        s = self.start()
        s.type("uote ello;")
        s.key("home")
        s.type("q")
        s.key("right", "right", "right", "right", "right")
        s.type("h")
        s.key("end", "left")
        s.type("xü你")
        s.key("left", "left", "left", "delete", "right", "backspace")
        s.wait_for_text("quote hello你;")
        s.key("end", "enter")
        s.wait_for_text("hello你\n")
        s.wait_for_prompt()

    def test_escape_empties_the_line(self):
        s = self.start()
        s.type("quote wrong;")
        s.wait_for_text("wrong;")
        s.key("esc")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "zeb*>", "the empty line")

    def test_a_line_wider_than_the_screen_is_kept_whole(self):
        s = self.start("log out.log;", columns=30)
        words = " ".join("w%i" % n for n in range(60))
        s.command("quote " + words + ";")
        s.command("log /;")
        self.assertIn(words.encode(), self.read("out.log"))
        self.assertIn("\nzeb*>54 w55 w56 w57 w58 w59;", s.screen.text())
        shown = next(n for n in range(24) if s.screen.line(n).startswith("w0 w1"))
        self.assertEqual(s.screen.line(shown), words[:29].rstrip())

    def test_a_full_line_says_so_once(self):
        s = self.start()
        s.type("quote " + "x" * 5000)
        s.wait_for_text("This line is full (4094 bytes)")
        s.type(";\r")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "quote>", "the prompt of quote")
        self.assertEqual(s.output.count(b"This line is full"), 1)

    def test_pasted_lines_all_run(self):
        s = self.start()
        s.type("quote one;\rquote two;\rquote three, and four;\r")
        s.wait_for_text("three, and four\n\nzeb*>")
        self.assertIn("\none\n", s.screen.text())
        self.assertIn("\ntwo\n", s.screen.text())

    def test_a_command_goes_on_over_lines(self):
        s = self.start()
        s.type("quote first\r")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "quote>", "the prompt of quote")
        self.assertIn('("quote" goes on: ";" ends it)', s.screen.text())
        s.type("second;\r")
        s.wait_for_prompt()
        self.assertIn("first\nsecond\n", s.screen.text().replace(" \n", "\n"))


class History(ConsoleTest):
    def test_arrows_recall_and_the_file_keeps_lines(self):
        self.write(".zeb_history", "2 quote old one;\x01quote old two;\x01")
        s = self.start()
        s.command("quote new;")
        s.type("unfinished")
        s.key("up", "up", "up")
        s.wait_for_text("zeb*>quote old one;")
        s.key("up")  # nothing older
        s.key("down")
        s.wait_for_text("zeb*>quote old two;")
        s.key("down", "down")
        s.wait_for_text("zeb*>unfinished")
        s.key("esc")
        s.type("quit;\r")
        self.assertEqual(s.end(), 0)
        self.assertEqual(self.read(".zeb_history"),
                         b"4 quote old one;\x01quote old two;\x01quote new;\x01quit;\x01")

    def test_clbuffer_star_forgets(self):
        self.write(".zeb_history", "1 quote old;\x01")
        s = self.start()
        s.command("clbuffer*;")
        self.assertIn("command buffer will be cleared", s.screen.text())
        s.type("quit;\r")
        s.end()
        self.assertEqual(self.read(".zeb_history"), b"1 quit;\x01")

    def test_a_broken_file_does_no_harm(self):
        for text in ("", "99999999999999999999 x", "3 only one\x01", "-1 a\x01", "2 bad\x1b[2J\x01good;\x01"):
            self.write(".zeb_history", text)
            s = self.start()
            s.type("quit;\r")
            self.assertEqual(s.end(), 0)
        self.assertEqual(self.read(".zeb_history"), b"2 good;\x01quit;\x01")
        self.assertEqual(sorted(os.listdir(self.folder)), [".zeb_history"])


    def test_the_search_key_finds_lines(self):
        self.write(".zeb_history", "3 quote old one;\x01mult;\x01quote old two;\x01")
        s = self.start()
        s.type("typed\x12old")
        s.wait_for_text('(history: "old") quote old two;')
        s.type("\x12")
        s.wait_for_text('(history: "old") quote old one;')
        bells = s.screen.bells
        s.type("\x12z")  # nothing older, and nothing with a "z"
        s.wait_for(lambda: s.screen.bells == bells + 2, "two bells")
        s.key("esc")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "zeb*>typed", "the line typed before")
        s.key("esc")
        s.type("\x12one")
        s.key("end", "backspace")
        s.type(" more;\r")
        s.wait_for_text("\nold one more\n")
        s.wait_for_prompt()
        s.type("\x12mul\r")
        s.wait_for_text("Must read data")


class Completion(ConsoleTest):
    def complete(self, s, typed, expected):
        s.type(typed + "\t")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "zeb*>" + expected, expected)

    def test_commands_options_and_files(self):
        for name in ("lines.run", "line two.run", "lined.txt"):
            self.write(name, "")
        os.mkdir(os.path.join(self.folder, "lineage"))
        s = self.start()
        for typed, expected in (("quote a;mul", "quote a;mult"), ("qn", "qnelsen"), ("MULT=repl", "MULT=replications"),
                                ("mult=wag nokee", "mult=wag nokeepall"), ("silent =con", "silent =console"),
                                ("proc lines", "proc lines.run"), ("log +lined", "log +lined.txt"),
                                ("view linea", "view lineage/"), ("view ./lin", "view ./line")):
            self.complete(s, typed, expected)
            s.key("esc")
        self.complete(s, "proc l", "proc line")
        s.type("\t")
        s.wait_for_text("\nlineage/   lined.txt  lines.run\n")
        s.key("esc")
        s.type("mxr;\t")  # nothing to go on with
        s.wait_for(lambda: s.screen.bells > 0, "the bell")
        s.wait_for_text("zeb*>mxr;")

    def test_pasted_tabs_are_blanks(self):
        s = self.start()
        s.type("quote a\tl;\rquote\r")
        s.wait_for_text("\na l\n")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "quote>", "the prompt of quote")
        s.type("x\t")
        s.type("y;\r")
        s.wait_for_text("\nx y\n")


class Questions(ConsoleTest):
    def test_typed_lines_go_to_the_log_when_asked_for(self):
        s = self.start()
        s.command("log all.log;")
        s.command("quote unseen;")
        s.command("echo [;")
        s.command("quote seen;")
        s.type("quit;\r")
        s.end()
        lines = [line.strip() for line in self.read("all.log").decode().split("\n")]
        self.assertIn("zeb*>quote seen;", lines)
        self.assertNotIn("zeb*>quote unseen;", lines)

    def test_typed_lines_stay_out_of_a_silenced_log(self):
        s = self.start()
        s.command("log all.log; echo [;")
        s.command("silent =all;")
        s.type("quote hidden;\rsilent -all; quote heard;\r")
        s.wait_for_text("heard")
        s.type("quit;\r")
        s.end()
        self.assertNotIn(b"quote hidden", self.read("all.log"))
        self.assertIn(b"heard", self.read("all.log"))

    def test_a_log_on_the_terminal_stands_straight(self):
        s = self.start()
        s.command("log stdout; silent =console;")
        s.command("quote first; quote second;")
        self.assertIn("\nfirst\nsecond\n", s.screen.text())

    def test_warnings_ask_first(self):
        s = self.start()
        s.command("warn=;")
        s.type("txtsize 100;\r")
        s.wait_for_text("Continue?")
        s.type("kn")
        s.wait_for_text("User interrupt...")
        s.wait_for_prompt()
        s.command("txtsize;")
        self.assertIn("Buffer (200 Kb)", s.screen.text())
        s.type("txtsize 100;\r")
        s.wait_for_text("txtsize 100;\nWARNING - Resetting buffer size requires clearing it.\nContinue?")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "Continue?", "the question")
        s.type("y")
        s.wait_for_text("Buffer (100 Kb)")
        self.assertNotIn("Continue? B", s.screen.text())

    def test_errors_ring_the_bell(self):
        s = self.start()
        s.command("nosuchcommand;")
        self.assertIn('LUMA: command "nosuchcommand" not recognized', s.screen.text())
        self.assertGreater(s.screen.bells, 0)
        s.command("beep-;")
        bells = s.screen.bells
        s.command("nosuchcommand;")
        self.assertEqual(s.screen.bells, bells)

    def test_close_names_are_offered(self):
        s = self.start()
        s.command("help !;")
        s.type("quotee hello;\r")
        s.wait_for_text('"quote"')
        self.assertIn("Did you mean:", s.screen.text())
        s.type("y")
        s.wait_for_text("\nhello")
        s.wait_for_prompt()
        for times, key in enumerate(("c", "\x1b"), 1):
            s.type("quotee no;\r")
            s.wait_for(lambda: s.screen.line(s.screen.row).startswith("(y/n/cancel)?"), "the question")
            s.type("k" + key)
            s.wait_for(lambda: s.screen.text().count("Can't match command name!") == times, "the refusal")
            s.wait_for_prompt()


class Comparisons(ConsoleTest):
    """Two files that differ in four entries of two characters."""

    def setUp(self):
        super().setUp()
        names = "; cnames {0 One no yes; {1 Two no yes;; proc/;"
        self.write("new.zeb", "xread 2 4 A 00 B 01 C 10 D 11" + names)
        self.write("old.zeb", "xread 2 4 A 00 B 10 C 01 D 11" + names)

    def compare(self, options, answers):
        s = self.start()
        s.type(f"dcomp ] (d ? {options}) both.zeb new.zeb old.zeb;\r")
        for subject, answer in answers:
            s.wait_for_text(subject)
            s.type(answer)
        return s

    def cells(self):
        return [line.split()[1] for line in self.read("both.zeb").decode().split("\n")
                if line[:2] in ("A ", "B ", "C ", "D ")]

    def test_answers_are_asked_for_stored_and_taken_again(self):
        answers = [("B, One", "n"), ("C, One", "xb"), ("B, Two", "r")]
        self.compare(">stored", answers).wait_for_prompt()
        wanted = ["00", "10", "[01]1", "11"]
        self.assertEqual(self.cells(), wanted)
        stored = self.read("stored")
        self.assertEqual(stored, b"d 1 0 n\nd 2 0 b\nd 1 1 r\n")
        self.write("both.zeb", "")
        self.compare("<stored >again", []).wait_for_prompt()
        self.assertEqual(self.cells(), wanted)
        self.assertEqual(self.read("again"), stored)

    def test_escape_keeps_decisions_and_nothing_else(self):
        s = self.compare(">stored", [("B, One", "n"), ("C, One", "\x1b")])
        s.wait_for_text("User interrupt")
        s.wait_for_prompt()
        self.assertEqual(self.read("stored"), b"d 1 0 n\n")
        self.assertEqual(sorted(os.listdir(self.folder)), ["new.zeb", "old.zeb", "stored"])
        s = self.compare("<stored", [("switching to screen now", ""), ("C, One", "a"), ("B, Two", "y"),
                                     ("C, Two", "n")])
        s.wait_for_prompt()
        self.assertEqual(self.cells(), ["00", "11", "11", "11"])


class Viewer(ConsoleTest):
    def open_on(self, count):
        self.numbered_lines(count)
        s = self.start()
        s.command("clbuffer; lines;")
        s.type("view;\r")
        s.wait_for_text("** TXT BUFFER, lines")
        return s

    def header(self, first, last, count):
        return "** TXT BUFFER, lines %i-%i of %i (ESC to exit) **" % (first, last, count)

    def test_moves_by_lines_and_pages(self):
        s = self.open_on(100)
        total = int(s.screen.line(0).split(" of ")[1].split()[0])
        page = 22
        expect = lambda first: s.wait_for_line(0, self.header(first, first + page - 1, total))
        expect(total - page + 1)  # opens at the end
        for key, first in (("h", 1), ("+", 2), ("p", 2 + page), ("-", 1 + page), ("o", 1), ("o", 1),
                           ("e", total - page + 1), ("+", total - page + 1)):
            s.type(key)
            expect(first)
        for key, first in (("home", 1), ("down", 2), ("page_down", 2 + page), ("up", 1 + page),
                           ("page_up", 1)):
            s.key(key)
            expect(first)
        s.type("g50\r")
        expect(50)
        s.type("g5000\r")
        s.wait_for_text("Lines go from 1 to %i" % total)
        s.type(":LINE 77 OF\r")
        expect(self.place(s, 77))
        s.type(":\r")
        s.wait_for_text("Found in line")
        s.type(":no such text\r")
        s.wait_for_text("Not found: no such text")
        s.key("esc")
        s.wait_for_prompt()
        self.assertIn("line 100 of many", s.screen.text())

    def place(self, s, number):
        """The line of the buffer that shows "line N", read off the foot of the screen."""
        s.wait_for_text("Found in line")
        found = int(s.screen.text().split("Found in line ")[1])
        self.assertEqual(s.screen.line(1), "line %i of many" % number)
        return found

    def test_moves_sideways(self):
        self.write("wide.txt", "".join("%-9i|" % n for n in range(20)) + "\na\x1b[2Jb\u009b2Jc\n")
        s = self.start()
        s.type("view wide.txt;\r")
        s.wait_for_line(0, "** FILE: wide.txt **")
        s.wait_for_line(2, "a.[2Jb.2Jc")  # nothing in a file steers the terminal
        for key, first in (("r", 1), ("R", 40), ("9", 79), ("8", 40), ("L", 1), ("l", 0), ("l", 0)):
            s.type(key)
            whole = "".join("%-9i|" % n for n in range(20))
            s.wait_for_line(1, whole[first:first + 79].rstrip())
            foot = "Lateral shift (screens): %.2f" % (first / 80) if first else ""
            s.wait_for_line(23, foot)
        s.key("right")
        s.wait_for_text("Lateral shift (screens): 0.01")
        s.key("left")
        s.wait_for_line(23, "")
        s.type("?")
        s.wait_for_text("Use PG-UP, PG-DN, and ARROW KEYS; other options:")
        s.type(" ")
        s.wait_for_line(0, "** FILE: wide.txt **")
        s.type("q")
        s.wait_for_prompt()
        s.command("view nothing.txt;")
        self.assertIn("Can't open nothing.txt", s.screen.text())

    def test_empty_buffer_and_auto_view(self):
        s = self.start()
        s.command("clbuffer;")
        s.type("view;\r")
        s.wait_for_line(0, "Text buffer is empty")
        s.type("z")
        s.wait_for_prompt()
        s.type("quote seen; view+;\r")
        s.wait_for_text("** TXT BUFFER, lines 1-")
        s.type("q")
        s.wait_for_prompt()
        s.type("view-;\r")
        s.wait_for_prompt()

    def test_what_was_silenced_can_be_seen(self):
        s = self.start()
        s.command("silent =console; quote not on the console; silent -console;")
        self.assertNotIn("\nnot on the console", s.screen.text())
        s.type("view;\r")
        s.wait_for_text("\nnot on the console")
        s.type("q")
        s.wait_for_prompt()


class Interrupts(ConsoleTest):
    COUNT = 60000

    def start_long_run(self):
        self.numbered_lines(self.COUNT)
        s = self.start(seconds=60)
        s.type("lines;\r")
        s.wait_for(lambda: len(s.output) > 5000, "some lines")
        return s

    def test_escape_stops_a_run_file(self):
        s = self.start_long_run()
        s.key("esc")
        s.wait_for_text("User interrupt...")
        s.wait_for_prompt()
        self.assertNotIn(b"line %i of" % self.COUNT, s.output)
        s.command("quote still here;")
        self.assertIn("\nstill here", s.screen.text())

    def test_escape_before_the_greeting_ends_nothing(self):
        s = self.session()
        s.key("esc")  # lies there when the program starts
        s.wait_for_prompt()

    def test_p_pauses(self):
        s = self.start_long_run()
        s.type("p")
        s.wait_for_text("Program is paused... press <enter> to continue...")
        s.settle(0.2)
        before = len(s.output)
        time.sleep(0.7)
        s.settle(0.2)
        self.assertEqual(len(s.output), before)
        s.type("\r")
        s.wait_for(lambda: len(s.output) > before + 2000, "the run to go on")
        self.assertNotIn("Program is paused", s.screen.text())
        s.key("esc")
        s.wait_for_text("User interrupt...")
        s.wait_for_prompt()

    def test_searches_heed_keys_unless_break_is_off(self):
        rows = "\n".join(f"t{i} {i * 2654435761 % 2**40:040b}" for i in range(200))
        self.write("data", f"mxram 100; xread 40 200\n{rows}\n;\n")
        s = self.start("proc data;", seconds=60)
        s.command("report +1/0/1; hold 9000; timeout 0:0:4; break -;")
        s.type("mult=replications 9000 hold 1;\r")
        s.wait_for_text("Repl. Algor.")
        s.key("esc")
        s.wait_for_text("time is out")
        s.wait_for_prompt()
        s.command("report +; break =; timeout 0;")
        s.type("mult=replications 9000 hold 1;\r")
        s.wait_for(lambda: s.screen.line(s.screen.row).count(":") == 2, "the progress line")
        s.type("p")
        s.wait_for_text("Program is paused... press <enter> to continue...")
        s.settle(0.3)
        self.assertIn("Program is paused", s.screen.text())
        s.type("\r")
        s.wait_for(lambda: "Program is paused" not in s.screen.text(), "the search to go on")
        s.key("esc")
        s.wait_for_prompt()

    def test_break_settings(self):
        self.numbered_lines(self.COUNT)
        s = self.start(seconds=60)
        s.command("break /Really stop this;")
        s.type("lines;\r")
        s.wait_for(lambda: len(s.output) > 5000, "some lines")
        s.key("esc")
        s.wait_for_text("Really stop this (y/n)")
        s.type("xn")
        before = len(s.output)
        s.wait_for(lambda: len(s.output) > before + 5000, "the run to go on")
        s.key("esc")
        s.wait_for_text("Really stop this (y/n)")
        s.type("Y")
        s.wait_for_text("User interrupt...")
        s.wait_for_prompt()

    def test_without_break_nothing_is_polled(self):
        self.numbered_lines(3000)
        s = self.start()
        s.command("break-;")
        s.type("lines;\r")
        s.wait_for(lambda: len(s.output) > 5000, "some lines")
        s.key("esc")
        s.wait_for_text("line 3000 of many")

    def test_other_keys_do_nothing(self):
        s = self.start_long_run()
        s.type("x")
        s.key("up")
        before = len(s.output)
        s.wait_for(lambda: len(s.output) > before + 20000, "the run to go on")
        s.key("esc")
        s.wait_for_text("User interrupt...")
        s.wait_for_prompt()


    def test_ctrl_c_is_another_escape_and_never_ends_the_program(self):
        s = self.start_long_run()
        s.type("\x03")
        s.wait_for_text("User interrupt...")
        s.wait_for_prompt()
        s.type("quote wrong")
        s.wait_for_text("zeb*>quote wrong")
        s.type("\x03")
        s.wait_for(lambda: s.screen.line(s.screen.row) == "zeb*>", "the empty line")
        s.command("break -; warn =;")
        s.type("txtsize 100;\r")
        s.wait_for_text("Continue?")
        s.type("\x03")
        s.wait_for(lambda: s.screen.text().count("User interrupt...") == 2, "the interrupt")
        s.wait_for_prompt()
        s.type("pause 60; quote never;\r")
        s.settle(0.3)
        s.type("\x03")
        s.wait_for(lambda: s.screen.text().count("User interrupt...") == 3, "the interrupt")
        s.wait_for_prompt()
        s.command("quote still here;")
        self.assertIn("\nstill here", s.screen.text())
        self.assertNotIn("\nnever", s.screen.text())


class Searches(ConsoleTest):
    def start_endless_search(self):
        matrix = pathlib.Path(__file__).parent.parent.parent / "examples" / "frogs.xread"
        self.write("frogs.xread", matrix.read_text())
        s = self.start()
        s.command("proc frogs.xread;")
        s.type("mult=replications 100000 hold 2; quote moved on;\r")
        s.wait_for_text("Best Score")
        s.settle(0.3)
        return s

    def check_moved_on(self, s):
        s.wait_for_text("\nmoved on")
        s.wait_for_prompt()
        self.assertRegex(s.screen.text(), r"Best score \(TBR\): \d+\.  \d trees? retained")

    def test_m_asks_and_moves_on(self):
        s = self.start_endless_search()
        s.type("m")
        s.wait_for_text("Are you sure you want to stop current search and move on? (y/n)")
        s.type("n")
        s.settle(0.3)
        self.assertNotIn("\nmoved on", s.screen.text())
        s.type("m")
        s.wait_for(lambda: s.screen.text().count("Are you sure") == 2, "the question again")
        s.type("y")
        self.check_moved_on(s)

    def test_escape_and_ctrl_c_end_a_search(self):
        for key in ("\x1b", "\x03"):
            s = self.start_endless_search()
            s.type(key)
            s.wait_for_prompt()
            self.assertRegex(s.screen.text(), r"\d trees? retained")

    def test_a_closed_window_saves_the_trees(self):
        s = self.start_endless_search()
        os.kill(s.process, signal.SIGHUP)
        self.assertEqual(s.end(), 128 + signal.SIGHUP)
        saved = self.read("zeb_trees_%i.tre" % s.process)
        self.assertTrue(saved.startswith(b"tread ") and saved.endswith(b"proc-;\n"))


class Screens(ConsoleTest):
    def test_resize_is_followed(self):
        self.numbered_lines(100)
        s = self.start()
        s.command("lines;")
        s.type("view;\r")
        s.wait_for_text("** TXT BUFFER, lines")
        s.resize(12, 40)
        s.type("h")
        s.wait_for(lambda: "lines 1-10 of" in s.screen.line(0) and "line" in s.screen.line(10), "ten lines")
        self.assertEqual(s.screen.line(11), "")
        s.type("q")
        s.wait_for_prompt()
        s.command("quote " + "x" * 60 + ";")
        self.assertIn("\n" + "x" * 39 + "\n", s.screen.text())
        s.resize(24, 100)
        s.key("enter")
        s.wait_for_prompt()
        s.command("quote " + "y" * 60 + ";")
        self.assertIn("\n" + "y" * 60 + "\n", s.screen.text())

    def test_a_child_process_finds_a_usable_terminal(self):
        s = self.start()
        s.command("system printf 'one\\ntwo\\n' && stty -a | grep -o ' .\\?icanon';")
        self.assertIn("\none\ntwo\n icanon\n", s.screen.text())
        s.command("quote back;")
        self.assertIn("\nback\n", s.screen.text())

    def test_progress_is_one_line_and_goes(self):
        self.write("walk.run", "macro=; report-;\nprogress 1 4 Walking far;\npause 0.3;\n"
                   "progress 2 4 Walking;\nquote in between;\npause 0.3;\nprogress 3 4 Walking;\nprogress/;\n"
                   "quote at the end;\n")
        s = self.start()
        s.type("walk;\r")
        s.wait_for_text("Walking far 25%")
        s.wait_for_text("in between")
        s.wait_for_text("at the end")
        s.wait_for_prompt()
        for text in (b"\rWalking far 25%", b"\rWalking 50%    \r", b"\rWalking 75%\r"):
            self.assertIn(text, s.output)
        self.assertNotIn("Walking", s.screen.text().split("walk;")[1])

    def test_screen_size_can_be_set(self):
        s = self.start()
        s.command("screen 24 40; quote " + "z" * 60 + ";")
        self.assertIn("\n" + "z" * 39 + "\n", s.screen.text())

    def test_a_terminal_that_clears_nothing_is_blanked_out(self):
        s = self.start(environment={"TERM": "dumb"})
        self.assertNotIn(b"  ", s.output)
        s.type("quote longer")
        s.key(*["backspace"] * 6)
        s.command("ok;")
        self.assertIn("zeb*>quote ok;\nok\n", s.screen.text())

    def test_paging_waits_for_a_key(self):
        self.numbered_lines(60)
        s = self.start()
        s.command("pause=;")
        s.type("lines;\r")
        s.wait_for_text("-- more --")
        self.assertNotIn("line 30 of", s.screen.text())
        s.type(" ")
        s.wait_for_text("line 40 of many")
        s.wait_for_text("-- more --")
        s.type(" ")
        s.wait_for_text("line 60 of many")
        s.wait_for_prompt()
        s.type("lines;\r")
        s.wait_for_text("-- more --")
        s.key("esc")
        s.wait_for_text("User interrupt...")
        s.wait_for_prompt()


class Leaving(ConsoleTest):
    def check_given_back(self, s):
        self.assertEqual(termios.tcgetattr(s.slave), s.settings_before)
        self.assertFalse(s.screen.alternate)

    def test_quit_gives_the_terminal_back(self):
        s = self.start()
        self.assertNotEqual(termios.tcgetattr(s.slave), s.settings_before)
        s.type("quit;\r")
        self.assertEqual(s.end(), 0)
        self.check_given_back(s)
        self.assertEqual(s.screen.text(), "")

    def test_quit_on_the_command_line(self):
        s = self.session("clbuffer,", "quit,")
        self.assertEqual(s.end(), 0)
        self.check_given_back(s)

    def test_a_killed_program_gives_the_terminal_back(self):
        s = self.start()
        s.command("quote kept;")
        os.kill(s.process, signal.SIGTERM)
        self.assertEqual(s.end(), 128 + signal.SIGTERM)
        self.assertIn(b"quote kept;", self.read(".zeb_history"))
        self.check_given_back(s)


class WithoutTerminal(ConsoleTest):
    def test_no_control_texts_and_no_waiting(self):
        text = "quote hello;\nview;\npause;\npause=;\nfoo;\ncls;\nbreak;\nquit;\n"
        run = subprocess.run([ZEB], input=text.encode(), capture_output=True, cwd=self.folder, timeout=20)
        written = run.stdout + run.stderr
        self.assertEqual(run.returncode, 0)
        self.assertIn(b"hello", written)
        for byte in (0x1b, 0x07, 0x08):
            self.assertNotIn(byte, written)

    def test_an_input_that_ends_ends_the_run(self):
        run = subprocess.run([ZEB], input=b"quote hello", capture_output=True, cwd=self.folder, timeout=20)
        self.assertEqual(run.returncode, 0)
        self.assertIn(b"hello", run.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
