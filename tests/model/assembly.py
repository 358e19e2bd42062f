"""Scaffolds, contigs and gaps, from a scaffold FASTA or from a contig FASTA."""

import itertools
import re

import number
from world import lines_of

NO_GAP = -1  # in front of a scaffold's first contig, contig input


class Contig:
    def __init__(self):
        self.seq = b""
        self.front_gap_num = 0
        self.front_gap_size = 0  # signed: contig input can give a negative length


class Scaffold:
    def __init__(self):
        self.name = b""
        self.contigs = []


class Assembly:
    def __init__(self):
        self.scaffolds = []
        self.gap_sum = 0


def side_file(world, name, inputs):
    """Create an output beside the inputs, or end the run."""
    world.refuse_same_file(name, inputs)
    content = world.disk.create(name)
    if content is None:
        world.end(1, b"Can't open output file: ", name, b"\n")
    return content


# ---------------------------------------------------------------- scaffold FASTA

def delete_tail(text):
    return re.split(rb"[ \t]", text, maxsplit=1)[0]


def too_short(world, file, line_number, status):
    world.end(status, b"[ERROR]: ", file, b", line ", line_number,
              b": header too short to hold an id\n")


def cut_tenth(world, file, line_number, line):
    """Id of a header with a nine-character label."""
    if len(line) < 9:
        too_short(world, file, line_number, 3)
    return delete_tail(line[9:])


def cut_third(world, file, line_number, line):
    """Id of a header with a two-character label."""
    if len(line) < 2:
        too_short(world, file, line_number, 3)
    return line[2:]


COMPRESSIONS = [(b"\x1f\x8b", b"gzip"), (b"BZh", b"bzip2"), (b"\xfd7zXZ", b"xz"),
                (b"\x28\xb5\x2f\xfd", b"zstd")]


def warn_of_other_kind(world, file, lines):
    for start, name in COMPRESSIONS:
        if lines and lines[0].startswith(start):
            world.say(b"[WARNING]: ", file, b" is compressed (", name,
                      b"), but scaffolds are read as plain text\n")
            return
    in_front = itertools.takewhile(lambda line: not line.startswith(b">"), lines)
    if any(b"[LIB]" in line for line in in_front):
        world.say(b"[WARNING]: ", file, b" is a library file in the place of the scaffolds, "
                  b"-l and -s may be swapped\n")


def load_scaffolds(world, parameters, inputs):
    """Count, read and split the scaffolds; write the two side files.

    inputs: the names that no side file may overwrite; the side files are added to it.
    """
    file = parameters.scaffold_file
    assembly = Assembly()

    if not world.disk.opens(file):
        world.stdout += b"Fail to load file " + file + b"\n"
        world.end(255)
    lines = lines_of(world.read(file))
    warn_of_other_kind(world, file, lines)
    scaffold_sum = sum(line.startswith(b">") for line in lines)
    assembly.scaffolds = [Scaffold() for _ in range(scaffold_sum)]
    world.say(b"Scaffold Initialization finished!\n")

    positions = side_file(world, file + b".contigPos", inputs)
    inputs.append(file + b".contigPos")

    first = lines[0] if lines else b""
    if b"caffold" in first:
        name = cut_tenth(world, file, 1, first)
    elif b"C" in first or b"c" in first:
        name = cut_third(world, file, 1, first)
    else:
        world.end(3, b"What is the label for scaffold? It't neither "
                     b"\"scaffold/Scaffold\" nor \"C/c\".\n")

    def split(number_of_scaffold, joined, name):
        if number_of_scaffold >= scaffold_sum:
            world.end(3, b"[ERROR]: ", file, b": more scaffolds than header lines, "
                         b"the first line must begin with >\n")
        scaffold = assembly.scaffolds[number_of_scaffold]
        split_scaffold(parameters, assembly, scaffold, joined, name, positions)

    current = 0
    buffer = []  # the sequence lines so far
    for line_number, line in enumerate(lines[1:], 2):
        if line.startswith(b">") and any(buffer):
            split(current, b"".join(buffer), name)
            buffer = []
            if b"C" in line:
                name = cut_third(world, file, line_number, line)
            else:
                name = cut_tenth(world, file, line_number, line)
            current += 1
        else:
            # A header met while nothing is buffered is sequence as well.
            buffer.append(line)
    split(current, b"".join(buffer), name)

    contig_file = file + b".contig"
    content = side_file(world, contig_file, inputs)
    inputs.append(contig_file)
    for scaffold in assembly.scaffolds:
        for j, contig in enumerate(scaffold.contigs):
            content += b">scaffold%s_%d\t%d\n%s\n" % (
                scaffold.name, j, number.unsigned64(contig.front_gap_size), contig.seq)
    world.say(b"Print contigs finished!\nLoad scaffolds finished!\n")
    return assembly


