"""Assemblies whose gaps have known bases, and reads cut from them.

Nothing here asks velk: the files that a run must leave follow from where the contigs lie and where
each read was cut.  A read or mate belongs to the gap at which it was planted, at the distance of its
first base from the gap's first base. Below: read files of more than 4 GiB, with such reads all over them.
"""

import itertools
import random
import struct
import zlib

BASES = bytes(b"ACGT"[i & 3] for i in range(256))
COMPLEMENT = bytes.maketrans(b"ACGT", b"TGCA")

READ = 60           # bases of a single read
MATE = 40           # bases of a mate
INSERT = 80         # bases of a fragment
SHORTEST = 60       # bases of a contig: a mate and its distance from the gap fit on it
READ_OVERLAP = 45   # bases of a single read on the contig
MATE_DISTANCE = 15  # bases between the mate on the contig and the gap


def random_bases(seed, count):
    return random.Random(seed).randbytes(count).translate(BASES)


def reverse_complement(read):
    """The reverse complement."""
    return read.translate(COMPLEMENT)[::-1]


class Assembly:
    """Scaffolds "1", "2", ... Each is given as its contigs' and gaps' lengths in turn."""

    def __init__(self, seed, scaffolds):
        self.starts = []      # by scaffold: its first base in `bases`
        self.contigs = []     # by scaffold: (begin, end) of each contig, in the scaffold
        self.first_gaps = []  # by scaffold: number of its first gap
        at = gaps = 0
        for lengths in scaffolds:
            bounds = list(itertools.accumulate(lengths, initial=0))
            self.starts.append(at)
            self.contigs.append(list(zip(bounds[::2], bounds[1::2])))
            self.first_gaps.append(gaps)
            at += bounds[-1]
            gaps += len(self.contigs[-1]) - 1
        self.gap_count = gaps
        self.bases = random_bases(seed, at)  # of all scaffolds, those in their gaps, too

    def cut(self, scaffold, begin, end):
        start = self.starts[scaffold]
        return self.bases[start + begin:start + end]

    def gap(self, scaffold, gap):
        """Where the gap begins and ends in its scaffold."""
        contigs = self.contigs[scaffold]
        return contigs[gap][1], contigs[gap + 1][0]

    def gap_number(self, scaffold, gap):
        return self.first_gaps[scaffold] + gap

    def random_gaps(self, seed, count):
        """As many gaps (scaffold, gap), some of them twice."""
        picks = random.Random(seed)
        scaffolds = range(len(self.contigs))
        for _ in range(count):
            scaffold = picks.choice(scaffolds)
            yield scaffold, picks.randrange(len(self.contigs[scaffold]) - 1)

    def write_scaffolds(self, path):
        with open(path, "wb") as file:
            for scaffold, contigs in enumerate(self.contigs):
                file.write(b">scaffold%d\n" % (scaffold + 1))
                before = 0
                for begin, end in contigs:
                    file.write(b"N" * (begin - before))
                    file.write(self.cut(scaffold, begin, end))
                    before = end
                file.write(b"\n")

    # ------------------------------------------------- what a run must leave

    def contig_file(self):
        """Its content, piece by piece."""
        for scaffold, contigs in enumerate(self.contigs):
            before = 0
            for number, (begin, end) in enumerate(contigs):
                yield b">scaffold%d_%d\t%d\n" % (scaffold + 1, number, begin - before)
                yield self.cut(scaffold, begin, end)
                yield b"\n"
                before = end

    def position_file(self):
        for scaffold, contigs in enumerate(self.contigs):
            for number, (begin, end) in enumerate(contigs):
                yield b"%d\t%d\t%d\t%d\n" % (scaffold + 1, number, begin, end)

    def report(self, reads_of_gap):
        number = 0
        for scaffold, contigs in enumerate(self.contigs):
            yield b">%d\t%d\t%d\n" % (scaffold + 1, len(contigs), len(contigs) - 1)
            for (begin, end), (next_begin, next_end) in zip(contigs, contigs[1:]):
                yield b"%d\t%d\t%d\t%d\t%d\n" % (number, next_begin - end, reads_of_gap[number],
                                                 end - begin, next_end - next_begin)
                number += 1


