#!/usr/bin/env python3
"""What velk-run says of libraries and inputs that are not as they should be, or not as they seem:
sample sheets, library files, AGP files, assemblies, samples of reads.

    inputs.py VELK_RUN EXAMPLES
"""

import gzip
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

VELK_RUN = EXAMPLES = ""
READS = ["reads_1.fq.gz", "reads_2.fq.gz"]
HEAD = "library\tR1\tR2\tkind\tinsert\torientation\n"

# Text of a sample sheet, and what is said of it.
SHEETS = (
    ("", "line 1: a column library is missing"),
    ("library\tR1\tlibrary\nl\ta\tm\n", "two columns are named library"),
    (HEAD, "no library in it"),
    (HEAD + "# l\n\n", "no library in it"),
    ("library\tR1\nl\ta\tb\n", "line 2: more columns than the first line names"),
    (HEAD + ".\ta\n", "line 2: library and R1 must have a value"),
    (HEAD + "l\t.\tb\n", "line 2: library and R1 must have a value"),
    (HEAD + "l\ta\tb\tsingle\n", "line 2: a single library has no R2"),
    (HEAD + "l\ta\tb\tpairs\t0\n", 'line 2: the insert "0" is no number of bases'),
    (HEAD + "l\ta\tb\tpairs\tmany\n", 'line 2: the insert "many" is no number of bases'),
    (HEAD + "l\ta\tb\tpairs\t.\tFF\n", 'line 2: no orientation is named "FF"; there are FR and RF'),
    (HEAD + "l\ta\tb\nl\tc\td\tmate-pairs\n",
     "line 3: library l has another kind, insert or orientation than above"),
    (HEAD + "l\ta\tb\tpairs\t9\nl\tc\td\tpairs\t8\n",
     "line 3: library l has another kind, insert or orientation than above"),
    (HEAD + "l\ta\tb\tpairs\t9\tRF\nl\tc\td\tpairs\t9\n",
     "line 3: library l has another kind, insert or orientation than above"),
)

# Text of an assembly, and what is said of it (status 2).
ASSEMBLIES = (
    (">a\nACGT\nAC!T\n", ", line 3: the character '!' is no base"),
    (">*a\nACGT\n", ", line 1: the name *a has the character '*', which SAM files forbid there"),
    (">=a\nACGT\n", ", line 1: the name =a has the character '=', which SAM files forbid there"),
    (">\xe9\nACGT\n", ", line 1: the name \xe9 has the character '\xe9', which SAM files forbid"
     " there"),
    ("\n \t\r\nACGT\n>a\n", ", line 3: sequence in front of the first header, which begins with"
     " '>'"),
    ("@HD\tVN:1.6\n", " begins with '@', as reads do; the assembly is a FASTA file, and comes first"),
)


