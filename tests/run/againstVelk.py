#!/usr/bin/env python3
"""velk-run against velk: random small runs, each on messy files by velk-run and on the same data in
velk's own forms by velk. The files that `velk-run --native` writes must be those of `velk -t 1`,
byte for byte.

    againstVelk.py VELK_RUN VELK SEEDS        SEEDS: FIRST-LAST

Prints how often each class of runs was met; ends with status 1 at the first difference, whose files
stay in the folder that it names.
"""

import collections
import gzip
import json
import lzma
import bz2
import os
import random
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass, field

COMPLEMENT = str.maketrans("ACGTN", "TGCAN")
NATIVE = {"found.fa": "found.fa", "scaffolds.fa.gapsinfo": "scaffolds.fa.gapsinfo",
          "scaffolds.fa.contig": "scaffolds.fa.contig",
          "scaffolds.fa.contigPos": "scaffolds.fa.contigPos"}
HEADERS = ("scaffold{}", "{}", "chr{} Escherichia coli", "NODE_{}_length_5", "ptg00000{}l", "C{}",
           "scaf|{}|x\tdescription", "Scaffold_{}")


def reversed_complement(bases):
    return bases.translate(COMPLEMENT)[::-1]


@dataclass
class Pairs:
    insert: int
    is_outward: bool
    records: list = field(default_factory=list)  # (first, second) as sequenced


@dataclass
class Made:
    scaffolds: list  # of lists of pieces: bases, or (N's, is a placeholder)
    pairs: list
    singles: list
    options: dict
    placeholder: int


class Maker:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.classes = set()

    def bases(self, length):
        return "".join(self.random.choices("ACGT", k=length))

    def make(self):
        r = self.random
        placeholder = r.choice((0, 0, 30, 100))
        unit = self.bases(r.randrange(60, 400)) if r.random() < 0.5 else ""
        if unit:
            self.classes.add("repeats")
        scaffolds, truth = [], []
        for _ in range(r.randrange(1, 4)):
            pieces, genome = self.scaffold(unit, placeholder)
            scaffolds.append(pieces)
            truth.append(genome)
        pairs = [self.library(truth) for _ in range(r.randrange(0, 3))]
        singles = [[self.read(truth, r.randrange(40, 120)) for _ in range(r.randrange(1, 60))]
                   for _ in range(r.randrange(0 if pairs else 1, 2))]
        if len(pairs) + len(singles) > 1:
            self.classes.add("several libraries")
        options = {"-k": r.choice((11, 15, 21, 31, 31, 40)), "-M": r.choice((0.98, 0.9, 0.8)),
                   "-O": r.choice((0.3, 0.1, 0.6)), "-L": r.choice((70, 30, 150)),
                   "-C": r.choice((0, 0, 0, 5))}
        return Made(scaffolds, pairs, singles, options, placeholder)

    def scaffold(self, unit, placeholder):
        r = self.random
        pieces, genome = [], ""
        for n in range(r.randrange(1, 7)):
            if n:
                length = r.choice((r.randrange(1, 40), r.randrange(1, 300), placeholder or 50))
                is_placeholder = length == placeholder
                hidden = self.bases(r.randrange(20, 300) if is_placeholder else length)
                if is_placeholder:
                    self.classes.add("placeholders")
                pieces.append((length, is_placeholder))
                genome += hidden
            # A single last base is no contig, and the gap in front of it none that is lengthened.
            contig = self.bases(r.choice((r.randrange(2, 90), r.randrange(100, 500))))
            if len(contig) < 70:
                self.classes.add("short contigs")
            if unit and r.random() < 0.5:
                copy = unit if r.random() < 0.7 else reversed_complement(unit)
                at = r.randrange(len(contig) + 1)
                contig = contig[:at] + copy + contig[at:]
            genome += contig
            if r.random() < 0.1:
                self.classes.add("other letters")
                contig = contig[:-1] + r.choice("RYKM")
            pieces.append(contig)
        return pieces, genome

    def fragment(self, truth, length):
        genome = self.random.choice(truth)
        start = self.random.randrange(-20, max(1, len(genome) - length + 20))
        bases = genome[max(0, start):max(0, start) + length]
        return bases if self.random.random() < 0.5 else reversed_complement(bases)

    def flawed(self, bases):
        r = self.random
        letters = list(bases)
        for n in range(len(letters)):
            if r.random() < 0.01:
                letters[n] = r.choice("ACGT")
        if letters and r.random() < 0.02:
            letters[r.randrange(len(letters))] = "N"
        return "".join(letters)

    def read(self, truth, length):
        return self.flawed(self.fragment(truth, length)) or "A"

    def library(self, truth):
        r = self.random
        insert = r.choice((150, 250, 400, 700, 1100))
        library = Pairs(insert, r.random() < 0.4)
        if library.is_outward:
            self.classes.add("RF")
        if library.is_outward != (insert > 1000):
            self.classes.add("outward against the length")
        for _ in range(r.randrange(1, 120)):
            fragment = self.fragment(truth, max(30, int(r.gauss(insert, insert / 20))))
            one = self.flawed(fragment[:r.randrange(30, 110)])
            other = self.flawed(reversed_complement(fragment)[:r.randrange(30, 110)])
            if library.is_outward:
                one, other = reversed_complement(one), reversed_complement(other)
            library.records.append((one or "A", other or "A"))
        return library


