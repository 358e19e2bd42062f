#!/usr/bin/env python3
"""What may go wrong with the tasks of a plan on a cluster, each done once to the bundled example: prints
a table of what was said.

    mishaps.py VELK_RUN EXAMPLES

What must hold: the call names the thing, nothing partial stands under a final name, the next call ends
well, and what is gathered then has the bytes of one run. Ends with status 1 where it does not.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

import plans
from plans import INPUTS, SHARES, change_byte
from savedIndex import PARTS, SavedIndex
from shares import result

TASK = ["task", "plan.json", "1", "-o", "share.1", "-t", "1"]
GATHER = ["gather", "plan.json", *SHARES, "-o", "got", "-t", "1"]
INDEXED = [*TASK, "--index", "index"]
MESSAGE = r"\[ERROR\]: (.*)"


def run(command, before=(), program=None):
    return subprocess.run([*before, program or plans.VELK_RUN, *command, "--quiet"], check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def strace(what, path=None):
    """In front of a command: what happens at one of its calls, of this file if one is given."""
    only = ["-P", os.path.abspath(path)] if path else []
    return ["strace", "-f", "-o", "log", *only, "-e", "inject=" + what]


def log_text():
    """What strace has written so far."""
    try:
        with open("log", encoding="utf-8") as log:
            return log.read()
    except FileNotFoundError:
        return ""


def cut(name):
    os.truncate(name, os.path.getsize(name) // 2)


def remake(*command):
    """The call that makes it again."""
    done = run(command)
    assert done.returncode == 0, done.stderr


class Mishap:
    """A call that fails: what is done before it, and what repairs it. What is changed of the named files
    is brought back from copies, unless `repair` makes them again."""

    keeps = False  # whether a whole share stays where the call would write one

    def __init__(self, name, command, words, spoil=None, repair=None, files=(), before=()):
        self.name, self.command, self.words = name, command, words
        self.spoil, self.repair, self.files, self.before = spoil, repair, files, before

    def call(self):
        return run(self.command, self.before() if callable(self.before) else self.before)

    def restore(self):
        for file in self.files:
            shutil.rmtree(file, ignore_errors=True)
            copy = shutil.copytree if os.path.isdir(f"../made/{file}") else shutil.copy
            copy(f"../made/{file}", file)
        if self.repair:
            self.repair()

    def check(self):
        """Returns what was said; throws AssertionError."""
        if self.spoil:
            self.spoil()
        final = self.command[self.command.index("-o") + 1]
        summary = "summary.json" if final == "got" else "share.json"
        if self.command[0] == "task" and not self.keeps:
            shutil.rmtree(final)
        done = self.call()
        assert done.returncode != 0, "status 0"
        assert re.search(self.words, done.stderr), done.stderr
        assert self.keeps or not os.path.exists(f"{final}/{summary}"), "a summary"
        if self.keeps:
            remake("gather", "old.json", *SHARES, "-o", "got")
        elif done.returncode > 0:
            assert not os.path.exists(final), "a folder is left"
        self.restore()
        if self.command[0] == "task":
            remake(*self.command)
        remake(*GATHER)
        assert result("one") == result("got"), "other bytes"
        said = re.search(MESSAGE, done.stderr)
        return said[1] if said else f"nothing; it ended by signal {-done.returncode}"


class Kept(Mishap):
    """A whole share stays."""

    keeps = True


class ChangedMeanwhile(Mishap):
    """A read file is changed while the task reads it."""

    def call(self):
        before = strace("read:delay_enter=5000000:when=3", "a_1.fq")
        with subprocess.Popen([*before, plans.VELK_RUN, *self.command, "--quiet"], text=True,
                              stderr=subprocess.PIPE) as process:
            while process.poll() is None and "= 131072" not in log_text():
                time.sleep(0.1)
            change_byte("a_1.fq", 3)
            said = process.communicate()[1]
        return subprocess.CompletedProcess([], process.returncode, "", said)


class TwoAtOnce(Mishap):
    """A second copy of a task, while the first one reads."""

    def call(self):
        before = strace("read:delay_enter=3000000:when=2", "b_1.fq.gz")
        with subprocess.Popen([*before, plans.VELK_RUN, *self.command, "--quiet"]) as first:
            while first.poll() is None and not os.path.exists("share.1/.partial"):
                time.sleep(0.05)
            second = run(self.command)
            assert not os.path.exists("share.1/share.json"), "the first one was too fast"
        assert first.returncode == 0, "the first copy"
        remake(*GATHER)
        assert result("one") == result("got"), "other bytes by the first copy"
        shutil.rmtree("share.1")
        return second


def other_program():
    shutil.copy(plans.VELK_RUN, "other")
    with open("other", "ab") as file:
        file.write(b"\0")
    assert run(TASK, program="./other").returncode == 0


def make_index():
    remake("index", "--plan", "plan.json", "-o", "index")


def spoil_index(spoil):
    def spoilt():
        make_index()
        spoil()
    return spoilt


def gzip_damage():
    """The plan is made of the damaged file, as it would be where nobody knows."""
    with open("b_2.fq.gz", "r+b") as file:
        file.seek(os.path.getsize("b_2.fq.gz") // 2)
        file.write(b"\0" * 64)
    remake("plan", *INPUTS, "--force", "-o", "plan.json", "-t", "2")


def other_options():
    """The options are changed, the plan is made again, and only some tasks are run again."""
    remake("plan", *INPUTS, "-M", "0.97", "-o", "plan.json")
    for task in "02":
        shutil.rmtree(f"share.{task}")
        remake("task", "plan.json", task, "-o", f"share.{task}")


def other_plan():
    os.rename("plan.json", "old.json")
    remake("plan", *INPUTS, "-M", "0.97", "-o", "plan.json")


GZIP = ["plan.json", "b_2.fq.gz"]
MISHAPS = [
    Mishap("a task is killed while it reads", TASK, "^$",
           before=lambda: strace("read:signal=KILL:when=2", "b_1.fq.gz")),
    Mishap("a task is killed while its files get their names", TASK, "^$",
           before=lambda: strace("rename:signal=KILL:when=3")),
    Mishap("a task is evicted, or its time is over (TERM)", TASK, "^$",
           before=lambda: strace("fsync:signal=TERM:when=2")),
    TwoAtOnce("two copies of a task at once", TASK, "another run writes to share.1"),
    Mishap("too little memory for a task", TASK, "out of memory", before=["prlimit", "--data=3000000"]),
    Mishap("too little memory for gathering", GATHER, "out of memory", before=["prlimit", "--data=3000000"]),
    Mishap("the disk is full when a task writes", TASK, "share.1.*No space left on device",
           before=lambda: strace("write:error=ENOSPC:when=1+", "share.1/.partial/records.bin")),
    Mishap("the disk is full when gathering writes", GATHER, "got.*No space left on device",
           before=lambda: strace("write:error=ENOSPC:when=1+", "got/.partial/reads.bam")),
    Mishap("a read error of the disk", TASK, "b_1.fq.gz.*Input/output error",
           before=lambda: strace("read:error=EIO:when=2", "b_1.fq.gz")),
    Mishap("the folder can't be written to", TASK, "share.1.*Read-only file system",
           before=lambda: strace("mkdir:error=EROFS")),
    Mishap("a read file has vanished", TASK, "b_2.fq.gz can't be read: No such file",
           lambda: os.remove("b_2.fq.gz"), files=["b_2.fq.gz"]),
    Mishap("a read file was changed", TASK, "b_2.fq.gz is not the file that the plan was made with",
           lambda: change_byte("b_2.fq.gz", 100), files=["b_2.fq.gz"]),
    ChangedMeanwhile("a read file is changed while a task reads it",
                     ["task", "plan.json", "0", "-o", "share.0", "-t", "1"],
                     "a_1.fq is not the file that the plan was made with", files=["a_1.fq"]),
    Mishap("a gzip file is damaged", TASK, "b_2.fq.gz, record [0-9,]*: damaged gzip", gzip_damage,
           files=GZIP),
    Mishap("the assembly was changed", TASK, "scaffolds.fa is not the file that the plan was made with",
           lambda: change_byte("scaffolds.fa", 5000), files=["scaffolds.fa"]),
    Mishap("the assembly has vanished", GATHER, "scaffolds.fa.*No such file",
           lambda: os.remove("scaffolds.fa"), files=["scaffolds.fa"]),
    Mishap("the options were changed between two calls", GATHER, "share.1 is a share of another plan",
           other_options, files=["plan.json", "share.0", "share.2"]),
    Kept("a share of another plan stands where a task writes", TASK,
         "share.1 is a share of another plan; remove it", other_plan, files=["plan.json"]),
    Mishap("the plan was cut short", TASK, "plan.json is no plan of velk-run",
           lambda: cut("plan.json"), files=["plan.json"]),
    Mishap("the index was cut short", INDEXED, "index is a damaged index",
           spoil_index(lambda: cut("index")), make_index),
    Mishap("the header of the index was changed", INDEXED, "index is a damaged index",
           spoil_index(lambda: change_byte("index", 100)), make_index),
    Mishap("a base of the index was changed", INDEXED, "index is a damaged index: its bases have another",
           spoil_index(lambda: change_byte("index", SavedIndex("index").place(PARTS.index("bases"))[0] + 9)),
           make_index),
    Mishap("the index is that of other options", INDEXED, "index is the index of other options",
           lambda: remake("index", "scaffolds.fa", "-k", "25", "-o", "index"), make_index),
    Mishap("the index has vanished", INDEXED, "index.*No such file", None, make_index),
    Mishap("a share is missing", GATHER, "share.1 is no whole share: share.json is missing",
           lambda: shutil.rmtree("share.1"), lambda: remake(*TASK)),
    Mishap("a share is not named", ["gather", "plan.json", *SHARES[::2], "-o", "got"],
           "the share of task 1 (.*) is missing"),
    Mishap("a share is named twice", [*GATHER, "share.1"], "both shares of task 1"),
    Mishap("a share is cut short", GATHER, "share.1 is no whole share: records.bin is not as",
           lambda: cut("share.1/records.bin"), files=["share.1"]),
    Mishap("a share has a changed byte", GATHER, "share.1 is no whole share: reads.bin is not as",
           lambda: change_byte("share.1/reads.bin", 999), files=["share.1"]),
    Mishap("a share lacks a file", GATHER, "share.1 is no whole share: counts.bin is missing",
           lambda: os.remove("share.1/counts.bin"), files=["share.1"]),
    Mishap("a share is that of another program", GATHER, "share.1 was made by another velk-run",
           other_program, files=["share.1"]),
    Mishap("gathering is killed while files get their names", GATHER, "^$",
           before=lambda: strace("rename:signal=KILL:when=5")),
    Mishap("too few files may be open", GATHER, r"too many shares .* \(ulimit -n\)",
           before=["prlimit", "--nofile=20:20"]),
]


def main():
    plans.VELK_RUN, plans.EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    plans.Plans.setUpClass()
    top = tempfile.mkdtemp()
    os.symlink(plans.Plans.made, f"{top}/made")
    print("| What goes wrong | What is said |\n|---|---|")
    wrong = 0
    for mishap in MISHAPS:
        os.chdir(top)
        shutil.rmtree("work", ignore_errors=True)
        shutil.copytree("made/", "work")
        os.chdir("work")
        try:
            print(f"| {mishap.name} | {mishap.check()} |", flush=True)
        except AssertionError as error:
            wrong += 1
            print(f"{mishap.name}: {error}", file=sys.stderr)
    print(f"{len(MISHAPS) - wrong} passed, {wrong} failed")
    os.chdir("/")
    shutil.rmtree(top)
    plans.Plans.tearDownClass()
    sys.exit(wrong > 0)


if __name__ == "__main__":
    main()
