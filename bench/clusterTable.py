#!/usr/bin/env python3
"""Prints what a run takes on one machine and in tasks on several, by the constants of run/estimate.cpp,
as the table of doc/cluster.md.

    clusterTable.py [--check]       --check: compares with the document; status 1 where it differs
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
INDEX_BYTES = 1.6   # of a base, at most (doc/performance.md)
WORKING = 0.315e9   # bytes
THREADS = 8
READ = 150          # bases
FOUND = 0.03        # records of a read: scaffolds with a gap in some ten thousand bases
GENOMES = ((5e6, 100), (100e6, 60), (1e9, 60), (3e9, 50), (10e9, 40))  # bases, coverage
NODES = (4, 16)


def constants():
    text = (ROOT / "run/estimate.cpp").read_text()
    return {name: float(value) for name, value in
            re.findall(r"constexpr double (k\w+) = ([0-9.e-]+);", text)}


def hours(seconds):
    if seconds < 90:
        return f"{seconds:.0f} s"
    return f"{seconds / 60:.0f} min" if seconds < 5400 else f"{seconds / 3600:.1f} h"


def rows():
    k = constants()
    for bases, coverage in GENOMES:
        read = bases * coverage
        load = k["kLoadBase"] * bases
        index = k["kIndexKmer"] * bases / THREADS
        search = read * max(k["kPackedBase"] / THREADS, k["kLeastPacked"] / 2)  # two files of mates
        found = read / READ * FOUND / THREADS
        search += found * k["kFindRecord"]
        writing = found * k["kWriteRecord"]
        one = load + index + search + writing
        cells = [f"{bases / 1e6:,.0f} Mb", f"{coverage}", f"{(bases * (1 + INDEX_BYTES) + WORKING) / 1e9:.1f} GB",
                 f"{hours(one)}, {one * THREADS / 3600:.1f}"]
        for nodes in NODES:
            wall = 3 * k["kJobStart"] + load + index + search / nodes + writing
            work = load + index + search + writing
            cells.append(f"{hours(wall)}, {work * THREADS / 3600:.1f}")
        yield cells


def table():
    head = ["Bases", "Coverage", "Memory of a node", "One machine"]
    head += [f"{nodes} nodes" for nodes in NODES]
    return "".join("| " + " | ".join(cells) + " |\n"
                   for cells in (head, ["---"] * len(head), *rows())).replace("| --- ", "|---").replace(
                       "|--- |", "|---|")


def main(arguments):
    if arguments != ["--check"]:
        print(table(), end="")
        return 0
    if table() in (ROOT / "doc/cluster.md").read_text():
        return 0
    print("doc/cluster.md has another table than clusterTable.py prints")
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
