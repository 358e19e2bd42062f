#!/usr/bin/env python3
"""The workflow and the job array on the bundled example, by Snakemake on this machine and on a Slurm
of two nodes of its own: the result is that of one run, also after failures.

    workflow.py VELK_RUN ROOT [TEST...]
"""

import gzip
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from privateSlurm import PrivateSlurm

VELK_RUN = ROOT = ""
MEASURED = ("seconds", "machines", "peak_memory_bytes", "spilled_bytes")

# velk-run whose task 1 is killed once, on Slurm with all of its job, and that once has too little
# memory to gather.
KILLED_ONCE = """#!/bin/bash
if [[ "$1 $3" == "task 1" && ! -e killed ]]; then
  touch killed
  [[ -z ${{SLURM_JOB_ID-}} ]] || scancel "$SLURM_JOB_ID"
  kill -9 $$
fi
if [[ $1 == gather && ! -e out-of-memory ]]; then
  touch out-of-memory
  exec prlimit --as=20000000 {velk_run} "$@"
fi
exec {velk_run} "$@"
"""


def write(name, text):
    with open(name, "w", encoding="ascii") as file:
        file.write(text)


def read(*path):
    with open(os.path.join(*path), "rb") as file:
        return file.read()


def result(folder):
    """Name -> bytes of all files of a result, and its summary without what is measured."""
    summary = json.loads(read(folder, "summary.json"))
    for key in MEASURED:
        del summary[key]
    return {entry["name"]: read(folder, entry["name"]) for entry in summary["files"]}, summary


class OnExample(unittest.TestCase):
    """A folder of three tasks, and their result by one run."""

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        os.chdir(self.folder)
        shutil.copy(os.path.join(ROOT, "examples/scaffolds.fa"), "scaffolds.fa")
        for mate in "12":
            with gzip.open(os.path.join(ROOT, f"examples/reads_{mate}.fq.gz"), "rb") as file:
                lines = file.read().splitlines(keepends=True)
            with open(f"a_{mate}.fq", "wb") as file:
                file.writelines(lines[:12000])
            with gzip.open(f"b_{mate}.fq.gz", "wb") as file:
                file.writelines(lines[12000:])
        # The rows of a library need not stand together.
        write("sheet.tsv", "library\tR1\tR2\n# lane 1\npairs\ta_1.fq\ta_2.fq\nsingle\ta_1.fq\t.\n"
              "pairs\tb_1.fq.gz\tb_2.fq.gz\n")
        shutil.copytree(os.path.join(ROOT, ".tests/config"), "config")
        subprocess.run([VELK_RUN, "scaffolds.fa", "--samplesheet", "sheet.tsv", "--force", "-o",
                        "one", "--quiet"], check=True, stderr=subprocess.DEVNULL)
        self.configure(velk_run=VELK_RUN)

    @staticmethod
    def configure(**values):
        """Adds to the configuration; a file that is named twice needs --force."""
        values = {"options": "--force", **values}
        with open("config/config.yaml", "a", encoding="ascii") as file:
            for key, value in values.items():
                file.write(f"{key}: {json.dumps(value)}\n")

    @staticmethod
    def snakemake(*options, environment=None):
        done = subprocess.run(["snakemake", "-s", os.path.join(ROOT, "workflow/Snakefile"),
                               "--nocolor", *options], stdout=subprocess.PIPE, check=False,
                              stderr=subprocess.STDOUT, text=True, env=environment, timeout=300)
        return done.returncode, done.stdout

    def runs(self, *options, **how):
        status, said = self.snakemake(*options, **how)
        self.assertEqual(0, status, said)
        self.assertEqual(result("one"), result("results"))
        return said


