"""Other programs that read what we write, where they are installed."""

import shutil
import subprocess
import sys


def installed_readers(dendropy_code, ape_code):
    """Name and command of each; the command is None where the program isn't there."""
    pythons = dict.fromkeys([sys.executable, shutil.which("python3", path="/usr/bin") or sys.executable])
    found = [p for p in pythons if subprocess.run([p, "-c", "import dendropy"], capture_output=True).returncode == 0]
    yield "DendroPy", [found[0], "-c", dendropy_code] if found else None
    r = shutil.which("Rscript")
    has_ape = r and subprocess.run([r, "-e", "library(ape)"], capture_output=True).returncode == 0
    yield "ape", [r, "-e", ape_code] if has_ape else None
