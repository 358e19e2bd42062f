"""What tests of velk-report's files have in common: results of the bundled example, and runs of programs."""

import hashlib
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

VELK_RUN, VELK_REPORT = map(os.path.abspath, sys.argv[1:3])
EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")


def run(*command, **how):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                          text=True, **how)


def sums(folder):
    found = {}
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), "rb") as file:
            found[name] = hashlib.md5(file.read()).hexdigest()
    return found


def load(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return json.load(file)


class ExampleRun(unittest.TestCase):
    """Has `out`, the results of the example, and makes copies of it."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp()
        cls.out = os.path.join(cls.folder, "out")
        cls.velk_run(cls.out)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    @classmethod
    def velk_run(cls, out, *options, assembly="scaffolds.fa"):
        done = run(VELK_RUN, assembly, "reads_1.fq.gz", "reads_2.fq.gz", "-o", out, "--quiet",
                   *options, cwd=EXAMPLES)
        assert done.returncode == 0, done.stderr

    def copy(self, *options):
        """A fresh folder of results."""
        folder = tempfile.mkdtemp(dir=self.folder)
        out = os.path.join(folder, "out")
        if options:
            self.velk_run(out, *options)
        else:
            shutil.copytree(self.out, out)
        return out

    def failure(self, status, message, *arguments):
        done = run(VELK_REPORT, *arguments)
        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (status, "", f"[ERROR]: {message}\n"))
