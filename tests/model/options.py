"""Run parameters, the command line and the help text; the read-library file."""

import number
from world import lines_of

MIN_LARGE_INSERT = 2000


class Help(Exception):
    """The help text is to be shown."""


class Parameters:
    def __init__(self):
        self.lib_file = b""
        self.contig_file = b""
        self.scaffold_file = b""
        self.out_file = b""
        self.over_ratio = 0.3
        self.map_cut = 0.98
        self.cutt_edge = 0
        self.kmer = 31
        self.thread_num = 1
        self.read_len = 100
        self.init_size = 1048576
        self.contig_len = 70
        self.load_factor = 0.75
        self.big_gap_len = 900
        self.max_insert = 0


def narrow(text):
    return number.to_float(number.atof(text))


def unsigned_long(text):
    return number.unsigned64(number.strtol(text))


OPTIONS = {
    b"l": ("lib_file", bytes),
    b"c": ("contig_file", bytes),
    b"s": ("scaffold_file", bytes),
    b"o": ("out_file", bytes),
    b"O": ("over_ratio", number.atof),
    b"M": ("map_cut", number.atof),
    b"C": ("cutt_edge", number.atoi),
    b"k": ("kmer", number.atoi),
    b"t": ("thread_num", number.atoi),
    b"r": ("read_len", number.atoi),
    b"m": ("init_size", unsigned_long),
    b"L": ("contig_len", number.atoi),
    b"f": ("load_factor", narrow),
}


def parse(parameters, argv):
    """Set the parameters; argv is without the program's name.

    Returns the index of the first argument that was not consumed, raises Help.
    """
    at = 0
    while at < len(argv):
        if argv[at][:1] != b"-":
            return at
        letter = argv[at][1:2]
        if letter not in OPTIONS or at + 1 == len(argv):
            raise Help()
        name, convert = OPTIONS[letter]
        setattr(parameters, name, convert(argv[at + 1]))
        at += 2
    return at


# Stand-ins, equal on both sides after the runner's normalisation.
COMPILE_DATE = b"Jan  1 2000\t00:00:00"
EXAMPLES = (b"velk -l lib.cfg -s scaffolds.fa -m seqlength*1/LoadFactor -o found.fa 2> velk.log",
            b"velk -l lib.cfg -c contigs.fa -m seqlength*1/LoadFactor -o found.fa 2> velk.log")


def usage(p):
    """The help text with the values that the parameters have by now."""
    show = number.show_double
    return b"".join([
        b"Usage:\t\tVelk(VELK) [option]\n",
        b"Version:\tvelk1.13\n",
        b"Compile Date:\t" + COMPILE_DATE + b"\n",
        b"Author:\tthe velk developers\n",
        b"Contact:\tsee README.md\n",
        b"\t-l\t<str>\t\tlib file \n",
        b"\t-c\t<str>\t\tcontig file in fasta\n",
        b"\t-s\t<str>\t\tscaffold file in fasta\n",
        b"\t-o\t<str>\t\toutput the reads fall in gaps \n",
        b"\t-O\t<float>\t\toverlap ratio cut ratio of long reads with contig edge, default="
        + show(p.over_ratio) + b"\n",
        b"\t-M <float>\t\tmap ratio cut ratio of reads to contig, default ="
        + show(p.map_cut) + b"\n",
        b"\t-C <int>\t\tcut contig edge length =%d\n" % p.cutt_edge,
        b"\t-k\t<int>\t\tkmer length(<=63), default=%d\n" % p.kmer,
        b"\t-t\t<int>\t\tthread number, default=%d\n" % p.thread_num,
        b"\t-r\t<int>\t\tmax PE read length, default=%d\n" % p.read_len,
        b"\t-m\t<int>\t\tinitialize size of hash table, default=%d\n" % p.init_size,
        b"\t-L\t<int>\t\tcontig length cutoff, default=%d\n" % p.contig_len,
        b"\t-f\t<float>\t\tLoad factor " + show(p.load_factor) + b"\n",
        b"\t-h\t\t\tthis help\n\n",
        b"Example:\n" + EXAMPLES[0] + b"\n" + EXAMPLES[1] + b"\n",
        b"Attention:\n",
        b"Please do not set -s and -c at the same time, or else, "
        b"velk will only load and use scaffold.\n",
        b"\n\n",
    ])


class Lib:
    def __init__(self):
        self.avg_ins = 0
        self.pairs = []       # [first file, second file]
        self.single2 = []     # interleaved pairs
        self.single = []      # single-end files of key f
        self.singlequal = []  # single-end files of key q

    def read_files(self):
        """Every listed name, in the order in which an output is compared with them."""
        return ([name for pair in self.pairs for name in pair]
                + self.single2 + self.single + self.singlequal)


def split_column(line):
    """(key, value) of a line, None without an equals sign."""
    if b"=" not in line:
        return None
    key, value = line.split(b"=", 1)
    if len(value) >= 3 and value.endswith(b"\r"):
        value = value[:-1]
    return key, value


def load_libraries(world, parameters):
    """The libraries; sets big_gap_len and max_insert."""
    name = parameters.lib_file
    if not world.disk.opens(name):
        world.end(255, b"Fail to open ", name, b"\n")
    world.say(b"Starting load lib file ", name, b"\n")
    content = world.read(name)

    libs = []
    max_small_insert = 0
    for line in lines_of(content):
        if b"[LIB]" in line:
            libs.append(Lib())
            continue
        column = split_column(line)
        if column is None or not libs:
            continue
        lib = libs[-1]
        key, value = column
        if key in (b"q1", b"f1"):
            lib.pairs.append([value, b""])
        elif key in (b"q2", b"f2"):
            if lib.pairs:  # without an open pair there is nothing to complete
                lib.pairs[-1][1] = value
        elif key == b"f":
            lib.single.append(value)
        elif key == b"p":
            lib.single2.append(value)
        elif key == b"q":
            lib.singlequal.append(value)
        elif key == b"avg_ins":
            lib.avg_ins = number.atoi(value)
            if max_small_insert < lib.avg_ins < MIN_LARGE_INSERT:
                max_small_insert = lib.avg_ins
            parameters.max_insert = max(parameters.max_insert, lib.avg_ins)

    world.say(b"Find lib number: ", len(libs), b"\n")
    for i, lib in enumerate(libs):
        if lib.single:
            world.say(b"single fa file number of lib ", i, b" is ", len(lib.single), b"\n")
        if lib.pairs:
            world.say(b"pair file number of lib ", i, b" is ", len(lib.pairs), b"\n")
        if lib.single2:
            world.say(b"PE in single file number of lib ", i, b" is ", len(lib.single2), b"\n")
        if lib.singlequal:
            world.say(b"single fq file number of lib ", i, b"is", len(lib.singlequal), b"\n")
    world.say(b"Lib file load finished!\n")
    parameters.big_gap_len = min(number.INT_MAX, parameters.read_len + max_small_insert)
    world.say(b"Max small insert is ", max_small_insert,
              b"\tbig gap length: ", parameters.big_gap_len,
              b"\t Max insert: ", parameters.max_insert, b"\n")
    return libs
