#!/usr/bin/env python3
"""How many of the reads that belong in gaps are found, and how many of the reported places are right, on
data whose truth is known: a genome with stretches replaced by N, and reads made from all of it.

    accuracy.py --programs FOLDER --data FOLDER [--genome FILE] [--gaps N] [--coverage N]

Prints Markdown tables for velk-run and for minimap2 with a filter. A read belongs in a gap when at
least one of its bases comes from there. Without --genome one is made. doc/accuracy.md explains the
columns.
"""

import argparse
import bisect
import collections
import gzip
import os
import random
import shlex
import subprocess

LENGTH = 150
ERROR = 0.01
GAP_LENGTHS = (20, 60, 150, 300, 600, 1200, 3000)
COMPLEMENT = str.maketrans("ACGTN", "TGCAN")
# Name, share of the reads, mean and deviation of the fragments, whether mates point outwards.
LIBRARIES = (("pairs", 0.6, 400, 40, False), ("mates", 0.3, 3000, 300, True),
             ("singles", 0.1, LENGTH, 0, False))


def reversed_complement(bases):
    return bases.translate(COMPLEMENT)[::-1]


class World:
    """The genome, its gaps, and the reads with their truth, in files of a folder."""

    def __init__(self, folder, options):
        self.folder = folder
        self.random = random.Random(7)
        self.genome = self.read(options.genome) if options.genome else self.made(2_000_000)
        self.gaps = self.choose_gaps(options.gaps)
        self.starts = [start for start, _ in self.gaps]
        self.write_scaffold()
        self.belonging = collections.defaultdict(dict)  # library -> (read, gap) -> where it lies
        for library in LIBRARIES:
            self.write_reads(library, options.coverage)

    @staticmethod
    def read(file):
        with gzip.open(file, "rt", encoding="ascii") as lines:
            return "".join(line.strip().upper() for line in lines if not line.startswith(">"))

    def made(self, length):
        bases = "".join(self.random.choices("ACGT", k=length))
        for _ in range(length // 50_000):  # repeats of 1 to 3 kb
            size = self.random.randrange(1000, 3000)
            a, b = (self.random.randrange(length - size) for _ in range(2))
            bases = bases[:b] + bases[a:a + size] + bases[b + size:]
        return bases

    def choose_gaps(self, count):
        step = len(self.genome) // (count + 1)
        gaps = []
        for number in range(1, count + 1):
            start = number * step + self.random.randrange(-step // 4, step // 4)
            gaps.append((start, start + GAP_LENGTHS[number % len(GAP_LENGTHS)]))
        return gaps

    def write_scaffold(self):
        at, parts = 0, []
        for start, end in self.gaps:
            parts += [self.genome[at:start], "N" * (end - start)]
            at = end
        parts.append(self.genome[at:])
        with open(os.path.join(self.folder, "scaffolds.fa"), "w", encoding="ascii") as file:
            file.write(">scaffold1\n" + "".join(parts) + "\n")

    def gaps_of(self, start, end):
        """The gaps from which [start, end) has a base."""
        number = max(0, bisect.bisect_right(self.starts, start) - 1)
        found = []
        while number < len(self.gaps) and self.gaps[number][0] < end:
            if self.gaps[number][1] > start:
                found.append(number)
            number += 1
        return found

    def where(self, at, other, gap):
        """What could show that a read belongs to a gap: its mate, its own bases on a contig, or nothing."""
        if other is not None and not self.gaps_of(other, other + LENGTH):
            return "mate on a contig"
        start, end = self.gaps[gap]
        outside = max(start - at, at + LENGTH - end, 0)
        return "over an edge" if outside >= 0.3 * LENGTH else "deep in the gap"

    def with_errors(self, bases):
        letters = list(bases)
        for _ in range(sum(self.random.random() < ERROR for _ in range(len(letters)))):
            letters[self.random.randrange(len(letters))] = self.random.choice("ACGT")
        return "".join(letters)

    def write_reads(self, library, coverage):
        name, share, mean, deviation, is_outward = library
        per_entry = 1 if name == "singles" else 2
        count = int(share * coverage * len(self.genome) / LENGTH / per_entry)
        files = [open(os.path.join(self.folder, f"{name}_{mate}.fq"), "w", encoding="ascii")
                 for mate in range(1, per_entry + 1)]
        for number in range(count):
            size = max(LENGTH, int(self.random.gauss(mean, deviation)))
            start = self.random.randrange(len(self.genome) - size)
            places = [(start, False), (start + size - LENGTH, True)][:per_entry]
            if is_outward:
                places = [(at, not is_reversed) for at, is_reversed in places]
            if self.random.random() < 0.5:
                places = places[::-1] if per_entry == 2 else [(start, True)]
            title = f"{name}_{number}_" + "_".join(str(at) for at, _ in places)
            for mate, (at, is_reversed) in enumerate(places):
                bases = self.with_errors(self.genome[at:at + LENGTH])
                bases = reversed_complement(bases) if is_reversed else bases
                files[mate].write(f"@{title}\n{bases}\n+\n{'I' * LENGTH}\n")
                for gap in self.gaps_of(at, at + LENGTH):
                    other = places[1 - mate][0] if per_entry == 2 else None
                    self.belonging[name][f"{title}/{mate}", gap] = self.where(at, other, gap)
        for file in files:
            file.close()


def run(command, folder):
    subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=folder, check=True)


def unclipped_start(position, cigar):
    digits = ""
    for letter in cigar:
        if letter.isdigit():
            digits += letter
        else:
            return position - int(digits) if letter == "S" else position
    return position


def places_of_velk(world):
    """Yields library, read, gap, kind of place and whether it is right, for each read at a gap."""
    view = subprocess.run(["samtools", "view", "found/reads.bam"], cwd=world.folder, check=True,
                          stdout=subprocess.PIPE, text=True).stdout
    for line in view.splitlines():
        columns = line.split("\t")
        tags = dict(tag.split(":", 1) for tag in columns[11:])
        if "zp" not in tags:
            continue  # it goes along with its mate
        mate = 1 if int(columns[1]) & 0x80 else 0
        truth = int(columns[0].split("_")[2 + mate])
        read = f"{columns[0]}/{mate}"
        gap = int(tags["zg"][2:])
        certainty = {"X": "exact", "E": "estimate", "C": "contained"}[tags["zx"][2:]]
        belongs = gap in world.gaps_of(truth, truth + LENGTH)
        start = unclipped_start(int(columns[3]) - 1, columns[5])
        is_right = belongs if certainty == "estimate" else start == truth
        if certainty == "contained":
            is_right = is_right and not belongs
        yield columns[0].split("_")[0], read, gap, certainty, is_right


def ratio(part, whole):
    return f"{100 * part / whole:.2f} %" if whole else "-"


def velk_finds(world):
    """Prints what is reported of places; returns the reads that are found, by library."""
    found = collections.defaultdict(set)
    reported = collections.Counter()
    right = collections.Counter()
    for library, read, gap, certainty, is_right in places_of_velk(world):
        reported[library, certainty] += 1
        right[library, certainty] += is_right
        if certainty != "contained":
            found[library].add((read, gap))
    print("| library | exact, right | estimates, right | contained, right |\n|---|---|---|---|")
    for library, *_ in LIBRARIES:
        cells = [f"{reported[library, kind]}, {ratio(right[library, kind], reported[library, kind])}"
                 for kind in ("exact", "estimate", "contained")]
        print(f"| {library} | " + " | ".join(cells) + " |")
    return found


def mapper_finds(world):
    """minimap2 on the contigs, and the filter of the benchmarks: the reads kept, by library."""
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "gapReads.awk")
    kept = collections.defaultdict(set)
    for name, _, mean, deviation, _ in LIBRARIES:
        files = "singles_1.fq" if name == "singles" else f"{name}_1.fq {name}_2.fq"
        reach = 0 if name == "singles" else mean + 3 * deviation
        run(f"minimap2 -a -x sr -t 2 found/native/scaffolds.fa.contig {files} 2>/dev/null |"
            f" awk -v reach={reach} -f {shlex.quote(script)} >mapped.sam", world.folder)
        with open(os.path.join(world.folder, "mapped.sam"), encoding="ascii") as lines:
            for columns in (line.split("\t") for line in lines):
                if len(columns) > 1:
                    kept[name].add(f"{columns[0]}/{1 if int(columns[1]) & 0x80 else 0}")
    return kept


