#!/usr/bin/env python3
"""How often velk-report tells the right reason why a gap has few reads or none, on data whose truth is
known: a genome with gaps that are short of reads for planted causes, and reads whose places are known.

    reasons.py --programs FOLDER... --data FOLDER [--genome FILE] [--seed N]

Prints the reasons given by planted cause, and by reason the share that the truth confirms. Without --genome
one is made. doc/accuracy.md explains the tables.
"""

import argparse
import collections
import os
import re
import subprocess

import accuracy
from reasonsWorld import LENGTH, LIBRARIES, World


class Truth:
    """What is true of the gaps, of the libraries of a run."""

    def __init__(self, world, libraries, big_gap):
        self.world = world
        self.libraries = [library for library in LIBRARIES if library[0] in libraries]
        self.big_gap = big_gap
        with open(os.path.join(world.folder, "a.fa"), encoding="ascii") as file:
            self.assembly = "".join(line for line in file if not line.startswith(">"))
        self.usual = sum(1000 * reads / (1 if name == "singles" else 2)
                         for name, reads, *_ in self.libraries)

    def usable(self, gap):
        return [library for library in self.libraries
                if library[2] < self.big_gap or gap.written >= self.big_gap]

    def in_flanks(self, gap):
        """Reads, of pairs one, that begin within 500 bases of the gap."""
        zones = ((gap.start - 500, gap.start), (gap.end, gap.end + 500))
        return sum(any(one <= at < other for at in {left, right} for one, other in zones)
                   for name, *_ in self.libraries for left, right in gap.fragments[name])

    @staticmethod
    def on_contigs(gap, at):
        """The stretches of a read that lie on the contigs beside the gap."""
        contigs = ((gap.start - gap.front, gap.start), (gap.end, gap.end + gap.behind))
        stretches = [(max(at, one), min(at + LENGTH, other)) for one, other in contigs]
        return [(one, other) for one, other in stretches if other > one]

    def candidates(self, gap):
        """Yields each read with a base of the gap, with the stretches that could show its place: its own,
        and those of its mate."""
        for library in self.usable(gap):
            for left, right in gap.fragments[library[0]]:
                for at, other in ((left, right), (right, left)) if left != right else ((left, left),):
                    if at < gap.end and at + LENGTH > gap.start:
                        yield self.on_contigs(gap, at), self.on_contigs(gap, other) if at != other else []

    def belonging(self, gap):
        """How many of them can be seen."""
        return sum(any(end - start >= 0.3 * LENGTH for start, end in own) or
                   any(end - start == LENGTH for start, end in mate)
                   for own, mate in self.candidates(gap))

    def differ(self, gap):
        """Whether what could show the places is unlike the contigs, for most of them."""
        seen = unlike = 0
        for own, mate in self.candidates(gap):
            for start, end in own + mate:
                same = sum(one == other for one, other in zip(self.world.genome[start:end],
                                                              self.world.donor[start:end]))
                seen += 1
                unlike += same < 0.98 * (end - start)
        return unlike > seen / 2

    def overlap_little(self, gap):
        found = [own for own, mate in self.candidates(gap) if own and not mate]
        little = sum(all(end - start < 0.3 * LENGTH for start, end in own) for own in found)
        return little > len(found) / 2

    def repeated(self, gap):
        """The share of the flanks' k-mers that the assembly has again."""
        reach = max(library[2] + 3 * library[3] for library in self.usable(gap))
        front, behind = (min(reach, contig) - 31 for contig in (gap.front, gap.behind))
        genome, step = self.world.genome, max(1, (front + behind) // 20)
        kmers = [genome[at:at + 31] for at in (*range(gap.start - 31 - front, gap.start - 30, step),
                                               *range(gap.end, gap.end + behind, step))]
        again = sum(self.assembly.count(kmer) + self.assembly.count(accuracy.reversed_complement(kmer)) > 1
                    for kmer in kmers)
        return again / len(kmers)

    def confirms(self, gap, reason, predicted):
        """Whether the truth says that, too."""
        if reason == "inserts too large":
            return not self.usable(gap)
        if reason == "repeated flanks":
            return self.repeated(gap) > 0.35  # of a sample
        if reason == "short contig":
            return min(gap.front, gap.behind) < 70
        if reason == "no reads near":
            return self.belonging(gap) <= 1  # which may have many errors
        if reason == "too many differences":
            return self.differ(gap)
        if reason == "too little overlap":
            return self.overlap_little(gap)
        if reason == "unknown length":
            return gap.written == 101
        if reason == "contained reads":
            return self.belonging(gap) < 0.25 * predicted
        if reason == "few reads near":
            return self.in_flanks(gap) < 0.5 * self.usual
        return False  # "no single reason"


def reasons_of(folder):
    """Gap -> what is said of it, and how many reads are predicted."""
    with open(os.path.join(folder, "report.html"), encoding="utf-8") as file:
        page = file.read()
    found = {}
    for reason, row in re.findall(r'<tr data-why="([^"]*)">(.*)', page):
        cells = [re.sub("<[^>]*>", "", "<" + cell).replace(",", "") for cell in row.split("<td")[1:]]
        found[int(cells[0].lstrip(">"))] = reason, int(cells[8])
    return found


def judge(world, programs, folder, libraries):
    """Runs velk-run with these libraries, and counts (cause, reason, whether the truth confirms it)."""
    options = {"pairs": "--pairs pairs_1.fq pairs_2.fq", "mates": "--mate-pairs mates_1.fq mates_2.fq",
               "singles": "--single singles_1.fq"}
    command = [os.path.join(programs, "velk-run"), "a.fa", "--placeholder", "101", "-o", folder, "--quiet"]
    for library in libraries:
        command += options[library].split()
    subprocess.run(command, cwd=world.folder, check=True)
    out = os.path.join(world.folder, folder)
    with open(os.path.join(out, "summary.json"), encoding="utf-8") as file:
        big_gap = int(re.search(r'"big_gap_length": (\d+)', file.read())[1])
    truth = Truth(world, libraries, big_gap)
    counts = collections.Counter()
    for number, (reason, predicted) in reasons_of(out).items():
        gap = world.gaps[number]
        is_right = reason == "as expected" or truth.confirms(gap, reason, predicted)
        counts[gap.cause, reason, is_right] += 1
        if not is_right:
            print(f"{folder}: gap {number} of {gap.written} bases, {gap.cause}: {reason}")
    return counts


def table(heads, rows):
    for cells in [heads, ["---"] * len(heads), *rows]:
        print("| " + " | ".join(str(cell) for cell in cells) + " |")
    print()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True, type=os.path.abspath)
    parser.add_argument("--data", required=True)
    parser.add_argument("--genome", help="FASTA file, packed by gzip; default: a made one")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    os.makedirs(options.data, exist_ok=True)
    world = World(options.data, options)
    counts = judge(world, options.programs, "all", ("pairs", "mates", "singles"))
    for (cause, reason, is_right), number in judge(world, options.programs, "large", ("mates",)).items():
        counts["large inserts alone: " + cause, reason, is_right] += number
    causes = collections.defaultdict(collections.Counter)
    reasons = collections.defaultdict(collections.Counter)
    for (cause, reason, is_right), number in counts.items():
        causes[cause][reason] += number
        if reason != "as expected":
            reasons[reason][is_right] += number
    table(["planted cause", "gaps", "reasons given"],
          [[cause, sum(each.values()), ", ".join(f"{reason} {n}" for reason, n in each.most_common())]
           for cause, each in causes.items()])
    table(["reason", "gaps", "confirmed"],
          [[reason, sum(each.values()), accuracy.ratio(each[True], sum(each.values()))]
           for reason, each in reasons.items()])
    right = sum(each[True] for each in reasons.values())
    few = sum(sum(each.values()) for each in reasons.values())
    print(f"Of {few} gaps with few reads or none the truth confirms the reason of {accuracy.ratio(right, few)}.")


if __name__ == "__main__":
    main()
