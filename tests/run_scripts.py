#!/usr/bin/env python3
"""Runs the script tests: what a user types, compared with what the program says.

A case is tests/scripts/<topic>/<case>.run with <case>.expected beside it; a topic is a room of src/. Each
case runs in a scratch directory of its own, in which it finds itself as `case.run`, the test data as the
directory `data`, and whatever lies in the directory <case>.files. The program is called with

    proc case.run, quit,

or with the arguments in <case>.args (a shell-like line), and reads <case>.stdin, if there is one.
Standard output and standard error are compared together with <case>.expected, and the exit status
with the number in <case>.status (0 without that file). <case>.made names files that the program
makes, one a line: their contents are compared too, after the output. <case>.env holds lines
NAME=value.

Times, process numbers and paths are masked by the one list below. `--accept` rewrites the expected
files: read the difference like code.
"""

import argparse
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
TIMEOUT_SECONDS = 120

MASKS = [
    (re.compile(r"\b\d+\.\d+ (secs?\b|seconds\b)"), r"<time> \1"),
    (re.compile(r"(?<!searches is )\b\d+:\d\d:\d\d\b"), "<clock>"),
    (re.compile(r"^zeb \d+(\.\d+)+"), "zeb <version>"),
    (re.compile(r"\bversion \d+(\.\d+)+"), "version <version>"),
    (re.compile(r"(zeb_|zebexec_)\d+"), r"\1<pid>"),
    (re.compile(r"\brun as \S+"), "run as <zeb>"),
]


def mask(text, scratch):
    for path in sorted({str(scratch), os.path.realpath(scratch)}, key=len, reverse=True):
        text = text.replace(path, "<here>")
    for pattern, replacement in MASKS:
        text = pattern.sub(replacement, text)
    return text


def lines_to_compare(data, scratch):
    text = data.decode("utf-8", "backslashreplace").replace("\r\n", "\n").replace("\n\r", "\n")
    lines = [line.rstrip() for line in mask(text, scratch).split("\n")]
    while lines and not lines[-1]:
        lines.pop()
    return "\n".join(lines) + "\n"


def read_if_there(path):
    return path.read_text() if path.exists() else None


def prepare(case, scratch):
    shutil.copy(case, scratch / "case.run")
    data = HERE / "data"
    if data.is_dir():
        (scratch / "data").symlink_to(data)
    files = case.with_suffix(".files")
    if files.is_dir():
        shutil.copytree(files, scratch, dirs_exist_ok=True)


def run_case(zeb, case):
    """Returns the output to compare and the list of complaints."""
    with tempfile.TemporaryDirectory(prefix="zeb_case_") as name:
        scratch = pathlib.Path(name)
        prepare(case, scratch)
        environment = dict(os.environ, LC_ALL="C", HOME=name)
        environment.pop("ZEB_NO_SYSTEM", None)
        for line in (read_if_there(case.with_suffix(".env")) or "").splitlines():
            key, _, value = line.partition("=")
            environment[key] = value
        arguments = read_if_there(case.with_suffix(".args"))
        arguments = shlex.split(arguments) if arguments is not None else ["proc", "case.run,", "quit,"]
        typed = case.with_suffix(".stdin")
        stdin = typed.read_bytes() if typed.exists() else b""
        process = subprocess.Popen([zeb, *arguments], cwd=scratch, env=environment, text=False,
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT)
        try:
            output, _ = process.communicate(stdin, timeout=TIMEOUT_SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            output, _ = process.communicate()
            return lines_to_compare(output, scratch), ["hangs"]
        for made in (read_if_there(case.with_suffix(".made")) or "").split():
            file = scratch / made
            output += f"\n--- {made}\n".encode()
            output += file.read_bytes() if file.exists() else b"(not made)\n"
        complaints = []
        wanted = int(read_if_there(case.with_suffix(".status")) or 0)
        if process.returncode != wanted:
            complaints.append(f"exit status {process.returncode}, expected {wanted}")
        return lines_to_compare(output, scratch), complaints


def show_difference(expected, actual):
    import difflib

    for line in difflib.unified_diff(expected.splitlines(), actual.splitlines(), "expected",
                                     "actual", lineterm=""):
        print("    " + line)


def check(zeb, case, accept):
    """True if the case passes."""
    actual, complaints = run_case(zeb, case)
    expected_file = case.with_suffix(".expected")
    expected = read_if_there(expected_file)
    name = case.relative_to(HERE / "scripts") if case.is_relative_to(HERE) else case
    if accept and not complaints and expected != actual:
        expected_file.write_text(actual)
        print(f"accepted {name}")
        return True
    if expected is None:
        complaints.append("has no expected output")
    elif expected != actual:
        complaints.append("differs")
    if not complaints:
        return True
    print(f"FAILED {name}: {', '.join(complaints)}")
    show_difference(expected or "", actual)
    return False


def find_cases(words):
    """A word is a topic, or topic/case, or a path; none means all."""
    scripts = HERE / "scripts"
    if not words:
        return sorted(scripts.glob("*/*.run"))
    cases = []
    for word in words:
        if (scripts / word).is_dir():
            cases += sorted((scripts / word).glob("*.run"))
        elif (scripts / f"{word}.run").exists():
            cases.append(scripts / f"{word}.run")
        else:
            cases.append(pathlib.Path(word).resolve())
    return cases


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--zeb", required=True, help="the program")
    parser.add_argument("--accept", action="store_true", help="rewrite the expected files")
    parser.add_argument("cases", nargs="*", help="topics, or topic/case; all without any")
    options = parser.parse_args()
    cases = find_cases(options.cases)
    failed = [case for case in cases
              if not check(os.path.abspath(options.zeb), case, options.accept)]
    print(f"{len(cases) - len(failed)} of {len(cases)} cases pass")
    return 1 if failed or not cases else 0


if __name__ == "__main__":
    sys.exit(main())
