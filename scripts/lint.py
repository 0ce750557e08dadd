#!/usr/bin/env python3
"""Runs clang-tidy over the sources of the program. Usage: lint.py BUILD_FOLDER MEMORY [all]

Without "all" only sources that git knows as changed since the branch left main are looked at, without the
slow analysis of paths. MEMORY is a file that remembers which sources passed, with all they include, the
linter's settings and the way they are compiled: what hasn't changed isn't linted again, and a run that was
stopped goes on where it was."""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SRC = ROOT / "src"
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def all_texts(path, seen):
    """The text of a source and of all headers of the program that it includes."""
    if path in seen or not path.is_file():
        return ""
    seen.add(path)
    text = path.read_text(encoding="utf-8")
    return text + "".join(all_texts(SRC / name, seen) for name in INCLUDE.findall(text))


def changed_files():
    """What differs from where the branch left main, the files git doesn't know yet included; on main itself,
    from the last commit but one."""
    def git(*words):
        return subprocess.run(["git", *words], cwd=ROOT, capture_output=True, text=True).stdout.split()

    head, base = git("rev-parse", "HEAD"), git("merge-base", "HEAD", "main")
    since = base[0] if base and base != head else "HEAD~1"
    return set(git("diff", "--name-only", since) + git("ls-files", "--others", "--exclude-standard"))


def lint(build, source, checks):
    run = subprocess.run(["clang-tidy", "--quiet", *checks, "-p", str(build), str(source)], capture_output=True, text=True)
    return source, run.returncode, run.stdout


def main():
    build, memory = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    checks = [] if "all" in sys.argv[3:] else ["--checks=-clang-analyzer-*"]
    changed = None if "all" in sys.argv[3:] else changed_files()
    passed = json.loads(memory.read_text()) if memory.exists() else {}
    settings = (ROOT / ".clang-tidy").read_text() + "".join(checks) + subprocess.run(
        ["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    waiting = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = pathlib.Path(entry["file"])
        name = source.relative_to(ROOT).as_posix() if source.is_relative_to(SRC) else None
        if not name or (changed is not None and name not in changed):
            continue
        text = settings + entry["command"] + all_texts(source, set())
        digest = hashlib.sha256(text.encode()).hexdigest()
        if passed.get(name + "".join(checks)) != digest:
            waiting[source] = (name + "".join(checks), digest)
    bad = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = [pool.submit(lint, build, source, checks) for source in waiting]
        for done in concurrent.futures.as_completed(runs):
            source, status, output = done.result()
            if status == 0:
                passed.update([waiting[source]])
                memory.write_text(json.dumps(passed, indent=0))
            else:
                bad += 1
                print(output.replace(f"{ROOT}/", ""), flush=True)
    print(f"{len(waiting)} sources linted, {bad} with faults")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
