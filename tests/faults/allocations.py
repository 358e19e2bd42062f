"""Allocations that fail: number n of a small run, alone or with all that follow, for every n."""

import itertools
import os
import tempfile

import runs


def scenarios(bench, short):
    kinds = [(True, True, False), (False, True, True)] if short else \
        itertools.product((False, True), repeat=3)
    return [runs.small(bench, *kind) for kind in kinds]


def one(bench, library, scenario, number, all_after):
    """What became of the run; None when it makes fewer allocations."""
    mark = tempfile.mktemp(dir=bench.folder)
    environment = {"LD_PRELOAD": library, "FAIL_ALLOCATION": str(number),
                   "FAILED_ALLOCATION_MARK": mark}
    if all_after:
        environment["FAIL_ALLOCATIONS_AFTER"] = "1"
    ended = bench.run(scenario, environment=environment)
    if not os.path.exists(mark):
        return None
    os.unlink(mark)
    return bench.judge(scenario, ended), ended


def inject(bench, pool, table, library, short):
    """Numbers 1, 2, ... until a run completes without having met the fault."""
    step = 3 if short else 1
    for scenario, all_after in itertools.product(scenarios(bench, short), (False, True)):
        kind = "allocation n" + (" and all after" if all_after else "")
        for first in itertools.count(1, 16 * step):
            numbers = range(first, first + 16 * step, step)
            outcomes = list(pool.map(
                lambda number: one(bench, library, scenario, number, all_after), numbers))
            for number, outcome in zip(numbers, outcomes):
                if outcome:
                    table.add(kind, "%s, allocation %d" % (scenario.name, number), *outcome)
            if None in outcomes:
                break
