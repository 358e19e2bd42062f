#!/usr/bin/env python3
"""Measures velk on made data and prints one table, and one of how the cost grows, each row with a
ratio within this run.

    table.py --programs FOLDER --data FOLDER [--scales small,medium,large] [--rounds N]
             [--mapper-rounds N] [--threads N] [--no-growth]

minimap2, which takes long, takes part in the first N rounds of --mapper-rounds alone. The programs
are velk, makeData and indexFloor of one build. Data that is there already, from the same
options, is used again. doc/labbook.md explains the rows.
"""

import argparse
import os
import shlex
import statistics
import subprocess
import sys

from measure import GROWTH, SCALES, USUAL_GROWTH, Dataset, Rounds, options_parser, slots, warm_memory


def velk_command(programs, data, library, threads, program="velk"):
    return (f"exec {programs}/{program} -l {library} -s scaffolds.fa -o found.fa -t {threads}"
            f" -m {slots(data.bases())} -r {data.length}")


def mapper_command(threads, ending):
    """minimap2 over all libraries, filtered; the contigs' index is made once."""
    awk = f"awk -v reach=REACH -f {shlex.quote(os.path.join(os.path.dirname(os.path.abspath(__file__)), 'gapReads.awk'))}"
    runs = [f"minimap2 -x sr -t {threads} -d contigs.mmi scaffolds.fa.contig"]
    for reads, reach in (("pairs_1.fq{0} pairs_2.fq{0}", 500), ("mates_1.fq{0} mates_2.fq{0}", 3500),
                         ("singles.fq{0}", 0)):
        files = reads.format(ending)
        runs.append(f"minimap2 -a -x sr -t {threads} contigs.mmi {files} |"
                    f" {awk.replace('REACH', str(reach))} >mapped.sam")
    return " && ".join(runs)


class Table:
    def __init__(self):
        self.rows = []

    def add(self, data, what, velk, against, other, ratio):
        self.rows.append((data, what, velk, against, other, f"{ratio:.2f}"))

    def print(self):
        print("| Data | Row | velk | against | | ratio |\n|---|---|---|---|---|---|")
        for row in self.rows:
            print("| " + " | ".join(row) + " |")


def index_rows(table, programs, data, options):
    command = [f"{programs}/indexFloor", data.path("scaffolds.fa"), str(slots(data.bases())),
               "--rounds", str(options.rounds), "--threads", str(options.threads)]
    warm_memory(data.expected_peak())
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\n")
    costs = [[float(field) for field in line.split("\t")[1:]] for line in lines if line]
    index, *floors = (statistics.median(cost) for cost in zip(*costs))
    for at, what in enumerate(("random writes", "random reads and writes")):
        ratio = statistics.median(cost[0] / cost[1 + at] for cost in costs)
        table.add(data.name, "index", f"{index:.1f} ns/k-mer", what, f"{floors[at]:.1f} ns", ratio)


def ratio_row(table, data, what, velk, against, other, ratio):
    table.add(data.name, what, f"{velk:.2f} s", against, f"{other:.2f} s", ratio)


def scale_rows(table, programs, data, options):
    index_rows(table, programs, data, options)
    plain, gzip = data.read_files(""), data.read_files(".gz")
    rounds = Rounds(data)
    commands = {
        "none": velk_command(programs, data, "none.lib", options.threads),
        "plain": velk_command(programs, data, "plain.lib", options.threads),
        "wc": f"wc -l {plain}",
        "seqtk": f"for file in {plain}; do seqtk seq -A $file >/dev/null; done",
        "gzip": velk_command(programs, data, "gzip.lib", options.threads),
        "zcat": f"zcat {gzip} >/dev/null",
    }
    mappers = {
        "mapper": mapper_command(options.threads, ""),
        "mapper gzip": mapper_command(options.threads, ".gz"),
    }
    for number in range(options.rounds):
        rounds.run(commands | (mappers if number < options.mapper_rounds else {}), 1)
    streaming = rounds.beyond("plain", "none")
    inflating = rounds.beyond("gzip", "none")
    for against, name in (("wc -l", "wc"), ("seqtk seq -A", "seqtk")):
        ratio_row(table, data, "plain streaming", streaming, against, rounds.wall(name),
                  streaming / rounds.wall(name))
    ratio_row(table, data, "gzip streaming", inflating, "zcat", rounds.wall("zcat"),
              inflating / rounds.wall("zcat"))
    for kind, name in (("plain", "mapper"), ("gzip", "mapper gzip")):
        if not rounds.costs[name]:
            continue
        ratio_row(table, data, f"whole run, {kind}, times faster", rounds.wall(kind), "minimap2",
                  rounds.wall(name), rounds.wall(name) / rounds.wall(kind))
        ratio_row(table, data, f"whole run, {kind}, processor time", rounds.processor(kind),
                  "minimap2", rounds.processor(name), rounds.processor(name) / rounds.processor(kind))
    table.add(data.name, "cost per read", f"{streaming / data.reads() * 1e9:.0f} ns", "", "",
              rounds.processor("plain") / rounds.wall("plain"))
    memory_rows(table, data, rounds)


def memory_rows(table, data, rounds):
    peak = max(rounds.peak("plain"), rounds.peak("gzip"))
    against = [("formula", data.expected_peak())]
    if rounds.costs["mapper"]:
        against.append(("minimap2", max(rounds.peak("mapper"), rounds.peak("mapper gzip"))))
    for name, other in against:
        table.add(data.name, "peak memory", f"{peak / 1e6:.0f} MB", name, f"{other / 1e6:.0f} MB",
                  peak / other)


def growth_rows(programs, folder, options):
    """All rows by turns, round after round, so that a bad minute of the machine does not fall on one.
    The records counted are those of the last run on the data: they do not depend on the threads."""
    for data in GROWTH:
        data.make(programs, folder)
    rows = [(data, threads, Rounds(data)) for data in GROWTH for threads in data.threads]
    for _ in range(options.rounds):
        for data, threads, rounds in rows:
            for name in ("none", "plain"):  # the latter last: its records are counted
                rounds.run({name: velk_command(programs, data, f"{name}.lib", threads)}, 1)
    print("\n| Data | threads | streaming | ns a read | ratio | found |\n|---|---|---|---|---|---|")
    costs = [rounds.beyond("plain", "none") / data.reads() for data, _, rounds in rows]
    usual = next(cost for cost, (data, threads, _) in zip(costs, rows)
                 if (data, threads) == USUAL_GROWTH)
    for cost, (data, threads, _) in zip(costs, rows):
        with open(data.path("found.fa"), encoding="ascii") as found:
            records = sum(line.startswith(">") for line in found)
        print(f"| {data.name} | {threads} | {cost * data.reads():.2f} s | {cost * 1e9:.0f} |"
              f" {cost / usual:.2f} | {records} |")


def main():
    parser = options_parser("Measures velk.", "small,medium,large")
    parser.add_argument("--mapper-rounds", type=int, default=5)
    parser.add_argument("--growth", action=argparse.BooleanOptionalAction, default=True)
    options = parser.parse_args()
    programs = options.programs
    table = Table()
    for name in filter(None, options.scales.split(",")):
        data: Dataset = SCALES[name]
        print(f"{name}: data", file=sys.stderr)
        data.make(programs, options.data)
        print(f"{name}: measuring, load {os.getloadavg()[0]:.1f}", file=sys.stderr)
        scale_rows(table, programs, data, options)
    table.print()
    if options.growth:
        growth_rows(programs, options.data, options)


if __name__ == "__main__":
    main()
