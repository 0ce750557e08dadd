#!/usr/bin/env python3
"""Jobs of real tasks: what they bring back and how they are steered. Usage: parallel_test.py --zeb PROGRAM
--mode local|mpi|pvm"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

from job_processes import environment, start_daemon, stop_daemon, tasks_left, wait_until

MATRIX = pathlib.Path(__file__).resolve().parents[2] / "examples" / "beetles.xread"
BEST = "121"
SHORT = 60  # seconds that no run may need

options = None
faults = []


def check(ok, what, output=""):
    if not ok:
        faults.append(what)
        print("FAILED:", what, "\n" + output[-3000:])


def script(text):
    return f"report-; proc {MATRIX};\nhold 1000; pzeb {options.mode};\npzeb commtime 1;\n{text}\nquit;\n"


def start(text, where):
    (pathlib.Path(where) / "x.run").write_text(script(text))
    (pathlib.Path(where) / "y.run").write_text("quote of a file; return 1; quote not read;")
    return subprocess.Popen([options.zeb, "--batch", "x.run"], cwd=where, env=environment(), text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, errors="replace")


def run(text):
    with tempfile.TemporaryDirectory() as where:
        process = start(text, where)
        try:
            return process.communicate(timeout=SHORT)[0]
        except subprocess.TimeoutExpired:
            process.kill()
            return process.communicate()[0] + "\n(timed out)"


def expect(text, *patterns):
    output = run(text)
    for pattern in patterns:
        check(re.search(pattern, output, re.S), f"{pattern!r} in the output of {text!r}", output)


def refused_jobs_leave_no_tasks():
    """What is refused after tasks have started."""
    lines = "tread (0 1 2 3); tgroup =0 0;\npzeb begin a 3 /trees * = return;\npzeb get;\nquit;\n"
    with tempfile.TemporaryDirectory() as where:
        output = subprocess.run([options.zeb], input=script("").replace("quit;\n", lines), cwd=where, env=environment(),
                                text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, errors="replace",
                                timeout=SHORT, check=False).stdout
    check(re.search(r"more tasks than tree groups.*no parallel job is running", output, re.S) and wait_until(lambda: not tasks_left(), 5),
          "a refused job leaves no tasks", output)


def results_come_back():
    expect("pzeb begin a 2 = mult=replications 2; return trees text value 7; pzeb wait; pzeb get;"
           "macro=; set 0 pexstatus[a 1]; quote value '0'; length; tgroup;",
           r"Spawned job", r"all jobs monitored finished", r"Received data \(40 chars x 18 taxa\)",
           r"Got results from a \(2 slave tasks\)", r"value 7", BEST, r"Task_0_a", r"Task_1_a")
    expect("pzeb begin a 2 = mult=replications 100000; return; pzeb wait [3]; pzeb get !; length;",
           r"time is out", r"Got results from a \(2", BEST)
    expect("pzeb begin a 2 = mult=replications 1; return; pzeb wait;"
           "pzeb again a 1 /deltrees = quote once more; return text; pzeb wait; pzeb get;",
           r"new set of instructions.*once more", r"Got results")
    expect("pzeb begin a-b:c#d 1 = return; pzeb again a-b:c#d = quote first; return text; pzeb again a-b:c#d = quote second; return text; pzeb get;"
           "pzeb begin a 1 = mult=replications 300; return; pzeb again a = quote third; return text; pzeb get; quote the end;",
           r"first\n.*second\n.*from a-b:c#d.*third\n.*the end")
    expect("pzeb begin j1 1 = return value 1; pzeb begin j10 1 = return value 10; pzeb wait; pzeb get j1; pzeb status; pzeb get j1;",
           r"from j1 \(1.*returned 1\s.*Job \d \(j10\).*from j10 \(1.*returned 10\s")
    expect("hold 20; randtrees 15; pzeb begin a 2 = randtrees 3; return; pzeb wait; pzeb get; quote there are;",
           r"Got results from a \(2 slave tasks\)\s+(?!.*were lost)")
    settings = "piwe=4; ccode ] 3 5 /3 8; outgroup 2; taxcode - 7; collapse 3; subopt 1;"
    for what in ("length 0", "length", "ccode", "outgroup"):
        own = run(f"{settings} tread (0 1 (2 (3 (4 (5 (6 (8 (9 (10 (11 (12 (13 (14 (15 (16 17)))))))))))))))); {what};")
        theirs = run(f"{settings} tread (0 1 (2 (3 (4 (5 (6 (8 (9 (10 (11 (12 (13 (14 (15 (16 17))))))))))))))));"
                     f"pzeb begin a 1 = {what}; return text; pzeb wait; pzeb get;")
        lines = [line for line in own.splitlines()[-12:] if re.search(r"\d", line)]
        missing = [line for line in lines if line.strip() not in theirs]
        check(not missing, f"settings reach the tasks: {what} {missing}", own + theirs)


def all_settings_travel():
    """What commands say of settings that differ from the defaults, here and in a task."""
    shown = "sectsch:; rebuild:; resample:; xmult:; drift:; nstates; tables; subopt; piwe; xpiwe; xpiwe *; piwe &0; scores;"
    for settings in (
            "sectsch:xss 4-6+3-2 dss 19 3 rss selfactor = 3 2 noglobal global 7 slack 5 noxbuffer [mult 1;] [*]; rebuild:clip 3-5;"
            "resample:jak probability 20 cut 60; resample:boot gc freq; tables =; tables /3;",
            "resample:jak probability 20; resample:sym probability 30 nozerowt; xmult:level 5; xmult:hybrid x3 chklevel - 4 css nofuse; sectsch:global 10;"
            "nstates gaps noxmin [ /dna; subopt 0.0000001x1234567.25; drift:fitdiff 0.00000125; sectsch:dss 19 3;",
            f"piwe =; proc {MATRIX}; piwe<2; xpiwe[ 0.5; xpiwe/2x0.123456789 6 7; xpiwe(8.12/3.123456789;",
            f"piwe =; proc {MATRIX}; xpiwe(*0.123456789<4; xpiwe -; piwe[ 1 0.333333333; piwe -;"):
        start = f"{settings} hold 100; tread (0 (1 (2 (3 (4 (5 (6 (7 (8 (9 (10 (11 (12 (13 (14 (15 (16 17)))))))))))))))));"
        own = run(f"{start} quote OWN; {shown}").partition("OWN")[2]
        theirs = run(f"{start} pzeb begin a 1 = {shown} return text; pzeb wait; pzeb get;").partition("TASK 0")[2]
        missing = [line for line in own.splitlines() if line.strip() and line not in theirs.splitlines()]
        check(own.count("\n") > 40 and not missing, f"settings reach the tasks: {settings} {missing}", own + theirs)


    expect("macro -; hifile =7; macro =; ccode ] 3; ckeep; ccode [ 3 /2 5; mxproc 15; naked -; lquote [; majority =70; freqdifs =30; nelsen <; txtsize 300; tplot ++; agroup =1 (some) 3.5; tshrink {1};"
           "macro =; set +; help >0.9; nstates dna; ttags [ 40b; hold 100/50; travtree = 9; tread (0 1 2 (3 4 5) (6 7));"
           "pzeb begin a 1 = report =; mxproc; naked; quote a&65b; majority; freqdifs; txtsize; tshrink; help !; nstates; tvault;"
           "ccode !; ccode; macro -; hifile =; macro =; return text; pzeb wait; pzeb get;",
           r"files is 15.*Naked is OFF.*aAb.*cut 70.*cut 30.*300 Kb.*shown as one terminal: some.*threshold=0.90.*read as DNA.*max. storage 50"
           r".*\n +3 +additive +inactive +1 .*\n +5 +nonadditive +active +1 .*input files is 7")


def tasks_are_steered():
    expect("pzeb begin a 2 = mult=replications 1; frobnicate; mult; return; pzeb wait; macro=;"
           "set 0 numerrors[a]; quote errors '0'; pzeb get;", r"errors 2", r"Got results from a \(2.*ended at an error: 0 1\s+Unknown command: frobnicate")
    expect("pzeb begin a 1 = mult=replications 100000; quote skipped; tagset 2; quote reached; return text;"
           "pzeb wait [2]; pzeb skipto 2 a; pzeb stop [searches]; pzeb wait; pzeb get;",
           r"mandated not to do more.*reached")
    expect("pzeb begin a 1 = loop 1 3 mult=replications 100000; stop loop 1 2 tagset 2; quote in a loop; stop quote between;"
           "tagset 2; quote after loops; return text; pzeb wait [2]; pzeb skipto 2; pzeb stop [searches]; pzeb wait; pzeb get;",
           r"mandated not to do more(?!.*(in a loop|between)).*after loops")
    expect("macro=; var: x y[2]; pzeb begin a 2 = var: q; set q slavenum+10; return; pzeb wait;"
           "slaveget [a] y q; quote got 'y[0]' 'y[1]'; slaveset [a 0] q 77; slaveget [a] x + q; quote sum 'x';",
           r"got 10 11", r"sum 88")
    expect("macro=; var: x m[3,2]; pzeb begin a 2 = var: i r[2]; set i slavenum; set r[0] 5; set r[1] slavenum+7; return; pzeb wait;"
           "slaveget [a 1] x r[\"i\"]; slaveget [a] m r; quote got 'x' 'm[1,1]'; slaveget [a 0] x r;",
           r"got 8 8.*syntax error in task 0")
    expect("macro=; var: x; pzeb begin a 1 = var: q; set q 3; loop 1 1000000 randtrees 1; keep 0; stop return; pzeb wait [2]; slaveset [a] q 8;"
           "pzeb wait [3]; slaveget [a 0] x q; quote got 'x'; pzeb get !;", r"got 8.*Got results from a \(1")
    expect(f"pzeb begin a 2 = pzeb {options.mode}; pzeb begin b 2 = mult=replications 1; return;"
           "pzeb wait; pzeb get; return trees text; pzeb wait; pzeb get; length;",
           r"Got results from b \(2.*Got results from b \(2.*Got results from a \(2", BEST)
    expect("mult=replications 1 hold 1; pzeb begin s 3 /sector *3 0 = bbreak; return; pzeb wait; pzeb get; length;",
           r"Combined results from sectors in tree 1", r"0 \| 12\d 12\d")
    expect("macro=; randtrees 3; pzeb begin s 1 /sector 8 2 = mult=replications 1; return; pzeb wait; set 0 bestscore[s]; set 1 length[2]-deltascore[s];"
           "pzeb get; set 2 length[3]; quote same '0' '1' '2';", r"same (\d+) \1 \1\s")
    expect("macro=; randtrees 1; pzeb begin s /sector *3 0 [1] = var: t n v[40]; set v biginsect; set t bigntax;"
           "set n nodtosect[\"v[0]\"]; quote tracked \"t\" \"n\"; ccode (0; return text; pzeb wait; pzeb get;",
           r"tracked 17 \d.*sankoff status of the characters cannot change")
    polytomies = "tread (0 (1 2 10 (11 14 (15 8) 9) (12 13 (6 7 16 17 5 (3 4))))); outgroup 5; outgroup 0;"
    for sizes, taxa in ((">1 <3", 6), (">2 <5", 11), (">3 <5", 9), (">1 <9", 18)):
        expect(f"{polytomies} pzeb begin s /sector !19 {sizes} 0 = mult=replications 2; return text; pzeb wait; pzeb get; scores;",
               rf"40 chars x {taxa} taxa.*0 \| 172 1[2-5]\d")
    if options.mode == "pvm":
        expect("macro=; pzeb hgroup =3 (own) myself; set 0 isinhgroup[3 0]; quote host is '0' $hgroup 3;"
               "pzeb begin a 2 {own} = mult=replications 100000; return; pzeb hpause {own}; pzeb wait [2];"
               "pzeb hresume 0; pzeb begin b 1 0(2) = macro=; set 0 isinhgroup[3 0]; return value (50 + \"0\");"
               "pzeb stop a; pzeb wait; pzeb get b; pzeb get a;",
               r"host is 1 own", r"paused all tasks in 1 host\(s\)", r"resumed all tasks in 1 host\(s\)",
               r"reset to the sum \(2\)", r"Task 1 returned 51", r"Got results from a \(2")
    else:
        expect("pzeb hgroup;", r"this command is not available in")
    expect("mult=wagner replications 1 hold 1; pzeb begin s /sector *3 0 [1] = mult; return; pzeb wait; pzeb get; tgroup;"
           "pzeb begin t /sector *3 0 [1] = mult; return nopolytree; pzeb wait; pzeb get; tgroup;",
           r"\(TreeSector_0_s\): 1 2\b.*\(TreeSector_0_t\): 3\s")
    expect("macro=; set 0 1; pzeb begin a 1 = macro=; set 0 5; quote of master '0' of task \"0\"; return text; pzeb gwait;"
           "", r"of master 1 of task 5")
    expect("pzeb begin a 1 = mult=replications 100000; quote not reached; return text; pzeb wait [2]; pzeb stop; pzeb wait; pzeb get;",
           r"TEXT-BUFFER FROM TASK 0:(?!.*not reached)")
    expect("pzeb begin a 1 = macro=; loop 1 100 mult=replications 1000; stop loop 1 2 quote not run; stop quote the end; return text;"
           "pzeb wait [2]; pzeb stop [loops searches]; pzeb wait; pzeb get;",
           r"TEXT-BUFFER FROM TASK 0:(?!.*not run).*the end")
    expect("pzeb begin a 1 = randtrees 1; return; pzeb begin b 1 = randtrees 2; return; pzeb wait .; pzeb get 0.20;"
           "pzeb begin a 1 = return; pzeb get; tgroup;",
           r"Group 0 \(Task_0_a\): 3 4 5\s+Group 1 \(Task_0_b\): 1 2\s+Group 2 \(PreviousTrees\): 0 1 2\s")
    expect("pzeb begin a 1 = quote first; return text; pzeb wait; pzeb again a = ...; return; pzeb gwait; quote goes on;",
           r"first.*will be repeated.*first.*goes on")
    again = "pzeb goto 2; pzeb wait; pzeb wait;" * 3
    expect(f"macro=; pzeb begin a 1 = set 5 0; frobnicate; tagset 2; set 5 ++; quote at \"5\"; return text; pzeb wait; {again} pzeb get;",
           r"at 1\nat 2\nat 3\n(?!.*at an error)")
    expect("pzeb begin a 2 = mult=replications 100000; quote not run; return text; pzeb stop; pzeb gwait;"
           "pzeb begin b 1 = mult=replications 100000; quote not run; return text; pzeb pause; pzeb stop; pzeb gwait;",
           r"from a \(2 slave tasks\)(?!.*(not run|at an error)).*from b \(1 slave")
    expect("pzeb begin a 1 = proc y.run; log z.txt; quote written; log/; pzeb begin b 1 = proc y.run; return text;"
           "pzeb gwait; return text; pzeb gwait; system cat z.txt;",
           r"of a file\n.*of a file\n.*Got results from a(?!.*not read).*written")
    expect(f"pzeb begin a 1 = return; pzeb get; pzeb pvm; pzeb mpi; pzeb local; pzeb {options.mode}; pzeb begin a 1 = pzeb be b 1 ="
           "quote below; return text; pzeb gwait; return text; pzeb gwait;", r"below.*from a \(1 slave")
    expect("pzeb begin a 1 = tagset 3; return; pzeb wait; pzeb again a = quote skipped; tagset 2; quote run at once; return text;"
           "pzeb skipto 2; pzeb get;", r"set of instructions(?!.*skipped).*run at once")
    expect("macro=; pzeb begin a 2 = return value (slavenum+4); pzeb wait; set 0 pexstatus[a 1]; quote value '0'; pzeb again a = system sleep 2; return;"
           "set 0 pexstatus[a 1];", r"value 5\n.*task 1 of job a returned no value")
    seeds = re.findall(r"Random seed is (\d+)", run("".join(
        f"{seed} pzeb begin a 2 = rseed; return text; pzeb get;" for seed in ("rseed 5;", "", "rseed 5;", "rseed 6;"))))
    check(len(set(seeds)) == 6 and seeds[:2] == seeds[4:6], f"seeds of tasks follow the user's: {seeds}")
    expect("pzeb begin a 1 = return value; pzeb gwait;", r'"return value" needs a number')
    expect(f"pzeb begin a 1 = macro=; pzeb {options.mode}; loop 1 3 system sleep 1; stop randtrees 1; ratchet=iterations 100000;"
           "quote searched; pzeb begin b 1 = return value 5; pzeb gwait; return text; pzeb stop [searches]; pzeb gwait;",
           r"not to do more searches.*searched.*Task 0 returned 5")
    expect("pzeb begin a 2 = mult=replications 100000; return; pzeb wait [2];", r"time is out(?!.*timed out)")
    expect("loop 1 2 pzeb begin a 1 = mult=replications 100000; return; pzeb stop; pzeb get; quote round #1; stop quote the end;",
           r"round 1\n.*round 2\n.*the end")
    expect(f"pzeb begin a 1 = pzeb {options.mode}; mult=replications 100000; pzeb begin b 1 = tagset 2; quote wrong; return text; pzeb stop; tagset 2;"
           "quote right; return text; pzeb wait [2]; pzeb skipto 2; pzeb stop [searches]; pzeb gwait;", r"mandated(?!.*wrong).*right")
    expect("macro=; var: x; set 2 50; pzeb begin a 1 = mult=replications 100000; return; loop 50 50 pzeb wait [9] ('2'==#1); stop pzeb get !;",
           r"condition is fulfilled")
    expect("log z.run; quote label exit.,quote exit script.,proc/.,; log/;"
           "pzeb begin a 1 = var: i; set i 0; label up; set i ++; quote round \"i\"; if (\"i\"<2) goto myself up; end"
           " goto [ z.run exit; frobnicate; return text; pzeb gwait;",
           r"round 1\nround 2\n(?!round).*exit script\n.*ended at an error: 0")
    expect("randtrees 1; pzeb begin a 2 = macro=; if (slavenum==1) keep 0; xread 1 4 a 0 b 0 c 1 d 1;; randtrees 1; end return; pzeb get; tgroup;",
           r"trees of task 1 of job a are for 4 taxa, not for the current 18(?!.*were lost).*\(Task_0_a\): 1\s+Group 1 \(Prev")
    expect("pzeb begin 2x 1 = return;", r"cannot name parallel jobs starting with a digit")
    expect("pzeb begin x 2000 = return;", r"cannot spawn more than 1000 together")
    expect("pzeb wait;", r"no parallel job is running")
    expect("pzeb begin x 1 = mult;", r"expecting \"return\"")
    expect("pzeb begin x 1 = return; pzeb stop [];", r"specify options wait, loops, searches, or all")


def one_tree_is_swapped_together():
    """The tasks come to a tree that a swap of its own can't improve."""
    for seed, (sign, tasks, settings) in enumerate((("", 3, ""), ("-", 2, "piwe=3;"), ("+", 4, "ccode + 0.20;"), ("+", 1, ""))):
        output = run(f"rseed {seed + 1}; {settings} randtrees 3; pzeb begin a {tasks} /swap {sign}1 = not run; return;"
                     "pzeb wait; pzeb getbufs; pzeb get; tchoose 3; score; bbreak=tbr nomulpars; score;")
        scores = re.findall(r"^ *0 \| +([\d.]+)$", output, re.M)
        check(len(scores) == 2 and scores[0] == scores[1] and "Parallel TBR of one tree" in output,
              f"{tasks} tasks swap one tree with /swap {sign}1: {scores}", output)
    expect("randtrees 1; pzeb begin a 3 = mult 1; return; pzeb wait; pzeb again a /swap 0 = return; pzeb wait;"
           "pzeb again a /deltrees /swap 0 = return; pzeb wait; pzeb get; length;", r"Got results from a \(3", BEST)
    expect("randtrees 1; pzeb begin a 2 /swap 1 = return;", r"cannot swap tree 1 \(only 1 trees in memory\)")
    expect("randtrees 1; pzeb begin a 2 /swap 0 /sector *2 0 = return;", r"can't use \"swap\" and \"sector\" together")


