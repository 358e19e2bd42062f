#!/usr/bin/env python3
"""Let the program meet faults of many kinds, and count how its runs end.

    faults.py --velk PATH [--library PATH] [--sanitized] [--short] [--jobs N] [KIND...]

KIND: allocations (needs the library that fails them), calls (needs strace), full,
signals; all of them by default.  A program built with sanitizers is spared those
that the sanitizers' own runtime would meet.  A run that meets a fault must end with status 0
and every byte in place, or with another status and a message.  Exit status 1 when
any run did anything else, hung or crashed, or when no fault was injected.
"""

import argparse
import collections
import concurrent.futures
import os
import signal
import sys

import allocations
import calls
import fulldisk
import interrupts
import runs

KINDS = ("allocations", "calls", "full", "signals")


class Table:
    """How many runs ended in which way, by kind of fault."""

    def __init__(self):
        self.counts = collections.defaultdict(collections.Counter)  # kind -> outcome -> runs
        self.bad = 0

    def add(self, kind, what, outcome, ended):
        self.counts[kind][outcome] += 1
        if outcome in runs.BAD:
            self.bad += 1
            print("%s: %s: %s (status %s)\n    %r" % (outcome, kind, what, ended.status,
                                                     ended.said[-300:]), flush=True)

    def show(self):
        columns = ("faults",) + runs.GOOD + runs.BAD
        width = max(map(len, list(self.counts) + ["kind of fault"]))
        print("  ".join(["kind of fault".ljust(width), *columns]))
        total = collections.Counter()
        for kind, counts in self.counts.items():
            self.show_row(kind.ljust(width), columns, counts)
            total += counts
        self.show_row("all".ljust(width), columns, total)
        return sum(total.values())

    @staticmethod
    def show_row(kind, columns, counts):
        numbers = [sum(counts.values())] + [counts[column] for column in columns[1:]]
        print("  ".join([kind] + [str(number).rjust(len(column))
                                  for number, column in zip(numbers, columns)]), flush=True)


def main():
    parser = argparse.ArgumentParser(description="let velk meet faults")
    parser.add_argument("--velk", required=True, help="the program")
    parser.add_argument("--library", help="the library that fails allocations")
    parser.add_argument("--sanitized", action="store_true", help="it is built with sanitizers")
    parser.add_argument("--short", action="store_true", help="a part of the faults")
    parser.add_argument("--jobs", type=int, default=2, help="runs at a time")
    parser.add_argument("kinds", nargs="*", metavar="KIND", help=", ".join(KINDS))
    options = parser.parse_args()
    kinds = options.kinds or KINDS
    if unknown := set(kinds) - set(KINDS):
        parser.error("unknown kind: " + ", ".join(sorted(unknown)))
    if options.sanitized:
        print("SKIPPED: allocations and calls, the program is built with sanitizers", flush=True)
        kinds = [kind for kind in kinds if kind in ("full", "signals")]
    if "allocations" in kinds and not options.library:
        parser.error("--library is needed to fail allocations")

    # A shell may have started us with SIGINT ignored, which the program would inherit.
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    table = Table()
    bench = runs.Bench(options.velk)
    try:
        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            if "allocations" in kinds:
                allocations.inject(bench, pool, table, os.path.abspath(options.library),
                                   options.short)
            if "calls" in kinds:
                calls.inject(bench, pool, table, options.short)
            if "full" in kinds:
                fulldisk.inject(bench, pool, table, options.short, options.sanitized)
            if "signals" in kinds:
                interrupts.inject(bench, pool, table, options.short)
    finally:
        bench.close()
    injected = table.show()
    print("%d faults, %d of them ended badly" % (injected, table.bad))
    return 1 if table.bad or not injected else 0


if __name__ == "__main__":
    sys.exit(main())
