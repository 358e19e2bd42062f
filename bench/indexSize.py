#!/usr/bin/env python3
"""Measures the index of made genomes alone and prints a table: bytes a k-mer, the peak of the
building by the bytes of the index, and the seconds it takes.

    indexSize.py --programs FOLDER --data FOLDER [--bases 5,80,300] [--kmers 17,21,31]
                 [--threads 1,2] [--rounds N]

--bases are millions. Each row is one number of threads; its seconds are medians of the rounds, which
take the threads by turns.
"""

import argparse
import os
import statistics
import subprocess

from measure import Dataset


def numbers(text):
    return [int(number) for number in text.split(",")]


def measured(programs, scaffolds, kmer, threads):
    """k-mers, bytes, peak bytes, wall seconds, processor seconds."""
    command = [f"{programs}/indexSize", scaffolds, "--kmer", str(kmer), "--threads", str(threads)]
    line = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return [float(field) for field in line.split("\t")[2:]]


def main():
    parser = argparse.ArgumentParser(description="Measures the index alone.")
    parser.add_argument("--programs", required=True, type=os.path.abspath)
    parser.add_argument("--data", required=True)
    parser.add_argument("--bases", type=numbers, default=[5, 80, 300])
    parser.add_argument("--kmers", type=numbers, default=[17, 21, 31])
    parser.add_argument("--threads", type=numbers, default=[1, 2])
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    print("| Bases | k | bytes a k-mer | peak / bytes | threads | wall | processor |\n"
          "|---|---|---|---|---|---|---|")
    for bases in options.bases:
        data = Dataset(f"genome {bases} Mb alone", bases * 1_000_000, 0, 0, 0, 150, gzip=False)
        data.make(options.programs, options.data)
        for kmer in options.kmers:
            rounds = [[measured(options.programs, data.path("scaffolds.fa"), kmer, threads)
                       for threads in options.threads] for _ in range(options.rounds)]
            for threads, costs in zip(options.threads, zip(*rounds)):
                kmers, size, peak, wall, processor = map(statistics.median, zip(*costs))
                print(f"| {bases} Mb | {kmer} | {size / kmers:.2f} | {peak / size:.2f} | {threads} |"
                      f" {wall:.2f} s | {processor:.2f} s |", flush=True)


if __name__ == "__main__":
    main()
