#!/usr/bin/env python3
"""Runs what a document shows and compares the output.
Usage: sessions.py DOCUMENT ZEB EXAMPLES [--accept], which puts the real output in.

Three kinds of indented blocks are run, in one copy of the examples. A block that begins with "$ zeb"
is a line for the shell. Lines after the prompt "zeb*>" are commands: all those of a document make one
session, fed to the program line by line. Lines after "R>" make a session of R with its library ape;
where these aren't installed, the document is run up to there only. Seconds and clocks may differ."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PROMPT = "zeb*>"
R_PROMPT = "R>"
TIMES = [(re.compile(r"\d+\.\d+ secs"), "<time> secs"), (re.compile(r"\b\d\d:\d\d:\d\d\b"), "<clock>")]


def lines(text):
    """The lines of some output, without blank ones at its ends."""
    found = [line.rstrip() for line in text.replace("\n\r", "\n").split("\n")]
    while found and not found[-1]:
        found.pop()
    while found and not found[0]:
        found.pop(0)
    return found


def masked(found):
    for pattern, replacement in TIMES:
        found = [pattern.sub(replacement, line) for line in found]
    return found


def shown_parts(text):
    """What is run, in order: [line of the document, typed text, shown lines, lines it takes]."""
    parts = []
    inside = False
    for number, line in enumerate(text.split("\n")):
        if line.startswith("    ") or (inside and not line.strip()):
            body = line[4:].rstrip()
            if body.startswith((PROMPT, R_PROMPT, "$ zeb ")):
                parts.append([number, body, [], 1])
                inside = True
            elif inside:
                parts[-1][2].append(body)
                parts[-1][3] += 1
        else:
            inside = False
    return parts


def run(command, folder, typed="", **options):
    done = subprocess.run(command, cwd=folder, input=typed.encode(), stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=120, **options)
    return done.stdout.decode()


def typed_at(prompt, parts):
    return [words[len(prompt):].strip() for _, words, _, _ in parts if words.startswith(prompt)]


def session(zeb, folder, parts):
    output = run([zeb], folder, "".join(line + "\n" for line in typed_at(PROMPT, parts)))
    return iter(output.split(PROMPT)[1:])


def r_session(folder, parts):
    """Each answer after a line that says so."""
    mark = "-- answer --"
    typed = [f'cat("{mark}\\n")\n{line}\n' for line in typed_at(R_PROMPT, parts)]
    output = run([shutil.which("Rscript"), "-"], folder, "".join(typed))
    return iter(output.split(mark)[1:])


def has_ape():
    r = shutil.which("Rscript")
    return r and subprocess.run([r, "-e", "library(ape)"], capture_output=True).returncode == 0


def real_outputs(zeb, folder, parts):
    """The output of each part, up to the first that can't be run here."""
    path = {**os.environ, "PATH": f"{zeb.parent}{os.pathsep}{os.environ['PATH']}"}
    answers = {PROMPT: None, R_PROMPT: None}
    for _, words, _, _ in parts:
        if words.startswith("$"):
            yield lines(run(words[2:], folder, shell=True, env=path))
            continue
        prompt = PROMPT if words.startswith(PROMPT) else R_PROMPT
        if answers[prompt] is None:
            if prompt == R_PROMPT and not has_ape():
                print("R with ape isn't installed: what follows isn't run")
                return
            answers[prompt] = session(zeb, folder, parts) if prompt == PROMPT else r_session(folder, parts)
        yield lines(next(answers[prompt], "(no answer)"))


def main():
    document, zeb, examples = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
    text = document.read_text(encoding="utf-8")
    parts = shown_parts(text)
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch, "examples")
        shutil.copytree(examples, folder)
        real = list(real_outputs(zeb, folder, parts))
    bad = [(part, output) for part, output in zip(parts, real)
           if masked(lines("\n".join(part[2]))) != masked(output)]
    if "--accept" in sys.argv:
        written = text.split("\n")
        for (number, words, shown, taken), output in reversed(bad):
            gap = [""] if words.startswith("$") else []
            blank = [""] * (len(shown) - len("\n".join(shown).rstrip("\n").split("\n")) if shown else 0)
            body = [f"    {line}".rstrip() for line in gap + output]
            written[number + 1:number + taken] = body + blank
        document.write_text("\n".join(written), encoding="utf-8")
        return 0
    for (number, words, shown, _), output in bad:
        print(f"{document.name}:{number + 1} shows for {words}")
        print("\n".join(lines("\n".join(shown))))
        print("but the program says")
        print("\n".join(output))
    print(f"{len(parts)} parts, {len(bad)} of them aren't what the program says")
    return 1 if bad or not parts else 0


sys.exit(main())
