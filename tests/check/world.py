"""A small run of velk that velk-check has nothing to say about, to be spoilt by the cases."""
import gzip
import random

LENGTH = 100
INSERT = 300
PAIRS = 600

LIBRARY = "[LIB]\navg_ins=300\nq1=r_1.fq\nq2=r_2.fq\n"
COMPLEMENT = str.maketrans("ACGT", "TGCA")

# Of each scaffold the lengths of its contigs, and of the gaps between them.
SCAFFOLDS = [([2500, 1800, 2000, 1500], [300, 120, 433]), ([2200, 1700, 1600], [87, 210])]


def reverse_complement(bases):
    return bases.translate(COMPLEMENT)[::-1]


def random_bases(length, seed):
    return "".join(random.Random(seed).choices("ACGT", k=length))


def simulated_pairs(genomes, count, insert, seed, spread=15):
    """Pairs of reads that point at each other, from all over the genomes."""
    source = random.Random(seed)
    pairs = []
    while len(pairs) < count:
        genome = source.choices(genomes, weights=[len(one) for one in genomes])[0]
        size = round(source.gauss(insert, spread))
        start = source.randrange(len(genome) - size)
        fragment = genome[start:start + size]
        if source.random() < 0.5:
            fragment = reverse_complement(fragment)
        pairs.append((fragment[:LENGTH], reverse_complement(fragment)[:LENGTH]))
    return pairs


def fastq(reads, end="", name="read"):
    return "".join(f"@{name}{i}{end}\n{read}\n+\n{'I' * len(read)}\n"
                   for i, read in enumerate(reads))


def fasta(reads, end="", newline="\n"):
    return "".join(f">read{i}{end}{newline}{read}{newline}" for i, read in enumerate(reads))


def packed(text):
    return gzip.compress(text.encode(), mtime=0)


class World:
    """Files by name (text or bytes), velk's arguments, options of velk-check, named pipes."""

    def __init__(self):
        self.genomes = [random_bases(sum(contigs) + sum(gaps), seed)
                        for seed, (contigs, gaps) in enumerate(SCAFFOLDS)]
        self.headers = [">scaffold1", ">scaffold2"]
        self.sequences = [self.cut(genome, *parts)
                          for genome, parts in zip(self.genomes, SCAFFOLDS)]
        self.pairs = simulated_pairs(self.genomes, PAIRS, INSERT, 11)
        self.singles = [one for one, _ in simulated_pairs(self.genomes, 60, INSERT, 12)]
        self.library = LIBRARY
        self.files = {}
        self.folders = []
        self.pipes = []
        self.options = {"-l": "a.lib", "-s": "s.fa", "-o": "out.fa"}
        self.more = []
        self.newline = "\n"

    @staticmethod
    def cut(genome, contigs, gaps):
        parts = []
        start = 0
        for contig, gap in zip(contigs, gaps + [0]):
            parts += [genome[start:start + contig], "N" * gap]
            start += contig + gap
        return "".join(parts)

    def scaffold_text(self):
        return "".join(f"{header}{self.newline}{bases}{self.newline}"
                       for header, bases in zip(self.headers, self.sequences))

    def contig_text(self, order=((0, 0), (0, 1), (0, 2), (0, 3), (1, 0), (1, 1), (1, 2))):
        """A contig file; `order` names its contigs by scaffold and number."""
        text = ""
        for i, j in order:
            contigs, gaps = SCAFFOLDS[i]
            start = sum(contigs[:j]) + sum(gaps[:j])
            gap = ([0] + gaps)[j]
            bases = self.genomes[i][start:start + contigs[j]]
            text += f">scaffold{i + 1}_{j}\t{gap}\n{bases}\n"
        return text

    def all_files(self):
        """What the folder of the run holds."""
        files = {"a.lib": self.library, "s.fa": self.scaffold_text(),
                 "r_1.fq": fastq([one for one, _ in self.pairs], "/1"),
                 "r_2.fq": fastq([two for _, two in self.pairs], "/2"),
                 "single.fa": fasta(self.singles)}
        files.update(self.files)
        return {name: text if isinstance(text, bytes) else text.encode()
                for name, text in files.items() if text is not None}

    def arguments(self):
        return [word for option in self.options.items() for word in option] + self.more
