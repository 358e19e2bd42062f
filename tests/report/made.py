"""Made assemblies and reads for the tests of velk-report: random genomes, gaps cut out of them, and
reads whose places are known."""

BASES = "ACGT"
COMPLEMENT = str.maketrans("ACGTN", "TGCAN")


def bases(chance, count):
    return "".join(chance.choices(BASES, k=count))


def reverse(text):
    return text.translate(COMPLEMENT)[::-1]


def changed(chance, text, positions):
    """The text with another base at each of the positions."""
    letters = list(text)
    for at in positions:
        letters[at] = chance.choice([base for base in BASES if base != letters[at]])
    return "".join(letters)


class Reads:
    """Reads of a library as FASTQ texts, which are collected and then written."""

    def __init__(self):
        self.texts = ([], [])
        self.count = 0

    def add(self, *mates):
        self.count += 1
        for side, mate in enumerate(mates):
            self.texts[side].append(f"@r{self.count}\n{mate}\n+\n{'I' * len(mate)}\n")

    def write(self, *files):
        for text, file in zip(self.texts, files):
            with open(file, "w", encoding="ascii") as output:
                output.write("".join(text))


def pairs_of(chance, genome, depth, length, insert, spread, keep=lambda start, end: True,
             change=lambda start, read: read):
    """Pairs, inward, of a genome: (first mate, second mate), either strand first. `keep` is asked for
    the fragment, `change` makes of a read at a place what was sequenced."""
    for _ in range(int(depth * len(genome) / (2 * length))):
        size = max(length, round(chance.gauss(insert, spread)))
        start = chance.randrange(max(1, len(genome) - size))
        if start + size > len(genome) or not keep(start, start + size):
            continue
        left = change(start, genome[start:start + length])
        right = reverse(change(start + size - length, genome[start + size - length:start + size]))
        yield (left, right) if chance.random() < 0.5 else (right, left)


def outward_of(chance, genome, depth, length, insert, spread):
    """Mate pairs, outward."""
    for one, other in pairs_of(chance, genome, depth, length, insert, spread):
        yield reverse(one), reverse(other)


def fasta(scaffolds):
    return "".join(f">{name}\n{text}\n" for name, text in scaffolds)


def many_gaps(chance, count):
    """(scaffolds, genomes): gaps of 20 to 3,000 bases between contigs of 300 to 4,000."""
    scaffolds, genomes = [], []
    left = count
    while left > 0:
        here = min(left, chance.randrange(20, 60))
        left -= here
        genome, text = [], []
        for n in range(here + 1):
            contig = bases(chance, int(300 * 13 ** chance.random()))
            genome.append(contig)
            text.append(contig)
            if n < here:
                size = int(20 * 150 ** chance.random())
                genome.append(bases(chance, size))
                written = 100 if chance.random() < 0.1 else max(10, int(chance.gauss(size, size / 8)))
                text.append("N" * written)
        scaffolds.append((f"scaffold_{len(scaffolds) + 1}", "".join(text)))
        genomes.append("".join(genome))
    return scaffolds, genomes


def stretch(chance, genome):
    """(start, end) of a stretch of some hundred or thousand bases."""
    start = chance.randrange(len(genome))
    return start, start + chance.randrange(500, 5000)
