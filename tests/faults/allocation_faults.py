#!/usr/bin/env python3
"""Makes allocations fail, one after the other, of the system and of the arena, and memory run out.

Each command is run once as it should go, and then with the n-th allocation failing (see planned_fault.h).
The program must tell it and go on: data, trees and settings are as they were, or as the command would have
made them; a file that was there before is the old one or the new one. Where new data were to come the old
ones may be gone; trees that were read or found before the failure may be there.

A part of the allocations is tried; `--long` tries them all, and names of commands only those.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ZEB = pathlib.Path(sys.argv[1]).resolve()
LONG = "--long" in sys.argv
CHOSEN = [name for name in sys.argv[2:] if not name.startswith("--")]
JOBS = os.cpu_count() if LONG else 1

TAXA = [f"a_long_name_of_a_taxon_{t}" for t in range(9)]
ROWS = "\n".join(f"{name} " + "".join("ACGT"[(t * 7 + i * 5 + i * t) % 4] for i in range(40)) for t, name in enumerate(TAXA))
FILES = {
    "begin.faults": "proc/;\n",
    "end.faults": "proc/;\n",
    "before.zeb": """mxram 4; nstates dna; xread 'a title for the data, of some length' 8 6
a_taxon_with_a_long_name AAAAACGT\nw ACGTTTGA\nx ACGGTCGA\ny CCGGTCAA\nz CCTTAAAA\nzz CCTTAAGG\n;
cnames {0 a_character_of_a_long_name a_state_of_a_long_name another; ; ccode + 3; ccode ] 5; outgroup 1; hold 50; rseed 5;
agroup =0 (a_group_of_long_name) 1 2; tread (0 (1 (2 (3 (4 5)))))*(0 (5 (1 (2 (4 3))))); ttags=; tplot 0; ttags-; proc/;
""",
    "new.zeb": f"nstates dna; xread 40 9\n{ROWS}\n;\nproc/;\n",
    "new.fas": ">" + ROWS.replace("\n", "\n>").replace(" ", "\n") + "\n",
    "new.phy": f"9 40\n{ROWS}\n",
    "new.nex": f"""#NEXUS
