#!/usr/bin/env python3
"""Fails on words that don't belong in the tree: works cited that aren't in the list below, notes of things left
to do, paths of somebody's machine, and "behind" for what comes after in a
text or in time. Usage: words.py FOLDER..."""

import pathlib
import re
import subprocess
import sys

from verdict import verdict

# What may be cited, by authors and year. Of phylogenetics these only; works of computing and statistics are
# added as they are used. Where no work fits, a comment describes the method in words.
WORKS = """
Aho and others 1981; Alachiotis and Stamatakis 2011; Amenta, Clarke and St. John 2003; Baum 1992;
Bordewich and Semple 2005; Bremer 1988; Bremer 1990; Bremer 1994; Chen and others 2003; Day 1985;
Dreyfus and Wagner 1971; Farris 1970; Farris 1989;
Farris and others 1996; Felsenstein 1981; Felsenstein 1985; Fitch 1971; Gladstein 1997; Gower 1975;
Hartigan 1973; Hendy and Penny 1982; Kluge and Farris 1969; Lewis 1998; Lewis 2001; Maddison 1989;
Maddison, Swofford and Maddison 1997; Margush and McMorris 1981; Moilanen 1999; Needleman and Wunsch 1970;
Nixon 1999; Pol and Escapa 2009; Ragan 1992; Robinson and Foulds 1981; Rohlf and Slice 1990; Ronquist 1998;
Sankoff 1975; Sankoff and Rousseau 1975; Swofford and Maddison 1987; Swofford and others 1996; Vitter 1985;
Weiszfeld 1937; White and Holland 2011; Wilkinson 1995; Yang 1994;
Boyer and Moore 1991; Chan, Golub and Mulet 1999; de Leeuw 1977; de Leeuw and Heiser 1980; Floyd 1962; Jaccard 1901;
Steele, Lea and Flood 2014
"""
CITED = {" ".join(work.split()) for work in WORKS.split(";")}
NAME = r"(?:de |St\. )?[A-Z][a-z]+"
CITATION = re.compile(rf"\b({NAME}(?:, {NAME})*(?: and (?:{NAME}|others)| et al\.)?),? \(?((?:1[89]|20)\d\d(?:, (?:1[89]|20)\d\d)*)\b")
NO_AUTHORS = {"January", "February", "March", "April", "May", "June", "July", "August", "September", "October",
              "November", "December", "Copyright", "Nov", "Jan"}

PHRASES = [
    (re.compile(r"(?<![\w/])/(?:home|root|work|Users)/\w"), "is a path of somebody's machine"),
]
IN_PROSE = [
    (re.compile(r"\b(?:TODO|FIXME|XXX)\b"), "is a note of work to do; do it or file it"),
    (re.compile(r"(?<!left )(?<!leave )(?<!leaves )(?<!lag )(?<!fall )\b[Bb]ehind\b"),
     'stands for what comes after: write "after"'),
]
PIECES = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.DOTALL)
LINE_JOINT = re.compile(r"\n[ \t]*(?:///?|#|\*|%)?[ \t]*")
CODE = {".cpp", ".h"}
NAMES_THE_WORDS = {pathlib.Path(__file__).name, "planted_faults.py"}
DATA = ("tests/scripts/", "examples/", "tests/data/")


def files_under(folder):
    """The files that are kept, or all files where there is no git."""
    try:
        found = subprocess.run(["git", "-C", folder, "ls-files", "-z"], capture_output=True, check=True).stdout
        names = [folder / name for name in found.decode().split("\0") if name]
    except (OSError, subprocess.CalledProcessError):
        names = [path for path in folder.rglob("*") if not any(
            part == ".git" or part.startswith("build") for part in path.relative_to(folder).parts)]
    return sorted(path for path in names if path.is_file() and path.name not in NAMES_THE_WORDS)


def prose_of(path, text):
    """The text with everything blanked that isn't written for readers: of code, comments and messages stay."""
    if path.suffix not in CODE:
        return text
    kept, end = [], 0
    for piece in PIECES.finditer(text):
        kept += [re.sub(r"[^\n]", " ", text[end:piece.start()]), piece[0]]
        end = piece.end()
    return "".join(kept) + re.sub(r"[^\n]", " ", text[end:])


def citations(text):
    """Works cited that aren't in the list, also those whose names and year stand on two lines."""
    joined = LINE_JOINT.sub(lambda joint: " " + "\0" * (len(joint[0]) - 1), text)
    places = [i for i, c in enumerate(joined) if c != "\0"]
    for found in CITATION.finditer(joined.replace("\0", "")):
        authors, years = found[1], found[2].split(", ")
        if authors.split()[0] in NO_AUTHORS:
            continue
        for year in years:
            # A sentence may begin with a word that looks like an author: "In Farris 1970".
            if not any(f"{authors} {year}".endswith(work) for work in CITED):
                yield places[found.start()], f"{authors} {year}", "is not in the list of works in words.py"


def faults(folder):
    for path in files_under(folder):
        text = path.read_bytes().decode("utf-8", "replace")
        if "\0" in text:
            continue
        prose = prose_of(path, text)
        found = [(m.start(), m[0], why) for pattern, why in PHRASES for m in pattern.finditer(text)]
        if not any(part in path.as_posix() for part in DATA):
            found += [(m.start(), m[0], why) for pattern, why in IN_PROSE for m in pattern.finditer(prose)]
            found += citations(prose)
        for place, words, why in sorted(found):
            line = text.count("\n", 0, place) + 1
            yield f'{path.relative_to(folder).as_posix()}:{line}: "{words}" {why}'


def main():
    found = [fault for folder in sys.argv[1:] for fault in faults(pathlib.Path(folder))]
    return verdict("words", found, "no word stands where it doesn't belong")


if __name__ == "__main__":
    sys.exit(main())
