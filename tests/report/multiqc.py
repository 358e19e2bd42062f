#!/usr/bin/env python3
"""MultiQC over the folders of two runs: its own data must hold their figures, a row a sample.

    multiqc.py VELK_RUN VELK_REPORT
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

VELK_RUN = ""
EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")


class TwoRuns(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def test_a_row_a_sample(self):
        inputs = {"one": ["reads_1.fq.gz", "reads_2.fq.gz"], "other": ["--single", "reads_1.fq.gz"]}
        summaries = {}
        for sample, reads in inputs.items():
            out = os.path.join(self.folder, sample)
            subprocess.run([VELK_RUN, "scaffolds.fa", *reads, "--sample", sample, "-o", out, "--quiet"],
                           cwd=EXAMPLES, check=True)
            with open(os.path.join(out, "summary.json"), encoding="utf-8") as file:
                summaries[sample] = json.load(file)
        made = subprocess.run(["multiqc", "--no-ansi", "--outdir", "both", "one", "other"],
                              cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, check=False,
                              env=os.environ | {"HOME": self.folder, "MPLCONFIGDIR": self.folder})
        self.assertEqual(made.returncode, 0, made.stdout)
        self.assertNotIn("Traceback", made.stdout)
        self.assertRegex(made.stdout, r"velk: Found 2 samples \(table\)")
        self.assertRegex(made.stdout, r"velk_gaps: Found 2 samples \(bargraph\)")
        self.assertTrue(os.path.exists(os.path.join(self.folder, "both", "multiqc_report.html")))
        data = os.path.join(self.folder, "both", "multiqc_data")
        with open(os.path.join(data, "multiqc_velk_table.txt"), encoding="utf-8") as file:
            lines = [line.rstrip("\n").split("\t") for line in file]
        rows = {line[0]: dict(zip(lines[0][1:], line[1:])) for line in lines[1:]}
        self.assertEqual(set(rows), set(inputs))
        for sample, row in rows.items():
            results = summaries[sample]["results"]
            for key in ("reads_searched", "reads_found", "gaps_with_reads"):
                self.assertEqual(float(row[key]), results[key])
            self.assertEqual(float(row["gaps"]), summaries[sample]["assembly"]["gaps"])
            self.assertEqual(float(row["gaps_covered"]),
                             summaries[sample]["report"]["gaps_covered_by_exact_reads"])


if __name__ == "__main__":
    VELK_RUN = os.path.abspath(sys.argv[1])
    unittest.main(argv=sys.argv[:1])