begin taxa; dimensions ntax=9; taxlabels {' '.join(TAXA)}; end;
begin characters; title 'some characters'; dimensions nchar=40; format datatype=dna;
charstatelabels 1 a_character_of_a_long_name / one_state two_states; matrix\n{ROWS}\n;\nend;
begin sets; charset some_of_these_characters = 1-20; taxset some_of_these_taxa = 1 2; end;
begin assumptions; typeset * types = ord: 3-5; wtset * weights = 2: 7-9; end;
begin trees; tree one = ((1:1,2:2)90:1,(3,(4,5)),(6,(7,(8,9)))); end;
""",
    "trees.nwk": "(a_taxon_with_a_long_name,(w,(x,(y,(z,zz)))));\n" * 3,
    "script.run": "macro=; var: numbers[3 4] one; set one 5; loop 0 2 set numbers[#1 1] #1*2; stop; "
                  "set 1 $dataset; quote $1 'numbers[2 1] 'one; proc/;\n",
}
OLD = "what was there before\n"
SHOWN = "info; xread*; ccode; cnames*; taxcode|; agroup*; xgroup*; blocks*; outgroup; rseed; hold; collapse; ttags/; quote TREES; tplot*; quote NEXT; mult=replications 1; length;"
TOLD = re.compile(r"Can't|Cannot|ot enough memory|out of ram|Auto-saving")
ALL, NEW_DATA, TREES = "all or nothing", "or without data", "trees may be more"
# name: commands, what may have changed, a file that is written
COMMANDS = {
    "matrix": ("proc new.zeb;", NEW_DATA, None),
    "fasta": ("proc &new.fas;", NEW_DATA, None),
    "phylip": ("proc !new.phy;", NEW_DATA, None),
    "nexus": ("proc new.nex;", NEW_DATA, None),
    "newick": ("proc [trees.nwk;", TREES, None),
    "tread": ("tread (0 (1 2) (3 4 5))*(0 (1 (2 3)) 4 5);", TREES, None),
    "script": ("script;", ALL, None),
    "settings": ("ccode - 0.3 [ 5 + 1.2;", ALL, None),
    "names": ("cnames {1 another_name_of_a_character a_state_of_it;  ;", ALL, None),
    "groups": ("agroup =1 (another_group_of_long_name) 3 4;", ALL, None),
    "shuffle": ("xperm;", ALL, None),
    "reroot": ("reroot;", ALL, None),
    "condense": ("tzert;", ALL, None),
    "prune": ("pruntax 0 1/3;", ALL, None),
    "more room": ("hold 500;", ALL, None),
    "random trees": ("randtrees 5;", TREES, None),
    "search": ("mult=replications 2;", TREES, None),
    "swap": ("bbreak;", TREES, None),
    "ratchet and drift": ("mult=replications 1 ratchet drift;", TREES, None),
    "fusing": ("tfuse;", TREES, None),
    "exact search": ("ienum;", TREES, None),
    "consensus": ("majority*;", ALL, None),
    "values": ("scores; length; cscores; chomo;", ALL, None),
    "tree file": ("tsave *out; save; tsave/;", ALL, "out"),
    "tree file at exit": ("tsave *out; save; quit;", ALL, "out"),
    "export": ("export out;", ALL, "out"),
    "figure": ("ttags=; tplot 0; ttags); ttags &out;", ALL, "out"),
    "automatic saving": ("tsave !1 *auto; mult=replications 1; quit;", TREES, None),
}


def scratch():
    return tempfile.TemporaryDirectory(prefix="zeb_memory_", dir="/dev/shm" if os.path.isdir("/dev/shm") else None)


class Outcome:
    def __init__(self, command, output, plan=None):
        with scratch() as name:
            folder = pathlib.Path(name)
            for file, content in FILES.items():
                (folder / file).write_text(content)
            if output:
                (folder / output).write_text(OLD)
            mark = folder / "mark"
            text = f"{command}\nproc end.faults;\nquote MEMORY;\n" + SHOWN.replace("; ", ";\n") + "\nquit;\n"
            environment = {"HOME": name, "LC_ALL": "C", "ZEB_FAULT_MARK": str(mark), **({"ZEB_FAULT": plan} if plan else {})}
            run = subprocess.run([ZEB, "report-; proc before.zeb; proc begin.faults;"], cwd=folder, env=environment,
                                 input=text.encode(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300)
            self.status = run.returncode
            self.text = re.sub(r"\d+\.\d+ secs?", "", run.stdout.decode("utf-8", "replace")).replace(name, "")
            self.said, _, memory = self.text.partition("MEMORY")
            self.memory, _, trees = memory.partition("TREES")
            self.trees = trees.partition("NEXT")[0]
            self.told = bool(TOLD.search(self.text))
            self.happened = mark.exists()
            self.files = {f.name: f.read_bytes() for f in folder.iterdir() if f != mark}

    def rows(self):
        return re.findall(r"^\w+ +[ACGTacgt]+$", self.memory, re.MULTILINE)


def wrong_with(bad, good, before, changes, output):
    """What is wrong with a run; empty if nothing."""
    if bad.status != good.status and not (bad.status == 255 and bad.told):
        return f"ends with {bad.status}"
    if "nternal error" in bad.text:
        return "shows an internal error"
    if any(f.startswith(".zeb-") for f in bad.files):
        return "leaves a part of a file"
    if not bad.told:
        same = (bad.said, bad.memory, bad.trees, bad.files) == (good.said, good.memory, good.trees, good.files)
        return "" if same else "loses something in silence"
    if output and bad.files.get(output) not in (OLD.encode(), good.files[output], None if good.status else b""):
        # A tree file that was begun holds nothing but whole trees.
        if not good.files[output].startswith(bad.files[output].removesuffix(b";\nproc/;\n")):
            return "leaves neither the old file nor the new one"
    if not good.memory:
        return ""
    if (bad.memory, bad.trees) in ((good.memory, good.trees), (before.memory, before.trees)):
        return ""
    if changes == NEW_DATA and bad.rows() in ([], before.rows(), good.rows()):
        return ""
    if changes == TREES and bad.memory in (before.memory, good.memory) and bad.trees.count("\n(") > 0:
        return ""
    return "changes what is in memory"


def points(happens, tried):
    """The allocations to try: as many as happen, or a part of them."""
    last = 1
    while happens(last):
        last *= 2
    low = last // 2  # happens, if any does
    while last - low > 1:
        middle = (last + low) // 2
        low, last = (middle, last) if happens(middle) else (low, middle)
    return range(1, low + 1) if LONG or low <= tried else sorted({1 + i * (low - 1) // (tried - 1) for i in range(tried)})


def background_faults():
    """Nobody can give the next command there: what was found is saved, and the run ends."""
    for plan in ("new:100:fail", "new:150:full", "arena:40:fail"):
        with scratch() as name:
            folder = pathlib.Path(name)
            for file, content in FILES.items():
                (folder / file).write_text(content)
            commands = "log log; proc before.zeb; randtrees 20; proc begin.faults; mult=replications 3; quote never; quit;"
            run = subprocess.run([ZEB, "bground", commands], cwd=folder, env={"ZEB_FAULT": plan}, stdin=subprocess.DEVNULL,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300)
            saved = "".join(f.read_text() for f in folder.glob("zeb_trees_*.tre"))
            log = (folder / "log").read_text()
            if run.returncode != 255 or b"Not enough memory" not in run.stdout or "\nnever" in log or not saved.endswith(";\nproc-;\n"):
                yield f"background, {plan}: {run.returncode}, {run.stdout!r}, {log[-300:]!r}, {saved!r}"


def main():
    failures = list(background_faults())
    before = Outcome("", None)
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        for name in CHOSEN or COMMANDS:
            command, changes, output = COMMANDS[name]
            good = Outcome(command, output)
            if good.told or "Error" in good.said:
                failures.append(f"{name}: the good run fails: {good.said[-300:]}")
                continue
            tried = 0
            for kind, manner, most in (("new", "fail", 24), ("new", "full", 6), ("arena", "fail", 6)):
                plans = [f"{kind}:{n}:{manner}" for n in
                         points(lambda n: Outcome(command, output, f"{kind}:{n}:{manner}").happened, most)]
                tried += len(plans)
                for plan, bad in zip(plans, pool.map(lambda plan: Outcome(command, output, plan), plans)):
                    what = wrong_with(bad, good, before, changes, output)
                    if what:
                        failures.append(f"{name} {what}, {plan}: {bad.said[-200:]!r}")
            print(f"{name}: {tried} failures of allocations")
    for failure in failures:
        print("FAILED", failure)
    return 1 if failures else 0


sys.exit(main())
