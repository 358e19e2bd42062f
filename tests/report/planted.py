#!/usr/bin/env python3
"""A made assembly with two gaps for each reason why a gap has few reads or none: velk-report must tell
each its own.

    planted.py VELK_RUN VELK_REPORT
"""

import collections
import json
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import made

VELK_RUN = VELK_REPORT = ""
LENGTH, INSERT, SPREAD = 50, 400, 60
REACH = INSERT + 3 * SPREAD
CONTIG = 3000


def reasons_of(folder):
    """Gap -> reason, as the page's table has it."""
    with open(os.path.join(folder, "report.html"), encoding="utf-8") as file:
        page = file.read()
    rows = re.findall(r'<tr data-why="([^"]*)"><td>(?:<a href=#gap-\d+>)?(\d+)', page)
    return {int(gap): reason for reason, gap in rows}


class Planted:
    """Scaffolds of two contigs, each with the reason that belongs to its gap."""

    def __init__(self, seed):
        self.chance = random.Random(seed)
        self.scaffolds = []
        self.wanted = {}
        self.pairs = made.Reads()
        self.singles = made.Reads()

    def new(self, count):
        return made.bases(self.chance, count)

    def add(self, reason, front, gap, behind):
        self.wanted[len(self.wanted)] = reason
        self.scaffolds.append((f"s{len(self.scaffolds)}", front + "N" * gap + behind))

    def sequence(self, genome, **how):
        for pair in made.pairs_of(self.chance, genome, 30, LENGTH, INSERT, SPREAD, **how):
            self.pairs.add(*pair)

    def sequence_singles(self, genome, starts):
        for start in starts:
            read = genome[start:start + 150]
            self.singles.add(read if self.chance.random() < 0.5 else made.reverse(read))

    def add_plain(self, reason, gap, **how):
        """Contigs as they should be; how the reads are sequenced is the matter."""
        genome = self.new(2 * CONTIG + gap)
        self.add(reason, genome[:CONTIG], gap, genome[CONTIG + gap:])
        self.sequence(genome, **how)
        return genome

    def add_repeats(self, gap):
        front, behind = self.new(REACH + 100), self.new(REACH + 100)
        self.scaffolds.append((f"copies{gap}", front + behind))
        one, other = self.new(CONTIG), self.new(CONTIG)
        self.add("repeated flanks", one + front, gap, behind + other)
        self.sequence(one + front + self.new(gap) + behind + other)

    def add_short_contig(self, front, behind):
        genome = self.new(front + 120 + behind)
        self.add("short contig", genome[:front], 120, genome[front + 120:])
        self.sequence(genome)

    def add_nothing(self, gap):
        genome = self.add_plain("no reads near", gap, keep=lambda start, end: (
            end < CONTIG - 700 or start > CONTIG + gap + 700))
        assert genome

    def add_few(self, gap):
        """Near the gap there are a tenth of the fragments."""
        self.add_plain("few reads near", gap, keep=lambda start, end: (
            end < CONTIG - 700 or start > CONTIG + gap + 700 or self.chance.random() < 0.1))

    def add_differences(self, gap):
        """Reads near the gap have two other bases each, of 50."""
        self.add_plain("too many differences", gap, change=lambda start, read: (
            made.changed(self.chance, read, (2, 5))
            if CONTIG - 700 < start < CONTIG + gap + 700 else read))

    def add_short_overlap(self, gap):
        """Near the gap there are single reads alone, which run over an edge by most of their bases."""
        genome = self.add_plain("too little overlap", gap, keep=lambda start, end: (
            end < CONTIG - 700 or start > CONTIG + gap + 700))
        self.sequence_singles(genome, [CONTIG - on for on in range(33, 44)] * 6)

    def add_overlap(self, reason, gap):
        """The contigs share 60 bases, so that nothing is missing between them."""
        genome = self.new(2 * CONTIG)
        self.add(reason, genome[:CONTIG], gap, genome[CONTIG - 60:])
        self.sequence(genome)

    def write(self, folder):
        with open(os.path.join(folder, "a.fa"), "w", encoding="ascii") as file:
            file.write(made.fasta(self.scaffolds))
        self.pairs.write(os.path.join(folder, "p_1.fq"), os.path.join(folder, "p_2.fq"))
        self.singles.write(os.path.join(folder, "s.fq"))


class Reasons(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def run_velk(self, *options):
        subprocess.run([VELK_RUN, "a.fa", *options, "-o", "out", "--quiet"], cwd=self.folder,
                       check=True)
        return os.path.join(self.folder, "out")

    def assert_reasons(self, out, planted):
        """Prints a table, and wants the planted reason for every gap."""
        reasons = reasons_of(out)
        rows = collections.Counter((wanted, reasons.get(gap)) for gap, wanted in planted.wanted.items())
        print("| planted | reported | gaps |\n|---|---|---|")
        for (wanted, said), count in sorted(rows.items()):
            print(f"| {wanted} | {said} | {count} |", flush=True)
        self.assertEqual(reasons, planted.wanted)

    def test_each_reason(self):
        planted = Planted(1)
        for gap in (150, 900):
            genome = planted.add_plain("as expected", gap)
            planted.sequence_singles(genome, range(0, len(genome) - 150, 40))
        for gap in (140, 400):
            planted.add_repeats(gap)
            planted.add_nothing(gap)
            planted.add_differences(gap)
            planted.add_short_overlap(gap)
            planted.add_few(gap)
        planted.add_short_contig(60, 45)
        planted.add_short_contig(30, 69)
        for gap in (10, 12):
            planted.add_overlap("contained reads", gap)
        for gap in (101, 101):
            planted.add_overlap("unknown length", gap)
        planted.write(self.folder)
        out = self.run_velk("--pairs", "p_1.fq", "p_2.fq", "--single", "s.fq", "--placeholder", "101")
        self.assert_reasons(out, planted)
        with open(os.path.join(out, "summary.json"), encoding="utf-8") as file:
            summary = json.load(file)["report"]["reasons"]
        counted = collections.Counter(planted.wanted.values())
        del counted["as expected"]
        self.assertEqual({reason: sum(gaps.values()) for reason, gaps in summary.items()}, counted)

    def test_inserts_too_large(self):
        planted = Planted(2)
        genomes = []
        for gap in (30, 40):
            genome = planted.new(2 * 6000 + gap)
            planted.add("inserts too large", genome[:6000], gap, genome[6000 + gap:])
            genomes.append(genome)
        genome = planted.new(2 * 6000 + 700)
        planted.add("as expected", genome[:6000], 700, genome[6700:])
        for each in (*genomes, genome):
            for pair in made.outward_of(planted.chance, each, 30, LENGTH, 2500, 150):
                planted.pairs.add(*pair)
        planted.write(self.folder)
        self.assert_reasons(self.run_velk("--mate-pairs", "p_1.fq", "p_2.fq"), planted)


if __name__ == "__main__":
    VELK_RUN, VELK_REPORT = map(os.path.abspath, sys.argv[1:3])
    unittest.main(argv=sys.argv[:1])
