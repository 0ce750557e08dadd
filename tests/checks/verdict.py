"""How the checks of the source tree end: they print their faults, one a line, and how many there are."""


def verdict(check, faults, all_well):
    """Prints the faults and what they add up to; returns the exit status."""
    print("\n".join(faults) or all_well)
    if faults:
        print(f"{check}: {len(faults)} faults")
    return 1 if faults else 0
