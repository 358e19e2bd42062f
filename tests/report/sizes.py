#!/usr/bin/env python3
"""What a report of 100,000 gaps with two million records takes: at most 3 MB of page, 10 s and 500 MB.
And a page of few gaps with many reads each, of which every drawing is full.

    sizes.py VELK_RUN VELK_REPORT
"""

import argparse
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

import made

MOST_BYTES = 3_000_000
MOST_SECONDS = 10  # of processor time
MOST_MEMORY = 500_000_000
READ, INSERT, SPREAD = 70, 260, 25
SHEET = "library\tR1\tR2\tinsert\torientation\nlib\t{0}/1.fa\t{0}/2.fa\t260\tFR\n"


def write_inputs(folder, gaps, depth):
    """Contigs of 400 bases, gaps of 20 to 500, pairs around them."""
    chance = random.Random(3)
    with open(os.path.join(folder, "a.fa"), "w", encoding="ascii") as assembly, \
            open(os.path.join(folder, "1.fa"), "w", encoding="ascii") as first, \
            open(os.path.join(folder, "2.fa"), "w", encoding="ascii") as second:
        for scaffold in range(gaps // 500):
            lengths = [chance.randrange(20, 500) for _ in range(500)]
            genome = made.bases(chance, 400 * 501 + sum(lengths))
            at = 0
            text = []
            for length in [*lengths, 0]:
                text.append(genome[at:at + 400] + "N" * length)
                at += 400 + length
            assembly.write(f">scaffold{scaffold}\n{''.join(text)}\n")
            pairs = made.pairs_of(chance, genome, depth, READ, INSERT, SPREAD)
            for number, (one, other) in enumerate(pairs):
                first.write(f">r{scaffold}.{number}\n{one}\n")
                second.write(f">r{scaffold}.{number}\n{other}\n")
    with open(os.path.join(folder, "libraries.tsv"), "w", encoding="ascii") as file:
        file.write(SHEET.format(folder))


def measured(command):
    """Processor seconds, wall seconds and the most memory of a command."""
    start = time.monotonic()
    child = subprocess.Popen(command)  # pylint: disable=consider-using-with
    _, status, used = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    assert child.returncode == 0, child.returncode
    return used.ru_utime + used.ru_stime, time.monotonic() - start, used.ru_maxrss * 1024


def report(options, gaps, depth):
    """Makes a run of so many gaps and its report, and returns whether that kept to the limits."""
    folder = tempfile.mkdtemp()
    try:
        write_inputs(folder, gaps, depth)
        out = os.path.join(folder, "out")
        subprocess.run([options.velk_run, os.path.join(folder, "a.fa"), "--samplesheet",
                        os.path.join(folder, "libraries.tsv"), "-o", out, "--no-report", "--quiet"],
                       check=True)
        with open(os.path.join(out, "summary.json"), encoding="utf-8") as file:
            summary = json.load(file)
        seconds, wall, memory = measured([options.velk_report, out])
        with open(os.path.join(out, "report.html"), "rb") as file:
            page = file.read()
    finally:
        shutil.rmtree(folder)
    records = summary["results"]["alignment_records"]
    drawings = page.count(b"<figure")
    print(f"{gaps:,} gaps, {records:,} records: {seconds:.1f} s of processor time, {wall:.1f} s,"
          f" {memory / 1e6:.0f} MB of memory, {len(page) / 1e6:.2f} MB of page, {drawings} drawings")
    assert summary["assembly"]["gaps"] == gaps and records >= 20 * gaps
    return (seconds < MOST_SECONDS and memory < MOST_MEMORY and len(page) <= MOST_BYTES and
            100 < drawings <= 200)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("velk_run", type=os.path.abspath)
    parser.add_argument("velk_report", type=os.path.abspath)
    options = parser.parse_args()
    many = report(options, 100000, 3)
    full = report(options, 1000, 50)
    sys.exit(0 if many and full else 1)


if __name__ == "__main__":
    main()
