#!/usr/bin/env python3
"""Sets of read files of many forms, each by the workflow and in one run: a table of what was found, and
whether the bytes are the same.

    sets.py VELK_RUN ROOT [SET...]      all sets, unless some are named

Each assembly has repeats beside its gaps, and the first and last reads of each file lie at gaps. Ends
with status 1 where bytes differ, a set finds too little to tell, or a negative control is taken.
"""

import gzip
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile

from workflow import read, result, write

COMPLEMENT = str.maketrans("ACGT", "TGCA")
LENGTH = 100  # bases of a read
REPEAT = 400  # bases
SMALL, LARGE = 60_000, 3_000_000  # bases of a genome
LARGE_PAIRS = 500_000  # of each of three pairs of files
LARGE_RECORDS = 1_500_000


class World:
    """A genome and its assembly: gaps of three lengths, a repeat in front of some."""

    def __init__(self, seed, bases=SMALL, every=1500):
        self.random = random.Random(seed)
        genome = "".join(self.random.choices("ACGT", k=bases))
        repeat = "".join(self.random.choices("ACGT", k=REPEAT))
        self.gaps = list(range(every, bases - every, every))
        for gap in self.gaps[:60:3]:
            genome = genome[:gap - REPEAT] + repeat + genome[gap:]
        self.genome = genome
        parts, at = [], 0
        for number, gap in enumerate(self.gaps):
            length = (60, 250, 600)[number % 3]
            parts += [genome[at:gap], "N" * length]
            at = gap + length
        write("scaffolds.fa", ">s\n" + "".join(parts) + genome[at:] + "\n")

    def pair(self, name, insert, is_outward=False, at=None, second=LENGTH):
        """Two records of FASTQ."""
        if at is None:
            at = self.random.randrange(len(self.genome) - insert)
        fragment = self.genome[at:at + insert]
        back = fragment.translate(COMPLEMENT)[::-1]
        mates = [fragment[:LENGTH], back[:second]]
        if is_outward:
            mates = [back[-LENGTH:], fragment[-second:]]
        return [f"@{name}/{mate}\n{bases}\n+\n{'I' * len(bases)}\n"
                for mate, bases in enumerate(mates, 1)]

    def pairs(self, name, count, insert=400, **how):
        """Records of a file and of its mates; the first and last lie at gaps."""
        files = ([], [])
        for number in range(count):
            at = None
            if number in (0, count - 1):
                at = self.random.choice(self.gaps[2:-4]) - LENGTH - 20
            spread = round(self.random.gauss(insert, insert / 20))
            for file, record in zip(files, self.pair(f"{name}.{number}", spread, at=at, **how)):
                file.append(record)
        return files


class Sheet:
    """A sample sheet, and the files it names."""

    def __init__(self):
        self.rows = ["library\tR1\tR2\tkind"]

    def add(self, library, kind, *files):
        self.rows.append("\t".join([library, *files, *["."] * (2 - len(files)), kind]))
        write("sheet.tsv", "\n".join(self.rows) + "\n")


def put(name, records, form="plain"):
    text = "".join(records)
    if form == "no newline at the end":
        text = text[:-1]
    elif form == "FASTA":
        lines = text.split("\n")
        text = "".join(f">{header[1:]}\n{bases}\n" for header, bases in zip(lines[::4], lines[1::4]))
    elif form == "carriage returns":
        text = text.replace("\n", "\r\n")
    data = text.encode()
    if form == "gzip":
        data = gzip.compress(data, 1)
    elif form == "gzip of several members":
        half = len(data) // 2
        data = gzip.compress(data[:half], 1) + gzip.compress(data[half:], 1)
    with open(name, "wb") as file:
        file.write(data)


def files_of(form):
    """Three pairs of files of one form."""
    def make():
        world, sheet = World(form), Sheet()
        for lane in range(3):
            names = [f"lane{lane}_{mate}" for mate in "12"]
            for name, records in zip(names, world.pairs(f"l{lane}", 3000)):
                put(name, records, form)
            sheet.add("pe", "pairs", *names)
    return make


def interleaved():
    world, sheet = World(2), Sheet()
    for lane, form in enumerate(("plain", "gzip")):
        one, other = world.pairs(f"l{lane}", 3000)
        put(f"lane{lane}", [record for mates in zip(one, other) for record in mates], form)
        sheet.add("pe", "interleaved", f"lane{lane}")


def unequal_mates():
    world, sheet = World(3), Sheet()
    for lane, second in enumerate((60, 100, 140)):
        for name, records in zip("12", world.pairs(f"l{lane}", 3000, second=second)):
            put(f"lane{lane}_{name}", records)
        sheet.add("pe", "pairs", f"lane{lane}_1", f"lane{lane}_2")


def big_gap_length():
    """Mate pairs of 2500, whose own big-gap length is not that of the pairs of 400 beside them."""
    world, sheet = World(4, 2 * SMALL, every=6000), Sheet()
    for library, kind, insert in (("pe", "pairs", 400), ("mp", "mate-pairs", 2500)):
        for lane in range(2):
            records = world.pairs(f"{library}{lane}", 3000, insert, is_outward=insert > 400)
            names = [f"{library}{lane}_{mate}" for mate in "12"]
            for name, mates in zip(names, records):
                put(name, mates, "gzip" if lane else "plain")
            sheet.add(library, kind, *names)


