#!/usr/bin/env python3
"""Compiles every header of the program alone. Usage: headers.py SRC_FOLDER COMPILER"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys

root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]


def compile_alone(header):
    name = header.relative_to(root).as_posix()
    # Twice, so that a missing guard is found too.
    text = f'#include "{name}"\n#include "{name}"\n'
    run = subprocess.run(
        [compiler, "-std=c++20", "-fsyntax-only", "-I", str(root), "-x", "c++", "-"],
        input=text, capture_output=True, text=True)
    return name, run.returncode, run.stderr


with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    results = list(pool.map(compile_alone, sorted(root.rglob("*.h"))))
bad = [result for result in results if result[1] != 0]
for name, _, text in bad:
    print(f"{name} doesn't compile alone:\n{text}")
print(f"{len(results)} headers, {len(bad)} of them don't compile alone")
sys.exit(1 if bad or not results else 0)
