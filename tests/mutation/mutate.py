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
import random
import re
import subprocess
import sys
import threading
from dataclasses import dataclass

from tree import FOLDERS, ROOT, Tree

EQUIVALENT = pathlib.Path(__file__).with_name("equivalent.txt")

# Pattern -> what may stand in its place. Operators have blanks around them: clang-format sees to it.
CHANGES = [
    (r" < ", (" <= ", " >= ")), (r" <= ", (" < ", " > ")),
    (r" > ", (" >= ", " <= ")), (r" >= ", (" > ", " < ")),
    (r" == ", (" != ",)), (r" != ", (" == ",)),
    (r" \+ ", (" - ",)), (r" - ", (" + ",)), (r" \* ", (" + ",)), (r" / ", (" * ",)),
    (r" % ", (" / ",)), (r" \+= ", (" -= ",)), (r" -= ", (" += ",)),
    (r" << ", (" >> ",)), (r" >> ", (" << ",)),
    (r" && ", (" || ",)), (r" \|\| ", (" && ",)),
    (r"(?<=\()!(?=\w)", ("",)), (r"(?<=[^\w.])(\d+)(?=[^\w.'\"])", ("+1", "-1")),
    (r"\btrue\b", ("false",)), (r"\bfalse\b", ("true",)),
    (r"\b(break|continue)\b", ("swap",)), (r"^\s+[a-z_][\w.\->\[\]]*(\(.*\)| [-+|&]?= .*);$", ("drop",)),
]
SKIPPED = re.compile(r"^\s*(//|///|#|static_assert|assert\(|template|using|namespace|class |struct |"
                     r"friend|operator|enum |public:|private:|\}|inline constexpr bool)")


@dataclass(frozen=True)
class Change:
    file: str
    line: int  # from 0
    before: str
    after: str

    def key(self):
        return f"{self.file} | {self.before.strip()} | {self.after.strip() or '(left out)'}"

    def place(self):
        return f"{self.file}:{self.line + 1}"


def changed(line, match, new):
    """The line with one place of it changed; None where that is no change."""
    old = match[0]
    if new == "drop":
        return ""
    if new == "swap":
        new = "continue" if old == "break" else "break"
    if new in ("+1", "-1"):
        new = str(int(old) + int(new))
        if new.startswith("-"):
            return None
    return line[:match.start()] + new + line[match.end():]


def changes_of(file):
    """All changes of a source file."""
    found = []
    for number, line in enumerate((ROOT / file).read_text().split("\n")):
        code = re.sub(r'"(\\.|[^"\\])*"', lambda text: "~" * len(text[0]), line)
        code = re.sub(r"'(\\.|[^'\\])'", "~~~", code).split("  //")[0]
        if SKIPPED.match(code) or "KEPT" in line:
            continue
        for pattern, places in CHANGES:
            for match in re.finditer(pattern, code):
                for new in places:
                    after = changed(line, match, new)
                    if after is not None and after != line:
                        found.append(Change(file, number, line, after))
    return found


def chosen(folders, seed):
    """The changes of all folders, in the order in which they are made: each folder has its turn."""
    choice = random.Random(seed)
    of_folders = []
    for folder in folders:
        files = subprocess.run(["git", "ls-files", f"{folder}/*.cpp", f"{folder}/*.h"], cwd=ROOT,
                               check=True, capture_output=True, text=True).stdout.split()
        found = [change for file in files for change in changes_of(file)]
        choice.shuffle(found)
        of_folders.append(found)
    while any(of_folders):
        for found in of_folders:
            if found:
                yield found.pop()


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
