"""Lines out of read files, plain and gzip, and the shapes of records.

A gzip file is read as far as it can be. Sound data goes through the zlib module. That module gives
nothing of a member that turns out to be corrupt, so what stood before the damage is unpacked here.
"""

import re
import zlib

MAGIC = b"\x1f\x8b"
# Reasons around the compressed data; those within it have one name.
FRAME_REASONS = {"unknown compression method", "unknown header flags set", "header crc mismatch",
                 "incorrect data check", "incorrect length check"}
DAMAGED_BLOCK = b"invalid compressed data"


def gunzip(data, to_block=False):
    """(content, reason of the damage or None) of a file; without the magic it is plain.

    to_block: of a damaged member only the blocks before the damaged one.
    """
    if data[:2] != MAGIC:
        return data, None
    content = b""
    while True:
        before = content
        member = zlib.decompressobj(31)
        try:
            content += member.decompress(data)
        except zlib.error as error:
            reason = re.sub(r"^Error -?\d+ while decompressing data: ", "", str(error))
            if reason not in FRAME_REASONS:
                return before + before_damage(data, to_block), DAMAGED_BLOCK
            return before + before_damage(data, to_block), reason.encode()
        if not member.eof:
            return before + before_damage(data, True) if to_block else content, \
                b"unexpected end of file"
        data = member.unused_data
        if data[:2] == MAGIC:
            continue
        if data.strip(b"\0"):
            return content, b"trailing bytes after the last member"
        return content, None


class Damage(Exception):
    pass


class Bits:
    def __init__(self, data, at):
        self.data = data
        self.at = at      # next byte
        self.left = 0     # bits of the byte before it that are still to come
        self.byte = 0

    def bit(self):
        if self.left == 0:
            if self.at >= len(self.data):
                raise Damage()
            self.byte = self.data[self.at]
            self.at += 1
            self.left = 8
        self.left -= 1
        value = self.byte & 1
        self.byte >>= 1
        return value

    def take(self, count):
        return sum(self.bit() << i for i in range(count))

    def bytes(self, count):
        self.left = 0
        self.at += count
        if self.at > len(self.data):
            raise Damage()
        return self.data[self.at - count:self.at]


class Code:
    """A prefix code from its code lengths."""

    def __init__(self, lengths, may_be_single):
        used = [length for length in lengths if length]
        self.longest = max(used, default=0)
        room = (1 << self.longest) - sum(1 << self.longest - length for length in used)
        if room < 0 or room > 0 and used and not (may_be_single and self.longest == 1):
            raise Damage()
        self.symbols = {}
        code = 0
        for length in range(1, self.longest + 1):
            for symbol, its_length in enumerate(lengths):
                if its_length == length:
                    self.symbols[length, code] = symbol
                    code += 1
            code <<= 1

    def read(self, bits):
        code = 0
        for length in range(1, self.longest + 1):
            code = code << 1 | bits.bit()
            if (length, code) in self.symbols:
                return self.symbols[length, code]
        raise Damage()


LENGTH_BASE = [3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 15, 17, 19, 23, 27, 31,
               35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258]
LENGTH_EXTRA = [0] * 8 + [1] * 4 + [2] * 4 + [3] * 4 + [4] * 4 + [5] * 4 + [0]
DISTANCE_BASE = [1, 2, 3, 4, 5, 7, 9, 13, 17, 25, 33, 49, 65, 97, 129, 193, 257, 385, 513,
                 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577]
