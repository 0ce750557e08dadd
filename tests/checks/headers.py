#!/usr/bin/env python3
"""Compiles every header of the program alone. Usage: headers.py SRC_FOLDER COMPILER MEMORY

MEMORY is a file that remembers which headers compiled, with all they include, so that only what has
changed is compiled again."""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

root, compiler, memory = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)
checked = json.loads(memory.read_text()) if memory.exists() else {}


def all_texts(name, seen):
    """The text of a header and of all headers of the program that it includes."""
    if name in seen or not (root / name).is_file():
        return ""
    seen.add(name)
    text = (root / name).read_text(encoding="utf-8")
    return text + "".join(all_texts(inner, seen) for inner in INCLUDE.findall(text))


def fingerprint(name):
    return hashlib.sha256((compiler + all_texts(name, set())).encode()).hexdigest()


def compile_alone(header):
    name = header.relative_to(root).as_posix()
    if checked.get(name) == fingerprint(name):
        return name, 0, ""
    # Twice, so that a missing guard is found too.
    text = f'#include "{name}"\n#include "{name}"\n'
    run = subprocess.run(
        [compiler, "-std=c++20", "-fsyntax-only", "-I", str(root), "-x", "c++", "-"],
        input=text, capture_output=True, text=True)
    return name, run.returncode, run.stderr


def is_of_a_module(header):
    """Found with its library only where that is installed, and compiled with the module."""
    return "#include <mpi.h>" in header.read_text(encoding="utf-8")


headers = sorted(header for header in root.rglob("*.h") if not is_of_a_module(header))
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    results = list(pool.map(compile_alone, headers))
memory.write_text(json.dumps({name: fingerprint(name) for name, status, _ in results if status == 0}))
bad = [result for result in results if result[1] != 0]
for name, _, text in bad:
    print(f"{name} doesn't compile alone:\n{text}")
print(f"{len(results)} headers, {len(bad)} of them don't compile alone")
sys.exit(1 if bad or not results else 0)
