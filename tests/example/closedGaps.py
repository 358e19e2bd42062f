#!/usr/bin/env python3
"""Assembles the reads of fifty gaps, gap by gap, and sets what comes out beside the flanks.

    closedGaps.py VELK_RUN [GENOME]      GENOME: FASTA, may be packed with gzip; else random bases

Each assembler must take the FASTQ without a word about pairs that are none. A gap is closed if one
sequence has the last bases of the contig in front and the first ones of the contig behind, in this
order; what lies between must be what was cut out.
"""

import gzip
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile

GAPS = 50
SPACING = 3000  # bases from gap to gap
LONGEST_GAP = 450
READ = 100
INSERT, SPREAD = 350, 30
COVERAGE = 30
ERRORS = 0.003
END = 25  # bases of a flank by which it is recognised
COMPLEMENT = str.maketrans("ACGT", "TGCA")
COMPLAINT = re.compile(r"\b(pair|mate|odd|interleav)", re.IGNORECASE)
ALARM = re.compile(r"\b(warn|error|fail|mismatch|differ|not match|invalid|wrong)", re.IGNORECASE)


class Failed(Exception):
    pass


def reverse_complement(bases):
    return bases.translate(COMPLEMENT)[::-1]


def genome_of(file):
    length = (GAPS + 1) * SPACING
    if not file:
        return "".join(random.Random(1).choices("ACGT", k=length))
    opener = gzip.open if file.endswith(".gz") else open
    with opener(file, "rt", encoding="ascii") as lines:
        bases = "".join(line.strip().upper() for line in lines if not line.startswith(">"))
    return re.sub("[^ACGT]", "A", bases[:length])


def with_errors(source, bases):
    return "".join(source.choice("ACGT") if source.random() < ERRORS else base for base in bases)


def records(name, reads):
    return "".join(f"@{name}{n}\n{bases}\n+\n{'I' * len(bases)}\n" for n, bases in enumerate(reads))


def write(name, text):
    with open(name, "w", encoding="ascii") as file:
        file.write(text)


def make(genome):
    """Writes the scaffold and its reads; returns what was cut out of each gap."""
    source = random.Random(2)
    scaffold = genome
    cut_out = []
    for number in range(1, GAPS + 1):
        start, length = number * SPACING, source.randrange(30, LONGEST_GAP)
        cut_out.append(genome[start:start + length])
        scaffold = scaffold[:start] + "N" * length + scaffold[start + length:]
    write("scaffolds.fa", f">scaffold\n{scaffold}\n")
    mates = ([], [])
    singles = []
    for _ in range(len(genome) * COVERAGE // (2 * READ)):
        size = round(source.gauss(INSERT, SPREAD))
        start = source.randrange(len(genome) - size)
        fragment = genome[start:start + size]
        if source.random() < 0.5:
            fragment = reverse_complement(fragment)
        mates[0].append(with_errors(source, fragment[:READ]))
        mates[1].append(with_errors(source, reverse_complement(fragment)[:READ]))
        if len(mates[0]) % 5 == 0:
            singles.append(with_errors(source, fragment[-READ:]))
    write("1.fq", records("pair", mates[0]))
    write("2.fq", records("pair", mates[1]))
    write("3.fq", records("single", singles))
    return cut_out


def call(*command):
    """What a command writes to its two outputs."""
    done = subprocess.run(command, check=False, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True)
    if done.returncode:
        raise Failed(f"{' '.join(command)}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout, done.stderr


def sequences_of(text):
    """The sequences of a FASTA or FASTQ text."""
    if text.startswith("@"):
        return text.split("\n")[1::4]
    return ["".join(record.split("\n")[1:]) for record in text.split(">")[1:]]


def fml_asm(gap):
    """All reads in one file."""
    call(RUN, "extract", "found", str(gap), "-o", "gap.fq")
    text, said = call("fml-asm", "gap.fq")
    return sequences_of(text), said


def megahit(gap):
    """Pairs and single reads in a file each; it refuses pairs that are not whole."""
    for part in ("pairs", "singles"):
        call(RUN, "extract", "found", str(gap), f"--{part}-only", "-o", f"{part}.fq")
    shutil.rmtree("megahit", ignore_errors=True)
    said = call("megahit", "--12", "pairs.fq", "-r", "singles.fq", "-t", "1", "-o", "megahit")
    with open("megahit/log", encoding="ascii") as log:
        said += (log.read(),)
    with open("megahit/final.contigs.fa", encoding="ascii") as file:
        return sequences_of(file.read()), "".join(said)


ASSEMBLERS = {"fml-asm": fml_asm, "megahit": megahit}
LEAST = 45  # closed gaps


def filling(sequences, gap):
    """What lies between the flanks in a sequence that has both; None if none has."""
    flanks = sequences_of(call(RUN, "extract", "found", str(gap), "--fasta", "--flanks",
                               str(END))[0])[:2]
    for sequence in sequences:
        for strand in (sequence, reverse_complement(sequence)):
            start = strand.find(flanks[0])
            end = strand.find(flanks[1], start + END)
            if start >= 0 and end >= 0:
                return strand[start + END:end]
    return None


def complaints(said):
    return [line for line in said.splitlines() if COMPLAINT.search(line) and ALARM.search(line)]


def result_of(name, truths):
    """Of one assembler: gaps that it closes, those closed as they were, and its complaints."""
    closed = right = 0
    alarms = []
    for gap, truth in enumerate(truths):
        sequences, said = ASSEMBLERS[name](gap)
        found = filling(sequences, gap)
        closed += found is not None
        right += found == truth
        alarms += [f"{name}, gap {gap}: {line}" for line in complaints(said)]
    return closed, right, alarms


def are_pairs_looked_at():
    """Whether pairs of which one read is missing are noticed at all."""
    with open("pairs.fq", encoding="ascii") as file:
        lines = file.readlines()
    write("pairs.fq", "".join(lines[:-4]))
    try:
        call("megahit", "--12", "pairs.fq", "-t", "1", "-o", "odd")
    except Failed as failed:
        return bool(complaints(str(failed)))
    return False


def main(genome=None):
    truths = make(genome_of(genome))
    call(RUN, "scaffolds.fa", "1.fq", "2.fq", "--single", "3.fq", "-o", "found", "--quiet")
    failed = False
    for name in ASSEMBLERS:
        if not shutil.which(name):
            print(f"no {name}, so skipped")
            continue
        closed, right, alarms = result_of(name, truths)
        print(f"{name}: {closed} of {GAPS} gaps closed, {right} as they were, {len(alarms)}"
              " complaints about pairs", *alarms[:10], sep="\n")
        failed = failed or bool(alarms) or right < LEAST
    if shutil.which("megahit") and not are_pairs_looked_at():
        print("a complaint about pairs would not be seen")
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    RUN = os.path.abspath(sys.argv[1])
    GENOME = [os.path.abspath(file) for file in sys.argv[2:]]
    with tempfile.TemporaryDirectory() as temporary:
        os.chdir(temporary)
        sys.exit(main(*GENOME))
