#!/usr/bin/env python3
"""Makes small changes in velk's sources, one at a time, and looks whether a test fails.

    mutate.py --build FOLDER [--count N] [--seed N] [--jobs N] [--resume] [FOLDER...]

A change exchanges an operator, moves a number by one, negates a condition or a returned truth, or
leaves a statement out. N of them (200) are chosen by the seed, evenly from the folders named (the six of
velk itself). Each is made in a copy of the tree below FOLDER, which is built and tested step by step
until something fails: the unit tests of its folder, the command-line cases and random runs against the
model, and the unit tests of the other folders. A change that the compiler refuses is replaced by another.

Changes that no test can see stand in equivalent.txt, with the reason. The script prints what became of
each change, and a table, and ends with status 1 if one survived that does not stand there. It also keeps
what became of them in FOLDER/outcomes.txt; with --resume it takes those from there that an earlier
run has tried, and goes on behind them.
"""

import argparse
import collections
import concurrent.futures
import pathlib
import queue
import sys
import threading

from changes import chosen
from tree import FOLDERS, Tree

EQUIVALENT = pathlib.Path(__file__).with_name("equivalent.txt")


def equivalents():
    """The changes that no test can see: those of equivalent.txt."""
    known = set()
    for line in EQUIVALENT.read_text().split("\n"):
        if line and not line.startswith(("#", "    ")):
            known.add(line.strip())
    return known


class Outcomes:
    """What became of changes, in a file: a line with outcome, place and test, and one with the change."""

    def __init__(self, path, resumes):
        self.lock = threading.Lock()
        self.known = {}
        if resumes and path.exists():
            lines = path.read_text().split("\n")
            for said, key in zip(lines[::2], lines[1::2]):
                outcome, place, test = said.split(" ", 2)
                self.known[place, key.strip()] = outcome, test
        self.file = path.open("a" if resumes else "w")

    def of(self, change):
        return self.known.get((change.place(), change.key()))

    def add(self, change, outcome, test):
        with self.lock:
            self.file.write(f"{outcome} {change.place()} {test}\n    {change.key()}\n")
            self.file.flush()


def attempts(options):
    """Each change with what becomes of it, in the order of the seed."""
    outcomes = Outcomes(options.build / "outcomes.txt", options.resume)
    trees = queue.Queue()
    for number in range(options.jobs):
        trees.put(Tree(options.build / str(number)))

    def attempt(change):
        if outcomes.of(change) is not None:
            return change, *outcomes.of(change)
        tree = trees.get()
        try:
            outcome, test = tree.outcome(change)
        finally:
            trees.put(tree)
        outcomes.add(change, outcome, test)
        return change, outcome, test

    left = options.count
    following = chosen(options.folders, options.seed)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        while left > 0:
            batch = [change for change, _ in zip(following, range(left))]
            if not batch:
                break
            for change, outcome, test in pool.map(attempt, batch):
                if outcome != "refused":
                    left -= 1
                    yield change, outcome, test


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=lambda name: pathlib.Path(name).resolve())
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--resume", action="store_true")
    parser.add_argument("folders", nargs="*", default=FOLDERS)
    options = parser.parse_args()
    options.build.mkdir(parents=True, exist_ok=True)
    known = equivalents()
    counts = collections.defaultdict(collections.Counter)
    for change, outcome, test in attempts(options):
        if outcome == "survived" and change.key() in known:
            outcome = "equivalent"
        counts[change.file.split("/")[0]][outcome] += 1
        print(f"{outcome} {change.place()} {test}\n    {change.key()}", flush=True)
    print(f"{'folder':<12} {'made':>6} {'killed':>7} {'equivalent':>11} {'survived':>9}")
    for folder, of_folder in sorted(counts.items()):
        print(f"{folder:<12} {sum(of_folder.values()):>6} {of_folder['killed']:>7}"
              f" {of_folder['equivalent']:>11} {of_folder['survived']:>9}")
    return 1 if any(of_folder["survived"] for of_folder in counts.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
