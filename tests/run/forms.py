#!/usr/bin/env python3
"""Files as users have them: the bundled example in every form that velk-run takes must give the same
records, whatever its headers, line ends, width, case or packing.

    forms.py VELK_RUN EXAMPLES
"""

import bz2
import gzip
import lzma
import os
import subprocess
import sys
import tempfile
import unittest

VELK_RUN = EXAMPLES = ""
HEADERS = (">NODE_1_length_5", ">ptg000001l", ">1", ">chr1", ">chr1 Escherichia coli", ">C7",
           ">scaffold1", ">Scaffold_1", ">scaffold_1|size10400", ">contig00001 len=5",
           ">HiC_scaffold_1", ">utg000001c", ">NC_000913.3 Escherichia coli str. K-12", ">x")
COMPLEMENT = str.maketrans("ACGTN", "TGCAN")


def example(name):
    with gzip.open(os.path.join(EXAMPLES, name), "rt", encoding="ascii") as file:
        return file.read()


def tool(command, data):
    return subprocess.run(command, input=data, stdout=subprocess.PIPE, check=True).stdout


PACKERS = {
    "plain": lambda data: data,
    "gzip": gzip.compress,
    "members": lambda data: gzip.compress(data[:5000]) + gzip.compress(b"") +
    gzip.compress(data[5000:]),
    "bgzip": lambda data: tool(["bgzip", "-c"], data),
    "zstd": lambda data: tool(["zstd", "-q", "-c"], data),
    "xz": lzma.compress,
    "bzip2": bz2.compress,
}


class Forms(unittest.TestCase):
    """Each test makes one form and compares what is found in it with what is found in the plain
    one."""

    @classmethod
    def setUpClass(cls):
        with open(os.path.join(EXAMPLES, "scaffolds.fa"), encoding="ascii") as file:
            cls.bases = "".join(file.read().split("\n")[1:])
        cls.reads = (example("reads_1.fq.gz"), example("reads_2.fq.gz"))
        cls.plain = cls.found(cls.fasta(">scaffold1"), *(text.encode() for text in cls.reads))
        assert len(cls.plain) > 3000

    @classmethod
    def fasta(cls, header, width=70, end="\n", change=lambda bases: bases):
        bases = change(cls.bases)
        lines = [header] + [bases[n:n + width] for n in range(0, len(bases), width)]
        return (end.join(lines) + end).encode()

    @staticmethod
    def found(assembly, first, second, options=None, names=("r_1", "r_2")):
        """The alignment records of a run on these files, without the scaffold's name."""
        with tempfile.TemporaryDirectory() as folder:
            for name, data in (("assembly", assembly), (names[0], first), (names[1], second)):
                if data is not None:
                    with open(os.path.join(folder, name), "wb") as file:
                        file.write(data)
            command = [VELK_RUN, "assembly", *(options or ["--pairs", *names]), "-o", "out",
                       "--quiet"]
            done = subprocess.run(command, cwd=folder, stderr=subprocess.PIPE, check=False)
            if done.returncode != 0:
                raise AssertionError(done.stderr.decode())
            view = subprocess.run(["samtools", "view", "out/reads.bam"], cwd=folder, check=True,
                                  stdout=subprocess.PIPE).stdout.decode()
        records = []
        for line in view.splitlines():
            columns = line.split("\t")
            columns[2] = "scaffold"
            records.append(tuple(columns))
        return records

    def same(self, assembly=None, first=None, second=None, **more):
        texts = [text.encode() for text in self.reads]
        self.assertEqual(
            self.plain,
            self.found(assembly if assembly is not None else self.fasta(">scaffold1"),
                       first if first is not None else texts[0],
                       second if second is not None else texts[1], **more))

    def test_headers(self):
        for header in HEADERS:
            with self.subTest(header=header):
                self.same(self.fasta(header))

    def test_assembly_with_other_lines(self):
        for width, end in ((1, "\n"), (60, "\r\n"), (10 ** 9, "\n"), (61, "\r\n")):
            with self.subTest(width=width, end=end):
                self.same(self.fasta(">a", width, end))

    def test_soft_masked_assembly(self):
        self.same(self.fasta(">a", change=lambda b: b[:3000].lower() + b[3000:]))

    def test_packed_files(self):
        for name, pack in PACKERS.items():
            with self.subTest(packer=name):
                self.same(pack(self.fasta(">a")), *(pack(text.encode()) for text in self.reads))

    def test_reads_with_carriage_returns(self):
        self.same(None, *(text.replace("\n", "\r\n").encode() for text in self.reads))

    def test_reads_in_lower_case(self):
        def lowered(text):
            lines = text.split("\n")
            lines[1::4] = [line.lower() for line in lines[1::4]]
            return "\n".join(lines).encode()
        self.same(None, *map(lowered, self.reads))

    def test_wrapped_reads(self):
        def wrapped(text):
            lines = text.split("\n")
            for n in range(1, len(lines), 2):
                if n % 4 != 2:
                    lines[n] = lines[n][:33] + "\n" + lines[n][33:]
            return "\n".join(lines).encode()
        self.same(None, *map(wrapped, self.reads))

    def test_reads_without_last_newline(self):
        self.same(None, *(text.rstrip("\n").encode() for text in self.reads))

    def interleaved(self):
        lines = [text.split("\n") for text in self.reads]
        records = []
        for n in range(0, len(lines[0]) - 3, 4):
            records += lines[0][n:n + 4] + lines[1][n:n + 4]
        return "\n".join(records) + "\n"

    def test_interleaved_file(self):
        self.same(None, self.interleaved().encode(), b"", options=["--interleaved", "r_1"])

    def test_bam(self):
        data = tool(["samtools", "import", "-s", "-", "-o", "-", "-O", "BAM"],
                    self.interleaved().encode())
        self.same(None, data, b"", options=["--interleaved", "r_1"])

    def test_pipes(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "assembly"), "wb") as file:
                file.write(self.fasta(">a"))
            for number, text in enumerate(self.reads, 1):
                with open(os.path.join(folder, f"r_{number}"), "w", encoding="ascii") as file:
                    file.write(text)
            script = (f"{VELK_RUN} <(cat assembly) <(cat r_1) <(gzip -c r_2) -o out --quiet && "
                      "samtools view out/reads.bam | wc -l")
            done = subprocess.run(["bash", "-c", script], cwd=folder, stdout=subprocess.PIPE,
                                  check=True)
        self.assertEqual(len(self.plain), int(done.stdout))

    def test_threads(self):
        for threads in (1, 2, 7):
            with self.subTest(threads=threads):
                self.same(options=["--pairs", "r_1", "r_2", "-t", str(threads)])


if __name__ == "__main__":
    VELK_RUN, EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
