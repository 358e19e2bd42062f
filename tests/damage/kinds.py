"""The twelve kinds of read files, three records each, and ways to damage them."""

import random
import zlib

CONTIG, GAP, READ, INSERT = 120, 40, 40, 110  # bases
SCAFFOLDS = "s.fa"
ARGUMENTS = ["-l", "a.lib", "-s", SCAFFOLDS, "-o", "found.fa", "-m", "1000", "-r", str(READ)]
LAYOUTS = ("mates", "interleaved", "single")


class Kind:
    """A run with one kind of read file: name -> bytes in `files`; `damaged` names what to damage."""

    def __init__(self, layout, fasta, packed):
        self.name = "%s %s%s" % (layout, "FASTA" if fasta else "FASTQ", ", gzip" if packed else "")
        self.packed = packed
        texts, library = read_texts(layout, fasta, ".gz" if packed else "")
        self.texts = texts  # name -> bytes, as they are before compression
        self.fixed = {"a.lib": library, SCAFFOLDS: scaffolds()}

    def files(self, damaged="", content=b""):
        """All input files, one of them with another content."""
        reads = {name: member(text) if self.packed else text for name, text in self.texts.items()}
        if damaged:
            reads[damaged] = content
        return {**self.fixed, **reads}


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


def flipped(packed, at, bit):
    return packed[:at] + bytes([packed[at] ^ 1 << bit]) + packed[at + 1:]


def damages(kind):
    """(what, name of the file, its bytes) of every damaged form of the kind's files."""
    for name, text in kind.texts.items():
        if not kind.packed:
            for length in range(len(text)):
                yield "cut to %d bytes" % length, name, text[:length]
            continue
        for what, content in packed_damages(text):
            yield what, name, content


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


def packed_with(packed, at, field):
    end = at + len(field)
    return packed[:at] + field + (packed[end:] if end else b"")
