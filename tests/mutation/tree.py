"""A copy of the tree with its own build, in which changes are tried one after the other.

A test may take five times the processor time that it has taken without a change, and ten seconds. Time
on the clock is bounded, too, for threads that wait for each other: ten times and a minute. It is counted in
looks at the test, so that a machine that stands still adds nothing.
"""

import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FOLDERS = ("driver", "libinfo", "contig", "kmer", "placement", "streaming")
# Their unit tests take less than a second, and are built in a few.
QUICK = ("driver", "libinfo", "contig")
BUILD_SECONDS = 3600
RUNS = "velk"
ADDRESS_SPACE = 16 << 30
LOOK = 0.1  # seconds from one look at a test to the next
TICK = os.sysconf("SC_CLK_TCK")


@dataclass
class Usage:
    seconds: float  # of processor time
    looks: int


# Without a usual time, as in the first run of a test.
MOST = Usage(3600, int(4 * 3600 / LOOK))


def allowed(usual):
    if usual is None:
        return MOST
    return Usage(5 * usual.seconds + 10, 10 * usual.looks + int(60 / LOOK))


def seconds_of(session):
    """The processor time of all processes of a session, with those that have ended."""
    ticks = 0
    for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            fields = stat.read_text().rpartition(")")[2].split()
        except OSError:  # it has ended
            continue
        if int(fields[3]) == session:
            ticks += sum(int(field) for field in fields[11:15])
    return ticks / TICK


def run(command, folder, usual=None):
    """Whether a test passes, and its usage; that is None if the test was ended. `usual`: its usage
    without a change."""
    most = allowed(usual)

    def limit():
        seconds = int(most.seconds) + 1
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
        resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))

    process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=limit)
    looks = 0
    while True:
        pid, status, used = os.wait4(process.pid, os.WNOHANG)
        if pid != 0:
            process.returncode = os.waitstatus_to_exitcode(status)
            return process.returncode == 0, Usage(used.ru_utime + used.ru_stime, looks)
        if looks > most.looks or looks % 10 == 0 and seconds_of(process.pid) > most.seconds:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return False, None
        looks += 1
        time.sleep(LOOK)


def sync(source, target):
    """Makes one folder what the other is, with the times of its files."""
    for folder, _, names in os.walk(source):
        there = target / os.path.relpath(folder, source)
        there.mkdir(parents=True, exist_ok=True)
        for name in names:
            old, new = os.path.join(folder, name), there / name
            if not same(old, new):
                new.unlink(missing_ok=True)
                shutil.copy2(old, new)
    for folder, _, names in os.walk(target):
        for name in names:
            if not (source / os.path.relpath(folder, target) / name).exists():
                os.unlink(os.path.join(folder, name))


def same(one, other):
    try:
        of_one, of_other = os.stat(one), os.stat(other)
    except FileNotFoundError:
        return False
    return (of_one.st_size, of_one.st_mtime_ns) == (of_other.st_size, of_other.st_mtime_ns)


def suites_of(file):
    """A filter for the unit tests that are named like the file, as seedIndexTest.cpp for
    seedIndexBuilder.cpp; empty if there are none."""
    path = pathlib.Path(file)
    suites = set()
    for source in (ROOT / "tests" / path.parent).glob("*Test.cpp"):
        name = source.stem.removesuffix("Test")
        if name.startswith(path.stem) or path.stem.startswith(name):
            suites.update(re.findall(r"(?m)^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),", source.read_text()))
    return ":".join(f"*{suite}*" for suite in sorted(suites))


