"""Read files as texts, odd endings included, and their gzip forms."""

import gzip
import io
import zlib


def record(r, fasta, name, read):
    """The lines of one record."""
    header = (">" if fasta else "@") + name
    if fasta:
        return [header, read]
    plus = r.choice(["+", "+", "+" + name])
    return [header, read, plus, "".join(r.choices("!#+5:@>FIJ", k=len(read)))]


def text(r, records, fasta, plain_ending):
    """Records joined to a file; unless plain_ending, some end or run in an odd way."""
    lines = [line for lines_of_one in records for line in lines_of_one]
    end = "\n"
    kind = "plain" if plain_ending else r.choices(
        ["plain", "no newline", "short", "short, no newline", "blank lines", "crlf", "long",
         "blank inside", "bytes"], [50, 14, 8, 6, 8, 5, 5, 4, 3])[0]
    if kind.startswith("short") and len(lines) > 5:
        del lines[-r.randint(1, 3 if fasta else 7):]
    if kind == "blank lines":
        lines += [""] * r.randint(1, 9)
    if kind == "blank inside":
        lines.insert(r.randint(2, len(lines)), "")
    if kind == "crlf":
        end = "\r\n"
    if kind == "long" and len(lines) > 2:
        at = r.randrange(1, len(lines))
        lines[at] = (lines[at] * 2000)[:r.choice([1022, 1023, 1024, 1500, 2046, 2047, 3000])]
    if kind == "bytes":
        for _ in range(3):
            at = r.randrange(1, len(lines))
            where = r.randint(0, len(lines[at]))
            lines[at] = lines[at][:where] + r.choice("\0\0\xe9\xff\t") + lines[at][where:]
    joined = end.join(lines)
    if "no newline" not in kind:
        joined += end
    return joined.encode("latin-1")


def member(r, content):
    """One gzip member."""
    if r.random() < 0.2:
        # No file name, no time, all in one go.
        packer = zlib.compressobj(r.choice([0, 1, 6, 9]), zlib.DEFLATED, 31, r.choice([8, 9]),
                                  r.choice([zlib.Z_DEFAULT_STRATEGY, zlib.Z_FIXED,
                                            zlib.Z_HUFFMAN_ONLY]))
        return packer.compress(content) + packer.flush()
    out = io.BytesIO()
    name = r.choice(["", "reads.fa"])
    with gzip.GzipFile(name, "wb", r.choice([0, 1, 6, 9]), out, 0) as file:
        file.write(content)
    return out.getvalue()


def compress(r, content):
    """A gzip file of one or more members, sometimes padded; now and then plain text."""
    kind = r.choices(["one", "several", "empty member", "padded", "plain"],
                     [60, 15, 8, 8, 9])[0]
    if kind == "plain":
        return content
    if kind == "several":
        cuts = sorted(r.randint(0, len(content)) for _ in range(r.randint(1, 3)))
        bounds = [0] + cuts + [len(content)]
        return b"".join(member(r, content[a:b]) for a, b in zip(bounds, bounds[1:]))
    packed = member(r, content)
    if kind == "empty member":
        empty = member(r, b"")
        return r.choice([empty + packed, packed + empty])
    if kind == "padded":
        return packed + b"\0" * r.choice([1, 2, 10, 600])
    return packed


def reason_comes_late(packed):
    """Whether the file neither begins like reads nor shows its damage on its first line."""
    from streams import gunzip
    content, damage = gunzip(packed)
    return damage is not None and content[:1] not in (b">", b"@") and b"\n" in content


def damaged(r, content):
    """A gzip file that is cut, corrupt, or followed by something."""
    while True:
        cut = r.choice([0, 0, 0, r.randint(0, len(content))])
        packed = (member(r, content[:cut]) if cut else b"") + member(r, content[cut:])
        packed = damage_once(r, packed)
        if packed[:2] == b"\x1f\x8b" and not reason_comes_late(packed):
            return packed


def damage_once(r, packed):
    kind = r.choice(["cut", "cut second", "flip", "flip", "flip", "checksum", "length",
                     "trailing", "trailing"])
    if kind == "cut":
        return packed[:r.randrange(2, len(packed))]
    if kind == "cut second":
        second = member(r, b">a\nACGTACGTACGT\n>b\nACGTACGTAAAA\n")
        return packed + second[:r.randrange(2, len(second))]
    if kind == "flip":
        at = r.randrange(3, len(packed))
        return packed[:at] + bytes([packed[at] ^ 1 << r.randrange(8)]) + packed[at + 1:]
    if kind == "checksum":
        return packed[:-8] + bytes([packed[-8] ^ 1]) + packed[-7:]
    if kind == "length":
        return packed[:-4] + bytes([packed[-4] ^ 1]) + packed[-3:]
    return packed + r.choice([b"x", b"\x1f", b">r\nACGT\n", b"\0\0\0x", b"\x1e\x8b\x08", b"\n"])
