"""How the checks of the source tree end: they print their faults, one a line, and compare their number with
the one in known_faults.txt. That number may only fall; a check that isn't named there allows none."""

import pathlib

KNOWN = pathlib.Path(__file__).with_name("known_faults.txt")


def known_faults(check):
    lines = KNOWN.read_text(encoding="utf-8").splitlines() if KNOWN.exists() else []
    counts = dict(line.split() for line in lines if line and not line.startswith("#"))
    return int(counts.get(check, 0))


def verdict(check, faults, all_well):
    """Prints the faults and what they add up to; returns the exit status."""
    known = known_faults(check)
    print("\n".join(faults) or all_well)
    if len(faults) > known:
        print(f"{check}: {len(faults)} faults" + (f", {known} were known before" if known else ""))
        return 1
    if len(faults) < known:
        print(f"{check}: {len(faults)} faults; write that number in known_faults.txt in place of {known}")
    return 0