def data_are_refused():
    """By tasks whose file of data isn't the right one, or whose memory is too small: they tell so, and do nothing else."""
    files = {"junk": ("nothing\n", "wrong file"), "characters": ("41 18 2\n", "char. number"), "taxa": ("40 17 2\n", "tax. number"),
             "cells": ("40 18 4\n", "cell size"), "cut": ("40 18 2\nxread 40 18 a 0", "not enough RAM allocated"),
             "absent": (None, "opening file"), "nowhere": (None, "changing dir")}
    goes_on = "quote it goes on; return text; pzeb wait; set 0 numerrors[a]; quote errors '0';"
    with tempfile.TemporaryDirectory() as where:
        text = f"macro=; pzeb setdata myself {where}; pzeb setdata = {where}; pzeb begin a 2 /dskdata = {goes_on} pzeb get;"
        for name, (content, _) in files.items():
            folder = pathlib.Path(where) / name
            if name != "nowhere":
                folder.mkdir()
            if content:
                (folder / ".zeb_tmpfile").write_text(content)
            text += f"quote CASE {name}; pzeb setdata = {folder}; pzeb begin a 1 /dskdata = {goes_on} pzeb get;"
        output = run(text)
        right, *wrong = output.split("CASE ")
        check(re.search(r"disk data in hosts set.*errors 0.*it goes on.*it goes on.*from a \(2 ", right, re.S), "data come from the disk", output)
        for part, (_, reason) in zip(wrong, files.values()):
            check(reason in part and re.search(r"errors 1\s.*TEXT-BUFFER.*ended at an error: 0\s", part, re.S) and "it goes on" not in part,
                  f"wrong data on disk: {reason}", part)
        check(len(wrong) == len(files), "all files of data are tried", output)
    again = f"pzeb again a = {goes_on}"
    for settings, option in (("", "/ram 0.01"), ("pzeb setram 1; hold 30000;", "")):
        output = run(f"macro=; {settings} randtrees 2; pzeb begin a 2 {option} = {goes_on} {again} pzeb get;"
                     f"pzeb setram -; pzeb begin a 1 /ram 0.01 = {goes_on} pzeb kill a; pzeb status;")
        check(re.search(r"errors 2\s.*errors 2\s.*not enough RAM allocated.*from a \(2 .*ended at an error: 0 1\s.*errors 1\s.*Killed 1.*No jobs", output, re.S)
              and "it goes on" not in output, f"little memory: {settings}{option}", output)


