"""Scaffold and contig files of a planned run, with the oddities that they can have."""

import simulate


def gap_text(r, length):
    text = "".join(r.choices("Nn", [60, 1], k=length))
    return text.lower() if r.random() < 0.05 else text


def scaffold_text(r, chromosome):
    """One scaffold's sequence, with the oddities that sit at runs of N."""
    out = ""
    pieces = chromosome.pieces
    for i, piece in enumerate(pieces):
        out += piece.shown
        if i + 1 < len(pieces):
            gap = piece.gap_shown
            if gap > 30 and r.random() < 0.06:
                island = simulate.bases(r, r.randint(1, 20))
                at = r.randint(1, gap - 21)
                out += gap_text(r, at) + island + gap_text(r, gap - at - len(island))
            else:
                out += gap_text(r, gap)
    odd = r.random()
    if odd < 0.06:
        out = gap_text(r, r.randint(1, 30)) + out
    elif odd < 0.12:
        out += gap_text(r, r.randint(1, 30))
    elif odd < 0.16:
        out += gap_text(r, r.randint(1, 30)) + r.choice("ACGTa")
    elif odd < 0.19:
        out += gap_text(r, r.randint(1, 30)) + simulate.bases(r, r.randint(2, 15))
    elif odd < 0.22:
        out += (gap_text(r, r.randint(1, 9)) + simulate.bases(r, r.randint(1, 30))
                + gap_text(r, r.randint(1, 9)))
    elif odd < 0.23:
        out = gap_text(r, r.randint(1, 50))
    return out


def wrap(r, seq, end):
    width = r.choice([50, 60, 70, 80, 1000000, 1000000, r.randint(1, 40) + 20])
    lines = [seq[at:at + width] for at in range(0, len(seq), width)]
    if r.random() < 0.03:
        lines.insert(r.randint(0, len(lines)), "")
    return "".join(line + end for line in lines)


def scaffold_header(r, number, first):
    tails = ["", " length=50", "\tx", " Cov=3", " cov 7", "_b"]
    tail = r.choices(tails, [60, 10, 8, 5, 8, 9])[0]
    word = r.choices(["scaffold", "Scaffold", "C", "c" if first else "contigs ", "superScaffold"],
                     [60, 20, 10, 5, 5])[0]
    return ">" + word + r.choice(["%d", "%03d", "s%d"]) % number + tail


def scaffold_file(plan, chromosomes):
    r = plan.r
    plan.sequence = r.choice(["scaffolds.fa", "in/asm.fa", "my asm.fasta"])
    end = "\r\n" if r.random() < 0.03 else "\n"
    text = ""
    number = r.choice([0, 1, 1, 95])
    for i, chromosome in enumerate(chromosomes):
        text += scaffold_header(r, number, i == 0) + end
        seq = scaffold_text(r, chromosome)
        odd = r.random()
        if odd < 0.02:
            seq = ""  # the next header becomes sequence
        elif odd < 0.03:
            text += ">scaffold_consecutive header" + end
        text += wrap(r, seq, end)
        number += 1
    if r.random() < 0.02:
        text += ">scaffold%d" % number + end
    if text.startswith(">") and len(chromosomes) > 2 and r.random() < 0.02:
        # Not a header by its first character, made up for by a header that is swallowed.
        text = text[1:] + ">scaffold%d" % number + end + ">scaffold_last" + end
    if r.random() < 0.1:
        text = text[:-len(end)]
    plan.files[plan.sequence] = text.encode()


def contig_file(plan, chromosomes):
    r = plan.r
    plan.sequence = r.choice(["contigs.fa", "in/asm.contig", "x.contig"])
    end = "\r\n" if r.random() < 0.03 else "\n"
    blocks = []
    names = [r.choice(["%d", "s%d", "%02d", "9_%d", "a b%d"]) % (i + r.randint(0, 9))
             for i in range(len(chromosomes))]
    if r.random() < 0.05:
        names[0] = ""
    for name, chromosome in zip(names, chromosomes):
        gap = r.choices([0, 7], [90, 10])[0]
        for j, piece in enumerate(chromosome.pieces):
            label = r.choices([">scaffold", ">Scaffold", ">contig_no", ">........"],
                              [85, 5, 5, 5])[0]
            index = r.choices(["_%d" % j, "_", "_x 1", ""], [88, 4, 4, 4])[0]
            if r.random() < 0.03:
                gap = -r.randint(1, 60)
            size = r.choices(["%d", " %d", "+%d", "%d bases", "%d\t5"], [85, 5, 3, 4, 3])[0]
            size = size % gap if "+" not in size or gap >= 0 else "%d" % gap
            seq = piece.shown
            if r.random() < 0.04:
                at = r.randint(0, len(seq))
                seq = seq[:at] + "N" * r.randint(1, 30) + seq[at:]
            if r.random() < 0.01:
                seq = ""
            blocks.append(label + name + index + "\t" + size + end + wrap(r, seq, end))
            gap = piece.gap_shown
    if r.random() < 0.06:
        # Blocks of one scaffold that are not together.
        at = r.randrange(len(blocks))
        blocks.insert(r.randint(0, len(blocks)), blocks.pop(at))
    text = "".join(blocks)
    if r.random() < 0.1:
        text = text[:-len(end)]
    if r.random() < 0.05:
        text = end.replace("\r", "") + text
    plan.files[plan.sequence] = text.encode()
