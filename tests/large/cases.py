"""The large inputs: each makes its assembly and its reads, and says what velk is to be run with."""

import os

import made

SCAFFOLDS = 1 << 20   # what the fields of the index can hold: scaffolds,
CONTIGS = 1 << 19     # contigs of one scaffold,
OFFSETS = 1 << 24     # bases of a contig
LINE = 100_000_000    # characters
SPREAD = 10000        # gaps all over an assembly that get reads
STRANGERS = 50000


class Case:
    """An assembly and its reads in a folder."""

    def __init__(self, folder, assembly):
        self.folder = folder
        self.assembly = assembly
        self.reads = made.Reads(assembly)
        self.has_contig_run = False  # velk is run again, with -c and the contigs written

    def path(self, name):
        return os.path.join(self.folder, name)

    def write_library(self, singles="singles.fa"):
        with open(self.path("reads.lib"), "w", encoding="ascii") as file:
            file.write("[LIB]\navg_ins=%d\np=mates.fq\n[LIB]\nf=%s\n" % (made.INSERT, singles))

    def write(self):
        self.assembly.write_scaffolds(self.path("scaffolds.fa"))
        self.reads.add_strangers(2, STRANGERS)
        self.reads.write(self.path("singles.fa"), self.path("mates.fq"))
        self.write_library()


def plant_all_over(case, gaps):
    """Reads at these gaps in every position, and at gaps all over the assembly."""
    for scaffold, gap in gaps:
        case.reads.plant(scaffold, gap)
        begin, end = case.assembly.gap(scaffold, gap)
        for overlap in range(31, made.READ):
            for is_reversed in (False, True):
                case.reads.plant_single(scaffold, gap, begin - overlap, is_reversed)
                case.reads.plant_single(scaffold, gap, end + overlap - made.READ, is_reversed)
    for scaffold, gap in case.assembly.random_gaps(3, SPREAD):
        case.reads.plant(scaffold, gap)


def short_contigs(count):
    """The lengths of so many contigs and of the gaps between them."""
    for i in range(count):
        if i > 0:
            yield 10 + i % 40
        yield made.SHORTEST + i % 11


def many_scaffolds(folder):
    """more than 1,048,576 scaffolds"""
    lengths = ((60 + i % 10, 10 + i % 40, 60 + i % 7) for i in range(SCAFFOLDS + 10))
    case = Case(folder, made.Assembly(1, lengths))
    # the last ones below the limit, those behind it, and those that share their low bits
    near = [*range(10), *range(SCAFFOLDS - 10, SCAFFOLDS + 10)]
    plant_all_over(case, [(scaffold, 0) for scaffold in near])
    case.write()
    return case


def many_contigs(folder):
    """more than 524,288 contigs in one scaffold"""
    case = Case(folder, made.Assembly(1, [short_contigs(100), short_contigs(CONTIGS + 10),
                                          short_contigs(100)]))
    near = [*range(10), *range(CONTIGS - 10, CONTIGS + 9)]
    plant_all_over(case, [(1, gap) for gap in near] + [(0, 98), (2, 0)])
    case.write()
    case.has_contig_run = True
    return case


def long_contig(folder):
    """a contig of more than 16,777,216 bases"""
    case = Case(folder, made.Assembly(1, [short_contigs(100),
                                          [300, 20, OFFSETS + 400_000, 30, 300],
                                          short_contigs(100)]))
    plant_all_over(case, [(1, 0), (1, 1), (0, 98), (2, 0)])
    case.write()
    case.has_contig_run = True
    return case


def long_lines(folder):
    """lines of 100 million characters: a scaffold, a read on both strands, a header"""
    contig = LINE * 45 // 100
    case = Case(folder, made.Assembly(1, [[contig, LINE - 2 * contig, contig]]))
    plant_all_over(case, [(0, 0)])
    # nearly the whole scaffold and one base more; its first base lies on the first contig
    read = case.assembly.cut(0, 1, LINE) + b"A"
    for found in (read, made.reverse_complement(read)):
        case.reads.expect(0, 0, 1, read, 0)
        case.reads.singles.insert(len(case.reads.singles) // 2, found)
    case.write()
    with open(case.path("singles.fa"), "ab") as file:
        begin, _ = case.assembly.gap(0, 0)
        case.reads.plant_single(0, 0, begin - made.READ_OVERLAP, False)
        file.write(b">" + b"x" * (LINE - 1) + b"\n" + case.reads.singles[-1] + b"\n")
    case.has_contig_run = True
    return case


def long_file_case(folder, singles, write):
    case = Case(folder, made.Assembly(1, [short_contigs(20) for _ in range(100)]))
    plant_all_over(case, [(0, 0)])
    case.write()
    planted = case.reads.singles[:-STRANGERS]
    case.write_library(singles)
    size = write(case.path(singles), made.file_text(planted, made.FILE_LEAST))
    if size <= 1 << 32:
        raise ValueError("%s has no more than 4 GiB of text" % singles)
    return case


def long_plain_file(folder):
    """a read file of over 4 GiB"""
    return long_file_case(folder, "singles.fq", made.write_plain)


def long_gzip_file(folder):
    """a gzip read file of over 4 GiB of text"""
    return long_file_case(folder, "singles.fq.gz", made.write_gzip)


ALL = (many_scaffolds, many_contigs, long_contig, long_lines, long_plain_file, long_gzip_file)