def split_scaffold(parameters, assembly, scaffold, seq, name, positions):
    """Cut one joined sequence into the scaffold's contigs and number its gaps."""
    scaffold.name = name
    runs = [match.span() for match in re.finditer(rb"[^Nn]+", seq)]

    def kept(index):
        start, end = runs[index]
        return index == 0 or end - start >= parameters.contig_len or end == len(seq)

    count = sum(kept(index) for index in range(len(runs)))
    if len(runs) > 1:
        start, end = runs[-1]
        if end == len(seq) and end - start == 1:
            count -= 1  # a single last base behind a gap gets no slot
    slots = [Contig() for _ in range(count)]
    # The gap in front of a contig without a slot is kept here, and goes nowhere else.
    beyond = Contig()
    slot = lambda k: slots[k] if k < count else beyond

    k = 0
    pending = 0
    for index, (start, end) in enumerate(runs):
        length = end - start
        gap_end = runs[index + 1][0] if index + 1 < len(runs) else len(seq)
        if kept(index):
            contig = slot(k)
            cut = parameters.cutt_edge
            if cut != 0 and 2 * (parameters.read_len + cut) <= length:
                start += cut
                length -= 2 * cut
                contig.front_gap_size += cut
            contig.seq = seq[start:start + length]
            positions += b"%s\t%d\t%d\t%d\n" % (name, k, start, start + length)
            k += 1
        else:
            pending = slot(k).front_gap_size + length
            assembly.gap_sum -= 1
        pending += gap_end - end
        if gap_end < len(seq):
            slot(k).front_gap_num = assembly.gap_sum
            slot(k).front_gap_size = pending
            assembly.gap_sum += 1
            pending = 0
    scaffold.contigs = slots


# ------------------------------------------------------------------ contig FASTA

def contig_header_id(world, file, line_number, line):
    if len(line) < 9:
        too_short(world, file, line_number, 255)
    return line[9:].split(b"_", 1)[0]


def load_contigs(world, parameters):
    """Build the same model from a contig FASTA."""
    file = parameters.contig_file
    world.say(b"Only set -c, load contig directly!\nStart to count contig number\n")
    if not world.disk.opens(file):
        world.end(255, b"Fail to load file ", file, b"\n")
    lines = lines_of(world.read(file))

    counts = {}
    for line_number, line in enumerate(lines, 1):
        if line.startswith(b">"):
            name = contig_header_id(world, file, line_number, line)
            counts[name] = counts.get(name, 0) + 1

    assembly = Assembly()
    index_of = {}
    for i, name in enumerate(sorted(counts)):
        scaffold = Scaffold()
        scaffold.name = name
        scaffold.contigs = [Contig() for _ in range(counts[name])]
        assembly.scaffolds.append(scaffold)
        assembly.gap_sum += counts[name] - 1
        index_of[name] = i
    world.say(b"Scaffold Initialization finished!\n")

    current = 0         # scaffold index
    contig_index = -1
    current_name = b""
    gap_number = -1
    buffer = []
    for line_number, line in enumerate(lines, 1):
        if not line.startswith(b">"):
            if line:
                if contig_index < 0:
                    world.end(255, b"[ERROR]: ", file, b", line ", line_number,
                              b": sequence before the first header\n")
                buffer.append(line)
            continue
        if buffer:
            assembly.scaffolds[current].contigs[contig_index].seq = b"".join(buffer)
            buffer = []
        name = contig_header_id(world, file, line_number, line)
        tab = line.find(b"\t")
        if tab < 0:
            world.end(255, b"no contig before gap len, please check!\n")
        if name != current_name:
            current_name = name
            current = index_of[name]
            contig_index = -1
        contig_index += 1
        contig = assembly.scaffolds[current].contigs[contig_index]
        contig.front_gap_size = number.atoi(line[tab + 1:])
        if contig_index != 0:
            gap_number += 1
            contig.front_gap_num = gap_number
        else:
            contig.front_gap_num = NO_GAP
        contig.seq = b""
    if buffer:
        assembly.scaffolds[current].contigs[contig_index].seq = b"".join(buffer)
    return assembly
