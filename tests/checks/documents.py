#!/usr/bin/env python3
"""Fails when a document names, in backquotes, a file that isn't there, or a word with underscores (a function, a
type, a macro) that no source has. Usage: documents.py FOLDER"""

import pathlib
import re
import sys

from verdict import verdict

DOCUMENTS = ("README.md", "CONTRIBUTING.md", "docs/*.md", "examples/README.md")
QUOTED = re.compile(r"`([^`\n]+)`")
FILE = re.compile(r"(?:[\w.*-]+/)*[\w.*-]+\.(?:cpp|h|py|sh|md|txt|cmake|run|xread|nex|expected)|(?:[\w.-]+/)+[\w.*-]*")
NAME = re.compile(r"(?:\w+::)*([a-z]\w*_\w+|[A-Z]+_[A-Z_]+)(?:\(.*\))?")
SOURCES = ("src", "tests", "bench", "cmake", "scripts")
# Made by the build or by a user, not kept: what a document may name all the same.
NOT_KEPT = re.compile(r"build/|zeb\.1|commands\.md|.*<\w+>")


def faults(root):
    kept = [path.relative_to(root).as_posix() for folder in SOURCES + ("docs", "help", "examples", ".ci")
            for path in (root / folder).rglob("*")] + [path.name for path in root.iterdir()]
    folders = {f"{name}/" for name in kept if (root / name).is_dir()}
    kept = set(kept)
    text = "".join(path.read_text(encoding="utf-8", errors="replace") for folder in SOURCES
                   for path in (root / folder).rglob("*") if path.suffix in (".cpp", ".h", ".py", ".cmake", ".sh", ".txt"))
    words = set(re.findall(r"\w+", text + (root / "CMakeLists.txt").read_text(encoding="utf-8")))

    def is_there(name):
        # Files of the program may be named from src/ or from their room on.
        if name.endswith("/"):
            return name in folders or f"src/{name}" in folders or any(f.endswith(f"/{name}") for f in folders)
        if "*" in name:
            return any(pathlib.PurePath(k).match(name) for k in kept)
        return any(k == name or k.endswith(f"/{name}") for k in kept)

    for document in sorted(path for pattern in DOCUMENTS for path in root.glob(pattern)):
        for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
            place = f"{document.relative_to(root).as_posix()}:{number}"
            for quoted in QUOTED.findall(line):
                name = NAME.fullmatch(quoted)
                if NOT_KEPT.match(quoted):
                    continue
                if FILE.fullmatch(quoted):
                    if not is_there(quoted):
                        yield f"{place}: there is no {quoted}"
                elif name and name[1] not in words and not is_there(f"{quoted}/"):
                    yield f"{place}: no source has the word {name[1]}"


def main():
    return verdict("documents", list(faults(pathlib.Path(sys.argv[1]))), "documents name what is there")


if __name__ == "__main__":
    sys.exit(main())