DISTANCE_EXTRA = [0, 0] + [i // 2 for i in range(28)]
LENGTHS_ORDER = [16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15]
FIXED_LITERALS = [8] * 144 + [9] * 112 + [7] * 24 + [8] * 8
FIXED_DISTANCES = [5] * 32


def header_end(data):
    """Offset behind the member's header."""
    if len(data) < 10 or data[2] != 8 or data[3] & 0xE0:
        raise Damage()
    flags = data[3]
    at = 10
    if flags & 4:
        at += 2 + data[at] + 256 * data[at + 1]
    for flag in (8, 16):
        if flags & flag:
            at = data.index(b"\0", at) + 1
    if flags & 2:
        if zlib.crc32(data[:at]) & 0xFFFF != data[at] + 256 * data[at + 1]:
            raise Damage()
        at += 2
    return at


def read_dynamic(bits):
    literal_count = bits.take(5) + 257
    distance_count = bits.take(5) + 1
    order_count = bits.take(4) + 4
    if literal_count > 286 or distance_count > 30:
        raise Damage()
    lengths = [0] * 19
    for i in range(order_count):
        lengths[LENGTHS_ORDER[i]] = bits.take(3)
    code = Code(lengths, False)
    lengths = []
    while len(lengths) < literal_count + distance_count:
        symbol = code.read(bits)
        if symbol < 16:
            lengths.append(symbol)
            continue
        if symbol == 16:
            if not lengths:
                raise Damage()
            value, count = lengths[-1], 3 + bits.take(2)
        else:
            value, count = 0, 3 + bits.take(3) if symbol == 17 else 11 + bits.take(7)
        lengths += [value] * count
    if len(lengths) > literal_count + distance_count or lengths[256] == 0:
        raise Damage()
    return Code(lengths[:literal_count], True), Code(lengths[literal_count:], True)


def read_block(bits, literals, distances, out):
    while True:
        symbol = literals.read(bits)
        if symbol < 256:
            out.append(symbol)
            continue
        if symbol == 256:
            return
        if symbol > 285:
            raise Damage()
        length = LENGTH_BASE[symbol - 257] + bits.take(LENGTH_EXTRA[symbol - 257])
        symbol = distances.read(bits)
        if symbol > 29:
            raise Damage()
        distance = DISTANCE_BASE[symbol] + bits.take(DISTANCE_EXTRA[symbol])
        if distance > len(out):
            raise Damage()
        for _ in range(length):
            out.append(out[-distance])


def before_damage(data, to_block=False):
    """What a corrupt member holds up to the damage, or to the block that has it."""
    out = bytearray()
    blocks = b""
    try:
        bits = Bits(data, header_end(data))
        last = 0
        while not last:
            blocks = bytes(out)
            last = bits.take(1)
            kind = bits.take(2)
            if kind == 0:
                low, high, low_not, high_not = bits.bytes(4)
                size = low + 256 * high
                if size ^ 0xFFFF != low_not + 256 * high_not:
                    raise Damage()
                out += bits.bytes(size)
            elif kind == 1:
                read_block(bits, Code(FIXED_LITERALS, True), Code(FIXED_DISTANCES, True), out)
            elif kind == 2:
                read_block(bits, *read_dynamic(bits), out)
            else:
                raise Damage()
        blocks = bytes(out)
    except (Damage, IndexError, ValueError):
        pass
    return blocks if to_block else bytes(out)


GZIP_LINE = 1023  # longest piece that one gzip read gives


class PlainStream:
    """A text stream read by lines; a failed read looks like the end."""

    def __init__(self, content):
        self.content = content
        self.at = 0
        self.ended = False  # a read has run into the end of the file

    def line(self, old):
        """The next line; old when the stream has ended already, empty when it ends now."""
        if self.ended:
            return old
        end = self.content.find(b"\n", self.at)
        if end < 0:
            self.ended = True
            line = self.content[self.at:]
            self.at = len(self.content)
            return line
        line = self.content[self.at:end]
        self.at = end + 1
        return line


class GzipStream:
    """A gzip file read by lines into one line buffer."""

    def __init__(self, content):
        self.content, self.damage = gunzip(content)
        self.at = 0
        self.buffer = b""
        self.at_damage = False  # a read needed more than could be unpacked

    def read(self):
        """Fill the line buffer; False, and the buffer as it was, when nothing is left."""
        piece = self.content[self.at:self.at + GZIP_LINE]
        end = piece.find(b"\n")
        if end >= 0:
            piece = piece[:end + 1]
        elif len(piece) < GZIP_LINE:
            self.at_damage = self.damage is not None
        if not piece:
            return False
        self.at += len(piece)
        self.buffer = piece.split(b"\0", 1)[0]
        return True

    def kept(self):
        """The line buffer without its last character."""
        return self.buffer[:-1]


class Shape:
    """The lines of one record."""

    def __init__(self, lines, keep_a, keep_b=None):
        self.lines = lines
        self.keep_a = keep_a  # index of the line that goes to the first buffer
        self.keep_b = keep_b  # ... and to the second, in an interleaved file


FASTA, FASTQ = Shape(2, 1), Shape(4, 1)
FASTA_PAIR, FASTQ_PAIR = Shape(4, 1, 3), Shape(8, 1, 5)
