#!/usr/bin/env python3
"""Measures velk-run against velk on the same files, its outputs included, and prints a table of
ratios within the rounds.

    runTable.py --programs FOLDER --data FOLDER [--scales small] [--rounds N] [--threads N]

doc/performance.md explains the columns.
"""

import os
import shlex
import statistics
import subprocess

from measure import SCALES, Rounds, options_parser
from table import velk_command

RESULTS = "run.out"  # folder of velk-run's results, in the data's
SHEET = "run{}.tsv"


def write_sheet(data, ending):
    """The libraries of the data as a sample sheet; velk-run measures their inserts itself."""
    rows = ["library\tR1\tR2\tkind",
            f"pairs\tpairs_1.fq{ending}\tpairs_2.fq{ending}\tpairs",
            f"mates\tmates_1.fq{ending}\tmates_2.fq{ending}\tmate-pairs",
            f"singles\tsingles.fq{ending}\t.\tsingle"]
    with open(data.path(SHEET.format(ending)), "w", encoding="ascii") as file:
        file.write("\n".join(rows) + "\n")


def run_command(programs, ending, threads):
    return (f"{shlex.quote(programs)}/velk-run scaffolds.fa --samplesheet {SHEET.format(ending)}"
            f" -o {RESULTS} -t {threads} --quiet")


def row(options, data, ending):
    write_sheet(data, ending)
    rounds = Rounds(data)
    library = "gzip.lib" if ending else "plain.lib"
    rounds.run({"velk": velk_command(options.programs, data, library, options.threads),
                "run": run_command(options.programs, ending, options.threads)}, options.rounds)

    def ratio(cost):
        return statistics.median(cost(a) / cost(b)
                                 for a, b in zip(rounds.costs["run"], rounds.costs["velk"]))

    more = statistics.median(a.peak - b.peak
                             for a, b in zip(rounds.costs["run"], rounds.costs["velk"]))
    return [data.name, "gzip" if ending else "plain", f"{rounds.wall('velk'):.2f} s",
            f"{rounds.wall('run'):.2f} s", f"{ratio(lambda cost: cost.wall):.2f}",
            f"{ratio(lambda cost: cost.processor):.2f}", f"{more / 2 ** 20:+.0f} MiB"]


def main():
    options = options_parser("Measures velk-run against velk.", "small").parse_args()
    rows = []
    for name in filter(None, options.scales.split(",")):
        data = SCALES[name]
        data.make(options.programs, options.data)
        rows += [row(options, data, ending) for ending in ("", ".gz")]
        subprocess.run(["rm", "-rf", os.path.join(data.folder, RESULTS)], check=True)
    print("| Data | files | velk | velk-run | by velk | processor time, by velk | peak memory |")
    print("|---|---|---|---|---|---|---|")
    for cells in rows:
        print("| " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
