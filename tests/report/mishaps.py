#!/usr/bin/env python3
"""velk-report on results that are damaged, of something else or of an older velk-run, and on a full disk.

    mishaps.py VELK_RUN VELK_REPORT
"""

import os
import re
import subprocess
import unittest

from exampleRun import VELK_REPORT, ExampleRun, run, sums


class Mishaps(ExampleRun):
    def rewrite(self, out, name, change):
        """Has `change` make another text of a file."""
        path = os.path.join(out, name)
        with open(path, encoding="utf-8") as file:
            text = file.read()
        self.assertNotEqual(change(text), text)
        with open(path, "w", encoding="utf-8") as file:
            file.write(change(text))

    def test_what_is_no_result(self):
        gone = os.path.join(self.folder, "gone")
        self.failure(1, gone + " holds no whole result of velk-run", gone)
        out = self.copy()
        os.unlink(os.path.join(out, "summary.json"))
        before = sums(out)
        self.failure(1, out + " holds no whole result of velk-run", out)
        self.assertEqual(sums(out), before)

    def test_damage_leaves_the_folder_as_it_was(self):
        for name in ("gaps.tsv", "evidence.tsv", "inserts.tsv", "reads.bam", "gaps.idx"):
            out = self.copy()
            with open(os.path.join(out, name), "r+b") as file:
                file.truncate(os.path.getsize(os.path.join(out, name)) * 2 // 3)
            before = sums(out)
            done = run(VELK_REPORT, out)
            self.assertEqual(done.returncode, 1, name)
            self.assertRegex(done.stderr, rf"^\[ERROR\]: {re.escape(out)}/{re.escape(name)}\b.*\n$")
            self.assertEqual(sums(out), before)

    def test_tables_that_are_none_of_the_run(self):
        """Each change makes the table none that velk-run writes for this run."""
        def at(line, column, field):
            def change(text):
                lines = [each.split("\t") for each in text.split("\n")]
                lines[line][column] = field
                return "\n".join("\t".join(each) for each in lines)
            return change

        for name, change in (("gaps.tsv", at(0, 0, "no")), ("gaps.tsv", lambda text: ""),
                             ("gaps.tsv", lambda text: text.replace("\t", " ", 1)),
                             ("gaps.tsv", lambda text: text[:-1] + "\t1\n"),
                             ("gaps.tsv", at(2, 0, "7")), ("gaps.tsv", at(2, 2, "9999")),
                             ("gaps.tsv", at(2, 2, "3x")), ("gaps.tsv", at(2, 2, "")),
                             ("inserts.tsv", at(0, 0, "no")), ("inserts.tsv", lambda text: ""),
                             ("inserts.tsv", at(1, 0, "other")), ("inserts.tsv", at(1, 1, "RR")),
                             ("inserts.tsv", lambda text: text.replace("\t", " ", 1)),
                             ("inserts.tsv", at(2, 4, "1\t2")), ("inserts.tsv", at(2, 4, "-1"))):
            out = self.copy()
            self.rewrite(out, name, change)
            before = sums(out)
            done = run(VELK_REPORT, out)
            self.assertEqual((done.returncode, done.stdout), (1, ""), name)
            self.assertRegex(done.stderr, rf"^\[ERROR\]: {re.escape(out)}/{re.escape(name)}\b.*\n$")
            self.assertEqual(sums(out), before)

    def test_evidence_of_another_run(self):
        wanted = "/evidence.tsv is not of the same run as gaps.tsv"
        fewer = self.copy()
        self.rewrite(fewer, "evidence.tsv", lambda text: text[:text.rstrip("\n").rindex("\n") + 1])
        self.failure(1, fewer + wanted, fewer)
        renamed = self.copy()
        self.rewrite(renamed, "evidence.tsv", lambda text: text.replace("lib1", "lib2"))
        self.failure(1, renamed + wanted, renamed)

    def test_a_summary_of_something_else(self):
        out = self.copy()
        self.rewrite(out, "summary.json", lambda text: text.replace('"sample"', '"samples"'))
        self.failure(1, out + "/summary.json is not as velk-run writes it", "--text", out)

    def test_a_run_without_evidence(self):
        """As an older velk-run wrote it: a page, without reasons."""
        out = self.copy()
        os.unlink(os.path.join(out, "evidence.tsv"))
        os.unlink(os.path.join(out, "inserts.tsv"))
        done = run(VELK_REPORT, out)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        with open(os.path.join(out, "report.html"), encoding="utf-8") as file:
            page = file.read()
        for part in ("Why gaps have few reads or none", "Depth beside the gaps", "tile-few"):
            self.assertNotIn(part, page)
        self.assertIn("6 of 6 gaps have reads", page)
        self.assertNotIn("All gaps have", run(VELK_REPORT, "--text", out).stdout)

    def test_a_foreign_report_stays(self):
        out = self.copy("--no-report")
        with open(os.path.join(out, "report.html"), "w", encoding="ascii") as file:
            file.write("mine")
        before = sums(out)
        self.failure(1, out + "/report.html is there, and no result of velk-run lists it; remove it",
                     out)
        self.assertEqual(sums(out), before)

    def test_output_that_takes_nothing(self):
        for arguments, what in ((["--help"], "can't write to standard output"),
                                (["--text", self.out], "standard output can't be written: .*"),
                                (["--gap", "1", self.out], "standard output can't be written: .*")):
            with open("/dev/full", "w", encoding="ascii") as full:
                done = subprocess.run([VELK_REPORT, *arguments], stdout=full, stderr=subprocess.PIPE,
                                      check=False, text=True)
            self.assertEqual(done.returncode, 1, arguments)
            self.assertRegex(done.stderr, rf"^\[ERROR\]: {what}\n$")


if __name__ == "__main__":
    unittest.main(argv=["mishaps.py"])
