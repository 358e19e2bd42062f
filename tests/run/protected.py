#!/usr/bin/env python3
"""What velk-run never replaces: its inputs, the results it reads from, and files of others; and that
an extract is there as a whole or not at all.

    protected.py VELK_RUN EXAMPLES
"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from plans import SMALL_FILES

VELK_RUN = EXAMPLES = ""
READS = ["reads_1.fq.gz", "reads_2.fq.gz"]
SHEET = "library\tR1\tR2\tkind\nl\treads_1.fq.gz\treads_2.fq.gz\tpairs\n"
ANOTHER_FOLDER = "{} is an input, and the results would replace it; choose another folder"
OF_RESULT = ("summary.json", "gaps.idx", "gaps.tsv", "pairs.fq.gz", "pairs.fq.gz.gzi",
             "singles.fq.gz", "flanks.fa.gz", "reads.bam", "report.html")


class Protected(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ["scaffolds.fa", "reads.lib", *READS]:
            shutil.copy(os.path.join(EXAMPLES, name), self.folder)
        self.write("sheet.tsv", SHEET)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="ascii") as file:
            file.write(text)

    def bytes_of(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def call(self, *arguments, before=()):
        done = subprocess.run([*before, VELK_RUN, *arguments], cwd=self.folder, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
        return done.returncode, done.stderr.decode("latin-1")

    def make(self, *arguments):
        status, text = self.call(*arguments, "--quiet")
        self.assertEqual(0, status, text)

    def stays(self, name, message, *arguments, status=1):
        """The call fails with the message, and the file is as it was."""
        before = self.bytes_of(name)
        self.assertEqual((status, f"[ERROR]: {message}\n"), self.call(*arguments))
        self.assertEqual(before, self.bytes_of(name))

    def test_plans_and_their_lists_of_reads(self):
        self.stays("sheet.tsv", "sheet.tsv is an input, and the plan would replace it", "plan",
                   "scaffolds.fa", "--samplesheet", "sheet.tsv", "-o", "sheet.tsv")
        self.stays("reads.lib", "reads.lib is an input, and the plan would replace it", "plan",
                   "scaffolds.fa", "--library", "reads.lib", "-o", "./reads.lib")

    def test_files_called_as_unfinished_ones(self):
        shutil.copy(self.path("scaffolds.fa"), self.path("a.vix.partial"))
        self.stays("a.vix.partial", "a.vix.partial is an input, and the index would replace it",
                   "index", "a.vix.partial", "-o", "a.vix")
        os.symlink("a.vix", self.path("link"))
        self.write("a.vix", "")
        self.stays("a.vix.partial", "a.vix.partial is an input, and the index would replace it",
                   "index", "a.vix.partial", "-o", "link")
        self.write("p.json.partial", SHEET)
        self.stays("p.json.partial", "p.json.partial is an input, and the plan would replace it",
                   "plan", "scaffolds.fa", "--samplesheet", "p.json.partial", "-o", "p.json")

    def test_links_called_as_unfinished_files(self):
        self.write("other", "of others")
        os.symlink("other", self.path("b.vix.partial"))
        self.stays("other", "b.vix.partial can't be opened: Too many levels of symbolic links",
                   "index", "scaffolds.fa", "-o", "b.vix", "--quiet")
        self.assertFalse(os.path.exists(self.path("b.vix")))

    def test_lists_of_reads_within_an_earlier_result(self):
        self.make("scaffolds.fa", *READS, "-o", "out")
        for name, option, text in (("gaps.tsv", "--samplesheet", SHEET.replace("reads", "../reads")),
                                   ("gaps.bed", "--library", "[LIB]\nq1=reads_1.fq.gz\n"
                                    "q2=reads_2.fq.gz\navg_ins=215\n")):
            self.write("out/" + name, text)
            self.stays("out/" + name, ANOTHER_FOLDER.format("out/" + name), "scaffolds.fa", option,
                       "out/" + name, "-o", "out")

    def test_the_folder_of_unfinished_files(self):
        os.makedirs(self.path("d/.partial"))
        shutil.copy(self.path(READS[0]), self.path("d/.partial/pairs.fq.gz"))
        self.stays("d/.partial/pairs.fq.gz", ANOTHER_FOLDER.format("d/.partial/pairs.fq.gz"),
                   "scaffolds.fa", "d/.partial/pairs.fq.gz", READS[1], "-o", "d")
        os.makedirs(self.path("elsewhere"))
        os.makedirs(self.path("e"))
        self.write("elsewhere/reads.bam", "of others")
        os.symlink("../elsewhere", self.path("e/.partial"))
        self.stays("elsewhere/reads.bam", "e/.partial can't be opened: Not a directory",
                   "scaffolds.fa", *READS, "-o", "e")

    def test_a_pipe_is_no_index(self):
        os.mkfifo(self.path("pipe"))
        for arguments in (["scaffolds.fa", *READS, "--index", "pipe", "-o", "out"],
                          ["index", "--check", "pipe"]):
            self.assertEqual((1, "[ERROR]: pipe is no regular file\n"), self.call(*arguments))

    def test_extracts_over_the_result(self):
        self.make("scaffolds.fa", *READS, "-o", "out")
        for name in OF_RESULT:
            for form in ((), ("--fasta",), ("--bam",)):
                with self.subTest(name=name, form=form):
                    self.stays("out/" + name, f"out/{name} is an input, and the extract would replace"
                               " it", "extract", "out", "0", *form, "-o", "out/../out/" + name)

    def test_extracts_are_whole_or_not_there(self):
        self.make("scaffolds.fa", *READS, "-o", "out")
        for name, options in (("a.fq", ()), ("a.fq.gz", ()), ("a.bam", ("--bam",))):
            command = ["extract", "out", "0-5", *options, "-o", name]
            files = sorted(os.listdir(self.folder))
            with self.subTest(name=name):
                status, text = self.call(*command, before=SMALL_FILES)
                self.assertEqual(1, status, text)
                self.assertRegex(text, rf"^\[ERROR\]: {name} can't be written")
                self.assertEqual(files, sorted(os.listdir(self.folder)))
                self.write(name, "earlier")
                status, text = self.call(*command, before=SMALL_FILES)
                self.assertEqual(b"earlier", self.bytes_of(name))
                self.make_extract(command, name)

    def make_extract(self, command, name):
        self.assertEqual((0, ""), self.call(*command))
        self.assertGreater(len(self.bytes_of(name)), 20480)

    def test_damaged_indexes_of_a_result(self):
        self.make("scaffolds.fa", *READS, "-o", "out")
        for name, form in (("gaps.idx", ()), ("pairs.fq.gz.gzi", ()), ("singles.fq.gz.gzi", ()),
                           ("flanks.fa.gz.gzi", ()), ("gaps.idx", ("--bam",)),
                           ("reads.bam.bai", ("--bam",))):
            whole = self.bytes_of("out/" + name)
            for at in {0, len(whole) // 2, len(whole) - 1} if whole else {0}:
                damaged = bytearray(whole or b"\0")
                damaged[at] ^= 1 if whole else 0
                with open(self.path("out/" + name), "wb") as file:
                    file.write(damaged)
                with self.subTest(name=name, at=at):
                    self.assertEqual((1, f"[ERROR]: out/{name} is not as velk-run wrote it\n"),
                                     self.call("extract", "out", "2", *form))
            with open(self.path("out/" + name), "wb") as file:
                file.write(whole)


if __name__ == "__main__":
    VELK_RUN, EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
