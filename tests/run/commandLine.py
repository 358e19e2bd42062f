#!/usr/bin/env python3
"""What velk-run says and how it ends where it cannot make a result: message and status of each case,
and that nothing is left behind.

    commandLine.py VELK_RUN EXAMPLES
"""

import gzip
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

VELK_RUN = EXAMPLES = ""
MORE = " (velk-run --help tells more)"
READS = ["reads_1.fq.gz", "reads_2.fq.gz"]

# Arguments, status and message, without "[ERROR]: ", of runs on the files that setUp() makes.
CASES = (
    ("no_arguments", [], 2, "assembly is required" + MORE),
    ("no_folder", ["scaffolds.fa"], 2, "--output is required" + MORE),
    ("no_reads", ["scaffolds.fa", "-o", "out"], 2, "no reads are given" + MORE),
    ("one_bare_file", ["scaffolds.fa", READS[0], "-o", "out"], 2,
     "two files of mates may stand behind the assembly, not 1" + MORE),
    ("no_assembly", ["gone.fa", *READS, "-o", "out"], 1, "gone.fa: No such file or directory"),
    ("no_read_file", ["scaffolds.fa", READS[0], "gone.fq", "-o", "out"], 1,
     "gone.fq: No such file or directory"),
    ("same_file_twice", ["scaffolds.fa", READS[0], READS[0], "-o", "out"], 3,
     "a file is given twice: reads_1.fq.gz"),
    ("exchanged_files", ["scaffolds.fa", READS[1], READS[0], "-o", "out"], 3,
     'reads_2.fq.gz, record 1: its name is "EAS20_8_6_1_6_1211/2", and the one in reads_1.fq.gz is'
     ' named "EAS20_8_6_1_6_1211/1"; the second mate comes first'),
    ("no_gap", ["nogap.fa", *READS, "-o", "out"], 3,
     "no gap (a run of N between two contigs): nogap.fa"),
    ("name_twice", ["twice.fa", *READS, "-o", "out"], 2,
     "twice.fa, line 3: a second scaffold with the name a"),
    ("forbidden_name", ["name.fa", *READS, "-o", "out"], 2,
     "name.fa, line 1: the name a(1 has the character '(', which SAM files forbid there"),
    ("header_without_name", ["noname.fa", *READS, "-o", "out"], 2,
     "noname.fa, line 1: a header without a name"),
    ("sequence_first", ["kind.tsv", *READS, "-o", "out"], 2,
     "kind.tsv, line 1: sequence in front of the first header, which begins with '>'"),
    ("reads_first", [*READS, "scaffolds.fa", "-o", "out"], 2,
     "reads_1.fq.gz begins with '@', as reads do; the assembly is a FASTA file, and comes first"),
    ("bam_first", ["reads.bam", *READS, "-o", "out"], 2,
     "reads.bam is a BAM file; the assembly is a FASTA file, and comes first"),
    ("verb_misspelt", ["exract", "out", "2"], 2,
     "exract: no such file; did you mean the verb extract?" + MORE),
    ("option_for_a_file", ["scaffolds.fa", "--mate-pairs", READS[0], "-o", "out"], 2,
     "--mate-pairs: -o stands where one of its values (R1 R2) should" + MORE),
    ("option_for_all_files", ["scaffolds.fa", "--single", "-o", "out"], 2,
     "--single: -o stands where one of its values (FILE...) should" + MORE),
    ("assembly_behind_options", ["--pairs", *READS, "scaffolds.fa", "-o", "out"], 2,
     "assembly is required; it comes first, as options of reads take all files behind them" + MORE),
    ("library_of_a_used_name", ["scaffolds.fa", *READS, "--samplesheet", "lib1.tsv", "-o", "out"],
     2, "two libraries have the name lib1"),
    ("identity_not_a_number", ["scaffolds.fa", *READS, "-M", "nan", "-o", "out"], 2,
     "--min-identity: Value nan not in range" + MORE),
    ("overlap_not_a_number", ["scaffolds.fa", *READS, "-O", "-nan", "-o", "out"], 2,
     "--min-overlap: Value -nan not in range" + MORE),
    ("endless_reads", ["scaffolds.fa", *READS, "-r", "1000000001", "-o", "out"], 2,
     "--read-length: Value 1000000001 not in range 0 to 1000000000" + MORE),
    ("foreign_file", ["scaffolds.fa", *READS, "-o", "taken"], 1,
     "taken/reads.bam is there, and no earlier result of velk-run lists it; remove it, or choose"
     " another folder"),
    ("folder_is_a_file", ["scaffolds.fa", *READS, "-o", "name.fa"], 1,
     "name.fa is there, and is no folder"),
    ("cut_record", ["scaffolds.fa", "cut_1.fq", "few_2.fq", "-o", "out"], 3,
     "cut_1.fq, record 44: it is cut short"),
    ("few_pairs", ["scaffolds.fa", "few_1.fq", "few_2.fq", "-o", "out"], 3,
     "fewer than 100 pairs lie on one contig, so the insert size can't be measured; give it, and"
     " the orientation, in a sample sheet (--samplesheet): library lib1"),
    ("no_pairs_even_if_forced", ["scaffolds.fa", "strange_1.fa", "strange_2.fa", "-o", "out",
                                 "--force"], 3,
     "no pair of library lib1 lies on one contig; give its insert size, and the orientation, in a"
     " sample sheet (--samplesheet)"),
    ("fewer_mates", ["scaffolds.fa", "few_1.fq", "fewer_2.fq", "-o", "out"], 3,
     "few_1.fq, record 100: it has no mate: fewer_2.fq has 99 records"),
    ("damaged_file", ["scaffolds.fa", READS[0], "damaged_2.fq.gz", "-o", "out"], 3,
     "damaged_2.fq.gz, record 2636: damaged gzip data: unexpected end of file"),
    ("sheet_is_missing", ["scaffolds.fa", "--samplesheet", "gone.tsv", "-o", "out"], 2,
     "gone.tsv: can't be opened"),
    ("sheet_without_column", ["scaffolds.fa", "--samplesheet", "column.tsv", "-o", "out"], 2,
     "column.tsv, line 1: a column R1 is missing"),
    ("sheet_with_unknown_column", ["scaffolds.fa", "--samplesheet", "unknown.tsv", "-o", "out"], 2,
     'unknown.tsv, line 1: no column is named "lane"; there are library, R1, R2, kind, insert and'
     " orientation"),
    ("sheet_with_bad_insert", ["scaffolds.fa", "--samplesheet", "insert.tsv", "-o", "out"], 2,
     'insert.tsv, line 2: the insert "200bp" is no number of bases'),
    ("sheet_with_bad_kind", ["scaffolds.fa", "--samplesheet", "kind.tsv", "-o", "out"], 2,
     'kind.tsv, line 2: no kind is named "triples"; there are pairs, mate-pairs, interleaved and'
     " single"),
    ("agp_is_no_agp", ["scaffolds.fa", *READS, "--agp", "kind.tsv", "-o", "out"], 2,
     "kind.tsv, line 1: not a line of an AGP file"),
    ("long_reads", ["scaffolds.fa", "--single", "long.fa", "-o", "out"], 3,
     "long reads (median over 1,000 bases): places are found without gaps in the alignment, which"
     " nearly all long reads have: long.fa"),
)


