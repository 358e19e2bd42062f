"""Runs commands in rounds and remembers wall time, processor time and peak memory of each; and the
options of the scripts that do so."""

import argparse
import mmap
import os
import random
import statistics
import subprocess
import time
from collections import defaultdict
from dataclasses import dataclass


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
