#!/usr/bin/env python3
"""The same answer always: whatever the number of threads, the table and the number of runs.

    same.py --velk PATH [--sets N] [--repeats N] [--jobs N]

N generated runs (those of tests/model that succeed and find reads) are made with many
numbers of threads: the assembly files and the gap report stay the same byte by byte, the
reads found are the same records.  So they are, in the same order, with many first sizes
and load factors of the table, and in each of the repeats with one number of threads.
Exit status 1 when anything differs.
"""

import argparse
import concurrent.futures
import itertools
import os
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "model"))
import generate
import runner

THREADS = (1, 2, 3, 4, 5, 7, 8, 16, 33)
TABLES = [("-m", "0"), ("-m", "777"), ("-m", "100003"), ("-f", "0.2"), ("-f", "0.5"),
          ("-f", "0.95"), ("-m", "50", "-f", "0.9")]
REPEATED = 2  # data sets that the numbers of threads take turns to run again and again
TIMEOUT = 300  # seconds for one run under a sanitizer


def run(velk, seed, extra):
    """Status and files of the seed's run with `extra` options behind its own."""
    folder = tempfile.mkdtemp(prefix="velk-same-")
    try:
        arguments = generate.generate(seed, folder) + list(extra)
        done = subprocess.run([velk] + arguments, cwd=folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              timeout=TIMEOUT, check=False)
        return done.returncode, runner.tree(folder), arguments
    finally:
        shutil.rmtree(folder)


def output_of(arguments):
    """The name of the file of found reads: the value of the last -o."""
    return [value for option, value in zip(arguments, arguments[1:])
            if option.startswith("-o")][-1]


def records(files, arguments):
    """The records of the found reads, sorted, and all other files."""
    name = os.path.normpath(output_of(arguments))
    while files[name][0] == "link":
        name = os.fsdecode(files[name][1])
    lines = files[name][1].split(b"\n")
    others = {path: content for path, content in files.items() if path != name}
    return sorted(zip(lines[::2], lines[1::2])), others


def finds_reads(velk, seed):
    status, files, arguments = run(velk, seed, ())
    return status == 0 and bool(records(files, arguments)[0])


def one_set(velk, seed):
    """What differs between the runs of one data set; how many runs there were."""
    found = []
    status, files, arguments = run(velk, seed, ("-t", "1"))
    expected = records(files, arguments)
    for threads in THREADS[1:]:
        other, changed, arguments = run(velk, seed, ("-t", str(threads)))
        if other != status or records(changed, arguments) != expected:
            found.append("seed %d: -t %d differs from -t 1" % (seed, threads))
    for table in TABLES:
        other, changed, _ = run(velk, seed, ("-t", "1") + table)
        if other != status or changed != files:
            found.append("seed %d: differs with %s" % (seed, " ".join(table)))
    return found, len(THREADS) + len(TABLES)


def repeated(velk, seed, threads, repeats):
    first = run(velk, seed, ("-t", str(threads)))
    found = ["seed %d: repeat %d with -t %d differs" % (seed, repeat, threads)
             for repeat in range(1, repeats) if run(velk, seed, ("-t", str(threads))) != first]
    return found, repeats


def main():
    parser = argparse.ArgumentParser(description="compare runs of velk with each other")
    parser.add_argument("--velk", required=True, help="the program")
    parser.add_argument("--sets", type=int, default=100, help="generated runs")
    parser.add_argument("--repeats", type=int, default=50, help="runs of one command")
    parser.add_argument("--jobs", type=int, default=2, help="runs at a time")
    options = parser.parse_args()
    velk = os.path.abspath(options.velk)

    runs = differ = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        seeds = list(itertools.islice((seed for seed in itertools.count()
                                       if finds_reads(velk, seed)), options.sets))
        waiting = [pool.submit(one_set, velk, seed) for seed in seeds]
        waiting += [pool.submit(repeated, velk, seed, threads, options.repeats)
                    for threads, seed in zip(THREADS, itertools.cycle(seeds[:REPEATED]))]
        for future in waiting:
            found, made = future.result()
            runs += made
            differ += len(found)
            for text in found:
                print(text, flush=True)
    print("%d data sets, %d runs, %d differ" % (len(seeds), runs, differ))
    return 1 if differ else 0


if __name__ == "__main__":
    sys.exit(main())