class Reads:
    """Reads for an assembly, and the records that they must lead to."""

    def __init__(self, assembly):
        self.assembly = assembly
        self.singles = []
        self.pairs = []
        self.records = []  # (header, read)
        self.reads_of_gap = [0] * assembly.gap_count

    def expect(self, scaffold, gap, begin, read, insert):
        gap_begin, gap_end = self.assembly.gap(scaffold, gap)
        number = self.assembly.gap_number(scaffold, gap)
        self.reads_of_gap[number] += 1
        self.records.append((b">%d\t%d\t%d\t%d\t%d\t%d" % (
            number, gap_end - gap_begin, begin - gap_begin, scaffold + 1, gap, insert), read))

    def plant_single(self, scaffold, gap, begin, is_reversed, length=READ):
        read = self.assembly.cut(scaffold, begin, begin + length)
        self.expect(scaffold, gap, begin, read, 0)
        self.singles.append(reverse_complement(read) if is_reversed else read)

    def plant_pair(self, scaffold, gap, begin, found_begin, is_reversed):
        """A fragment from `begin` on, whose read at `found_begin` belongs to the gap."""
        cut = self.assembly.cut
        first = cut(scaffold, begin, begin + MATE)
        last = reverse_complement(cut(scaffold, begin + INSERT - MATE, begin + INSERT))
        self.expect(scaffold, gap, found_begin,
                    cut(scaffold, found_begin, found_begin + MATE), INSERT)
        self.pairs.append((last, first) if is_reversed else (first, last))

    def plant(self, scaffold, gap):
        """On both strands, single reads and pairs at both ends of the gap."""
        gap_begin, gap_end = self.assembly.gap(scaffold, gap)
        before = gap_begin - MATE_DISTANCE - MATE
        behind = gap_end + MATE_DISTANCE + MATE - INSERT
        for is_reversed in (False, True):
            self.plant_single(scaffold, gap, gap_begin - READ_OVERLAP, is_reversed)
            self.plant_single(scaffold, gap, gap_end + READ_OVERLAP - READ, is_reversed)
            self.plant_pair(scaffold, gap, before, before + INSERT - MATE, is_reversed)
            self.plant_pair(scaffold, gap, behind, behind, is_reversed)

    def add_strangers(self, seed, count):
        """Reads of bases that the assembly does not have."""
        bases = random_bases(seed, count * (READ + 2 * MATE))
        for at in range(0, len(bases), READ + 2 * MATE):
            self.singles.append(bases[at:at + READ])
            mates = bases[at + READ:at + READ + 2 * MATE]
            self.pairs.append((mates[:MATE], mates[MATE:]))

    def write(self, singles, mates):
        """Single reads as FASTA, mates as interleaved FASTQ."""
        with open(singles, "wb") as file:
            file.writelines(b">%d\n%s\n" % entry for entry in enumerate(self.singles))
        with open(mates, "wb") as file:
            for number, pair in enumerate(self.pairs):
                for read in pair:
                    file.write(b"@%d\n%s\n+\n%s\n" % (number, read, b"I" * len(read)))


FILE_RECORDS = 100000       # of a block of a long file
FILE_READ = 150           # bases of a read that belongs nowhere
FILE_LEAST = (1 << 32) + (1 << 26)  # bytes of text


def file_entry(read):
    return b"@r\n%s\n+\n%s\n" % (read, b"I" * len(read))


def file_text(singles, least):
    """The pieces of a FASTQ file of at least so many bytes: planted reads, a block of strangers, and
    so on in turn, with planted reads at the end; about as many at each place."""
    bases = random_bases(6, FILE_RECORDS * FILE_READ)
    block = b"".join(file_entry(bases[at:at + FILE_READ]) for at in range(0, len(bases), FILE_READ))
    places = -(-least // len(block)) + 1
    for place in range(places):
        if place > 0:
            yield block
        yield b"".join(map(file_entry, singles[place::places]))


def write_plain(path, pieces):
    """Without its last newline: velk repeats a read of an earlier batch at one (doc/kept.md).
    Returns the bytes of text."""
    size = 0
    with open(path, "wb") as file:
        for piece in pieces:
            size += file.write(piece)
        file.truncate(size - 1)
    return size - 1


def write_gzip(path, pieces):
    """One gzip member; what is the same piece is compressed once. Returns the bytes of text."""
    size = check = 0
    blocks = {}
    with open(path, "wb") as file:
        file.write(b"\x1f\x8b\x08" + bytes(6) + b"\xff")
        for piece in pieces:
            size += len(piece)
            check = zlib.crc32(piece, check)
            if id(piece) not in blocks:
                packer = zlib.compressobj(1, zlib.DEFLATED, -15)
                # a full flush: what follows refers to nothing before it
                blocks[id(piece)] = piece, packer.compress(piece) + packer.flush(zlib.Z_FULL_FLUSH)
            file.write(blocks[id(piece)][1])
        file.write(zlib.compressobj(1, zlib.DEFLATED, -15).flush())
        file.write(struct.pack("<II", check, size % (1 << 32)))
    return size
