#!/usr/bin/env python3
"""Measures the processor time of each kind of thread of a run on gzip files, and reckons what stands
still with more threads.

    threadTimes.py --programs FOLDER --data FOLDER [--scales small] [--rounds N] [--threads N]

The kinds are the reader (the main thread), the threads that inflate, and the workers, which make the
index, too. doc/labbook.md explains what is reckoned from them.
"""

import glob
import os
import statistics
import subprocess
import sys
import time
from collections import defaultdict

from measure import SCALES, Rounds, options_parser
from table import velk_command

PAUSE = 0.004  # seconds between two looks
RECKONED = (2, 8, 16, 32)  # threads


def thread_times(command, folder):
    """Seconds of processor time, by thread: kind -> list. A thread's last moments go unseen."""
    seen = {}  # thread -> (kind, seconds)
    with open(os.path.join(folder, "bench.log"), "w", encoding="utf-8") as log:
        with subprocess.Popen(["bash", "-c", command], cwd=folder, stdout=log, stderr=log) as velk:
            while velk.poll() is None:
                for path in glob.glob(f"/proc/{velk.pid}/task/*"):
                    look_at(path, velk.pid, seen)
                time.sleep(PAUSE)
    if velk.returncode != 0:
        raise RuntimeError(f"{command}: status {velk.returncode}")
    times = defaultdict(list)
    for _, (kind, seconds) in sorted(seen.items()):  # in the order of their start
        times[kind].append(seconds)
    return times


def look_at(path, process, seen):
    try:
        with open(path + "/schedstat", encoding="ascii") as file:
            seconds = int(file.read().split()[0]) / 1e9
        with open(path + "/comm", encoding="ascii") as file:
            name = file.read().strip()
    except OSError:  # it has ended
        return
    thread = int(os.path.basename(path))
    kind = "reader" if thread == process else "inflating" if name == "inflate" else "workers"
    seen[thread] = kind, seconds


def median_times(data, options):
    """Medians of the rounds: the reader, the busiest two threads that inflate one pair of files after
    another's, and all workers."""
    command = velk_command(options.programs, data, "gzip.lib", options.threads)
    found = []
    for _ in range(options.rounds):
        Rounds(data).warm()
        times = thread_times(command, data.folder)
        pair = times["inflating"]
        # Mates are inflated side by side, and library after library.
        behind = sum(max(two) for two in (pair[0:2], pair[2:4], pair[4:]) if two)
        found.append((sum(times["reader"]), sum(pair), behind, sum(times["workers"])))
    return [statistics.median(column) for column in zip(*found)]


def main():
    options = options_parser("Measures the time of each kind of thread.", "small").parse_args()
    rows = []
    for name in filter(None, options.scales.split(",")):
        data = SCALES[name]
        data.make(options.programs, options.data)
        print(f"{name}: measuring, load {os.getloadavg()[0]:.1f}", file=sys.stderr)
        reader, inflating, behind, workers = median_times(data, options)
        rows.append([name, *(f"{seconds:.2f} s" for seconds in (reader, inflating, behind, workers)),
                     *(f"{max(reader, behind) + workers / threads:.2f} s" for threads in RECKONED)])
    print("| Data | reader | inflating | longest file of each pair | workers | " +
          " | ".join(f"at {threads}" for threads in RECKONED) + " |")
    print("|---" * (5 + len(RECKONED)) + "|")
    for row in rows:
        print("| " + " | ".join(row) + " |")


if __name__ == "__main__":
    main()
