"""The twelve kinds of read files, three records each, and ways to damage them."""

import itertools
import random
import struct
import zlib

CONTIG, GAP, READ, INSERT = 120, 40, 40, 110  # bases
SCAFFOLDS = "s.fa"
ARGUMENTS = ["-l", "a.lib", "-s", SCAFFOLDS, "-o", "found.fa", "-m", "1000", "-r", str(READ)]
# Gzip files are inflated in place on one, ahead on more, bgzip's by two threads from four on.
THREADS = (1, 2, 4)
LAYOUTS = ("mates", "interleaved", "single")


class Kind:
    """A run with one kind of read file."""

    def __init__(self, layout, fasta, packed):
        self.name = "%s %s%s" % (layout, "FASTA" if fasta else "FASTQ", ", gzip" if packed else "")
        self.packed = packed
        self.fasta = fasta
        self.record_lines = (2 if fasta else 4) * (2 if layout == "interleaved" else 1)
        texts, library = read_texts(layout, fasta, ".gz" if packed else "")
        self.texts = texts  # name -> bytes, as they are before compression
        self.fixed = {"a.lib": library, SCAFFOLDS: scaffolds()}

    def files(self, changed=None):
        """All input files, name -> bytes, some of them with another content."""
        reads = {name: member(text) if self.packed else text for name, text in self.texts.items()}
        return {**self.fixed, **reads, **(changed or {})}


def all_kinds():
    return [Kind(layout, fasta, packed) for packed in (False, True) for layout in LAYOUTS
            for fasta in (True, False)]


def genome():
    r = random.Random(3)
    return "".join(r.choices("ACGT", k=2 * CONTIG + GAP))


def scaffolds():
    truth = genome()
    return (">scaffold1\n%s%s%s\n" % (truth[:CONTIG], "N" * GAP, truth[CONTIG + GAP:])).encode()


def record(number, read, fasta):
    return ">r%d\n%s\n" % (number, read) if fasta else \
        "@r%d\n%s\n+\n%s\n" % (number, read, "I" * len(read))


def read_texts(layout, fasta, ending):
    truth = genome()
    singles = [truth[start:start + READ] for start in (CONTIG - 36, CONTIG - 33, CONTIG + GAP - 5)]
    firsts = [truth[start:start + READ] for start in (55, 60, 64)]
    seconds = [truth[start + INSERT - READ:start + INSERT][::-1].translate(
        str.maketrans("ACGT", "TGCA")) for start in (55, 60, 64)]
    if layout == "mates":
        reads = {"one" + ending: firsts, "two" + ending: seconds}
        keys = "q1=one%s\nq2=two%s\n" % (ending, ending)
    elif layout == "interleaved":
        reads = {"both" + ending: [mate for pair in zip(firsts, seconds) for mate in pair]}
        keys = "p=both%s\n" % ending
    else:
        reads = {"reads" + ending: singles}
        keys = "%s=reads%s\n" % ("f" if fasta else "q", ending)
    texts = {name: "".join(record(i, read, fasta) for i, read in enumerate(of_name)).encode()
             for name, of_name in reads.items()}
    return texts, ("[LIB]\navg_ins=%d\n%s" % (INSERT, keys)).encode()


def member(text, level=9):
    packer = zlib.compressobj(level, zlib.DEFLATED, 31)
    return packer.compress(text) + packer.flush()


def bgzip_member(text):
    packed = member(text, 6)[10:]
    extra = b"BC" + struct.pack("<HH", 2, 18 + len(packed) - 1)
    return b"\x1f\x8b\x08\4\0\0\0\0\0\xff\6\0" + extra + packed


def flipped(packed, at, bit):
    return packed[:at] + bytes([packed[at] ^ 1 << bit]) + packed[at + 1:]


def damages(kind):
    """(what, {name: bytes}) of every damaged form of the kind's files."""
    for name, text in kind.texts.items():
        if not kind.packed:
            for length in range(len(text)):
                yield "cut to %d bytes" % length, {name: text[:length]}
            continue
        for what, content in itertools.chain(packed_damages(text), boundary_damages(text),
                                             header_damages(text), many_members(text)):
            yield what, {name: content}
        for what, content in late_damages(kind, text):
            yield what, {name: content}
    if kind.packed and len(kind.texts) == 2:
        yield from both_damaged(kind)