# Of the verbs, and of words that are like an option.
USAGE = (
    (["scaffolds.fa", *READS, "--ouput", "out"],
     "--output is required; did you mean --output by --ouput?" + MORE),
    (["scaffolds.fa", *READS, "-o", "out", "--thread=2"],
     "The following argument was not expected: --thread=2; did you mean --threads by --thread?"
     + MORE),
    (["scaffolds.fa", *READS, "-o", "out", "--anchors"],
     "The following argument was not expected: --anchors" + MORE),
    (["extract", "out"], "gaps is required: numbers of gaps, as in gaps.tsv, or ranges, as 3-7,"
     " behind the folder (velk-run extract --help tells more)"),
    (["extract", "out", "2", "--flank", "30"],
     "The following argument was not expected: --flank; did you mean --flanks by --flank?"
     " (velk-run extract --help tells more)"),
    (["scaffolds.fa", *READS, "-o", "out", "--placeholder", "100x"],
     "Could not convert: --placeholder = 100x, which is no number" + MORE),
    (["extract", "out", "3", "--flanks", "ten"],
     "Could not convert: --flanks = ten, which is no number (velk-run extract --help tells more)"),
    (["extract", "out", "7-3"], '"7-3" is neither the number of a gap nor a range, as 3-7'
     " (velk-run extract --help tells more)"),
    (["extract", "out", "gap3"], '"gap3" is neither the number of a gap nor a range, as 3-7'
     " (velk-run extract --help tells more)"),
    (["extract", "out", "3", "--flanks", "501"], "--flanks: of each flank 500 bases are kept, not"
     " 501 (velk-run extract --help tells more)"),
    (["plan", "scaffolds.fa", "-o", "p"], "no reads are given (velk-run plan --help tells more)"),
    (["plan", "scaffolds.fa", READS[0], "-o", "p"], "two files of mates may stand behind the"
     " assembly, not 1 (velk-run plan --help tells more)"),
    (["task", "plan.json"], "task is required (velk-run task --help tells more)"),
    (["gather", "plan.json"], "shares is required (velk-run gather --help tells more)"),
)

