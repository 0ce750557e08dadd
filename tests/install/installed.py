#!/usr/bin/env python3
"""Installs into a scratch prefix and uses what is there: program, examples, manual, completion.
Usage: installed.py CMAKE BUILD_FOLDER"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

COMPLETIONS = [  # what is typed, among what bash must offer, what it mustn't
    ("zeb mu", ["mult", "mut.xread"], ["majority"]),
    ("zeb --he", ["--help"], []),
    ("zeb pr", ["procedure", "pruntax"], ["quit"]),
    ("zeb bground ma", ["majority", "macro"], ["--help"]),
    ("zeb proc mu", ["mut.xread"], ["mult"]),
    ("zeb proc mut.xread, mu", ["mult", "mut.xread"], []),
    ("zeb proc mut.xread,mu", ["mut.xread,mult"], ["mult"]),
    ("zeb mult=repl", ["replications"], ["replace.txt"]),
    ("zeb --batch mu", ["mut.xread"], ["mult"]),
    ("zeb mul:nok", ["nokeepall"], []),
    ("zeb mult=replications 10 ", ["hold", "tbr"], ["mult"]),
    ("zeb mult=hold 5, a", ["a b.nex", "agroup"], []),
]


def run(*command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=120,
                          stdin=subprocess.DEVNULL, **options)


def offered(script, typed, folder):
    """What bash would offer: it cuts words at blanks, "=" and ":"."""
    words = re.findall(r"[=:]|[^\s=:]+", typed) + ([""] if typed.endswith(" ") else [])
    quoted = " ".join(f"'{word}'" for word in words)
    call = (f". '{script}'; COMP_WORDS=({quoted}); COMP_CWORD={len(words) - 1}; COMP_LINE='{typed}'; "
            f"COMP_POINT={len(typed)}; _zeb; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
    done = run("bash", "--norc", "-c", call, cwd=folder)
    return done.stdout.splitlines(), done.stderr


def completion_faults(zeb, script, scratch):
    folder = scratch / "typing"
    folder.mkdir()
    options = set(re.findall(r"--\w+", run(zeb, "--help").stdout))
    if options != set(offered(script, "zeb --", folder)[0]):
        yield f"bash doesn't offer {options}"
    for name in ("mut.xread", "a b.nex"):
        (folder / name).touch()
    for typed, wanted, unwanted in COMPLETIONS:
        found, errors = offered(script, typed, folder)
        if errors or not set(wanted) <= set(found) or set(unwanted) & set(found):
            yield f"{typed!r}: bash offers {found} {errors}"


def faults(prefix, scratch):
    share = prefix / "share"
    documents = share / "doc/zeb"
    for name in ("README.md", "NEWS", "LICENSE", "CITATION.cff", "tutorial.md", "commands.md", "examples/README.md"):
        if not (documents / name).is_file():
            yield f"{name} isn't installed"
    zeb = prefix / "bin/zeb"
    version = run(zeb, "--version").stdout.split()[-1]
    if f"\n{version} " not in (documents / "NEWS").read_text():
        yield f"NEWS doesn't tell of version {version}"
    if f"\nversion: {version}\n" not in (documents / "CITATION.cff").read_text():
        yield f"CITATION.cff isn't of version {version}"
    if f'"zeb {version}"' not in (share / "man/man1/zeb.1").read_text():
        yield "the manual page isn't of this version"
    folder = scratch / "examples"
    shutil.copytree(documents / "examples", folder)
    done = run(zeb, "proc beetles.run,", "quit,", cwd=folder)
    if done.returncode != 0 or "17 trees, best score 121" not in done.stderr or not (folder / "beetles.tre").is_file():
        yield f"the example ends with {done.returncode}:\n{done.stdout}{done.stderr}"
    if "BBREAK" not in run(zeb, "bbreak?", "quit,").stderr.upper():
        yield "the installed program has no help"
    yield from completion_faults(zeb, share / "bash-completion/completions/zeb", scratch)


cmake, build = sys.argv[1:3]
with tempfile.TemporaryDirectory() as name:
    scratch = pathlib.Path(name)
    done = run(cmake, "--install", build, "--prefix", scratch / "prefix")
    bad = list(faults(scratch / "prefix", scratch)) if done.returncode == 0 else [done.stdout + done.stderr]
for fault in bad:
    print(fault)
print(f"{len(bad)} faults")
sys.exit(1 if bad else 0)
