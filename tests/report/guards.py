#!/usr/bin/env python3
"""What velk-report never writes over: its own inputs.

    guards.py VELK_RUN VELK_REPORT
"""

import os
import shutil
import unittest

from exampleRun import EXAMPLES, VELK_REPORT, ExampleRun, load, run


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


if __name__ == "__main__":
    unittest.main(argv=["guards.py"])
