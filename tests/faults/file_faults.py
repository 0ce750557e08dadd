#!/usr/bin/env python3
"""Makes the calls by which files are read and written go wrong, one after the other.

Each scenario is run once as it should go, and then once for each call of each kind that goes wrong in it
(see faulty_file_calls.cpp). Nothing may be lost in silence: where no error is told, output, files and
what is in memory are those of the good run. Files that were there before are as they were, or whole new
ones. Data and trees in memory are as they were, or as the command would have made them, or, where new
data failed, gone.

Killed at any call, a writer leaves the old file or a whole new one, and what it leaves beside is cleared
by the next run. `--long` tries more calls of each kind.
"""

import gzip
import pathlib
import re
import subprocess
import sys
import tempfile

ZEB = pathlib.Path(sys.argv[1]).resolve()
LONG = "--long" in sys.argv
MOST_CALLS = 200 if LONG else 12
TIMEOUT_SECONDS = 120
TAXA = 60
CELLS = 3000  # more than are read at a time, so that a file is read by several calls


def cells(taxon):
    return "".join("ACGT"[(taxon * 7919 + i * 104729 + i * i * taxon) % 4] for i in range(CELLS))


NAMES = [f"tax{t}" for t in range(TAXA)]
ROWS = "\n".join(f"{name} {cells(t)}" for t, name in enumerate(NAMES))
FASTA = "".join(f">{name}\n{cells(t)}\n" for t, name in enumerate(NAMES))
SMALL = "nstates dna; xread 4 5\nv AAAA\nw ACGT\nx ACGG\ny CCGG\nz CCTT\n;\ntread (0 (1 (2 (3 4))))*(0 1 2 3 4);\n"
FILES = {
    "begin.faults": "proc/;\n",
    "small.zeb": SMALL + "proc/;\n",
    "large.zeb": f"nstates dna; xread {CELLS} {TAXA}\n{ROWS}\n;\nproc/;\n",
    "large.fas": FASTA,
    "large.phy": f"{TAXA} {CELLS}\n{ROWS}\n",
    "large.nex": f"#NEXUS\nbegin data;\ndimensions ntax={TAXA} nchar={CELLS};\n"
                 f"format datatype=dna;\nmatrix\n{ROWS}\n;\nend;\n",
    "large.gz": gzip.compress(FASTA.encode(), mtime=0),
    "trees.nwk": "(v,(w,(x,(y,z))));\n(v,w,(x,y,z));\n" * 10,
    "table.txt": "12 34 last\n",
    "runs.run": "quote before; goto there; quote never; label there; quote after; proc/;\n",
}
OLD = "what was there before\n"
DUMP = "report-; quote MEMORY; xread *; tplot *; quit;\n"

READERS = {
    "commands": "proc large.zeb;",
    "fasta": "proc large.fas;",
    "phylip": "proc large.phy;",
    "nexus": "proc large.nex;",
    "gzip": "proc large.gz;",
    "newick": "proc trees.nwk;",
    "compact": "shortread trees.ctf;",
    "hifile": "macro=; hifile open table.txt; var: a; set a hifnumber; set a hifnumber; quote 'a;",
    "run file": "macro=; runs;",
    "view": "view table.txt;",
}
# These drop the former data before the new ones are whole; then there are none, and never a part.
DROP_FORMER_DATA = ("commands", "nexus")
# name: commands, files that they write, whether these hold OLD before
WRITERS = {
    "tsave new": ("tsave *out.tre; save; save 0; tsave/;", ["out.tre"], True),
    "tsave left open": ("tsave *out.tre; save; save 0;", ["out.tre"], True),
    "tsave compact": ("tsave out.ctf; save; save 0; tsave/;", ["out.ctf"], False),
    "tsave in one shot": ("tsave =*out.tre;", ["out.tre"], True),
    "append compact": ("tsave trees.ctf; save; tsave/;", ["trees.ctf"], False),
    "export": ("export &*out.nex;", ["out.nex"], True),
    "export fasta": ("export !out.fas;", ["out.fas"], True),
    "export newick": ("export =out.nwk;", ["out.nwk"], True),
    "figure": ("ttags =; tplot 0; ttags ); ttags &out.svg;", ["out.svg"], True),
    "graph": ("macro=; var: x[3] y[3]; set x[0] 1; set y[1] 2; var ! x y out.svg;", ["out.svg"], True),
    "log": ("log out.log; xread *; log/;", ["out.log"], True),
    "log left open": ("log out.log; xread *;", ["out.log"], True),
    "log appended": ("log +out.log; xread *; log/;", ["out.log"], True),
    "automatic saving": ("tsave !1 *out; quit;", ["out-1"], False),
}
TOLD = re.compile(r"Can't|Cannot|Unexpected|cut off")


