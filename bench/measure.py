"""The data sets of the benchmarks: what each is made of, and the making of it. And the measuring: runs
commands in rounds and remembers wall time, processor time and peak memory of each; the options of the
scripts that do so."""

import argparse
import functools
import mmap
import os
import random
import statistics
import subprocess
import time
from collections import defaultdict
from dataclasses import dataclass, field

BATCH = 500_000  # records in a batch of velk
PROGRAM = 10_000_000  # bytes: the program, and the reads found in a batch
INDEX_BYTES = 1.4  # a base, of the index for k-mers of 31 bases; bench/indexSize.py measures them
LOAD_FACTOR = 0.75


@dataclass
class Dataset:
    name: str
    genome: int  # bases
    pairs: int
    mates: int  # mate pairs
    singles: int
    length: int  # bases of a read
    error: float = 0.01  # share of wrong bases
    gzip: bool = True
    threads: tuple = (2,)
    folder: str = field(default="", init=False)

    def reads(self):
        return 2 * self.pairs + 2 * self.mates + self.singles

    def path(self, name):
        return os.path.join(self.folder, name)

    def read_files(self, ending):
        return " ".join(f"{name}.fq{ending}" for name in
                        ("pairs_1", "pairs_2", "mates_1", "mates_2", "singles"))

    def options(self):
        return (f"--genome {self.genome} --pairs {self.pairs} --mates {self.mates}"
                f" --singles {self.singles} --length {self.length} --error {self.error}")

    def make(self, programs, parent):
        """Makes the files, unless they are there from the same options."""
        self.folder = os.path.join(os.path.abspath(parent), self.name)
        stamp = self.path("options")
        if os.path.exists(stamp):
            with open(stamp, encoding="ascii") as text:
                if text.read() == self.options():
                    return
        os.makedirs(self.folder, exist_ok=True)
        subprocess.run([f"{programs}/makeData", *self.options().split(), "."], check=True,
                       cwd=self.folder)
        with open(self.path("none.fq"), "w", encoding="ascii") as file:
            file.write("@none\nA\n+\nI\n")
        with open(self.path("none.lib"), "w", encoding="ascii") as file:
            file.write("[LIB]\nq=none.fq\n")
        if self.gzip:
            subprocess.run(f"printf '%s\\n' {self.read_files('')} | xargs -P 2 -n 1 gzip -k -f -4",
                           shell=True, check=True, cwd=self.folder)
        with open(stamp, "w", encoding="ascii") as file:
            file.write(self.options())

    def bases(self):
        """Bases of the contigs."""
        return contig_bases(self.path("scaffolds.fa"))

    def expected_peak(self):
        """Bytes: the assembly, the index, a batch, the program."""
        bases = self.bases()
        filled = min(BATCH, max(self.pairs, self.mates))
        batch = BATCH * 32 + filled * -(-(self.length + 9) // 16) * 16  # strings, bases on the heap
        return int(bases * (1 + INDEX_BYTES)) + 2 * batch + PROGRAM


@functools.cache
def contig_bases(scaffolds):
    """The bases of a scaffold file that are not N."""
    count = 0
    with open(scaffolds, encoding="ascii") as file:
        for line in file:
            if not line.startswith(">"):
                count += len(line) - 1 - line.count("N")
    return count


def slots(bases):
    """The slots, given by -m, with which the table never grows."""
    return int(bases / LOAD_FACTOR) + 1


SCALES = {
    data.name: data for data in (
        Dataset("small", 5_000_000, 500_000, 160_000, 160_000, 150),
        Dataset("medium", 20_000_000, 2_000_000, 200_000, 200_000, 100),
        Dataset("large", 80_000_000, 4_000_000, 400_000, 400_000, 150),
    )
}

GROWTH = (
    Dataset("error 0 %", 5_000_000, 500_000, 160_000, 160_000, 150, 0.0, False),
    Dataset("error 1 %", 5_000_000, 500_000, 160_000, 160_000, 150, 0.01, False, (1, 2, 3, 8)),
    Dataset("error 2 %", 5_000_000, 500_000, 160_000, 160_000, 150, 0.02, False),
    Dataset("coverage 60", 5_000_000, 1_000_000, 320_000, 320_000, 150, 0.01, False),
    Dataset("genome 20 Mb", 20_000_000, 500_000, 160_000, 160_000, 150, 0.01, False),
    Dataset("genome 80 Mb", 80_000_000, 500_000, 160_000, 160_000, 150, 0.01, False),
)

USUAL_GROWTH = (GROWTH[1], 2)  # the row of GROWTH, data and threads, by which the others are divided


@dataclass
class Cost:
    wall: float  # seconds
    processor: float  # seconds, user and system, of the command and its children
    peak: int  # bytes, the largest resident set of one process


def warm_memory(size):
    """Touches `size` bytes of memory and releases them. The host of a virtual machine takes back what
    is not in use and is slow to give it again: whichever command comes first would pay for it. Huge
    pages, as velk's are: what is released in small ones is not what the kernel makes huge ones of.
    In a process of its own: the peak of the one that starts a command counts as the command's, too."""
    child = os.fork()
    if child == 0:
        try:
            memory = mmap.mmap(-1, size, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)
            memory.madvise(mmap.MADV_HUGEPAGE)
            for page in range(0, size, mmap.PAGESIZE):
                memory[page] = 1
            os._exit(0)
        finally:
            os._exit(1)
    if os.waitpid(child, 0)[1] != 0:
        raise RuntimeError(f"can't touch {size} bytes of memory")


def run(command, folder):
    """Runs a shell command and returns its Cost. Raises RuntimeError when it fails."""
    with open(os.path.join(folder, "bench.log"), "w", encoding="utf-8") as log:
        start = time.monotonic()
        process = subprocess.Popen(
            ["bash", "-o", "pipefail", "-c", command], cwd=folder, stdout=log, stderr=log)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - start
    if status != 0:
        with open(log.name, encoding="utf-8") as text:
            raise RuntimeError(f"{command}: status {status}\n{text.read()[-2000:]}")
    return Cost(wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024)


def options_parser(description, scales):
    """A parser of the options that all measuring scripts have; scales: those measured by default."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--programs", required=True, type=os.path.abspath)
    parser.add_argument("--data", required=True)
    parser.add_argument("--scales", default=scales)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--threads", type=int, default=2)
    return parser


class Rounds:
    """Costs of named commands on a Dataset, run round after round, in every round once and in
    another order: what a command leaves behind weighs on each of the others. Each one finds the
    read files and as much memory as velk takes for these data warm."""

    def __init__(self, data):
        self.data = data
        self.costs = defaultdict(list)
        self.orders = random.Random(1)

    def run(self, commands, rounds):
        """commands: name -> shell command."""
        for _ in range(rounds):
            for name, command in self.orders.sample(list(commands.items()), len(commands)):
                self.warm()
                self.costs[name].append(run(command, self.data.folder))

    def warm(self):
        for ending in ("", ".gz") if self.data.gzip else ("",):
            run(f"cat {self.data.read_files(ending)} >/dev/null", self.data.folder)
        warm_memory(self.data.expected_peak())

    def wall(self, name):
        return statistics.median(cost.wall for cost in self.costs[name])

    def processor(self, name):
        return statistics.median(cost.processor for cost in self.costs[name])

    def peak(self, name):
        return statistics.median(cost.peak for cost in self.costs[name])

    def beyond(self, name, base):
        """Median of what `name` takes longer than `base` in the same round, seconds of wall time."""
        return statistics.median(
            more.wall - less.wall for more, less in zip(self.costs[name], self.costs[base]))