def print_found(world, found, kept):
    print("\n| library | reads that belong | number | found by velk-run | kept by minimap2 and"
          " filter |\n|---|---|---|---|---|")
    for library, *_ in LIBRARIES:
        belonging = world.belonging[library]
        for place in ("mate on a contig", "over an edge", "deep in the gap"):
            there = [read for read, where in belonging.items() if where == place]
            velk = sum(read in found[library] for read in there)
            mapper = sum(read in kept[library] for read, _ in there)
            print(f"| {library} | {place} | {len(there)} | {ratio(velk, len(there))} |"
                  f" {ratio(mapper, len(there))} |")
    print("\n| library | of velk-run's reads belong there | of the mapper's belong in a gap |"
          "\n|---|---|---|")
    for library, *_ in LIBRARIES:
        belonging = world.belonging[library]
        reads = {read for read, _ in belonging}
        velk = sum(read in belonging for read in found[library])
        print(f"| {library} | {ratio(velk, len(found[library]))} |"
              f" {ratio(len(kept[library] & reads), len(kept[library]))} |")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True, type=os.path.abspath)
    parser.add_argument("--data", required=True)
    parser.add_argument("--genome", help="FASTA file, packed by gzip; default: a made one")
    parser.add_argument("--gaps", type=int, default=300)
    parser.add_argument("--coverage", type=int, default=20)
    options = parser.parse_args()
    os.makedirs(options.data, exist_ok=True)
    world = World(options.data, options)
    run(f"{shlex.quote(options.programs)}/velk-run scaffolds.fa --pairs pairs_1.fq pairs_2.fq"
        " --mate-pairs mates_1.fq mates_2.fq --single singles_1.fq -o found --native -t 2 --quiet",
        world.folder)
    found = velk_finds(world)
    print_found(world, found, mapper_finds(world))


if __name__ == "__main__":
    main()
