"""Read files of more than 4 GiB, with planted reads all over them."""

import struct
import zlib

import made

RECORDS = 100000       # of a block
LENGTH = 150           # bases of a read that belongs nowhere
LEAST = (1 << 32) + (1 << 26)  # bytes of text


def entry(read):
    return b"@r\n%s\n+\n%s\n" % (read, b"I" * len(read))


def text(singles, least):
    """The pieces of a FASTQ file of at least so many bytes: planted reads, a block of strangers, and
    so on in turn, with planted reads at the end; about as many at each place."""
    bases = made.random_bases(6, RECORDS * LENGTH)
    block = b"".join(entry(bases[at:at + LENGTH]) for at in range(0, len(bases), LENGTH))
    places = -(-least // len(block)) + 1
    for place in range(places):
        if place > 0:
            yield block
        yield b"".join(map(entry, singles[place::places]))


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
