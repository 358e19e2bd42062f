"""The data of reasons.py: a genome with gaps, each with a cause why it has few reads, and reads of known
places."""

import bisect
import collections
import os
import random
import re

import accuracy

LENGTH = accuracy.LENGTH
# Name, reads a base, mean and deviation of the fragments, whether mates point outwards.
LIBRARIES = (("pairs", 12 / LENGTH, 400, 40, False), ("mates", 6 / LENGTH, 3000, 300, True),
             ("singles", 2 / LENGTH, LENGTH, 0, False))
ROOM = 12000  # bases for each gap
HOLE = 4500   # bases around a gap that its cause changes
SHORT, LONG = (40, 150, 400), (800, 1500, 3000)
CAUSES = {  # cause: lengths of its gaps
    "none": (20, 60, 150, 300, 600, 1200, 3000), "repeat": SHORT + LONG, "half a repeat": SHORT,
    "short contigs": (60, 120, 300), "no reads": SHORT + LONG, "a tenth of the reads": SHORT + LONG,
    "other bases": SHORT + LONG, "short overlaps": (200, 400, 800), "overlapping contigs": (10, 20, 50),
    "overlap of unknown length": (101,), "unknown length": (101,)}


class Gap:
    """What is missing of the genome is [start, end); at an overlap start lies behind end."""

    def __init__(self, cause, start, length, chance):
        self.number = 0
        self.cause = cause
        self.start, self.end = start, start + length
        self.written = length
        if cause in ("overlapping contigs", "overlap of unknown length"):
            self.end = start - chance.randrange(40, 120)
        elif cause == "unknown length":
            self.end = start + chance.choice((20, 250, 900, 2500))
        self.short = cause == "short contigs"
        self.front, self.behind = (chance.randrange(32, 69) if self.short else ROOM for _ in "12")
        self.fragments = collections.defaultdict(list)  # library -> starts of its reads


class World:
    """Genome, scaffolds, reads, in files of a folder."""

    def __init__(self, folder, options):
        self.folder = folder
        self.chance = random.Random(options.seed)
        self.genome = accuracy.World.read(options.genome) if options.genome else self.bases(2_000_000)
        self.genome = re.sub("[^ACGT]", "A", self.genome)
        self.gaps = self.choose()
        self.starts = [gap.start for gap in self.gaps]
        copies = "".join(self.copy(gap) for gap in self.gaps)
        self.write_scaffolds(copies)
        self.donor = list(self.genome + copies)  # what is sequenced
        for gap in self.gaps:
            if gap.cause == "other bases":
                self.change(gap)
        self.donor = "".join(self.donor)
        for library in LIBRARIES:
            self.write_reads(library)

    def bases(self, count):
        return "".join(self.chance.choices("ACGT", k=count))

    def choose(self):
        gaps = []
        causes = list(CAUSES)
        for number in range(len(self.genome) // ROOM - 1):
            cause = causes[number % len(causes)]
            length = CAUSES[cause][number // len(causes) % len(CAUSES[cause])]
            start = (number + 1) * ROOM + self.chance.randrange(-500, 500)
            gaps.append(Gap(cause, start, length, self.chance))
        return gaps

    def copy(self, gap):
        """What the genome has again of the flanks."""
        if gap.cause not in ("repeat", "half a repeat"):
            return ""
        reach = (600 if gap.written < 550 else 4000) // (1 if gap.cause == "repeat" else 2)
        return (self.bases(1000) + self.genome[gap.start - reach:gap.start] + self.bases(gap.written) +
                self.genome[gap.end:gap.end + reach])

    def change(self, gap):
        """Other bases, so dense that no read has 98 % in common with the contigs, but some k-mers."""
        at = gap.start - HOLE
        while at < gap.end + HOLE:
            self.donor[at] = self.chance.choice([base for base in "ACGT" if base != self.donor[at]])
            at += self.chance.randrange(34, 44)

    def write_scaffolds(self, copies):
        scaffolds, text, at = [], [], 0
        for number, gap in enumerate(self.gaps):
            if gap.short:  # a scaffold of its own
                scaffolds.append("".join(text) + self.genome[at:gap.start - gap.front - 1000])
                scaffolds.append(self.genome[gap.start - gap.front:gap.start] + "N" * gap.written +
                                 self.genome[gap.end:gap.end + gap.behind])
                text, at = [], gap.end + gap.behind + 1000
            else:
                text += [self.genome[at:gap.start], "N" * gap.written]
                at = gap.end
            gap.number = number
        scaffolds.append("".join(text) + self.genome[at:])
        scaffolds.append(copies)
        with open(os.path.join(self.folder, "a.fa"), "w", encoding="ascii") as file:
            for number, scaffold in enumerate(scaffolds):
                file.write(f">s{number}\n{scaffold}\n")

    def with_errors(self, bases):
        at = int(self.chance.expovariate(accuracy.ERROR))
        while at < len(bases):
            bases = bases[:at] + self.chance.choice("ACGT") + bases[at + 1:]
            at += 1 + int(self.chance.expovariate(accuracy.ERROR))
        return bases

    def near(self, start, end):
        """The gaps whose surroundings [start, end) touches."""
        first = bisect.bisect_left(self.starts, start - HOLE - 3000)
        last = bisect.bisect_right(self.starts, end + HOLE)
        return [gap for gap in self.gaps[first:last]
                if start < max(gap.start, gap.end) + HOLE and end > min(gap.start, gap.end) - HOLE]

    def is_kept(self, gap):
        if gap.cause in ("no reads", "short overlaps"):
            return False
        return gap.cause != "a tenth of the reads" or self.chance.random() < 0.1

    def write_reads(self, library):
        name, reads, mean, deviation, is_outward = library
        per_entry = 1 if name == "singles" else 2
        entries = []
        for _ in range(int(reads * len(self.donor) / per_entry)):
            size = max(LENGTH, int(self.chance.gauss(mean, deviation)))
            start = self.chance.randrange(len(self.donor) - size)
            near = self.near(start, start + size)
            if all(self.is_kept(gap) for gap in near):
                entries.append((start, start + size - LENGTH, near))
        if name == "singles":
            for gap in self.gaps:
                if gap.cause == "short overlaps":
                    starts = [gap.start - on for on in range(33, 44)]
                    entries += [(start, start, [gap]) for start in 4 * starts]
        files = [open(os.path.join(self.folder, f"{name}_{mate}.fq"), "w", encoding="ascii")
                 for mate in range(1, per_entry + 1)]
        for number, (left, right, near) in enumerate(entries):
            for gap in near:
                gap.fragments[name].append((left, right))
            sides = [(left, is_outward), (right, not is_outward)][:per_entry]
            if self.chance.random() < 0.5:
                sides = sides[::-1] if per_entry == 2 else [(left, True)]
            for file, (at, is_reversed) in zip(files, sides):
                bases = self.with_errors(self.donor[at:at + LENGTH])
                bases = accuracy.reversed_complement(bases) if is_reversed else bases
                file.write(f"@{name}{number}\n{bases}\n+\n{'I' * LENGTH}\n")
        for file in files:
            file.close()
