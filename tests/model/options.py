"""Run parameters, the command line and the help text."""

import number

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
