#!/usr/bin/env python3
"""Fails when a source file includes a header from a floor above its own, or from another folder on the
same floor. Usage: layers.py SRC_FOLDER"""

import pathlib
import re
import sys

# The floor of each room; "" is src/ itself, whose files may include all others.
FOLDERS = {
    "": 12,
    "functions": 11,
    "walking": 11,
    "cscripts": 11,
    "parallel": 10,
    "compare": 10,
    "supports": 9,
    "realign": 9,
    "search": 8,
    "mapping": 7,
    "consensus": 7,
    "engine": 6,
    "landmarks": 6,
    "likelihood": 6,
    "formats": 6,
    "trees": 5,
    "matrix": 4,
    "macro": 3,
    "language": 2,
    "console": 1,
    "base": 0,
}

# Single arrows that are allowed although they point upward or sideways: (file, header) -> reason.
ALLOWED = {
    ("base/arena.cpp", "console/output.h"): "says how much memory there is",
    ("base/errors.cpp", "console/console.h"): "shows its message",
    ("base/errors.cpp", "console/output.h"): "shows its message",
    ("base/errors.cpp", "language/input.h"): "shows its place",
    ("base/errors.cpp", "language/interpreter.h"): "ends the command",
    ("base/message_text.cpp", "console/output.h"): "declared there",
    ("base/process.cpp", "console/console.h"): "ends the process",
    ("base/process.cpp", "console/output.h"): "ends the process",
    ("base/process.cpp", "language/input.h"): "ends the process",
    ("base/process.cpp", "language/interpreter.h"): "ends the process",
    ("console/output.cpp", "language/commands/commands.h"): "declared there",
}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def folder(name):
    return name.split("/")[0] if "/" in name else ""


def floor(name):
    return FOLDERS[folder(name)]


def faults(root):
    used = set()
    files = sorted(p for p in root.rglob("*") if p.suffix in (".h", ".cpp"))
    for path in files:
        name = path.relative_to(root).as_posix()
        if folder(name) not in FOLDERS:
            yield f"{name}: folder has no floor; add it to the table in layers.py"
            continue
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            found = INCLUDE.match(line)
            if not found:
                continue
            header = found.group(1)
            if not (root / header).is_file():
                yield f"{name}:{number}: no such header in src: {header}"
            elif (name, header) in ALLOWED:
                used.add((name, header))
            elif folder(header) not in FOLDERS:
                yield f"{name}:{number}: {header} has no floor"
            elif floor(header) > floor(name):
                yield f"{name}:{number}: floor {floor(name)} includes {header} of floor {floor(header)}"
            elif floor(header) == floor(name) and folder(name) not in ("", folder(header)):
                yield f"{name}:{number}: sideways arrow to {header} on the same floor {floor(name)}"
    for arrow in set(ALLOWED) - used:
        yield f"layers.py: exception no longer needed: {arrow[0]} -> {arrow[1]}"
    if not files:
        yield f"{root}: no source files found"


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    print("\n".join(found) or "every include points down")
    return 1 if found else 0


sys.exit(main())