def functions_tell_of_tasks():
    """Of one that is done, one that was killed, one that is stopped, and one with an error."""
    values = {"schalg[a 0]": 9, "schalg[a 1]": 0, "schalg[a 2]": -1, "schalg[a 3]": 9, "schalg[a]": 9, "percdone[a 0]": 100,
              "percdone[a 1]": 100, "percdone[a 2]": 0, "percdone[a]": 75, "tasksleft[a]": 1, "numerrors[a]": 1, "numtasks[a]": 4,
              "bestscore[a 0]": 121, "bestscore[a 2]": -1, "bestscore[a]": 121, "numreps[a 0]": 2, "numreps[a 1]": 0, "numreps[a]": 2,
              "numtrees[a 2]": 0, "numtrees[a 3]": 1, "tagsum[a]": 8, "attag[2 a 1]": 1, "attag[2 a 2]": 0, "attag[9 a]": 3,
              "ntasksbelow[a 121]": 1, "ntasksbelow[a 120]": 0, "tasksatsch[a done]": 2, "tasksin[0]": 3, "acttasks": 3, "numjobs": 1,
              "tasktoh[a 2]": 0, "deltascore[a]": 0, "waitsuccess": 0}
    asked = "".join(f"set 0 {what}; quote {what} is '0';" for what in values)
    output = run("macro=; randtrees 1; pzeb timeout 2; pzeb begin a 4 = macro=; tagset 4; set 1 mypid; if (slavenum==1) system kill -KILL \"1\"; end"
                 " if (slavenum==2) system kill -STOP \"1\"; end if (slavenum==3) frobnicate; end keep 0; mult=replications 2; return value 7;"
                 f"pzeb wait [4]; {asked} pzeb get; set 0 pexstatus[a 0]; quote value '0';")
    told = {what: float(value) for what, value in re.findall(r"^(.*) is (-?\d\S*) *$", output, re.M)}
    wrong = {what: told.get(what) for what, value in values.items() if told.get(what) != value}
    check(not wrong, f"functions tell of tasks: {wrong}", output)
    check(re.search(r"from a \(2 .*died: 1\s.*error: 3\s.*results from 1 tasks \(timed-out\).*value 7", output, re.S), "get tells of tasks", output)


