#!/usr/bin/env python3
"""Fails when a function that a header declares is defined in another source than that of the header's name, or
nowhere, and when a source declares a function of another one by itself. Handlers of commands, which a room
declares in its commands.h, may live anywhere in the room. Usage: homes.py SRC_FOLDER"""

import collections
import pathlib
import sys

from cpp_declarations import declarations
from verdict import verdict

# Functions whose source is no source of the program: name -> where it comes from.
ELSEWHERE = {"all_help_texts": "the build writes it"}


def stem(name):
    return name.rsplit(".", 1)[0]


def room(name):
    return name.split("/")[0] if "/" in name else ""


def is_home(header, source):
    """Tables of kernels have one source for each set of instructions, each compiled in its own way."""
    return stem(source) == stem(header) or "kernel" in header and source.endswith(("_kernels.cpp", "_avx2.cpp", "_avx512.cpp"))


def is_commands_header(name):
    return name.endswith("/commands.h")


def looks_like_handler(f):
    return f.name.endswith("_command") and not f.parameters


def faults(root):
    read = {p.relative_to(root).as_posix(): declarations(p.read_text(encoding="utf-8"))
            for p in sorted(root.rglob("*")) if p.suffix in (".h", ".cpp")}
    bodies = collections.defaultdict(list)
    for name, found in read.items():
        for f in found.functions:
            if f.has_body and not f.hidden:
                bodies[f.name].append((name, f))
    for name, found in read.items():
        own = {f.name for f in found.functions if f.has_body}
        for f in found.functions:
            if f.has_body or f.hidden or f.here or f.name in ELSEWHERE:
                continue
            if name.endswith(".cpp"):
                if f.name not in own:
                    yield f"{name}:{f.line}: {f.name} is declared in a source that doesn't define it; include its header"
                continue
            homes = [(source, d) for source, d in bodies[f.name] if d.parameters == f.parameters]
            homes = homes or [(s, d) for s, d in bodies[f.name] if len(d.parameters) == len(f.parameters)]
            if not homes:
                if not any(other.name == f.name and other.here for other in found.functions):
                    yield f"{name}:{f.line}: {f.name} is declared here and defined nowhere"
            elif is_commands_header(name):
                if f.parameters:
                    yield f"{name}:{f.line}: {f.name} is no handler; declare it in the header of its source"
                elif room(homes[0][0]) != room(name):
                    yield f"{name}:{f.line}: the handler {f.name} is defined in another room, in {homes[0][0]}"
            elif looks_like_handler(f):
                yield f"{name}:{f.line}: the handler {f.name} belongs in {room(name)}/commands.h"
            elif not any(is_home(name, source) for source, _ in homes):
                yield f"{name}:{f.line}: {f.name} is defined in {homes[0][0]}, not in {stem(name)}.cpp"


def main():
    root = pathlib.Path(sys.argv[1])
    return verdict("homes", list(faults(root)), "every function is defined in the source of its header's name")


if __name__ == "__main__":
    sys.exit(main())
