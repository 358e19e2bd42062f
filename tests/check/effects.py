#!/usr/bin/env python3
"""Runs velk itself on the cases: it must end as the findings say, and well on what is near them.
Usage: effects.py VELK"""
import pathlib
import re
import subprocess
import sys
import tempfile

from cases import CASES
from run import make
from world import World

# What velk stops at, or shows by its status at the end.
ENDS = {
    "option-missing", "stray-argument", "value-refused", "output-is-input", "output-unwritable",
    "table-refused", "library-unreadable", "value-blank", "name-short", "insert-missing",
    "insert-zero", "reads-missing", "reads-empty", "reads-not-regular", "gzip-plain-name",
    "compression-unknown", "gzip-damaged", "format-unknown", "assembly-unreadable",
    "assembly-refused", "assembly-compressed",
}
# With what it ends well and finds nothing, or next to nothing.
LOSES = {"cutoff-negative", "library-empty", "gzip-missing", "mate-compression", "nothing-found",
         "no-gaps", "nothing-indexed"}
# What takes more memory than a test should.
TOO_LARGE = {"memory-short", "memory-tight"}


def outcome(velk, change):
    """Whether velk ends with status 0, and how many reads it finds."""
    world = World()
    change(world)
    with tempfile.TemporaryDirectory(prefix="velk-check-") as temporary:
        make(world, pathlib.Path(temporary))
        ended = subprocess.run([velk, *world.arguments()], cwd=temporary, capture_output=True,
                               text=True, errors="replace", timeout=300, check=False)
    found = re.search(r"There are (\d+) reads found", ended.stderr)
    return ended.returncode == 0, int(found[1]) if found else 0


def main(velk):
    velk = str(pathlib.Path(velk).resolve())
    failures = []
    unknown = (ENDS | LOSES | TOO_LARGE) - {finding for finding, *_ in CASES}
    if unknown:
        failures.append(f"no cases: {sorted(unknown)}")
    for finding, spoil, near, *_ in CASES:
        if finding in TOO_LARGE:
            continue
        ends_well, found = outcome(velk, spoil)
        if ends_well == (finding in ENDS):
            failures.append(f"{finding}: velk {'ends well' if ends_well else 'fails'}")
        if ends_well and (found <= 1) != (finding in LOSES):
            failures.append(f"{finding}: velk finds {found} reads")
        ends_well, found = outcome(velk, near)
        if not ends_well or found <= 1:
            failures.append(f"{finding} (near): status 0 is {ends_well}, {found} reads")
    print("\n".join(failures) or f"{len(CASES)} kinds, velk does with each what is said")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
