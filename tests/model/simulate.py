"""Small genomes with gaps, and reads drawn from them."""

COMPLEMENT = str.maketrans("ACGTacgt", "TGCAtgca")


def flip_strand(seq):
    return seq.translate(COMPLEMENT)[::-1]


def bases(r, count, letters="ACGT"):
    return "".join(r.choices(letters, k=count))


class Piece:
    """A contig with the gap behind it."""

    def __init__(self, true, shown, gap_true, gap_shown):
        self.true = true            # the contig's bases in the genome
        self.shown = shown          # ... as the assembly has them
        self.gap_true = gap_true    # the bases hidden by the gap
        self.gap_shown = gap_shown  # the gap's length in the assembly, may be negative


class Chromosome:
    """The truth behind one scaffold."""

    def __init__(self, pieces):
        self.pieces = pieces
        self.edges = []  # where contigs end and begin, in the truth
        seq = ""
        for i, piece in enumerate(pieces):
            if i > 0:
                self.edges.append(len(seq))
            seq += piece.true
            if i + 1 < len(pieces):
                self.edges.append(len(seq))
                seq += piece.gap_true
        self.seq = seq


def contig_length(r, large):
    kind = r.choices(["usual", "short", "tiny", "long"], [70, 14, 4, 40 if large else 8])[0]
    low, high = {"usual": (110, 500), "short": (20, 90), "tiny": (1, 5),
                 "long": (500, 1200)}[kind]
    return r.randint(low, high)


def gap_length(r, large):
    low, high = r.choices([(1, 1), (2, 12), (13, 70), (71, 250), (251, 900)],
                          [6, 15, 30, 30, 40 if large else 8])[0]
    return r.randint(low, high)


def blemish(r, seq, rate):
    """The assembly's own errors, lower case and odd letters."""
    if not seq or r.random() > rate:
        return seq
    at = r.randrange(len(seq))
    kind = r.choices(["change", "lower", "odd", "drop"], [4, 4, 3, 2])[0]
    if kind == "change":
        return seq[:at] + r.choice("ACGT") + seq[at + 1:]
    if kind == "lower":
        end = at + r.randint(1, 40)
        return seq[:at] + seq[at:end].lower() + seq[end:]
    if kind == "odd":
        return seq[:at] + r.choice("RYKMSWBDHVXU*-.") + seq[at + 1:]
    return seq[:at] + seq[at + 1:]


def genome(r, large):
    """Chromosomes of 300 to some 5000 bases in all."""
    letters = r.choices(["ACGT", "AACGT", "AC", "ACGTT"], [85, 8, 2, 5])[0]
    repeats = r.choices([0, 0.15, 0.5], [60, 30, 10])[0]
    blemishes = r.choices([0, 0.1, 0.5], [60, 30, 10])[0]
    budget = r.randint(400, 2500) if not large else r.randint(2500, 5500)
    everything = ""
    chromosomes = []
    gaps_wanted = r.random() < 0.95
    while budget > 0 and len(chromosomes) < 7:
        pieces = []
        count = r.choices([1, 2, 3, 4, 6], [12, 30, 28, 20, 10])[0]
        if gaps_wanted and not chromosomes:
            count = max(4 if large else 2, count)
        for _ in range(count):
            true = bases(r, contig_length(r, large), letters)
            if len(everything) > 60 and r.random() < repeats:
                at = r.randrange(len(everything) - 40)
                copy = everything[at:at + r.randint(20, 160)]
                copy = flip_strand(copy) if r.random() < 0.4 else copy
                where = r.choice([0, len(true), r.randint(0, len(true))])
                true = true[:where] + copy + true[where:]
            if r.random() < repeats / 4:
                unit = bases(r, r.randint(1, 9))
                true += unit * r.randint(3, 20)
            length = gap_length(r, large)
            shown = max(1, length + r.choices([0, r.randint(-20, 20)], [60, 40])[0])
            hidden = bases(r, length, letters)
            everything += true
            budget -= len(true) + length
            shown_true = blemish(r, true, blemishes)
            if r.random() < 0.15:
                true = shown_true  # the reads have it as well
            pieces.append(Piece(true, shown_true, hidden, shown))
            if budget < 0 and len(pieces) > 1:
                break
        chromosomes.append(Chromosome(pieces))
    return chromosomes


# ------------------------------------------------------------------------- reads

def sequencing_errors(r, read):
    count = r.choices([0, 1, 2, 5], [72, 18, 8, 2])[0]
    for _ in range(count):
        at = r.randrange(len(read))
        read = read[:at] + r.choice("ACGT") + read[at + 1:]
    odd = r.random()
    if odd < 0.02:
        at = r.randrange(len(read))
        read = read[:at] + "N" + read[at + 1:]
    elif odd < 0.03:
        at = r.randrange(len(read))
        read = read[:at] + r.choice("nRY.") + read[at + 1:]
    elif odd < 0.04:
        read = read.lower()
    elif odd < 0.05:
        at = r.randrange(len(read))
        read = read[:at] + read[at:at + 12].lower() + read[at + 12:]
    elif odd < 0.06:
        read = read[:r.randint(0, len(read))]
    elif odd < 0.07:
        read = bases(r, len(read))
    return read


def pick(r, chromosomes):
    """A chromosome, those with gaps most of the time."""
    with_gaps = [c for c in chromosomes if c.edges]
    if with_gaps and r.random() < 0.9:
        return r.choice(with_gaps)
    return r.choice(chromosomes)


def single_read(r, chromosomes, length):
    chromosome = pick(r, chromosomes)
    length = max(1, min(len(chromosome.seq), length + r.choice([0, 0, 0, r.randint(-15, 15)])))
    last = len(chromosome.seq) - length
    if chromosome.edges and r.random() < 0.8:
        start = r.choice(chromosome.edges) - r.randint(0, length)
    else:
        start = r.randint(0, last)
    start = max(0, min(last, start))
    read = chromosome.seq[start:start + length]
    if r.random() < 0.5:
        read = flip_strand(read)
    return sequencing_errors(r, read)


def read_pair(r, chromosomes, length, insert, outward):
    """Two mates that face each other, or, outward, the same pair the other way round."""
    chromosome = pick(r, chromosomes)
    if insert > len(chromosome.seq):
        chromosome = max(chromosomes, key=lambda c: len(c.seq))
    size = len(chromosome.seq)
    insert = int(abs(insert) + r.gauss(0, 1) * max(2, abs(insert) // 12))
    insert = max(1, min(size, max(insert, length)))
    length = min(length, insert)
    last = size - insert
    if chromosome.edges and r.random() < 0.8:
        edge = r.choice(chromosome.edges) + r.randint(-length, length)
        start = edge - (insert - length // 2 if r.random() < 0.5 else length // 2)
    else:
        start = r.randint(0, last)
    start = max(0, min(last, start))
    fragment = chromosome.seq[start:start + insert]
    a, b = fragment[:length], flip_strand(fragment[-length:])
    if outward:
        a, b = flip_strand(b), flip_strand(a)
    if r.random() < 0.5:
        a, b = b, a
    return sequencing_errors(r, a), sequencing_errors(r, b)
