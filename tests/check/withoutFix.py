#!/usr/bin/env python3
"""Runs velk-run on inputs that velk-check has something to say about: of each kind for which it says
that velk-run needs no fix, the run must find what it finds once that is fixed.
Usage: withoutFix.py VELK-CHECK VELK-RUN"""
import bz2
import lzma
import pathlib
import subprocess
import sys
import tempfile

from cases import CASES, every_pair, file_of, gaps_of, headers, library, outwards, singles
from run import make
from world import LIBRARY, World

WITHOUT_INSERT = library(LIBRARY.replace("avg_ins=300\n", ""))
# With the insert size that is measured.
MEASURED = library(LIBRARY.replace("300", "301"))


def packed_assembly(pack):
    return lambda w: w.files.update({"s.fa": pack(w.scaffold_text().encode())})


def untouched(_):
    pass


# Where it is not the case itself that velk-run takes, or not what is near it that it is like:
# pairs of a World to run on and the World that it must be like.
INSTEAD = {
    "assembly-compressed": [(packed_assembly(bz2.compress), untouched),
                            (packed_assembly(lzma.compress), untouched)],
    "blank-lines": [(file_of("one.fa", lambda w: singles(w) + "\n" + singles(w)),
                     file_of("one.fa", lambda w: singles(w) + singles(w)))],
    "compression-unknown": [(file_of("one.fa", lambda w: lzma.compress(singles(w).encode())),
                             file_of("one.fa", singles))],
    "id-equal": [(headers(">chromo1.1", ">chromo2.1"), untouched)],
    "insert-differs": [(WITHOUT_INSERT, MEASURED)],
    "insert-missing": [(WITHOUT_INSERT, MEASURED)],
    "insert-turns-pairs": [(WITHOUT_INSERT, MEASURED)],
    "insert-zero": [(library(LIBRARY.replace("300", "0")), MEASURED)],
    # With the reads exchanged, both are those of the other mate.
    "orientation-wrong": [(every_pair(outwards), every_pair(lambda pair: pair[::-1]))],
    "gap-placeholder": [(gaps_of([100] * 5), gaps_of([100] * 5))],
}
OPTIONS = {"gap-placeholder": ["--placeholder", "100"]}
# What a folder of files does not have, and an option that is not given.
ELSEWHERE = {"reads-not-regular", "reads-longer"}


def kinds_of(program):
    """What is said of velk-run, by kind."""
    listed = subprocess.run([program, "--list-findings"], check=True, capture_output=True,
                            text=True)
    rows = [row.split(" | ") for row in listed.stdout.splitlines() if row.startswith("| `")]
    return {row[0][3:-1]: row[5].removesuffix(" |") for row in rows if len(row) > 5}


def outcome(program, change, options):
    """Status and message of a run, and its table of the gaps without the names of the scaffolds."""
    world = World()
    change(world)
    with tempfile.TemporaryDirectory(prefix="velk-check-") as temporary:
        folder = pathlib.Path(temporary)
        make(world, folder)
        ended = subprocess.run([program, "s.fa", "--library", "a.lib", "-o", "out", "--quiet",
                                "--no-report", *options], cwd=folder, capture_output=True,
                               text=True, timeout=300, check=False)
        if ended.returncode:
            return f"status {ended.returncode}, {ended.stderr}"
        table = (folder / "out" / "gaps.tsv").read_text(encoding="ascii")
    rows = [line.split("\t") for line in table.splitlines()]
    return [row[:1] + row[2:] for row in rows]


def problems(program, finding, spoilt, fixed):
    found = outcome(program, spoilt, OPTIONS.get(finding, []))
    expected = outcome(program, fixed, OPTIONS.get(finding, []))
    if isinstance(expected, str):
        yield f"{finding}: fixed, {expected}"
    elif sum(int(row[10]) for row in expected[1:]) < 20:
        yield f"{finding}: too few reads to compare"
    elif found != expected:
        yield f"{finding}: {found} for {expected}"
    elif finding == "gap-placeholder" and [row[5] for row in found].count("yes") != 5:
        yield f"{finding}: the gaps count as they are written"


def main(check, run):
    check, run = (str(pathlib.Path(program).resolve()) for program in (check, run))
    said = {finding: text for finding, text in kinds_of(check).items() if text}
    failures = []
    if len(said) < 20 or set(INSTEAD) - set(said):
        failures.append(f"said of {sorted(said)} only")
    compared = 0
    for finding, spoil, near, *_ in CASES:
        if finding not in said or finding in ELSEWHERE:
            continue
        for spoilt, fixed in INSTEAD.get(finding, [(spoil, near)]):
            failures += problems(run, finding, spoilt, fixed)
            compared += 1
    print("\n".join(failures) or f"{compared} inputs, found as if they were fixed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