def several_libraries():
    """Names and reads that come twice tie; rows of a library need not stand together."""
    world, sheet = World(5), Sheet()
    one = world.pairs("p", 3000)
    for lane, form in enumerate(("plain", "gzip", "carriage returns")):
        for mate, records in zip("12", one):
            put(f"lane{lane}_{mate}", records, form)
        sheet.add(f"pe{lane % 2}", "pairs", f"lane{lane}_1", f"lane{lane}_2")
        put(f"single{lane}", one[lane % 2], form)
        sheet.add("se", "single", f"single{lane}")


def large():
    world, sheet = World(6, LARGE, every=1000), Sheet()
    for lane, form in enumerate(("plain", "gzip", "gzip")):
        for mate, records in zip("12", world.pairs(f"l{lane}", LARGE_PAIRS)):
            put(f"lane{lane}_{mate}", records, form)
        sheet.add("pe", "pairs", f"lane{lane}_1", f"lane{lane}_2")


SETS = {form: files_of(form) for form in ("plain", "no newline at the end", "FASTA",
                                          "carriage returns", "gzip", "gzip of several members")}
SETS |= {"interleaved": interleaved, "mates of unequal lengths": unequal_mates,
         "big-gap length": big_gap_length, "several libraries": several_libraries, "large": large}


class Comparison:
    def __init__(self, velk_run, root):
        self.velk_run, self.root = velk_run, root
        self.version = subprocess.run(["snakemake", "--version"], check=True, text=True,
                                      stdout=subprocess.PIPE).stdout.strip()

    def call(self, *arguments):
        return subprocess.run([self.velk_run, *arguments, "--quiet"], check=False, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def require(self, *arguments):
        done = self.call(*arguments)
        if done.returncode != 0:
            sys.exit(f"{os.getcwd()}: {' '.join(arguments)}: {done.stderr}")

    def workflow(self):
        os.mkdir("config")
        write("config/config.yaml", f"velk_run: {self.velk_run}\nassembly: scaffolds.fa\n"
              "samplesheet: sheet.tsv\noptions: --native\nthreads: 1\n")
        done = subprocess.run(["snakemake", "-s", os.path.join(self.root, "workflow/Snakefile"), "-c",
                               "2"], check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode != 0:
            sys.exit(f"{os.getcwd()}: {done.stdout.decode()}")

    def refuses(self, words, *shares):
        done = self.call("gather", "work/plan.json", *shares, "-o", "refused")
        if done.returncode == 0 or words not in done.stderr or os.path.exists("refused"):
            sys.exit(f"{os.getcwd()}: not refused ({words}): {done.stderr}")

    def controls(self, tasks):
        """What must not be taken: a share dropped, two swapped, one byte changed, other options."""
        shares = [f"work/shares/{task}" for task in range(tasks)]
        self.refuses("is missing", *shares[:-1])
        for one, other in (("0/records.bin", "1/records.bin"), ("1/records.bin", "0/records.bin")):
            shutil.copytree(f"work/shares/{one[0]}", "bad")
            shutil.copy(f"work/shares/{other}", "bad/records.bin")
            self.refuses("bad is no whole share", *("bad" if n == int(one[0]) else share
                                                    for n, share in enumerate(shares)))
            shutil.rmtree("bad")
        shutil.copytree(shares[0], "bad")
        data = bytearray(read("bad/reads.bin"))
        data[len(data) // 2] ^= 1
        with open("bad/reads.bin", "wb") as file:
            file.write(data)
        self.refuses("bad is no whole share", "bad", *shares[1:])
        self.require("plan", "scaffolds.fa", "--samplesheet", "sheet.tsv", "--native", "-M", "0.97",
                     "-o", "other.json")
        self.require("task", "other.json", "0", "-o", "foreign")
        self.refuses("foreign is a share of another plan", "foreign", *shares[1:])

    def check(self, name):
        """Makes the set, and returns its row of the table."""
        SETS[name]()
        self.require("scaffolds.fa", "--samplesheet", "sheet.tsv", "--native", "-o", "one")
        self.workflow()
        one, got = result("one"), result("results")
        tasks = len(json.loads(read("work/plan.json"))["tasks"])
        is_same = one == got
        results = one[1]["results"]
        records = results["alignment_records"]
        if records < (LARGE_RECORDS if name == "large" else 1000):
            sys.exit(f"{name}: only {records} records")
        if name == "big-gap length":
            self.require("plan", "scaffolds.fa", "--mate-pairs", "mp0_1", "mp0_2", "-o", "alone.json")
            if (json.loads(read("alone.json"))["options"]["big_gap_length"]
                    == one[1]["options"]["big_gap_length"]):
                sys.exit("a task's own big-gap length would be the same")
        self.controls(tasks)
        return is_same, (f"| {name} | {tasks} | {results['reads_found']:,} | {records:,} |"
                         f" {self.version} | {'identical' if is_same else 'DIFFERENT'} |")


def main():
    velk_run, root = (os.path.abspath(path) for path in sys.argv[1:3])
    comparison = Comparison(velk_run, root)
    print("| Set | Tasks | Reads found | Records | Snakemake | Bytes |\n|---|---|---|---|---|---|")
    for name in sys.argv[3:] or SETS:
        folder = tempfile.mkdtemp(prefix="velk-sets.")
        os.chdir(folder)
        is_same, row = comparison.check(name)
        print(row, flush=True)
        if not is_same:
            sys.exit(f"the results differ: {folder}/one, {folder}/results")
        os.chdir("/")
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