# Of runs that are forced: what a sample shows of a file ends the run where it meets it.
FORCED = (
    (["scaffolds.fa", READS[0], "damaged_2.fq.gz", "-o", "out", "--force", "--quiet"],
     "damaged_2.fq.gz, record 2636: damaged gzip data: unexpected end of file"),
)


def write(folder, name, text):
    with open(os.path.join(folder, name), "w", encoding="ascii") as file:
        file.write(text)


class CommandLine(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ["scaffolds.fa", *READS]:
            shutil.copy(os.path.join(EXAMPLES, name), self.folder)
        texts = []
        for name in READS:
            with gzip.open(os.path.join(EXAMPLES, name), "rt", encoding="ascii") as file:
                texts.append(file.read().split("\n"))
        write(self.folder, "few_1.fq", "\n".join(texts[0][:400]) + "\n")
        write(self.folder, "few_2.fq", "\n".join(texts[1][:400]) + "\n")
        write(self.folder, "fewer_2.fq", "\n".join(texts[1][:396]) + "\n")
        write(self.folder, "cut_1.fq", "\n".join(texts[0][:400])[:10001])
        write(self.folder, "nogap.fa", ">a\n" + "ACGTTGCA" * 20 + "\n")
        write(self.folder, "twice.fa", ">a\nACGT\n>a\nACG\n")
        write(self.folder, "name.fa", ">a(1 b\nACGT\n")
        write(self.folder, "noname.fa", "> a\nACGT\n")
        write(self.folder, "long.fa", ">a\n" + "ACGTTGCA" * 200 + "\n")
        for name in ("strange_1.fa", "strange_2.fa"):
            write(self.folder, name, ">a\n" + "ACCGTTGC" * 10 + "\n")
        write(self.folder, "lib1.tsv", f"library\tR1\nlib1\t{READS[0]}\n")
        with gzip.open(os.path.join(self.folder, "reads.bam"), "wb") as file:
            file.write(b"BAM\1" + bytes(100))
        write(self.folder, "column.tsv", "library\tR2\nl\tx\n")
        write(self.folder, "unknown.tsv", "library\tR1\tlane\nl\tx\t1\n")
        write(self.folder, "insert.tsv", "library\tR1\tR2\tinsert\nl\tx\ty\t200bp\n")
        write(self.folder, "kind.tsv", "library\tR1\tkind\nl\tx\ttriples\n")
        with open(os.path.join(EXAMPLES, READS[1]), "rb") as file:
            damaged = file.read(200000)
        with open(os.path.join(self.folder, "damaged_2.fq.gz"), "wb") as file:
            file.write(damaged)
        os.mkdir(os.path.join(self.folder, "taken"))
        write(os.path.join(self.folder, "taken"), "reads.bam", "mine")

    def run_on(self, arguments):
        return subprocess.run([VELK_RUN, *arguments], cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False)

    def test_failures(self):
        before = sorted(os.listdir(self.folder))
        for name, arguments, status, message in CASES:
            with self.subTest(case=name):
                done = self.run_on(arguments)
                self.assertEqual((status, b"", f"[ERROR]: {message}\n"),
                                 (done.returncode, done.stdout, done.stderr.decode()))
                self.assertEqual(before, sorted(os.listdir(self.folder)))
        self.assertEqual(["reads.bam"], os.listdir(os.path.join(self.folder, "taken")))

    def test_usage(self):
        for arguments, message in USAGE:
            with self.subTest(arguments=arguments):
                done = self.run_on(arguments)
                self.assertEqual((2, b"", f"[ERROR]: {message}\n"),
                                 (done.returncode, done.stdout, done.stderr.decode()))

    def test_forced_failures(self):
        for arguments, message in FORCED:
            done = self.run_on(arguments)
            self.assertEqual((1, f"[WARNING]: {message}\n[ERROR]: {message}\n"),
                             (done.returncode, done.stderr.decode()))

    def test_help_and_version(self):
        for option in ("--help", "-h", "--version"):
            done = self.run_on([option])
            self.assertEqual((0, b""), (done.returncode, done.stderr))
            self.assertIn(b"velk-run", done.stdout)

    def extracted(self, *arguments):
        done = self.run_on(["extract", "out", *arguments])
        self.assertEqual((0, b""), (done.returncode, done.stderr))
        return done.stdout

    def test_ranges_and_parts_of_gaps(self):
        self.run_on(["scaffolds.fa", *READS, "-o", "out", "--quiet"])
        one, two, three = (self.extracted(gap) for gap in "123")
        self.assertEqual(one + two + three, self.extracted("1-3"))
        self.assertEqual(three + one + two, self.extracted("3-3", "1-2"))
        pairs, singles = (self.extracted("2", f"--{part}-only") for part in ("pairs", "singles"))
        self.assertEqual(two, pairs + singles)
        self.assertTrue(pairs and singles)

    def test_a_second_run_takes_the_place_of_the_first(self):
        for _ in range(2):
            done = self.run_on(["scaffolds.fa", *READS, "-o", "out", "--quiet"])
            self.assertEqual((0, b"", b""), (done.returncode, done.stdout, done.stderr))
        self.assertIn("summary.json", os.listdir(os.path.join(self.folder, "out")))

    def test_a_failed_run_leaves_no_earlier_result_that_looks_like_its_own(self):
        self.run_on(["scaffolds.fa", *READS, "-o", "out", "--quiet"])
        done = self.run_on(["scaffolds.fa", READS[0], "damaged_2.fq.gz", "-o", "out", "--quiet",
                            "--force"])
        self.assertEqual(1, done.returncode)
        self.assertEqual([], os.listdir(os.path.join(self.folder, "out")))

    def test_an_earlier_result_stays_where_a_run_ends_before_the_search(self):
        self.run_on(["scaffolds.fa", *READS, "-o", "out", "--quiet"])
        before = sorted(os.listdir(os.path.join(self.folder, "out")))
        for arguments, status in ((["gone.fa", *READS], 1),
                                  (["scaffolds.fa", READS[0], "gone.fq"], 1),
                                  (["twice.fa", *READS], 2),
                                  (["scaffolds.fa", "few_1.fq", "few_2.fq"], 3),
                                  (["scaffolds.fa", READS[0], "damaged_2.fq.gz"], 3)):
            self.assertEqual(status, self.run_on([*arguments, "-o", "out"]).returncode)
        self.assertIn("summary.json", before)
        self.assertEqual(before, sorted(os.listdir(os.path.join(self.folder, "out"))))

    def test_a_sheet_may_begin_with_a_byte_order_mark(self):
        sheet = "\ufefflibrary\tR1\tR2\r\nl\t" + "\t".join(READS) + "\r\n"
        with open(os.path.join(self.folder, "marked.tsv"), "wb") as file:
            file.write(sheet.encode())
        done = self.run_on(["scaffolds.fa", "--samplesheet", "marked.tsv", "-o", "out", "--quiet"])
        self.assertEqual((0, b""), (done.returncode, done.stderr))

    def test_nothing_found_is_a_warning(self):
        write(self.folder, "one.fq", "@a\nACGTACGT\n+\nIIIIIIII\n")
        done = self.run_on(["scaffolds.fa", "--single", "one.fq", "-o", "out", "--quiet"])
        self.assertEqual((0, "[WARNING]: no reads were found for any gap\n"),
                         (done.returncode, done.stderr.decode()))
        check = subprocess.run(["samtools", "quickcheck", "out/reads.bam"], cwd=self.folder,
                               check=False)
        self.assertEqual(0, check.returncode)

    def test_what_is_said_at_the_end(self):
        done = self.run_on(["scaffolds.fa", *READS, "-o", "out"])
        lines = done.stderr.decode().splitlines()
        self.assertEqual(["Found 2,462 of 16,000 reads; 6 of 6 gaps have reads.",
                          "  at gaps: 1,300 exact, 808 estimate, 354 contained (belong in a contig"
                          " near by)",
                          "  lib1: found 2,462 of 16,000, insert size 215 +- 11, FR"], lines[:3])

    def test_reads_of_a_gap_in_a_compressed_file(self):
        self.run_on(["scaffolds.fa", *READS, "-o", "out", "--quiet"])
        self.assertEqual(b"", self.extracted("1", "-o", "one.fq.gz"))
        with gzip.open(os.path.join(self.folder, "one.fq.gz")) as file:
            self.assertEqual(self.extracted("1"), file.read())
        done = self.run_on(["extract", "out", "1", "-o", "/dev/full/one.fq.gz"])
        self.assertEqual((1, "[ERROR]: /dev/full/one.fq.gz can't be opened: Not a directory\n"),
                         (done.returncode, done.stderr.decode()))

    def test_extracts_that_fail(self):
        self.run_on(["scaffolds.fa", *READS, "-o", "out", "--quiet"])
        no_space = "can't be written: No space left on device"
        no_folder = "can't be opened: No such file or directory"
        for arguments, message in ((["-o", "/dev/full"], f"/dev/full {no_space}"),
                                   (["--bam", "-o", "/dev/full"], f"/dev/full {no_space}"),
                                   (["-o", "no/x.gz"], f"no/x.gz {no_folder}"),
                                   (["-o", "no/x.fq"], f"no/x.fq {no_folder}"),
                                   (["--bam", "-o", "no/x.bam"], f"no/x.bam {no_folder}")):
            done = self.run_on(["extract", "out", "5", *arguments])
            self.assertEqual((1, f"[ERROR]: {message}\n"), (done.returncode, done.stderr.decode()))
        for form in ([], ["--bam"]):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([VELK_RUN, "extract", "out", "5", *form], cwd=self.folder,
                                      stdout=full, stderr=subprocess.PIPE, check=False)
            self.assertEqual((1, f"[ERROR]: standard output {no_space}\n"),
                             (done.returncode, done.stderr.decode()))

    def test_extracts_of_damaged_bam_files(self):
        self.run_on(["scaffolds.fa", *READS, "-o", "out", "--quiet"])
        bam = os.path.join(self.folder, "out", "reads.bam")
        with open(bam, "rb") as file:
            whole = file.read()
        damaged = "out/reads.bam or its index can't be read, or is damaged"
        for bytes_left, message in ((30000, damaged), (300, damaged), (0, damaged),
                                    (None, "out/reads.bam can't be opened: No such file or directory"),
                                    (len(whole), damaged)):  # then the index is missing
            if bytes_left is None:
                os.remove(bam)
            else:
                with open(bam, "wb") as file:
                    file.write(whole[:bytes_left])
            if bytes_left == len(whole):
                os.remove(bam + ".bai")
            done = self.run_on(["extract", "out", "5", "--bam"])
            self.assertEqual((1, b"", f"[ERROR]: {message}\n"),
                             (done.returncode, done.stdout, done.stderr.decode()))

    def test_forced_run(self):
        done = self.run_on(["scaffolds.fa", "few_1.fq", "few_2.fq", "-o", "out", "--force",
                            "--quiet"])
        self.assertEqual(0, done.returncode)
        self.assertIn(b"[WARNING]: fewer than 100 pairs", done.stderr)


if __name__ == "__main__":
    VELK_RUN, EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
