#!/usr/bin/env python3
"""Fails when a source file includes a header from a floor above its own, or from another room on the same
floor; when modules (a header and the source of its name) of a room include each other in a circle; and when
a room, or an inner room, holds too many sources. Usage: layers.py SRC_FOLDER"""

import collections
import pathlib
import re
import sys

from verdict import verdict

MOST_SOURCES = 28

# The floor of each room; "" is src/ itself, whose files may include all others.
FOLDERS = {
    "": 12,
    "functions": 11,
    "walking": 11,
    "cscripts": 11,
    "parallel": 10,
    "compare": 10,
    "supports": 9,
    "distances": 9,
    "instability": 9,
    "realign": 9,
    "search": 8,
    "mapping": 7,
    "consensus": 7,
    "engine": 6,
    "landmarks": 6,
    "likelihood": 6,
    "formats": 6,
    "taxonomy": 6,
    "shapes": 6,
    "compatibility": 7,
    "trees": 5,
    "matrix": 4,
    "macro": 3,
    "language": 2,
    "console": 1,
    "base": 0,
}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def folder(name):
    return name.split("/")[0] if "/" in name else ""


def floor(name):
    return FOLDERS[folder(name)]


def stem(name):
    return name.rsplit(".", 1)[0]


def includes_of(root, name):
    for number, line in enumerate((root / name).read_text(encoding="utf-8").splitlines(), 1):
        found = INCLUDE.match(line)
        if found:
            yield number, found.group(1)


def floor_faults(root, files):
    for name in files:
        if folder(name) not in FOLDERS:
            yield f"{name}:1: its room has no floor; add it to the table in layers.py"
            continue
        for number, header in includes_of(root, name):
            if not (root / header).is_file():
                yield f"{name}:{number}: no such header in src: {header}"
            elif folder(header) not in FOLDERS:
                yield f"{name}:{number}: {header} has no floor"
            elif floor(header) > floor(name):
                yield f"{name}:{number}: floor {floor(name)} includes {header} of floor {floor(header)}"
            elif floor(header) == floor(name) and folder(name) not in ("", folder(header)):
                yield f"{name}:{number}: sideways arrow to {header} on the same floor {floor(name)}"


def way_back(arrows, start):
    """The shortest way from a module along its arrows to itself; none where it is in no circle."""
    came_from, waiting = {}, collections.deque([start])
    while waiting:
        module = waiting.popleft()
        for target in sorted(arrows[module]):
            if target == start:
                way = [start, module]
                while way[-1] != start:
                    way.append(came_from[way[-1]])
                return way[::-1]
            if target not in came_from:
                came_from[target] = module
                waiting.append(target)
    return None


def circle_faults(root, files):
    """One fault for each module that is in a circle, with the shortest one."""
    arrows = collections.defaultdict(dict)
    for name in files:
        for number, header in includes_of(root, name):
            if stem(header) != stem(name):
                arrows[stem(name)].setdefault(stem(header), f"{name}:{number}")
    for module in sorted(arrows):
        way = way_back(arrows, module)
        if way:
            yield f"{arrows[module][way[1]]}: circle of includes: {' -> '.join(way)}"


def size_faults(files):
    sources = collections.Counter(name.rpartition("/")[0] for name in files if name.endswith(".cpp"))
    for place, number in sorted(sources.items()):
        if number > MOST_SOURCES:
            yield f"{place}:1: {number} sources in one folder, more than {MOST_SOURCES}; give it inner rooms"


def faults(root):
    files = sorted(p.relative_to(root).as_posix() for p in root.rglob("*") if p.suffix in (".h", ".cpp"))
    yield from floor_faults(root, files)
    yield from circle_faults(root, files)
    yield from size_faults(files)
    if not files:
        yield f"{root}:1: no source files found"


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    return verdict("layers", found, "every include points down, and none goes round in a circle")


if __name__ == "__main__":
    sys.exit(main())