class MessyFiles:
    """The files of a run as users have them."""

    def __init__(self, folder, made, rng):
        self.folder, self.made, self.random = folder, made, rng

    def text(self, lines):
        end = "\r\n" if self.random.random() < 0.2 else "\n"
        last = end if self.random.random() < 0.8 else ""
        return end.join(lines) + last

    def write(self, name, lines):
        data = self.text(lines).encode("ascii")
        way = self.random.choice(("", "", "gz", "members", "xz", "bz2", "zst"))
        if way == "gz":
            data = gzip.compress(data)
        elif way == "members":
            half = len(data) // 2
            data = gzip.compress(data[:half]) + gzip.compress(data[half:])
        elif way == "xz":
            data = lzma.compress(data)
        elif way == "bz2":
            data = bz2.compress(data)
        elif way == "zst":
            data = subprocess.run(["zstd", "-q", "-c"], input=data, check=True,
                                  stdout=subprocess.PIPE).stdout
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(data)
        return name

    def wrapped(self, bases):
        width = self.random.choice((60, 7, 10 ** 9))
        return [bases[n:n + width] for n in range(0, len(bases), width)] or [""]

    def some_lower(self, bases):
        if self.random.random() < 0.7 or not bases:
            return bases
        a, b = sorted(self.random.choices(range(len(bases)), k=2))
        return bases[:a] + bases[a:b].lower() + bases[b:]

    def assembly(self):
        style = self.random.choice(HEADERS)
        lines = []
        for number, pieces in enumerate(self.made.scaffolds, 1):
            bases = "".join(p if isinstance(p, str) else "N" * p[0] for p in pieces)
            lines += [">" + style.format(number)] + self.wrapped(self.some_lower(bases))
        return self.write("assembly.fa", lines)

    def reads(self, name, reads, suffix):
        is_fasta = self.random.random() < 0.4
        wraps = self.random.random() < 0.3
        has_suffix = self.random.random() < 0.5
        lines = []
        for number, bases in enumerate(reads, 1):
            title = f"read{number}" + (suffix if has_suffix else " " + suffix[1:] + ":N:0")
            parts = self.wrapped(self.some_lower(bases)) if wraps else [self.some_lower(bases)]
            if is_fasta:
                lines += [">" + title] + parts
            else:
                qualities = "".join(self.random.choices("!@>+IF#", k=len(bases)))
                at, ends = 0, []
                for part in parts:
                    ends.append(qualities[at:at + len(part)])
                    at += len(part)
                lines += ["@" + title] + parts + ["+"] + ends
        return self.write(name, lines)

    def sheet(self):
        rows = ["library\tR1\tR2\tkind\tinsert\torientation"]
        for number, library in enumerate(self.made.pairs, 1):
            one = self.reads(f"p{number}_1", [a for a, _ in library.records], "/1")
            other = self.reads(f"p{number}_2", [b for _, b in library.records], "/2")
            kind = self.random.choice(("pairs", "mate-pairs"))
            rows.append(f"p{number}\t{one}\t{other}\t{kind}\t{library.insert}\t"
                        + ("RF" if library.is_outward else "FR"))
        for number, singles in enumerate(self.made.singles, 1):
            rows.append(f"s{number}\t{self.reads(f's{number}', singles, '/1')}\t.\tsingle\t.\t.")
        with open(os.path.join(self.folder, "sheet.tsv"), "w", encoding="ascii") as file:
            file.write("\n".join(rows) + "\n")


