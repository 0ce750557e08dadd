#!/usr/bin/env python3
"""Fails when a source file includes a header from a floor above its own, or from another folder on the
same floor. Usage: layers.py SRC_FOLDER"""

import fnmatch
import pathlib
import re
import sys

# The floor of a folder's files; "" is src/ itself, whose files may include all others.
FOLDERS = {
    "": 9,
    "functions": 9,
    "parallel": 8,
    "compare": 8,
    "search": 6,
    "consensus": 5,
    "engine": 4,
    "formats": 4,
    "landmarks": 4,
    "trees": 3,
    "matrix": 2,
    "macro": 1,
    "shell": 0,
}

# Files that stand on another floor than their folder does: pattern -> (floor, reason). The first match counts.
FILES = {
    "consensus/bremer*": (7, "Bremer supports run searches"),
    "consensus/q*": (7, "quick consensus runs searches"),
    "consensus/resampl*": (7, "resampling runs searches"),
    "landmarks/realign*": (7, "realignment searches trees"),
    "macro/traversal*": (9, "tree walking reads trees, characters and scores"),
}

# Single arrows that are allowed although they point upward or sideways: (file, header) -> reason.
ALLOWED = {}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def folder(name):
    return name.split("/")[0] if "/" in name else ""


def floor(name):
    for pattern, (number, _) in FILES.items():
        if fnmatch.fnmatch(name, pattern):
            return number
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
