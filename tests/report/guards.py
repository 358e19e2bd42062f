#!/usr/bin/env python3
"""What velk-report never writes over: its own inputs, and a folder that another process writes to.

    guards.py VELK_RUN VELK_REPORT
"""

import fcntl
import hashlib
import os
import shutil
import subprocess
import unittest

from exampleRun import EXAMPLES, VELK_REPORT, VELK_RUN, ExampleRun, load, run

REPORTS = 20  # at once


def bytes_below(folder):
    """Name -> bytes of all files below a folder."""
    found = {}
    for place, _, names in os.walk(folder):
        for name in names:
            with open(os.path.join(place, name), "rb") as file:
                found[os.path.relpath(os.path.join(place, name), folder)] = file.read()
    return found


class Inputs(ExampleRun):
    def is_refused(self, read, written, *arguments):
        """Nothing changes, and the input is named as velk-report was given it."""
        before = bytes_below(self.folder)
        self.failure(1, f"{read} is an input, and the report would replace it", *arguments, "-o", written)
        self.assertEqual(bytes_below(self.folder), before)

    def test_files_of_velk(self):
        """Whatever is written: a page, or a drawing."""
        native = os.path.join(self.copy("--native"), "native")
        found, scaffolds = os.path.join(native, "found.fa"), os.path.join(native, "scaffolds.fa")
        shutil.copy(os.path.join(EXAMPLES, "scaffolds.fa"), scaffolds)
        for read in (found, scaffolds, *(scaffolds + end for end in (".gapsinfo", ".contigPos", ".contig"))):
            self.is_refused(read, read, "--found", found, scaffolds)
            self.is_refused(read, read, "--gap", "0", "--found", found, scaffolds)
        page = os.path.join(native, "found.html")
        self.assertEqual(run(VELK_REPORT, "--found", found, scaffolds, "-o", page).returncode, 0)
        self.assertEqual(run(VELK_REPORT, "--found", found, scaffolds, "-o", page).returncode, 0)

    def test_files_of_folders(self):
        one, two = self.copy("--native"), self.copy()
        for folder in (one, two):
            for name in ("summary.json", *(file["name"] for file in load(folder, "summary.json")["files"])):
                file = os.path.join(folder, name)
                self.is_refused(file, file, one, two)
        self.is_refused(one + "/gaps.tsv", one + "/gaps.tsv", "--gap", "0", one)
        self.assertEqual(run(VELK_REPORT, "--gap", "0", one, "-o", two + "/gaps.tsv").returncode, 0)
        self.assertEqual(run(VELK_REPORT, one, one, "-o", one + "/both.html").returncode, 0)

    def test_other_names_of_inputs(self):
        """Another path, and links of either kind."""
        out = self.copy()
        table, links = out + "/gaps.tsv", os.path.dirname(out)
        os.symlink(table, links + "/soft")
        os.link(table, links + "/hard")
        os.symlink(out, links + "/folder")
        for name in (out + "/../out//gaps.tsv", os.path.relpath(table), links + "/soft", links + "/hard",
                     links + "/folder/gaps.tsv"):
            self.is_refused(table, name, "--gap", "0", out)
            self.is_refused(table, name, out, self.out)


class Locks(ExampleRun):
    def test_beside_another_process(self):
        """Such as a run that has begun in the folder: also when the earlier result is no longer there."""
        out = self.copy()
        for removed in ((), ("summary.json",)):
            for name in removed:
                os.unlink(os.path.join(out, name))
            before = bytes_below(out)
            partial = os.path.join(out, ".partial")
            os.mkdir(partial)
            lock = os.open(partial, os.O_RDONLY)
            fcntl.flock(lock, fcntl.LOCK_EX)
            names = sorted(os.listdir(out))
            self.failure(1, f"another run writes to {out}", out)
            self.assertEqual(sorted(os.listdir(out)), names)
            os.close(lock)
            os.rmdir(partial)
            self.assertEqual(bytes_below(out), before)

    def test_what_a_killed_run_has_left(self):
        """Files stay as they were, and are in nobody's way; an empty folder goes."""
        out = self.copy()
        names = set(os.listdir(out))
        os.mkdir(out + "/.partial")
        self.assertEqual(run(VELK_REPORT, out).returncode, 0)
        self.assertEqual(set(os.listdir(out)), names)
        os.mkdir(out + "/.partial")
        with open(out + "/.partial/reads.bam", "w", encoding="ascii") as file:
            file.write("part")
        self.assertEqual(run(VELK_REPORT, out).returncode, 0)
        self.assertEqual(os.listdir(out + "/.partial"), ["reads.bam"])
        self.velk_run(out)
        self.assertEqual(set(os.listdir(out)), names)

    def is_whole(self, out):
        """The summary's checksums hold, and nothing else is there."""
        files = load(out, "summary.json")["files"]
        self.assertEqual(set(os.listdir(out)), {"summary.json", *(file["name"] for file in files)})
        for file in files:
            with open(os.path.join(out, file["name"]), "rb") as made:
                self.assertEqual(hashlib.md5(made.read()).hexdigest(), file["md5"], file["name"])

    def ended(self, out, processes):
        """The statuses of processes, which either do their work or are kept out."""
        ends = [(process.communicate()[1], process.returncode) for process in processes]
        for said, status in ends:
            self.assertIn((said, status), (("", 0), (f"[ERROR]: another run writes to {out}\n", 1)))
        self.is_whole(out)
        return [status for _, status in ends]

    @staticmethod
    def start(*command):
        return subprocess.Popen(command, stderr=subprocess.PIPE, text=True, cwd=EXAMPLES)

    def test_reports_at_once(self):
        """On a result that has no report yet, and on one that has."""
        out = self.copy("--no-report")
        for _ in range(2):
            statuses = self.ended(out, [self.start(VELK_REPORT, out) for _ in range(REPORTS)])
            self.assertIn(0, statuses)
            self.assertIn("report.html", os.listdir(out))

    def test_a_run_and_reports(self):
        """The run has the folder, unless a report was there a moment earlier."""
        out = self.copy()
        writer = self.start(VELK_RUN, "scaffolds.fa", "reads_1.fq.gz", "reads_2.fq.gz", "-o", out,
                            "--quiet", "--sample", "new")
        while ".partial" not in os.listdir(out) and writer.poll() is None:
            pass
        reports = []
        while writer.poll() is None:
            reports.append(self.start(VELK_REPORT, out))
            reports[-1].wait()
        status = self.ended(out, [writer, *reports])[0]
        self.assertEqual(load(out, "summary.json")["sample"], "sample" if status else "new")


if __name__ == "__main__":
    unittest.main(argv=["guards.py"])