def write_reference(folder, made, placeholder_length):
    """The same data as velk takes it."""
    lines = []
    for number, pieces in enumerate(made.scaffolds, 1):
        bases = ""
        for piece in pieces:
            if isinstance(piece, str):
                bases += piece
            else:
                length, is_placeholder = piece
                bases += "N" * (max(length, placeholder_length) if is_placeholder else length)
        lines += [f">scaffold{number}", bases]
    with open(os.path.join(folder, "scaffolds.fa"), "w", encoding="ascii") as file:
        file.write("\n".join(lines) + "\n")
    sections = []

    def write(name, reads):
        with open(os.path.join(folder, name), "w", encoding="ascii") as file:
            file.write("\n".join(line for bases in reads for line in (">r", bases)))

    for number, library in enumerate(made.pairs, 1):
        pairs = library.records
        if library.is_outward != (library.insert > 1000):
            pairs = [(reversed_complement(b), reversed_complement(a)) for a, b in pairs]
        write(f"p{number}_1.fa", [a for a, _ in pairs])
        write(f"p{number}_2.fa", [b for _, b in pairs])
        sections.append(f"[LIB]\navg_ins={library.insert}\nf1=p{number}_1.fa\nf2=p{number}_2.fa\n")
    for number, singles in enumerate(made.singles, 1):
        write(f"s{number}.fa", singles)
        sections.append(f"[LIB]\nf=s{number}.fa\n")
    with open(os.path.join(folder, "reads.lib"), "w", encoding="ascii") as file:
        file.write("".join(sections))


def content(*path):
    with open(os.path.join(*path), "rb") as file:
        return file.read()


class Comparison:
    def __init__(self, velk_run, velk):
        self.velk_run, self.velk = os.path.abspath(velk_run), os.path.abspath(velk)
        self.met = collections.Counter()

    def run(self, seed):
        maker = Maker(seed)
        made = maker.make()
        folder = tempfile.mkdtemp(prefix=f"velk-run.{seed}.")
        messy = MessyFiles(folder, made, maker.random)
        assembly = messy.assembly()
        messy.sheet()
        options = [part for name, value in made.options.items() for part in (name, str(value))]
        command = [self.velk_run, assembly, "--samplesheet", "sheet.tsv", "-o", "out", "--native",
                   "--force", "--quiet", "-t", str(maker.random.choice((1, 2, 3)))] + options
        if made.placeholder:
            command += ["--placeholder", str(made.placeholder)]
        self.check(command, folder)
        with open(os.path.join(folder, "out", "summary.json"), encoding="utf-8") as file:
            summary = json.load(file)
        fixed = summary["options"]
        write_reference(folder, made, fixed["placeholder_length"])
        self.check([self.velk, "-l", "reads.lib", "-s", "scaffolds.fa", "-o", "found.fa", "-t", "1",
                    "-r", str(fixed["read_length"])] + options, folder)
        self.compare(seed, folder)
        maker.classes.update(self.classes_of(content(folder, "found.fa")))
        self.met.update(maker.classes)
        shutil.rmtree(folder)

    @staticmethod
    def classes_of(found):
        lines = found.decode().split("\n")
        reads = collections.Counter(min(bases, reversed_complement(bases))
                                    for bases in lines if bases and not bases.startswith(">"))
        if not reads:
            return {"nothing found"}
        several = {"reads at several gaps"} if max(reads.values()) > 1 else set()
        return {"something found"} | several

    @staticmethod
    def check(command, folder):
        done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              check=False)
        if done.returncode != 0:
            sys.exit(f"{folder}: {' '.join(command)}: status {done.returncode}\n"
                     + done.stderr.decode())

    @staticmethod
    def compare(seed, folder):
        for native, name in NATIVE.items():
            if content(folder, "out", "native", native) != content(folder, name):
                sys.exit(f"seed {seed}: {folder}/out/native/{native} differs from {folder}/{name}")


def main():
    velk_run, velk, seeds = sys.argv[1:]
    first, last = (int(number) for number in seeds.split("-"))
    comparison = Comparison(velk_run, velk)
    for seed in range(first, last + 1):
        comparison.run(seed)
    print(f"{last - first + 1} runs, no difference; " + ", ".join(
        f"{name} {count}" for name, count in sorted(comparison.met.items())))


if __name__ == "__main__":
    main()
