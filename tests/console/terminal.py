"""A program on a pseudo-terminal, and the screen that its user would see."""

import codecs
import fcntl
import os
import pty
import re
import select
import signal
import struct
import termios
import time

CONTROL = re.compile(r"\x1b(?:\[(?P<arguments>[?>=]?[0-9;]*)(?P<final>[@-~])|[()][A-Z0-9]|[=>78cM])")


class Screen:
    """As much of a terminal as the program's control texts need. Anything else is an error."""

    def __init__(self, rows, columns):
        self.decoder = codecs.getincrementaldecoder("utf-8")("replace")
        self.pending = ""
        self.alternate = False
        self.bells = 0
        self.resize(rows, columns)

    def resize(self, rows, columns):
        self.rows, self.columns = rows, columns
        self.clear()

    def clear(self):
        self.lines = [[" "] * self.columns for _ in range(self.rows)]
        self.row = self.column = 0

    def text(self):
        return "\n".join("".join(line).rstrip() for line in self.lines).rstrip("\n")

    def line(self, row):
        return "".join(self.lines[row]).rstrip()

    def feed(self, data):
        text = self.pending + self.decoder.decode(data)
        self.pending = ""
        at = 0
        while at < len(text):
            if text[at] != "\x1b":
                self.put(text[at])
                at += 1
                continue
            found = CONTROL.match(text, at)
            if not found:
                if len(text) - at > 20:
                    raise AssertionError("unknown control text %r" % text[at:at + 20])
                self.pending = text[at:]
                return
            if found.group("final"):
                self.control(found.group("final"), found.group("arguments"))
            at = found.end()

    def put(self, c):
        if c == "\n":
            self.row += 1
            if self.row == self.rows:
                self.lines = self.lines[1:] + [[" "] * self.columns]
                self.row -= 1
        elif c == "\r":
            self.column = 0
        elif c == "\b":
            self.column = max(self.column - 1, 0)
        elif c == "\a":
            self.bells += 1
        elif c >= " ":
            if self.column == self.columns:
                self.column = 0
                self.put("\n")
            self.lines[self.row][self.column] = c
            self.column += 1

    def control(self, final, arguments):
        if arguments.startswith(("?", ">", "=")):
            if arguments == "?1049":
                self.alternate = final == "h"
                self.clear()
            return
        numbers = [int(n or 0) for n in arguments.split(";")]
        if final == "H":
            self.row = max(numbers[0], 1) - 1
            self.column = (max(numbers[1], 1) if len(numbers) > 1 else 1) - 1
        elif final == "J":
            first = 0 if numbers[0] == 2 else self.row + 1
            for row in range(first, self.rows):
                self.lines[row] = [" "] * self.columns
            if numbers[0] != 2:
                self.erase_line_end()
        elif final == "K":
            self.erase_line_end()
        elif final == "d":
            self.row = max(numbers[0], 1) - 1
        elif final == "G":
            self.column = max(numbers[0], 1) - 1
        elif final not in "mrhlt":
            raise AssertionError("unknown control text: %s %s" % (arguments, final))

    def erase_line_end(self):
        for column in range(self.column, self.columns):
            self.lines[self.row][column] = " "


class Session:
    """The program run on a terminal of its own. `seconds` limits every wait."""

    KEYS = {"up": "\x1bOA", "down": "\x1bOB", "right": "\x1bOC", "left": "\x1bOD", "home": "\x1bOH",
            "end": "\x1bOF", "page_up": "\x1b[5~", "page_down": "\x1b[6~", "delete": "\x1b[3~",
            "backspace": "\x7f", "esc": "\x1b", "enter": "\r"}

    def __init__(self, command, folder, rows=24, columns=80, seconds=20, environment=None):
        self.seconds = seconds
        self.screen = Screen(rows, columns)
        self.output = b""
        self.prompts = 0  # prompts seen by wait_for_prompt
        self.status = None
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        # The slave end stays open here: its settings are looked at after the program has left.
        self.master, self.slave = master, slave
        self.settings_before = termios.tcgetattr(slave)
        self.process = os.fork()
        if self.process == 0:
            os.setsid()
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                signal.signal(number, signal.SIG_DFL)  # whatever this process was started with
            fcntl.ioctl(slave, termios.TIOCSCTTY, 0)
            for descriptor in range(3):
                os.dup2(slave, descriptor)
            os.chdir(folder)
            variables = dict(os.environ, TERM="xterm", HOME=folder, LC_ALL="C.UTF-8")
            variables.update(environment or {})
            for name in ("LINES", "COLUMNS"):
                variables.pop(name, None)
            try:
                os.execve(command[0], command, variables)
            finally:
                os._exit(127)

    def read(self, seconds):
        """Takes what the program writes within so many seconds; true if there was anything."""
        if not select.select([self.master], [], [], seconds)[0]:
            return False
        data = os.read(self.master, 65536)
        self.output += data
        self.screen.feed(data)
        return True

    def wait_for(self, condition, what):
        end = time.monotonic() + self.seconds
        while not condition():
            left = end - time.monotonic()
            if left <= 0:
                raise AssertionError("waited for %s; the screen shows:\n%s" % (what, self.screen.text()))
            self.read(min(left, 0.1))

    def wait_for_text(self, text):
        self.wait_for(lambda: text in self.screen.text(), repr(text))

    def wait_for_line(self, row, text):
        self.wait_for(lambda: self.screen.line(row) == text, "%r in line %i" % (text, row))

    def wait_for_prompt(self):
        """A prompt that wasn't there at the last call, on an empty line."""
        def asked():
            return (self.output.count(b"\n\r\rzeb*>") > self.prompts
                    and self.screen.line(self.screen.row) == "zeb*>")
        self.wait_for(asked, "the prompt")
        self.prompts = self.output.count(b"\n\r\rzeb*>")

    def settle(self, seconds=0.3):
        """Reads until nothing comes for so long."""
        while self.read(seconds):
            pass

    def type(self, text):
        os.write(self.master, text.encode())

    def key(self, *names):
        for name in names:
            self.type(self.KEYS[name])
            if name == "esc":
                time.sleep(0.1)  # what follows at once would make a longer key of it

    def command(self, text):
        """Types a line at the prompt and waits for the next one."""
        self.type(text + "\r")
        self.wait_for_prompt()

    def resize(self, rows, columns):
        self.settle(0.1)
        self.screen.resize(rows, columns)
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        os.kill(self.process, signal.SIGWINCH)

    def end(self):
        """Waits for the end of the program; returns its status."""
        end = time.monotonic() + self.seconds
        while self.status is None:
            self.read(0.05)
            process, status = os.waitpid(self.process, os.WNOHANG)
            if process:
                self.status = os.waitstatus_to_exitcode(status)
            elif time.monotonic() > end:
                raise AssertionError("the program doesn't end; the screen shows:\n" + self.screen.text())
        self.settle(0.05)
        return self.status

    def close(self):
        if self.status is None:
            os.kill(self.process, signal.SIGKILL)
            os.waitpid(self.process, 0)
        os.close(self.master)
        os.close(self.slave)
