"""Cases of the read files."""
import bz2

from table import case, file_of, library, option
from world import LIBRARY, fasta, fastq, packed, random_bases, simulated_pairs

def mates(make_first, make_second, first="r_1.fq", second="r_2.fq"):
    def change(w):
        w.files[first] = make_first(w)
        w.files[second] = make_second(w)
        w.library = f"[LIB]\navg_ins=300\nq1={first}\nq2={second}\n"
    return change


def firsts(w):
    return [one for one, _ in w.pairs]


def seconds(w):
    return [two for _, two in w.pairs]


def singles(w):
    return fasta(w.singles)


def wrapped(w):
    return "".join(f">read{i}\n{read[:60]}\n{read[60:]}\n" for i, read in enumerate(w.singles))


def spoilt_reads(count, change):
    def spoil(w):
        w.singles = [change(read) if i < count else read for i, read in enumerate(w.singles)]
        w.library = LIBRARY + "f=single.fa\n"
    return spoil


def long_read(length):
    return lambda w: packed(singles(w) + ">long\n" + random_bases(length, 5) + "\n")


def with_n(read):
    return read[:50] + "N" + read[51:]


def pipe(w):
    w.pipes.append("reads.fa")
    w.library = LIBRARY + "f=reads.fa\n"


def other_genome(w):
    w.pairs = simulated_pairs([random_bases(10000, 99)], 600, 300, 14)


case("reads-missing", library(LIBRARY.replace("r_1", "r_3")))
case("gzip-missing", library(LIBRARY.replace("r_1.fq", "r_3.fq.gz")),
     mates(lambda w: packed(fastq(firsts(w))), lambda w: packed(fastq(seconds(w))),
           "r_3.fq.gz", "r_4.fq.gz"))
case("reads-empty", file_of("one.fa", lambda w: ""), file_of("one.fa", singles))
case("reads-not-regular", pipe, file_of("reads.fa", singles))
case("gzip-plain-name", file_of("one.fa", lambda w: packed(singles(w))),
     file_of("one.fa.gz", lambda w: packed(singles(w))))
case("plain-gzip-name", file_of("one.fa.gz", singles),
     file_of("one.fa.gz", lambda w: packed(singles(w))))
case("compression-unknown", file_of("one.bz2", lambda w: bz2.compress(singles(w).encode())),
     file_of("one.bz2", singles))
case("mate-compression",
     mates(lambda w: fastq(firsts(w)), lambda w: packed(fastq(seconds(w))), "r_1.fq", "r_2.fq.gz"),
     mates(lambda w: packed(fastq(firsts(w))), lambda w: fastq(seconds(w)), "r_1.fq.gz", "r_2.fq"))
case("gzip-damaged", file_of("one.fa.gz", lambda w: packed(singles(w))[:-4]),
     file_of("one.fa.gz", lambda w: packed(singles(w)) + b"\0\0\0"))
case("format-unknown", file_of("one.fa", lambda w: "ACGT\n"), file_of("one.fa", singles))
case("format-differs", mates(lambda w: fasta(firsts(w)), lambda w: fastq(seconds(w))),
     mates(lambda w: fasta(firsts(w)), lambda w: fasta(seconds(w))))
case("fasta-wrapped", file_of("one.fa", wrapped), file_of("one.fa", singles))
case("fastq-lines", file_of("one.fq", lambda w: "@a\nACGT\nACGT\n+\nIIII\nIIII\n" +
                            fastq(w.singles)),
     file_of("one.fq", lambda w: fastq(w.singles)))
case("blank-lines", file_of("one.fa", lambda w: singles(w) + "\n" + singles(w)),
     file_of("one.fa", lambda w: singles(w) + "\n\n"))
case("record-cut", file_of("one.fq", lambda w: fastq(w.singles) + "@last\n" + w.singles[0] + "\n"),
     file_of("one.fq", lambda w: fastq(w.singles)[:-1]))
case("gzip-line-long", file_of("one.fa.gz", long_read(1023)),
     file_of("one.fa.gz", long_read(1022)))
case("gzip-no-newline", file_of("one.fa.gz", lambda w: packed(singles(w)[:-1])),
     file_of("one.fq.gz", lambda w: packed(fastq(w.singles)[:-1])))
case("mate-names", mates(lambda w: fastq(firsts(w)), lambda w: fastq(seconds(w), name="x")),
     mates(lambda w: fastq(firsts(w), " 1:N:0"), lambda w: fastq(seconds(w), " 2:N:0")))
case("mate-counts", mates(lambda w: fastq(firsts(w)), lambda w: fastq(seconds(w)[:-1])),
     mates(lambda w: fastq(firsts(w)), lambda w: fastq(seconds(w)) + "\n"))
case("reads-longer", option("-r", 99), option("-r", 100))
case("reads-with-n", spoilt_reads(1, with_n), spoilt_reads(0, with_n))
case("many-reads-with-n", spoilt_reads(6, with_n), spoilt_reads(5, with_n),
     near_also=["reads-with-n"])
case("reads-short", spoilt_reads(1, lambda read: read[:30]),
     spoilt_reads(1, lambda read: read[:31]))
case("many-reads-short", spoilt_reads(6, lambda read: read[:30]),
     spoilt_reads(5, lambda read: read[:30]), near_also=["reads-short"])
case("reads-lower-case", spoilt_reads(1, lambda read: read[:50] + read[50:].lower()),
     spoilt_reads(1, str.upper))
case("reads-carriage-return", file_of("one.fa", lambda w: fasta(w.singles, newline="\r\n")),
     file_of("one.fa", lambda w: fasta(w.singles, end="\r")))
case("nothing-found", other_genome, also=["pairs-unmeasured"])
