#!/usr/bin/env python3
"""Makes small changes in velk's sources, one at a time, and looks whether a test fails.

    mutate.py --build FOLDER [--count N] [--seed N] [--jobs N] [FOLDER...]

A change exchanges an operator, moves a number by one, negates a condition or a returned truth, or
leaves a statement out. N of them (200) are chosen by the seed, evenly from the folders named (the six of
velk itself). Each is made in a copy of the tree below FOLDER, which is built and tested step by step
until something fails: the unit tests of its folder, the command-line cases, random runs against the
model, and the unit tests of the other folders. A change that the compiler refuses is replaced by another.

Changes that no test can see stand in equivalent.txt, with the reason. The script prints what became of
each change, and a table, and ends with status 1 if one survived that does not stand there.
"""

import argparse
import collections
import concurrent.futures
import pathlib
import queue
import random
import re
import resource
import shutil
import subprocess
import sys
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FOLDERS = ("driver", "libinfo", "contig", "kmer", "placement", "streaming")
EQUIVALENT = pathlib.Path(__file__).with_name("equivalent.txt")
BUILD_SECONDS = 3600
TEST_SECONDS = 180  # of processor time, which other work on the machine does not make longer
WAITED_SECONDS = 3600  # for threads that wait for each other; the machine may be busy
ADDRESS_SPACE = 16 << 30

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


class Tree:
    """A copy of the tree with its own build, in which one change is tried after the other."""

    def __init__(self, folder):
        self.folder = folder
        self.sources = folder / "tree"
        self.objects = folder / "objects"
        files = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True,
                               text=True).stdout.split("\n")
        for file in filter(None, files):
            target = self.sources / file
            target.parent.mkdir(parents=True, exist_ok=True)
            if not target.exists() or target.read_bytes() != (ROOT / file).read_bytes():
                shutil.copyfile(ROOT / file, target)
        subprocess.run(["cmake", "-S", self.sources, "-B", self.objects, "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG",
                        "-DVELK_SHORT=ON", "-DVELK_TESTS=ON", "-DVELK_CHECK=OFF", "-DVELK_RUN=OFF"],
                       check=True, stdout=subprocess.DEVNULL)

    def build(self, *targets):
        try:
            done = subprocess.run(["cmake", "--build", self.objects, "--target", *targets], check=False,
                                  timeout=BUILD_SECONDS, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            return False
        return done.returncode == 0

    def steps(self, folder):
        """What tests a change in this folder: targets, and a function that gives the commands which take
        them. Those likeliest to fail come first."""
        others = [other for other in FOLDERS if other != folder]
        yield [f"tests/{folder}/all"], lambda: self.units([folder])
        yield ["velk"], self.runs
        yield [f"tests/{other}/all" for other in others], lambda: self.units(others)

    def units(self, folders):
        for folder in folders:
            for test in sorted((self.objects / "tests" / folder).glob("velk_*_test")):
                yield [test, "--gtest_brief=1", "--gtest_fail_fast"]

    def runs(self):
        velk = self.objects / "velk"
        cases = sorted((self.sources / "tests/cli").glob("*.cases"))
        yield [sys.executable, "-B", self.sources / "tests/cli/run.py", "--velk", velk, *cases]
        yield [sys.executable, "-B", self.sources / "tests/model/runner.py", "--velk", velk, "0-99"]

    def fails(self, command):
        """Whether a test fails, or hangs."""
        try:
            done = subprocess.run(command, check=False, timeout=WAITED_SECONDS, cwd=self.folder,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL, preexec_fn=limit)
        except subprocess.TimeoutExpired:
            return True
        return done.returncode != 0

    def tried(self, folder):
        """What becomes of the tree as it stands: "refused", "survived", or "killed" with the test."""
        for targets, commands in self.steps(folder):
            if not self.build(*targets):
                return "refused", ""
            for command in commands():
                if self.fails(command):
                    return "killed", " ".join(pathlib.Path(part).name for part in command[:3])
        return "survived", ""

    def ready_for(self, folder):
        """Ends the script if a test of the folder fails without a change."""
        targets, commands = next(self.steps(folder))
        if not self.build(*targets):
            raise SystemExit(f"the tree in {self.sources} can't be built")
        for command in commands():
            if self.fails(command):
                raise SystemExit(f"without a change {command[0]} fails")

    def outcome(self, change):
        """What becomes of a change, and the test that killed it."""
        file = self.sources / change.file
        text = file.read_text()
        lines = text.split("\n")
        lines[change.line] = change.after
        file.write_text("\n".join(lines))
        try:
            return self.tried(change.file.split("/")[0])
        finally:
            file.write_text(text)


def limit():
    resource.setrlimit(resource.RLIMIT_CPU, (TEST_SECONDS, TEST_SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))


def equivalents():
    """The changes that no test can see: those of equivalent.txt."""
    known = set()
    for line in EQUIVALENT.read_text().split("\n"):
        if line and not line.startswith(("#", "    ")):
            known.add(line.strip())
    return known


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("folders", nargs="*", default=FOLDERS)
    options = parser.parse_args()
    known = equivalents()
    trees = queue.Queue()
    for number in range(options.jobs):
        tree = Tree(options.build.resolve() / str(number))
        for folder in options.folders:
            tree.ready_for(folder)
        trees.put(tree)
    counts = collections.defaultdict(collections.Counter)

    def attempt(change):
        tree = trees.get()
        try:
            return change, *tree.outcome(change)
        finally:
            trees.put(tree)

    left = options.count
    following = chosen(options.folders, options.seed)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        while left > 0:
            batch = [change for change, _ in zip(following, range(left))]
            if not batch:
                break
            for change, outcome, test in pool.map(attempt, batch):
                if outcome == "refused":
                    continue
                left -= 1
                if outcome == "survived" and change.key() in known:
                    outcome = "equivalent"
                counts[change.file.split("/")[0]][outcome] += 1
                print(f"{outcome} {change.file}:{change.line + 1} {test}\n    {change.key()}", flush=True)
    print(f"{'folder':<12} {'made':>6} {'killed':>7} {'equivalent':>11} {'survived':>9}")
    for folder, of_folder in sorted(counts.items()):
        print(f"{folder:<12} {sum(of_folder.values()):>6} {of_folder['killed']:>7}"
              f" {of_folder['equivalent']:>11} {of_folder['survived']:>9}")
    return 1 if any(of_folder["survived"] for of_folder in counts.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
