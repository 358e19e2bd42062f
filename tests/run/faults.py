#!/usr/bin/env python3
"""velk-run where system calls fail or the process is killed: at every call of a small run, by strace.

    faults.py VELK_RUN EXAMPLES [--verb run|task|gather] [--every N]

What must hold of each run: with status 0 all files are those of an undisturbed one; with another
status, or after a kill, there is no summary, or all the files that it lists are whole; a run that
ends by itself leaves nothing unfinished behind, and what it says begins with "[ERROR]: ".
Prints a table; ends with status 1 when a run breaks a rule, and names it.
"""

import argparse
import collections
import gzip
import hashlib
import json
import os
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import callFaults  # pylint: disable=wrong-import-position

ERRORS = {call: ("EIO", "ENOSPC") for call in (
    "openat", "read", "write", "pwrite64", "close", "fsync", "fdatasync", "rename", "renameat2",
    "mkdir", "lseek", "newfstatat", "ftruncate", "unlink", "flock", "getdents64")}
ERRORS |= {"clone3": ("EAGAIN",)}
RUN = ["scaffolds.fa", "--samplesheet", "sheet.tsv", "--native"]
VERBS = {"run": RUN, "task": ["task", "plan.json", "0"], "gather": ["gather", "plan.json", "share"]}
SHEET = "library\tR1\tR2\tinsert\torientation\na\tr_1.fq.gz\tr_2.fq.gz\t215\tFR\n"


class Bench:
    """A folder of inputs, and runs on them."""

    errors = ERRORS

    def __init__(self, velk_run, examples, verb):
        self.command = [velk_run, *VERBS[verb], "-o", "out", "--quiet", "-t", "1"]
        self.summary = "share.json" if verb == "task" else "summary.json"
        self.inputs = tempfile.mkdtemp()
        shutil.copy(os.path.join(examples, "scaffolds.fa"), self.inputs)
        for mate in "12":
            with open(os.path.join(self.inputs, f"r_{mate}.fq.gz"), "wb") as file:
                file.write(gzip.compress(callFaults.first_reads(examples, mate)))
        with open(os.path.join(self.inputs, "sheet.tsv"), "w", encoding="ascii") as file:
            file.write(SHEET)
        for arguments in (["plan", *RUN, "-o", "plan.json"], [*VERBS["task"], "-o", "share"]):
            subprocess.run([velk_run, *arguments, "--quiet"], cwd=self.inputs, check=True)
        self.whole = self.results(self.run([])[1])

    def run(self, strace):
        """Returns the ended process and its folder."""
        folder = tempfile.mkdtemp()
        for name in os.listdir(self.inputs):
            os.symlink(os.path.join(self.inputs, name), os.path.join(folder, name))
        return self.call(strace, folder), folder

    def call(self, strace, folder):
        return subprocess.run([*strace, *self.command], cwd=folder, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False, timeout=120)

    def results(self, folder):
        """Name -> MD5 of all files that the summary lists; None without a summary."""
        out = os.path.join(folder, "out")
        try:
            with open(os.path.join(out, self.summary), encoding="utf-8") as file:
                listed = [entry["name"] for entry in json.load(file)["files"]]
        except FileNotFoundError:
            return None
        found = {}
        for name in listed:
            with open(os.path.join(out, name), "rb") as file:
                found[name] = hashlib.md5(file.read()).hexdigest()
        return found

    def judge(self, process, folder, was_killed):
        """What is wrong with how a run ended; empty when nothing is."""
        results = self.results(folder)
        if results is not None and results != self.whole:
            return "a summary without whole files"
        if was_killed:
            return ""
        if process.returncode == 0:
            return "" if results == self.whole else "status 0 and no result"
        if process.returncode < 0:
            return f"signal {-process.returncode}"
        if os.path.exists(os.path.join(folder, "out", ".partial")):
            return "something unfinished is left"
        return callFaults.wrong_words(process)

    def inject(self, call, number, way):
        process, folder = self.run(callFaults.strace_with(call, number, way))
        was_killed = callFaults.is_kill(way)
        wrong = self.judge(process, folder, was_killed)
        again = ""
        if not wrong and was_killed:  # the next run on this folder must end well
            again = self.run_again(folder)
        shutil.rmtree(folder)
        return wrong or again

    def run_again(self, folder):
        process = self.call([], folder)
        if process.returncode != 0:
            return "the next run fails: " + process.stderr.decode()
        return "" if self.results(folder) == self.whole else "the next run gives something else"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("velk_run", type=os.path.abspath)
    parser.add_argument("examples", type=os.path.abspath)
    parser.add_argument("--verb", choices=VERBS, default="run")
    parser.add_argument("--every", type=int, default=1, help="only every so many calls")
    options = parser.parse_args()
    bench = Bench(options.velk_run, options.examples, options.verb)
    faults = callFaults.faults_of(bench, options.every)
    made = collections.Counter()
    wrong = []
    for (call, number, way), said in callFaults.meet_all(bench, faults):
        made[call] += 1
        if said:
            wrong.append(f"{call} {number}, {way}: {said}")
    print("\n".join(wrong))
    print(", ".join(f"{call} {count}" for call, count in sorted(made.items())))
    print(f"{len(faults)} faults, {len(wrong)} broke a rule")
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
