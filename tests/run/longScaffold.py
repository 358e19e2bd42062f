#!/usr/bin/env python3
"""A scaffold of 2^29 bases, which the index BAI cannot hold, and one that is a base shorter: which
index is made, and that reads beyond the gap are found by it.

    longScaffold.py VELK_RUN
"""

import gzip
import json
import os
import random
import subprocess
import sys
import tempfile
import unittest

VELK_RUN = ""
LONGEST_OF_BAI = 2**29 - 1
CONTIG = 2000
PIECE = 1 << 24  # N that are packed at once
COMPLEMENT = str.maketrans("ACGT", "TGCA")


def packed_n(count):
    piece = gzip.compress(b"N" * PIECE, 1)
    return piece * (count // PIECE) + gzip.compress(b"N" * (count % PIECE), 1)


def fasta(reads):
    return "".join(f">pair{n}\n{bases}\n" for n, bases in enumerate(reads))


class LongScaffold(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def put(self, name, content):
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(content)

    def call(self, *command):
        return subprocess.run(command, cwd=self.folder, check=True, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE).stdout

    def listing(self):
        with open(os.path.join(self.folder, "out", "summary.json"), encoding="utf-8") as file:
            return {entry["name"] for entry in json.load(file)["files"]}

    def run_on(self, length):
        """Runs on a scaffold of so many bases: one contig at its start, one at its end."""
        source = random.Random(7)
        genome = "".join(source.choices("ACGT", k=2 * CONTIG))
        front, behind = genome[:CONTIG], genome[CONTIG:]
        self.put("scaffolds.fa.gz", gzip.compress(f">long\n{front}".encode()) +
                 packed_n(length - 2 * CONTIG) + gzip.compress(f"{behind}\n".encode()))
        # Of the fragments of 300 bases those in the contig behind, and some that begin 150 bases
        # before it.
        inside = "".join(source.choices("ACGT", k=150)) + behind
        starts = [source.randrange(150, len(inside) - 300) for _ in range(300)] + list(range(60))
        fragments = [inside[start:start + 300] for start in starts]
        self.put("1.fa", fasta([one[:100] for one in fragments]).encode())
        self.put("2.fa", fasta([one[-100:].translate(COMPLEMENT)[::-1]
                                for one in fragments]).encode())
        self.call(VELK_RUN, "scaffolds.fa.gz", "1.fa", "2.fa", "-o", "out", "--quiet")

    def test_the_longest_scaffold_of_the_short_index(self):
        self.run_on(LONGEST_OF_BAI)
        self.assertIn("reads.bam.bai", self.listing())
        self.assertNotIn("reads.bam.csi", os.listdir(os.path.join(self.folder, "out")))
        self.look(LONGEST_OF_BAI)

    def test_a_longer_scaffold_has_the_long_index(self):
        self.run_on(LONGEST_OF_BAI + 1)
        self.assertIn("reads.bam.csi", self.listing())
        self.assertNotIn("reads.bam.bai", os.listdir(os.path.join(self.folder, "out")))
        self.look(LONGEST_OF_BAI + 1)

    def look(self, length):
        """Looks reads up by the index, with and without samtools."""
        edge = length - CONTIG  # the first base of the contig behind, from 0
        def lines(*arguments):
            return self.call("samtools", "view", *arguments).decode().splitlines()
        every = lines("out/reads.bam")
        self.assertGreater(len(every), 100)
        around = lines("out/reads.bam", f"long:{edge - 400}-{edge + 400}")
        self.assertEqual(sorted(every), sorted(around))
        near = [line for line in every if int(line.split("\t")[3]) + 99 >= edge + 101]
        self.assertEqual(near, lines("-G", "4", "out/reads.bam", f"long:{edge + 101}"))
        self.assertTrue(0 < len(near) < len(every))
        self.call("samtools", "quickcheck", "out/reads.bam")
        self.call(VELK_RUN, "extract", "out", "0", "--bam", "-o", "gap.bam")
        self.assertEqual(sorted(every), sorted(lines("gap.bam")))


if __name__ == "__main__":
    VELK_RUN = os.path.abspath(sys.argv[1])
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
