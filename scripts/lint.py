#!/usr/bin/env python3
"""Runs clang-tidy over all sources of the program. Usage: lint.py BUILD_FOLDER MEMORY

MEMORY is a file that remembers which sources passed, with all they include, the linter's settings and the
way they are compiled, so that only what has changed is linted again."""

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


def lint(build, source):
    run = subprocess.run(["clang-tidy", "--quiet", "-p", str(build), str(source)], capture_output=True, text=True)
    return run.returncode, run.stdout


def main():
    build, memory = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    passed = json.loads(memory.read_text()) if memory.exists() else {}
    settings = (ROOT / ".clang-tidy").read_text() + subprocess.run(
        ["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    jobs = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = pathlib.Path(entry["file"])
        if source.is_relative_to(SRC):
            text = settings + entry["command"] + all_texts(source, set())
            jobs[source] = hashlib.sha256(text.encode()).hexdigest()
    now = {source.relative_to(ROOT).as_posix(): digest for source, digest in jobs.items()}
    waiting = [source for source, digest in jobs.items()
               if passed.get(source.relative_to(ROOT).as_posix()) != digest]
    bad = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for source, (status, output) in zip(waiting, pool.map(lambda s: lint(build, s), waiting)):
            if status != 0:
                bad += 1
                del now[source.relative_to(ROOT).as_posix()]
                print(output.replace(f"{ROOT}/", ""), flush=True)
    memory.write_text(json.dumps(now, indent=0))
    print(f"{len(jobs)} sources, {len(waiting)} linted, {bad} with faults")
    return 1 if bad or not jobs else 0


if __name__ == "__main__":
    sys.exit(main())