class Tree:
    """What is built without a change is kept, and put back after each one; so a change costs the
    building of what includes it, once."""

    def __init__(self, folder):
        self.folder = folder
        self.sources = folder / "tree"
        self.objects = folder / "objects"
        self.clean = folder / "clean"  # the objects without a change
        self.usual = {}  # what each command takes without a change
        self.ready = set()  # targets
        self.made = None  # (file, text and time without the change)
        files = subprocess.run(["git", "ls-files"], cwd=ROOT, check=True, capture_output=True,
                               text=True).stdout.split("\n")
        for file in filter(None, files):
            target = self.sources / file
            target.parent.mkdir(parents=True, exist_ok=True)
            if not target.exists() or target.read_bytes() != (ROOT / file).read_bytes():
                shutil.copyfile(ROOT / file, target)
        # A program of tests that a change breaks is asked for its tests by nobody while it is built.
        subprocess.run(["cmake", "-S", self.sources, "-B", self.objects, "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG",
                        "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
                        "-DVELK_SHORT=ON", "-DVELK_TESTS=ON", "-DVELK_CHECK=OFF", "-DVELK_RUN=OFF"],
                       check=True, stdout=subprocess.DEVNULL)

    def build(self, target):
        try:
            done = subprocess.run(["cmake", "--build", self.objects, "--target", target], check=False,
                                  timeout=BUILD_SECONDS, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            return False
        return done.returncode == 0

    @staticmethod
    def targets(file):
        """What tests a change of this file: the cheapest first that is likely to fail."""
        own = file.split("/")[0]
        first = [f"tests/{own}/all", RUNS] if own in QUICK else [RUNS, f"tests/{own}/all"]
        return first + [f"tests/{other}/all" for other in FOLDERS if other != own]

    def commands(self, target):
        """The tests of a target that is built."""
        if target == RUNS:
            velk = self.objects / "velk"
            cases = sorted((self.sources / "tests/cli").glob("*.cases"))
            return [[sys.executable, "-B", self.sources / "tests/cli/run.py", "--velk", velk, *cases],
                    [sys.executable, "-B", self.sources / "tests/model/runner.py", "--velk", velk, "0-99"]]
        programs = sorted((self.objects / target).parent.glob("velk_*_test"))
        return [[program, "--gtest_brief=1", "--gtest_fail_fast"] for program in programs]

    def prepare(self, target):
        """Builds and tests a target without a change. Ends the script if that fails."""
        if target in self.ready:
            return
        self.undo()
        if not self.build(target):
            raise SystemExit(f"{target} can't be built in {self.sources}")
        for command in self.commands(target):
            passes, used = run(command, self.folder)
            if not passes:
                raise SystemExit(f"without a change {command[0]} fails")
            self.usual[tuple(command)] = used
        sync(self.objects, self.clean)
        self.ready.add(target)

    def make(self, change):
        if self.made is not None:
            return
        file = self.sources / change.file
        text = file.read_text()
        self.made = file, text, file.stat()
        lines = text.split("\n")
        lines[change.line] = change.after
        file.write_text("\n".join(lines))

    def undo(self):
        if self.made is None:
            return
        file, text, status = self.made
        file.write_text(text)
        os.utime(file, ns=(status.st_atime_ns, status.st_mtime_ns))
        sync(self.clean, self.objects)
        self.made = None

    def killer(self, target, file):
        """The test of a built target that fails, or takes far longer than without the change."""
        commands = self.commands(target)
        suites = suites_of(file) if target == f"tests/{file.split('/')[0]}/all" else ""
        first = [(command, [f"--gtest_filter={suites}"]) for command in commands if suites]
        for command, further in first + [(command, []) for command in commands]:
            passes, used = run(command + further, self.folder, self.usual[tuple(command)])
            if not passes:
                name = " ".join(pathlib.Path(part).name for part in command[:3])
                return name + (", by its time" if used is None else "")
        return None

    def outcome(self, change):
        """What becomes of a change: "refused" by the compiler, "survived", or "killed" with the test."""
        try:
            for target in self.targets(change.file):
                self.prepare(target)
                self.make(change)
                if not self.build(target):
                    return "refused", ""
                test = self.killer(target, change.file)
                if test is not None:
                    return "killed", test
            return "survived", ""
        finally:
            self.undo()
