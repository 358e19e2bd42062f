#!/usr/bin/env python3
"""velk-report where system calls fail or the process is killed: at every call of a small run, by strace.

    faults.py VELK_RUN VELK_REPORT [--every N]

What must hold: with status 0 every file is that of an undisturbed run, and so is what is printed; with
another status all files of the folder are as they were, or all are the new ones; no file has a part of
a page, and nothing unfinished is left but by a kill. What is said begins with "[ERROR]: ".
Prints a table; ends with status 1 when a run breaks a rule, and names it.
"""

import argparse
import collections
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import callFaults  # pylint: disable=wrong-import-position

EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")
ERRORS = {call: ("EIO", "ENOSPC") for call in (
    "openat", "read", "pread64", "write", "close", "fsync", "rename", "mkdir", "lseek", "newfstatat",
    "unlink", "unlinkat", "rmdir", "copy_file_range", "sendfile", "fchmod", "getdents64")}
NATIVE = ["--found", "found/native/found.fa", "found/native/scaffolds.fa"]
FORMS = {"page": ["found"], "first page": ["plain"], "drawing": ["--gap", "2", "found", "-o", "out"],
         "text": ["--text", "found"], "two runs": ["found", "plain", "-o", "out"],
         "velk's files": [*NATIVE, "-o", "out"], "printed": NATIVE}


def files_of(folder):
    """Name -> bytes of all files below a folder."""
    found = {}
    for place, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(place, name)
            with open(path, "rb") as file:
                found[os.path.relpath(path, folder)] = file.read()
    return found


class Bench:
    """A form of velk-report, on a folder of results whose page is an older one."""

    errors = ERRORS

    def __init__(self, options, form):
        self.command = [options.velk_report, *FORMS[form]]
        self.inputs = tempfile.mkdtemp()
        reads = []
        for mate in "12":
            reads.append(os.path.join(self.inputs, f"r_{mate}.fq"))
            with open(reads[-1], "wb") as file:
                file.write(callFaults.first_reads(EXAMPLES, mate))
        for folder, more in (("found", "--native"), ("plain", "--no-report")):
            subprocess.run([options.velk_run, os.path.join(EXAMPLES, "scaffolds.fa"), *reads, "-o",
                            os.path.join(self.inputs, folder), more, "--quiet"], check=True)
        for read in reads:
            os.unlink(read)
        self.age(os.path.join(self.inputs, "found"))
        with open(os.path.join(self.inputs, "out"), "w", encoding="ascii") as file:
            file.write("older\n")
        self.before = files_of(self.inputs)
        process, folder = self.run([])
        assert process.returncode == 0, process.stderr
        self.after, self.printed = files_of(folder), process.stdout
        assert self.after != self.before or self.printed
        shutil.rmtree(folder)

    @staticmethod
    def age(folder):
        """Has the summary say something else of the report, and the page, too."""
        with open(os.path.join(folder, "summary.json"), encoding="utf-8") as file:
            summary = json.load(file)
        summary["report"] = {"gaps_with_few_reads": 99}
        with open(os.path.join(folder, "summary.json"), "w", encoding="utf-8") as file:
            json.dump(summary, file)
        for name in ("report.html", "velk_mqc.json", "velk_gaps_mqc.json"):
            with open(os.path.join(folder, name), "a", encoding="utf-8") as file:
                file.write("\n")

    def run(self, strace):
        """Returns the ended process and its folder."""
        folder = tempfile.mkdtemp()
        shutil.copytree(self.inputs, folder, dirs_exist_ok=True)
        return subprocess.run([*strace, *self.command], cwd=folder, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False, timeout=120), folder

    def judge(self, process, files, was_killed):
        """What is wrong with how a run ended; empty when nothing is."""
        if process.returncode == 0:  # what could not be removed may be left
            files = {name: text for name, text in files.items() if "/.velk-report/" not in name}
            whole = files == self.after and process.stdout == self.printed
            return "" if whole else "status 0, and something is missing"
        if was_killed:
            partial = [name for name in files if name not in self.before and name not in self.after]
            if not all(re.search(r"^[^/]*/\.velk-report/|^out\.partial$", name) for name in partial):
                return f"{partial} is left"
            changed = [name for name in self.before if files.get(name) not in
                       (self.before[name], self.after[name])]
            return f"{changed} are neither old nor new" if changed else ""
        if process.returncode < 0:
            return f"signal {-process.returncode}"
        if files not in (self.before, self.after):
            names = set(files) | set(self.before)
            return f"{sorted(n for n in names if files.get(n) != self.before.get(n))} have changed"
        return callFaults.wrong_words(process)

    def inject(self, call, number, way):
        process, folder = self.run(callFaults.strace_with(call, number, way))
        was_killed = callFaults.is_kill(way)
        wrong = self.judge(process, files_of(folder), was_killed)
        if not wrong and was_killed:
            again = subprocess.run(self.command, cwd=folder, stdout=subprocess.PIPE, check=False)
            if again.returncode != 0 or again.stdout != self.printed or files_of(folder) != self.after:
                wrong = "the next run does not end well"
        shutil.rmtree(folder)
        return process.returncode, wrong


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("velk_run", type=os.path.abspath)
    parser.add_argument("velk_report", type=os.path.abspath)
    parser.add_argument("--every", type=int, default=1, help="only every so many calls")
    options = parser.parse_args()
    wrong = []
    print("| form | faults | status 0, whole | other status or killed | broke a rule |\n|---|---|---|---|---|")
    for form in FORMS:
        bench = Bench(options, form)
        faults = callFaults.faults_of(bench, options.every)
        ended = collections.Counter()
        for fault, (status, said) in callFaults.meet_all(bench, faults):
            ended[status == 0, bool(said)] += 1
            if said:
                wrong.append(f"{form}: {fault[0]} {fault[1]}, {fault[2]}: {said}")
        print(f"| {form} | {len(faults)} | {ended[True, False]} | {ended[False, False]} |"
              f" {ended[True, True] + ended[False, True]} |", flush=True)
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
