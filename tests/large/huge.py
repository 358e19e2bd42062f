#!/usr/bin/env python3
"""Runs velk on the assembly that hugeAssembly makes, and compares what is found with the truth and
with a run of a part of the assembly alone. Prints time, peak and counts; status 1 where it differs.

    huge.py VELK FOLDER THREADS BASE

At least 1,000 records must lie behind BASE of all contigs' bases.
"""

import os
import subprocess
import sys

import run

SNAPPED = 62      # bases by which a mate is moved to an end of its gap, at most: two k-mers
COMPLEMENT = bytes.maketrans(b"ACGT", b"TGCA")


def reversed_complement(bases):
    return bases.translate(COMPLEMENT)[::-1]


def records(path):
    """(gap, position, scaffold's id, contig, bases) of each record."""
    with open(path, "rb") as file:
        for header in file:
            gap, _, position, scaffold, contig = header[1:].split()[:5]
            yield int(gap), int(position), scaffold, contig, next(file).rstrip()


def truths(path):
    """By bases, on the contigs' strand: gap, position in it, position in all contigs."""
    found = {}
    with open(path, "rb") as file:
        for line in file:
            one, two, gap, at, other, text = line.split()
            found.setdefault(one, []).append((int(gap), int(at), int(text)))
            found.setdefault(reversed_complement(two), []).append((int(gap), int(other), int(text)))
    return found


def outcome_of(velk, name, threads, folder):
    with open(os.path.join(folder, "reads.lib"), "w", encoding="ascii") as file:
        file.write("[LIB]\navg_ins=500\nq1=reads_1.fq\nq2=reads_2.fq\n")
    outcome = run.run(velk, name, ["-l", "reads.lib", "-s", name + ".fa", "-o", name + ".found",
                                   "-t", threads, "-r", "150"], folder)
    print("%s: %.1f s, peak %.2f GB" % (name, outcome.seconds, outcome.peak_bytes / 1e9))
    for wrong in outcome.wrong:
        print(wrong)
    return outcome


def main(velk, folder, threads, beyond_base):
    beyond_base = int(beyond_base)
    wrong = sum(len(outcome_of(velk, name, threads, folder).wrong) for name in ("whole", "part"))
    truth = truths(os.path.join(folder, "truth.tsv"))
    with open(os.path.join(folder, "part.fa"), "rb") as file:
        part = {line[len(b">scaffold"):].rstrip() for line in file if line.startswith(b">")}

    found = beyond = right = 0
    ofPart = []
    for gap, position, scaffold, contig, bases in records(os.path.join(folder, "whole.found")):
        found += 1
        if scaffold in part:
            ofPart.append((position, scaffold, contig, bases))
        places = [place for place in truth.get(bases, ()) if place[0] == gap and
                  abs(place[1] - position) <= SNAPPED]
        right += bool(places)
        beyond += any(place[2] > beyond_base for place in places)
    alone = sorted(record[1:] for record in records(os.path.join(folder, "part.found")))
    differ = sorted(ofPart) != alone
    print("%d records, %d at their true place, %d of these beyond base %d" %
          (found, right, beyond, beyond_base))
    print("of the part: %d records in the whole, %d alone, %s" %
          (len(ofPart), len(alone), "different" if differ else "the same"))
    # An error, or the copy of a repeat, may lend a read a k-mer that occurs elsewhere only.
    if right < 0.99 * found or beyond < 1000 or differ:
        wrong += 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:5]))