class Inputs(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ["scaffolds.fa", *READS]:
            shutil.copy(os.path.join(EXAMPLES, name), self.folder)
        for name, number in (("few_1.fq", 0), ("few_2.fq", 1)):
            with gzip.open(os.path.join(EXAMPLES, READS[number]), "rt", encoding="ascii") as file:
                self.write(name, "".join(line for line, _ in zip(file, range(400))))

    def write(self, name, text):
        with open(os.path.join(self.folder, name), "w", encoding="latin-1", newline="") as file:
            file.write(text)

    def run_on(self, *arguments, before=()):
        done = subprocess.run([*before, VELK_RUN, *arguments, "-o", "out", "--quiet"],
                              cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              check=False)
        self.assertEqual(b"", done.stdout)
        return done.returncode, done.stderr.decode("latin-1")

    def fails(self, status, message, *arguments, before=()):
        self.assertEqual((status, f"[ERROR]: {message}\n"), self.run_on(*arguments, before=before))
        self.assertFalse(os.path.exists(os.path.join(self.folder, "out")))

    def warnings_of(self, *arguments):
        status, text = self.run_on(*arguments)
        self.assertEqual(0, status, text)
        return text

    def test_sheets(self):
        for text, message in SHEETS:
            self.write("sheet.tsv", text)
            mark = ", " if message.startswith("line") else ", line 3: " if text.endswith("\n\n") \
                else ", line 1: "
            with self.subTest(text=text):
                self.fails(2, "sheet.tsv" + mark + message, "scaffolds.fa", "--samplesheet",
                           "sheet.tsv")

    def test_a_sheet_with_what_it_may_have(self):
        shutil.copy(os.path.join(self.folder, "few_1.fq"), os.path.join(self.folder, "one.fq"))
        self.write("sheet.tsv", "R2\tlibrary\tR1\tkind\n# none\n\n"
                   f"{READS[1]}\tl\t{READS[0]}\t.\n.\ts\tone.fq\tsingle\nfew_2.fq\tl\tfew_1.fq\n")
        self.assertEqual("", self.warnings_of("scaffolds.fa", "--samplesheet", "sheet.tsv"))

    def test_agp_files(self):
        self.fails(1, "gone.agp: can't be opened", "scaffolds.fa", *READS, "--agp", "gone.agp")
        for line in ("scaffold1\t0\t9\t1\tU\n", "scaffold1\t9\t8\t1\tU\n", "scaffold1\tx\n"):
            self.write("a.agp", "# what is left out\n\n" + line)
            self.fails(2, "a.agp, line 3: not a line of an AGP file", "scaffolds.fa", *READS,
                       "--agp", "a.agp")
        self.write("a.agp", "scaffold1\t1450\t2203\t1\tU\t100\tscaffold\tyes\tna\n")
        self.assertEqual("", self.warnings_of("scaffolds.fa", *READS, "--agp", "a.agp"))
        self.write("a.agp", "scaffold1\t1450\t2203\t1\tN\t100\tscaffold\tyes\tna\n"
                   "other\t1\t2\t1\tU\nscaffold1\t1\t2\t1\tU\n")
        self.assertEqual("[WARNING]: no gap is one of unknown length (--placeholder, --agp):"
                         " scaffolds.fa\n",
                         self.warnings_of("scaffolds.fa", *READS, "--agp", "a.agp"))

    def test_assemblies(self):
        for text, message in ASSEMBLIES:
            self.write("a.fa", text)
            with self.subTest(text=text):
                self.fails(2, "a.fa" + message, "a.fa", *READS)
        self.fails(3, "no contig is as long as a k-mer (-k) and the shortest contig (-L):"
                   " scaffolds.fa", "scaffolds.fa", "--single", READS[0], "-k", "100000")

    def test_places_of_a_finding(self):
        for name in ("b", "c"):
            shutil.copy(os.path.join(self.folder, "few_1.fq"), os.path.join(self.folder, name))
        os.symlink("few_1.fq", os.path.join(self.folder, "a"))
        self.fails(3, "a file is given twice: a (few_1.fq)", "scaffolds.fa", "few_1.fq", "a")
        self.fails(3, "a file is given twice: few_1.fq and one more", "scaffolds.fa", "--single",
                   "few_1.fq", "few_1.fq", "b", "b")
        self.fails(3, "a file is given twice: few_1.fq and 2 more", "scaffolds.fa", "--single",
                   "few_1.fq", "few_1.fq", "b", "b", "c", "c")

    def test_too_many_files(self):
        self.fails(3, "too many files for one process (ulimit -n): the run opens 35, and 30 are"
                   " allowed", "scaffolds.fa", *READS, before=["prlimit", "--nofile=30"])

    def test_samples(self):
        self.write("empty.fq", "")
        self.assertEqual("[WARNING]: no reads in it: empty.fq\n[WARNING]: no reads were found for"
                         " any gap\n", self.warnings_of("scaffolds.fa", "--single", "empty.fq"))
        shutil.rmtree(os.path.join(self.folder, "out"))
        self.write("old.fq", "@a\n" + "ACGTTGCA" * 5 + "\n+\n" + "fghB" * 10 + "\n")
        self.fails(3, "qualities are counted from 64, not from 33: old.fq", "scaffolds.fa",
                   "--single", "old.fq")
        self.assertEqual("[WARNING]: 15,267 reads of pairs are longer than the read length of 50"
                         " bases (-r)\n", self.warnings_of("scaffolds.fa", *READS, "-r", "50"))

    def test_words(self):
        for text in ("a b", "", "\t"):
            self.fails(2, "the name of the sample (--sample) must be a word of printable characters"
                       " without blanks", "scaffolds.fa", *READS, "--sample", text)
        self.write("sheet.tsv", f"library\tR1\na b\t{READS[0]}\n")
        self.fails(2, "the name of a library must be a word of printable characters without blanks",
                   "scaffolds.fa", "--samplesheet", "sheet.tsv")

    def test_a_name_that_gets_too_long(self):
        """Names that two libraries have get the library's in front."""
        with gzip.open(os.path.join(EXAMPLES, READS[0]), "rt", encoding="ascii") as file:
            lines = file.read().splitlines()
        for name in ("x.fq", "y.fq"):
            lines[::4] = (f"@{'n' * 250}{n:04}" for n in range(len(lines) // 4))
            self.write(name, "\n".join(lines) + "\n")
        status, text = self.run_on("scaffolds.fa", "--single", "x.fq", "--single", "y.fq")
        self.assertEqual(1, status)
        self.assertRegex(text, r"^\[ERROR\]: read lib[12]:n{35}\.\.\.: its name has more than 254"
                         r" letters, which BAM can't hold\n$")

    def test_given_values_that_are_not_the_measured_ones(self):
        files = "\t".join(READS)
        for insert, orientation, expected in (
                ("215", "FR", ""), ("225", "FR", ""),
                ("250", "FR", "[WARNING]: a given insert size differs from the measured one: library"
                 " l, 250 bases given and used, 215 measured\n"),
                ("215", "RF", "[WARNING]: a given orientation differs from the measured one: library"
                 " l, RF given and used, FR measured\n")):
            self.write("given.tsv", "library\tR1\tR2\tinsert\torientation\n"
                  f"l\t{files}\t{insert}\t{orientation}\n")
            self.assertEqual(expected,
                             self.warnings_of("scaffolds.fa", "--samplesheet", "given.tsv"))

    def test_many_gaps_of_a_length_that_looks_made_up(self):
        with open(os.path.join(self.folder, "scaffolds.fa"), encoding="ascii") as file:
            bases = "".join(line.strip() for line in file if line[0] != ">").replace("N", "")
        for length, gaps, expected in (
                (100, 9, ""), (99, 10, ""),
                (200, 10, "[WARNING]: 10 gaps have exactly 200 N, as programs write for gaps of"
                 " unknown length; if these are such, --placeholder 200 finds more of their reads:"
                 " made.fa\n")):
            pieces = [bases[600 * n:600 * n + 500] for n in range(gaps + 1)]
            self.write("made.fa", ">a\n" + ("N" * length).join(pieces) + "\n")
            self.assertEqual(expected, self.warnings_of("made.fa", *READS))
            self.assertEqual("", self.warnings_of("made.fa", "--placeholder", str(length), *READS))

    def test_single_reads_of_a_library_file(self):
        self.write("one.lib", "[LIB]\navg_ins=215\nq1=few_1.fq\nq2=few_2.fq\nq=cut.fq\n")
        shutil.copy(os.path.join(self.folder, "few_1.fq"), os.path.join(self.folder, "cut.fq"))
        self.assertEqual("", self.warnings_of("scaffolds.fa", *READS, "--library", "one.lib"))
        with open(os.path.join(self.folder, "out", "summary.json"), encoding="utf-8") as file:
            names = [library["name"] for library in json.load(file)["libraries"]]
        self.assertEqual(["lib1", "lib2", "lib2s"], names)


if __name__ == "__main__":
    VELK_RUN, EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
