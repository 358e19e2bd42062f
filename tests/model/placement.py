"""Where a read or a read pair falls at a gap."""

import math
from operator import eq

import number

LARGE_INSERT = 1000  # pairs above it come in the opposite orientation

COMPLEMENT = bytes({65: 84, 97: 84, 67: 71, 99: 71, 71: 67, 103: 67}.get(c, 65)
                   for c in range(256))


def reverse_complement(read):
    return read.translate(COMPLEMENT)[::-1]


def long_reverse_complement(a, b):
    """The pair with reads and strands exchanged."""
    return reverse_complement(b), reverse_complement(a)


def equal_bases(a, b):
    return sum(map(eq, a, b))


def truncate(value):
    """A double cut to a 32-bit integer; saturates, not-a-number gives 0."""
    if math.isnan(value):
        return 0
    return int(max(number.INT_MIN, min(number.INT_MAX, value)))


class Record:
    """One found read."""

    def __init__(self, read, scaffold, front_contig, position, gap_num, gap_size):
        self.read = read
        self.scaffold = scaffold
        self.front_contig = front_contig
        self.position = position
        self.gap_num = gap_num
        self.gap_size = gap_size


class Placer:
    """Places reads against one assembly; found(record) is called for every record.

    The placing functions return True when the read or pair is accepted.
    """

    def __init__(self, parameters, assembly, lookup):
        self.p = parameters
        self.assembly = assembly
        self.unique_hits = lookup.unique_hits
        self.insert_length = 0
        self.found = None

    # ------------------------------------------------------- base-by-base checks

    def map_right_edge(self, contig, read, offset):
        """The read starts inside the contig and must reach its right end."""
        if len(contig) > len(read) + offset:
            return False
        overlap = len(contig) - offset
        if overlap < truncate(len(read) * self.p.over_ratio):
            return False
        same = equal_bases(contig[offset:], read)
        return number.divide(same, overlap) >= self.p.map_cut

    def map_left_edge(self, contig, read, offset):
        """The read starts in front of the contig and runs onto it."""
        reach = len(read) + offset
        if len(contig) < reach:
            same = equal_bases(read[-offset:], contig)
            if len(read) * self.p.over_ratio > len(contig):
                same = 0
        else:
            same = equal_bases(read[-offset:], contig[:reach])
        return number.divide(same, reach) >= self.p.map_cut

    def map_anywhere(self, contig, read, offset):
        """The anchor of a pair, at any offset."""
        least = len(read) * self.p.over_ratio
        if offset > 0 and least > len(contig) - offset:
            return False
        if offset < 0 and least > offset + len(read):
            return False
        if offset >= 0:
            contig_start, read_start = offset, 0
            n = min(len(contig) - offset, len(read))
        else:
            contig_start, read_start = 0, -offset
            n = offset + len(read) if len(contig) - offset >= len(read) else len(contig)
        same = equal_bases(contig[contig_start:contig_start + n],
                           read[read_start:read_start + n])
        return number.divide(same, n) >= self.p.map_cut

    # ------------------------------------------------------------- single reads

    def single(self, read):
        for i, (s, c, p) in self.unique_hits(read):
            contigs = self.assembly.scaffolds[s].contigs
            offset = p - i
            contig = contigs[c].seq
            if offset > 0 and c < len(contigs) - 1:
                if self.map_right_edge(contig, read, offset):
                    gap = contigs[c + 1]
                    self.found(Record(read, s, c, offset - len(contig),
                                      gap.front_gap_num, gap.front_gap_size))
                    return True
            elif offset < 0 and c >= 1:
                if self.map_left_edge(contig, read, offset):
                    gap = contigs[c]
                    self.found(Record(read, s, c - 1, offset + gap.front_gap_size,
                                      gap.front_gap_num, gap.front_gap_size))
                    return True
        return False

    # -------------------------------------------------------------------- pairs

    def too_small_for_insert(self, gap_size):
        big = self.p.big_gap_len
        return gap_size < big and self.insert_length > big

    def snap(self, position, mate_size, gap_size):
        """Move a position just outside the gap onto the gap's end."""
        tolerance = 2 * self.p.kmer
        if -tolerance - mate_size < position <= -mate_size:
            position = -mate_size
        if gap_size <= position < gap_size + tolerance:
            position = gap_size
        return position

    def short_between_long(self, between, far_gap_size, anchor_contig_size):
        twice = 2 * self.p.read_len
        return twice > between and twice < far_gap_size and twice < anchor_contig_size

    def anchor_left(self, s, c, contigs, anchor, offset):
        """Record an anchor that starts in the gap in front of its contig."""
        if offset < 0 and len(anchor) + offset >= 1 and c >= 1:
            gap = contigs[c]
            self.found(Record(anchor, s, c - 1, gap.front_gap_size + offset,
                              gap.front_gap_num, gap.front_gap_size))

    def forward(self, anchor, mate):
        """The anchor lies left of the gap, its mate to the right."""
        insert = self.insert_length
        for i, (s, c, p) in self.unique_hits(anchor):
            contigs = self.assembly.scaffolds[s].contigs
            if c == len(contigs) - 1:
                continue
            size = len(contigs[c].seq)
            gap = contigs[c + 1]
            gap_size = gap.front_gap_size
            offset = p - i
            if self.too_small_for_insert(gap_size):
                return True
            if not self.map_anywhere(contigs[c].seq, anchor, offset):
                continue

            position = self.snap(offset + insert - len(mate) - size, len(mate), gap_size)
            if -len(mate) <= position <= gap_size:
                self.found(Record(mate, s, c, position, gap.front_gap_num, gap_size))

            if c < len(contigs) - 2:
                between = len(gap.seq)
                far = contigs[c + 2]
                far_start = size + gap_size + between
                if (self.short_between_long(between, far.front_gap_size, size)
                        and offset + insert > far_start
                        and offset + insert - len(mate) < far_start + far.front_gap_size):
                    self.found(Record(mate, s, c + 1,
                                      offset + insert - len(mate) - far_start,
                                      far.front_gap_num, far.front_gap_size))

            if offset > 0 and len(anchor) + offset > size:
                self.found(Record(anchor, s, c, offset - size, gap.front_gap_num, gap_size))
            else:
                self.anchor_left(s, c, contigs, anchor, offset)
            return True
        return False

    def reverse(self, anchor, mate):
        """The anchor lies right of the gap, its mate to the left."""
        insert = self.insert_length
        for i, (s, c, p) in self.unique_hits(anchor):
            contigs = self.assembly.scaffolds[s].contigs
            if c == 0:
                continue
            size = len(contigs[c].seq)
            gap = contigs[c]
            gap_size = gap.front_gap_size
            offset = p - i
            if self.too_small_for_insert(gap_size):
                return True
            if not self.map_anywhere(contigs[c].seq, anchor, offset):
                continue

            position = self.snap(gap_size + offset + len(anchor) - insert,
                                 len(mate), gap_size)
            if -len(mate) <= position <= gap_size:
                self.found(Record(mate, s, c - 1, position, gap.front_gap_num, gap_size))

            if c >= 2:
                far = contigs[c - 1]
                between = len(far.seq)
                far_size = far.front_gap_size
                if (self.short_between_long(between, far_size, size)
                        and offset + len(anchor) + gap_size + between - insert < 0
                        and insert - len(anchor) - len(mate) - offset - gap_size - between
                        < far_size):
                    self.found(Record(mate, s, c - 2,
                                      far_size + between + gap_size + offset
                                      + len(anchor) - insert,
                                      far.front_gap_num, far_size))

            if offset > 0 and len(anchor) + offset > size and c < len(contigs) - 2:
                after = contigs[c + 1]
                self.found(Record(anchor, s, c, offset - size,
                                  after.front_gap_num, after.front_gap_size))
            else:
                self.anchor_left(s, c, contigs, anchor, offset)
            return True
        return False

    # --------------------------------------------------------------- batch scan

    def scan_single(self, read):
        if b"N" in read or len(read) < self.p.kmer:
            return
        if not self.single(read):
            self.single(reverse_complement(read))

    def scan_pair(self, a, b):
        """Returns the pair as the buffer keeps it."""
        if b"N" in a or b"N" in b:
            return a, b
        if self.insert_length > LARGE_INSERT:
            a, b = long_reverse_complement(a, b)
        if len(a) < self.p.kmer or len(b) < self.p.kmer:
            return a, b
        back_a, back_b = reverse_complement(a), reverse_complement(b)
        (self.forward(a, back_b) or self.reverse(back_b, a)
         or self.reverse(back_a, b) or self.forward(b, back_a))
        return a, b