class Outcome:
    """What a run left: output with error messages, memory, files."""

    def __init__(self, folder, commands, plan=None):
        mark = folder / "mark"
        mark.unlink(missing_ok=True)
        environment = {"HOME": str(folder), "LC_ALL": "C", "ZEB_FAULT_MARK": str(mark)}
        if plan:
            environment["ZEB_FAULT"] = plan
        before = f"report-; proc small.zeb; proc begin.faults; {commands}"
        try:
            run = subprocess.run([ZEB, before], cwd=folder, env=environment, input=DUMP.encode(),
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT_SECONDS)
        except subprocess.TimeoutExpired:
            sys.exit(f"FAILED {commands} hangs with {plan or 'no fault'}")
        self.raw = run.stdout
        text = re.sub(r"\d+\.\d+ secs?", "", run.stdout.decode("utf-8", "replace"))
        self.output, _, self.memory = text.partition("MEMORY")
        self.told = len(TOLD.findall(self.output)) + len(TOLD.findall(self.memory))
        self.status = run.returncode
        self.happened = mark.exists()
        mark.unlink(missing_ok=True)
        self.files = {p.name: p.read_bytes() for p in folder.iterdir()}

    def memory_of(self):
        """Without messages that came meanwhile."""
        return [line for line in self.memory.split("\n") if line.strip() and not TOLD.search(line)]


def prepare(folder, old_files, compact):
    for name, content in FILES.items():
        (folder / name).write_bytes(content if isinstance(content, bytes) else content.encode())
    (folder / "trees.ctf").write_bytes(compact)
    for name in old_files:
        (folder / name).write_text(OLD)


def scratch():
    """In memory where that can be had: every new file is synchronised."""
    memory = pathlib.Path("/dev/shm")
    return tempfile.TemporaryDirectory(prefix="zeb_faults_", dir=memory if memory.is_dir() else None)


def run(commands, old_files, compact, plan=None):
    with scratch() as name:
        folder = pathlib.Path(name)
        prepare(folder, old_files, compact)
        outcome = Outcome(folder, commands, plan)
        if plan and plan.endswith("kill"):
            outcome.again = Outcome(folder, commands).files
        return outcome


def compact_file():
    with scratch() as name:
        folder = pathlib.Path(name)
        prepare(folder, [], b"")
        (folder / "trees.ctf").unlink()
        return Outcome(folder, "tsave =trees.ctf;").files["trees.ctf"]


def plans():
    for kind in ("open", "read", "sync", "close", "rename", "remove", "truncate"):
        yield kind, "fail"
    yield "write", "fail"
    yield "write", "short"
    yield "any", "kill"


def is_allowed(content, old, good, grows):
    """A file as it was, or as it is to be, or, where it grows under its name, the first part of that."""
    if content in (old, good):
        return True
    return grows and bool(content) and good.startswith(content.removesuffix(b";\nproc/;\n"))


def faults_of(name, commands, outputs, had_old, compact):
    """Runs one scenario; yields what is wrong with it."""
    old_files = outputs if had_old else []
    untouched = run("", old_files, compact)
    good = run(commands, old_files, compact)
    if good.told:
        yield f"{name}: the good run fails: {good.output[-300:]}"
        return
    tried = 0
    for kind, manner in plans():
        for number in range(1, MOST_CALLS + 1):
            plan = f"{kind}:{number}:{manner}"
            bad = run(commands, old_files, compact, plan)
            if not bad.happened:
                break
            tried += 1
            told = bad.told > 0
            killed = manner == "kill"
            for output in outputs:
                old = untouched.files.get(output)
                if not is_allowed(bad.files.get(output), old, good.files[output], grows_in_place(name)):
                    yield f"{name}, {plan}: {output} is neither the old file nor the new one"
            left = [f for f in bad.files if f.startswith(".zeb-")]
            if left and not killed:
                yield f"{name}, {plan}: {left} is left"
            if killed:
                if any(f.startswith(".zeb-") for f in bad.again):
                    yield f"{name}, {plan}: the next run doesn't clear what was left"
                continue
            if not told and (bad.output != good.output or bad.memory != good.memory or
                             bad.files != good.files):
                yield f"{name}, {plan}: something is lost in silence: {bad.output[-300:]}"
            if b"Cannot read the standard input" in bad.raw:
                if bad.status != 255:
                    yield f"{name}, {plan}: the exit status doesn't tell of commands that weren't read"
                continue
            dropped = name in DROP_FORMER_DATA and "Must read data before writing it" in bad.memory
            if told and not dropped and bad.memory_of() not in (good.memory_of(), untouched.memory_of()):
                yield f"{name}, {plan}: what is in memory was changed: {bad.output[-300:]} {bad.memory[:300]}"
    print(f"{name}: {tried} faults")


def grows_in_place(name):
    return name.startswith(("tsave left", "append", "log", "tsave new", "tsave compact"))


def main():
    compact = compact_file()
    failures = []
    for name, commands in READERS.items():
        failures += faults_of(name, commands, [], False, compact)
    for name, (commands, outputs, had_old) in WRITERS.items():
        failures += faults_of(name, commands, outputs, had_old, compact)
    for failure in failures:
        print("FAILED", failure)
    return 1 if failures else 0


sys.exit(main())
