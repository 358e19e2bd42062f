#!/usr/bin/env python3
"""Inputs larger than the fields of a hash set's entry, than 32 bits, and than any usual line.

    large.py --velk PATH --folder DIR [CASE...]

Makes each input of cases.py in DIR, runs velk on it and compares the reads found, the gap report and
the side files with what they must be.  Prints a table; exit status 1 on any difference.  Takes up to
6 GB of disk; what it makes is deleted at the end of each case.
"""

import argparse
import os
import shutil
import sys

import cases
import run

FOUND = "found.fa"
SCAFFOLDS = "scaffolds.fa"


def arguments(assembly_option):
    return ["-l", "reads.lib", *assembly_option, "-o", FOUND, "-t", "2", "-L", "50"]


def check(case, outcome, report):
    if outcome.wrong:
        return
    run.compare_records(outcome, case.path(FOUND), case.reads.records)
    run.compare_file(outcome, case.path(report), case.assembly.report(case.reads.reads_of_gap))


def outcomes_of(case, name, velk):
    outcome = run.run(velk, name, arguments(("-s", SCAFFOLDS)), case.folder)
    check(case, outcome, SCAFFOLDS + ".gapsinfo")
    for ending, pieces in ((".contig", case.assembly.contig_file()),
                           (".contigPos", case.assembly.position_file())):
        if not outcome.wrong:
            run.compare_file(outcome, case.path(SCAFFOLDS + ending), pieces)
    yield outcome
    if case.has_contig_run:
        os.remove(case.path(FOUND))
        again = run.run(velk, "the same, contigs as input",
                        arguments(("-c", SCAFFOLDS + ".contig")), case.folder)
        check(case, again, ".gapsinfo")
        yield again


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--velk", required=True)
    parser.add_argument("--folder", required=True)
    parser.add_argument("cases", nargs="*")
    options = parser.parse_args()
    makers = {make.__name__: make for make in cases.ALL}
    for name in options.cases:
        if name not in makers:
            parser.error("no case %s; there are %s" % (name, ", ".join(makers)))
    velk = os.path.abspath(options.velk)
    is_well = True
    row = "%-76s  %15s  %7s  %8s"
    print(row % ("Input", "Found/expected", "Seconds", "Peak MB"))
    for make in map(makers.get, options.cases or makers):
        shutil.rmtree(options.folder, ignore_errors=True)
        os.makedirs(options.folder)
        try:
            for outcome in outcomes_of(make(options.folder), make.__doc__, velk):
                print(row % (outcome.name, "%d/%d" % (outcome.found, outcome.expected),
                             "%.1f" % outcome.seconds, "%.0f" % (outcome.peak_bytes / 1e6)))
                for line in outcome.wrong:
                    print("    " + line)
                sys.stdout.flush()
                is_well = is_well and not outcome.wrong
        finally:
            shutil.rmtree(options.folder)
    print("no difference" if is_well else "DIFFERENT")
    return 0 if is_well else 1


if __name__ == "__main__":
    sys.exit(main())