def tasks_are_as_safe_as_their_master():
    with tempfile.TemporaryDirectory() as where:
        (pathlib.Path(where) / "x.run").write_text(
            "pzeb local; xread 1 4 a 0 b 0 c 1 d 1;;"
            "pzeb begin a 1 = system touch written; return text; pzeb wait; pzeb get; quit;")
        done = subprocess.run([options.zeb, "--safe", "--batch", "x.run"], cwd=where, capture_output=True,
                              text=True, timeout=SHORT, check=False)
        check("forbidden in safe mode" in done.stdout and not (pathlib.Path(where) / "written").exists(),
              "a task of a safe run starts no shell", done.stdout + done.stderr)


def main():
    global options
    parser = argparse.ArgumentParser()
    parser.add_argument("--zeb", required=True, type=lambda p: str(pathlib.Path(p).resolve()))
    parser.add_argument("--mode", choices=("local", "mpi", "pvm"), default="local")
    options = parser.parse_args()
    if options.mode == "pvm" and not start_daemon():
        sys.exit("the daemon doesn't start")
    try:
        refused_jobs_leave_no_tasks()
        results_come_back()
        all_settings_travel()
        tasks_are_steered()
        one_tree_is_swapped_together()
        data_are_refused()
        functions_tell_of_tasks()
        if options.mode == "local":
            tasks_are_as_safe_as_their_master()
    finally:
        if options.mode == "pvm":
            stop_daemon()
    print(f"{options.mode}: {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