def packed_damages(text):
    half = len(text) // 2
    first, second = member(text[:half]), member(text[half:])
    empty, whole, stored = member(b""), member(text), member(text, 0)
    for form, packed in (("", whole), ("stored, ", stored)):
        for length in range(len(packed)):
            yield "%scut to %d bytes" % (form, length), packed[:length]
        for at in range(len(packed)):
            for bit in {at % 8, (at + 3) % 8, (at + 5) % 8} if packed is whole else {at % 8}:
                yield "%sbit %d of byte %d flipped" % (form, bit, at), flipped(packed, at, bit)
    for field, at in (("checksum", -8), ("length", -4)):
        for wrong in (b"\0\0\0\0", b"\xff\xff\xff\xff"):
            changed = packed_with(whole, at, wrong)
            yield "wrong %s" % field, changed
    for length in range(len(second)):
        yield "second member cut to %d bytes" % length, first + second[:length]
    for at in range(len(second)):
        yield "byte %d of the second member flipped" % at, first + flipped(second, at, at % 8)
    for surplus in (b"x", b"\n", b"\0", b"\0" * 600, b"\0x", b"\0" * 600 + b"x", b"\x1f",
                    b"\x1f\x8b", b"\x1f\x8c", b"\x1e\x8b\x08", b">r9\nACGT\n"):
        yield "%r behind the last member" % surplus[-8:], whole + surplus
    for length in range(len(empty) + 1):
        yield "%d bytes of an empty member alone" % length, empty[:length]
        yield "%d bytes of an empty member behind" % length, whole + empty[:length]
    yield "empty member in front", empty + whole
    yield "empty member in the middle", first + empty + second
    yield "empty members around", empty + first + second + empty


def boundary_damages(text):
    """A member for every few bytes: cut at each boundary and beside it, and bytes there flipped."""
    parts = [member(text[at:at + 9]) for at in range(0, len(text), 9)]
    whole = b"".join(parts)
    for boundary in itertools.accumulate(map(len, parts)):
        for length in {boundary - 8, boundary - 1, boundary, boundary + 1, boundary + 10}:
            yield "cut to %d bytes, boundary %d" % (length, boundary), whole[:length]
        for at in range(boundary - 9, min(boundary + 11, len(whole))):
            yield "byte %d flipped, boundary %d" % (at, boundary), flipped(whole, at, at % 8)


def full_header(size):
    """A header with all fields, among them one that gives the member's size, as bgzip's does."""
    extra = b"BC" + struct.pack("<HH", 2, size & 0xFFFF) + b"xy\3\0\0\x1f\x8b"
    header = b"\x1f\x8b\x08\x1f" + struct.pack("<IBB", 1700000000, 2, 3) \
        + struct.pack("<H", len(extra)) + extra + b"reads of 1.fq\0" + b"a comment,\nof two lines\0"
    return header + struct.pack("<H", zlib.crc32(header) & 0xFFFF)


def header_damages(text):
    half = len(text) // 2
    parts = [member(text[:half])[10:], member(text[half:])[10:]]
    headers = [full_header(len(part)) for part in parts]
    whole = headers[0] + parts[0] + headers[1] + parts[1]
    yield "all header fields", whole
    for start, header in ((0, headers[0]), (len(headers[0] + parts[0]), headers[1])):
        for at in range(start, start + len(header)):
            yield "all header fields, cut to %d bytes" % at, whole[:at]
            yield "all header fields, byte %d flipped" % at, flipped(whole, at, at % 8)


def many_members(text):
    """Thousands of members, most of them empty."""
    empty = member(b"")
    parts = [member(text[at:at + 1]) + empty * 8 for at in range(len(text))]
    whole = b"".join(parts)
    yield "%d members" % (9 * len(text)), whole
    r = random.Random(len(text))
    for at in sorted(r.randrange(2, len(whole)) for _ in range(12)):
        yield "many members, cut to %d bytes" % at, whole[:at]
        yield "many members, byte %d flipped" % at, flipped(whole, at, at % 8)


def late_damages(kind, text):
    """Behind megabytes of reads that are too short to be searched for: more than is inflated ahead."""
    if len(kind.texts) == 2:
        return  # reads at the same place of the other file are the mates
    r = random.Random(5)
    short = "".join(record(i, "".join(r.choices("ACGT", k=20)), kind.fasta) for i in range(90000))
    front = text + short.encode() + text
    for name, maker in ("late", lambda part: member(part, 6)), ("late, bgzip", bgzip_member):
        packed = b"".join(maker(front[at:at + 65280]) for at in range(0, len(front), 65280))
        last = maker(text)
        yield name + ", whole", packed + last
        for at in (len(packed) // 2, len(packed) * 9 // 10, len(packed) - 6, len(packed) - 1):
            yield "%s, cut to %d bytes" % (name, at), packed[:at]
            yield "%s, byte %d flipped" % (name, at), flipped(packed, at, 2) + last
        for at in (1, 3, len(last) // 2, len(last) - 5):
            yield "%s, cut in the last member, %d" % (name, at), packed + last[:at]
            yield "%s, byte %d of the last member flipped" % (name, at), packed + flipped(last, at, 3)


def both_damaged(kind):
    """Damage of both mate files, at places that have nothing to do with each other."""
    r = random.Random(6)
    one, two = (list(packed_damages(text)) for text in kind.texts.values())
    for _ in range(300):
        first, second = r.choice(one), r.choice(two)
        yield "both: %s; %s" % (first[0], second[0]), dict(zip(kind.texts, (first[1], second[1])))


def packed_with(packed, at, field):
    end = at + len(field)
    return packed[:at] + field + (packed[end:] if end else b"")