class Local(OnExample):
    def test_lint(self):
        status, said = self.snakemake("--lint")
        self.assertEqual((0, True), (status, "good condition" in said), said)

    def test_the_result_is_that_of_one_run(self):
        self.runs("-c", "2")
        self.assertIn("Nothing to be done", self.runs("-c", "2"))

    def test_after_a_kill_and_a_lack_of_memory(self):
        write("velk-run", KILLED_ONCE.format(velk_run=VELK_RUN))
        os.chmod("velk-run", 0o755)
        self.configure(velk_run="./velk-run")
        said = self.runs("-c", "2")
        self.assertTrue(os.path.exists("killed") and os.path.exists("out-of-memory"))
        self.assertIn("Trying to restart job", said)

    def test_other_options_run_all_again(self):
        os.mkdir("results")
        write("results/mine", "")
        self.runs("-c", "2")
        self.assertTrue(os.path.exists("results/mine"))
        self.configure(options="--force -M 0.9")
        subprocess.run([VELK_RUN, "scaffolds.fa", "--samplesheet", "sheet.tsv", "--force", "-M",
                        "0.9", "-o", "one", "--quiet"], check=True, stderr=subprocess.DEVNULL)
        self.runs("-c", "2")

    def test_a_row_is_added(self):
        """Behind a table that begins as spreadsheets write it; results go to a folder in a new one."""
        table = read("sheet.tsv").decode()
        write("sheet.tsv", "")
        with open("sheet.tsv", "w", encoding="utf-8-sig") as file:
            file.write(table)
        self.runs("-c", "2")
        with open("sheet.tsv", "a", encoding="utf-8") as file:
            file.write("single\ta_2.fq\t.\n")
        subprocess.run([VELK_RUN, "scaffolds.fa", "--samplesheet", "sheet.tsv", "--force", "-o",
                        "one", "--quiet"], check=True, stderr=subprocess.DEVNULL)
        self.runs("-c", "2")
        self.configure(results="new/place")
        status, said = self.snakemake("-c", "2", "-R", "gather")
        self.assertEqual(0, status, said)
        self.assertEqual(result("one"), result("new/place"))
        os.remove("b_2.fq.gz")
        status, said = self.snakemake("-n")
        self.assertEqual((1, True), (status, "sheet.tsv: there is no file b_2.fq.gz" in said), said)

    def test_a_damaged_file_spoils_its_own_task_only(self):
        good = read("b_1.fq.gz")
        at = len(good) // 2
        with open("b_1.fq.gz", "wb") as file:
            file.write(good[:at] + bytes([good[at] ^ 255]) + good[at + 1:])
        status, _ = self.snakemake("-c", "2", "--keep-going")
        self.assertEqual(1, status)
        self.assertIn(b"[ERROR]: b_1.fq.gz, record ", read("work/logs/task.1.log"))
        self.assertEqual(["0", "2"], sorted(os.listdir("work/shares")))
        self.assertFalse(os.path.exists("results"))
        with open("b_1.fq.gz", "wb") as file:
            file.write(good)
        self.runs("-c", "2", "--keep-going")

    def test_configurations_that_can_not_be_used(self):
        good = read("config/config.yaml").decode()
        for change, words in (
                (lambda text: text.replace("assembly:", "scaffolds:"), "'assembly' is a required"),
                (lambda text: text + "thread: 3\n", "'thread' was unexpected"),
                (lambda text: text + "threads: many\n", "'many' is not of type 'integer'"),
                (lambda text: text.replace("sheet.tsv", "gone.tsv"),
                 "samplesheet: there is no file gone.tsv"),
                (lambda text: text.replace("sheet.tsv", "scaffolds.fa"),
                 "samplesheet scaffolds.fa has no column library in its first line"),
                (lambda text: text.replace("scaffolds.fa", "gone.fa"),
                 "assembly: there is no file gone.fa")):
            write("config/config.yaml", change(good))
            status, said = self.snakemake("-n")
            self.assertEqual((1, True), (status, words in said), said)


class OnSlurm(OnExample):
    """Nodes of one processor."""

    @classmethod
    def setUpClass(cls):
        cls.place = tempfile.mkdtemp()
        os.chmod(cls.place, 0o755)
        cls.slurm = PrivateSlurm(cls.place).__enter__()
        cls.addClassCleanup(shutil.rmtree, cls.place)
        cls.addClassCleanup(cls.slurm.__exit__)

    def setUp(self):
        super().setUp()
        self.environment = dict(self.slurm.environment)
        self.environment["PATH"] = f"{self.folder}:{self.environment['PATH']}"

    def test_workflow(self):
        write("velk-run", KILLED_ONCE.format(velk_run=VELK_RUN))
        os.chmod("velk-run", 0o755)
        self.configure(velk_run="./velk-run", threads=1)
        said = self.runs("--profile", os.path.join(ROOT, "workflow/profiles/slurm"),
                         "--latency-wait", "5", environment=self.environment)
        self.assertTrue(os.path.exists("killed") and os.path.exists("out-of-memory"))
        self.assertIn("Trying to restart job", said)

    def test_job_array(self):
        shutil.copy(VELK_RUN, "velk-run")
        inputs = ["scaffolds.fa", "--samplesheet", "sheet.tsv", "--force", "-t", "1", "--quiet"]
        subprocess.run(["./velk-run", "plan", *inputs, "-o", "plan.json"], check=True,
                       stderr=subprocess.DEVNULL)
        good = read("b_2.fq.gz")
        os.remove("b_2.fq.gz")
        self.submit()
        states = self.slurm.finish_jobs()
        self.assertEqual(["COMPLETED", "FAILED", "COMPLETED"],
                         [states[f"task.{n}"] for n in range(3)])
        self.assertFalse(os.path.exists("found"))
        with open("b_2.fq.gz", "wb") as file:
            file.write(good)
        before = os.stat("found.shares/0/share.json").st_mtime_ns
        self.submit()
        self.slurm.finish_jobs()
        self.assertEqual(result("one"), result("found"))
        self.assertEqual(before, os.stat("found.shares/0/share.json").st_mtime_ns)

    def test_job_array_of_another_plan(self):
        inputs = ["scaffolds.fa", "--samplesheet", "sheet.tsv", "--force", "-t", "1", "--quiet"]
        for name, options in (("plan.json", []), ("other.json", ["-M", "0.9"])):
            subprocess.run([VELK_RUN, "plan", *inputs, *options, "-o", name], check=True,
                           stderr=subprocess.DEVNULL)
        os.mkdir("found.shares")
        subprocess.run([VELK_RUN, "task", "other.json", "0", "-o", "found.shares/0", "--quiet"],
                       check=True)
        for arguments, words in ((["plan.json", "found"], "found.shares/0/share.json is of another plan"),
                                 (["plan.json"], "Usage: workflow/jobArray PLAN DIR"),
                                 (["gone.json", "none"], "gone.json: No such file")):
            done = subprocess.run([os.path.join(ROOT, "workflow/jobArray"), *arguments], check=False,
                                  env=self.environment, stderr=subprocess.PIPE, text=True)
            self.assertNotEqual(0, done.returncode)
            self.assertIn(words, done.stderr)
        self.assertFalse(os.path.exists("none.shares"))

    def submit(self):
        subprocess.run([os.path.join(ROOT, "workflow/jobArray"), "plan.json", "found"],
                       env=self.environment, stdout=subprocess.DEVNULL, check=True)


if __name__ == "__main__":
    VELK_RUN, ROOT = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
