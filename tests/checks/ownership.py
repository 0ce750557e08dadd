#!/usr/bin/env python3
"""Fails when a room writes what another room owns, and when a file keeps variables of its own outside of a
struct. The owner of a state struct (`extern tree_store store;`) is the room whose header declares it, with
its inner rooms; other rooms read it or call the owner's functions. Hooks (a struct whose name ends in
`_hooks`) are there to be filled by registration.cpp of other rooms. What is handed to a function by
reference isn't seen. Usage: ownership.py SRC_FOLDER"""

import pathlib
import re
import sys

from cpp_declarations import PAIRS, close_of, declarations
from verdict import verdict

ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>=", "++", "--"}
CHANGES = {"append", "assign", "clear", "emplace", "emplace_back", "erase", "fill", "insert", "merge", "pop_back",
           "push_back", "reserve", "reset", "resize", "splice", "swap"}
REGISTRATIONS = re.compile(r"(^|/)(registration|start_up|main)\.cpp$")


def room(name):
    return name.split("/")[0] if "/" in name else ""


def is_hooks(type_name):
    return type_name.endswith("_hooks")


def follow(tokens, i):
    """From the name at `i` along its members, elements and calls: the place after them, and the last call."""
    last = None
    i += 1
    while i < len(tokens):
        if tokens[i] in (".", "->") and i + 1 < len(tokens):
            last = tokens[i + 1]
            i += 2
        elif tokens[i] in ("[", "("):
            if tokens[i] == "(" and last is None:
                return i, None
            called = last if tokens[i] == "(" else None
            i = close_of(tokens, i) + 1
            if called in CHANGES:
                return i, called
        else:
            break
    return i, None


def is_declared(tokens, i):
    """Whether the name at `i` is a variable that is declared there."""
    if i == 0 or tokens[i + 1] not in (";", ",", ")", "=", "{", ":", "("):
        return False
    before = tokens[i - 1]
    if before == ">":
        return True
    if before in ("&", "*"):
        return tokens[i - 2] == ">" or tokens[i - 2].kind == "name" and tokens[i - 2] not in ("return", "case")
    return before.kind == "name" and before not in ("return", "case", "else", "co_return", "throw", "new", "delete")


def names_inside(tokens, begin, end):
    """Names that a function declares as parameters or local variables, which hide those of other rooms."""
    return {str(tokens[i]) for i in range(begin, end) if tokens[i].kind == "name" and is_declared(tokens, i)}


def head_of(tokens, brace):
    """Where the head of a function begins whose body begins at `brace`."""
    i = brace
    while i > 0 and tokens[i - 1] not in (";", "}"):
        i -= 1
    return i


def binds_reference(tokens, i):
    """Whether the name at `i` begins what a reference is bound to through which it could be written."""
    if tokens[i - 1] not in ("=", "{", ":") or tokens[i - 2].kind != "name" or tokens[i - 3] != "&":
        return False
    start = i - 3
    while tokens[start] not in (";", "{", "}", "("):
        start -= 1
    return "const" not in tokens[start:i]


def writes(tokens, begin, end, state):
    """The writes to variables of `state` between two places."""
    hidden = names_inside(tokens, head_of(tokens, begin), end)
    for i in range(begin, end):
        name = tokens[i]
        if name not in state or name in hidden or tokens[i - 1] in (".", "->"):
            continue
        if tokens[i - 1] == "::" and tokens[i - 2] != "zeb":
            continue
        after, changed = follow(tokens, i)
        start = i - 1
        if tokens[i - 1] in ("++", "--") or tokens[start] == "*" and tokens[start - 1] in ("++", "--"):
            yield name
        elif changed or binds_reference(tokens, i) or (after < end and tokens[after] in ASSIGNMENTS):
            yield name


def is_constant(words):
    if "constexpr" in words:
        return True
    if "*" in words:
        return "const" in words[len(words) - words[::-1].index("*"):]
    return "const" in words


def statics(tokens, begin, end):
    for i in range(begin, end):
        if tokens[i] in ("static", "thread_local") and tokens[i - 1] not in ("static", "thread_local"):
            k = i
            while tokens[k] not in (";", "=", "(") and tokens[k] not in PAIRS:
                k += 1
            if not is_constant([str(word) for word in tokens[i:k]]):
                yield tokens[k - 1]


def own_state(name, found, state):
    """Variables of the file `name` that are neither constants, nor state declared in a header, nor the one struct
    that a source may keep to itself."""
    kept = 0
    for v in found.variables:
        if v.constant or v.extern and v.name in state and state[v.name][1] == name:
            if v.extern and not v.constant and (v.pointer or v.type in ("int", "bool", "double", "char", "long")):
                yield v, "is state outside of a struct"
        elif not v.hidden and v.name in state and room(state[v.name][1]) == room(name):
            continue
        elif v.hidden and v.type in found.types and not v.pointer:
            kept += 1
            if kept > 1:
                yield v, "is a second struct of state in this file"
        else:
            yield v, "is state outside of a struct"


def faults(root):
    read = {p.relative_to(root).as_posix(): declarations(p.read_text(encoding="utf-8"))
            for p in sorted(root.rglob("*")) if p.suffix in (".h", ".cpp")}
    state = {v.name: (v.type, name) for name, found in read.items() if name.endswith(".h")
             for v in found.variables if v.extern and not v.constant}
    for name, found in read.items():
        others = {v: s for v, s in state.items() if room(s[1]) != room(name)}
        if REGISTRATIONS.search(name):
            others = {v: s for v, s in others.items() if not is_hooks(s[0])}
        for v, why in own_state(name, found, state):
            yield f"{name}:{v.line}: {v.name} {why}"
        for f in found.functions:
            for written in writes(found.tokens, *f.body, others):
                yield f"{name}:{written.line}: writes {written}, which {state[written][1]} owns"
            for static in statics(found.tokens, *f.body):
                yield f"{name}:{static.line}: {static} is a variable that outlives its function"


def main():
    return verdict("ownership", list(faults(pathlib.Path(sys.argv[1]))), "each room writes its own state only")


if __name__ == "__main__":
    sys.exit(main())
