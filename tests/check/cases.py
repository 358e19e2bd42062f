"""For each kind of finding an input that has it, and one that is near it and has it not.

A case is (id, spoil, near, also, near_also): functions that change a World, and the other findings
of the two. Where `near` is None the untouched World is near enough.
"""
import bz2
import os

from world import (LIBRARY, World, fasta, fastq, packed, random_bases, reverse_complement,
                   simulated_pairs)

CASES = []


def case(finding, spoil, near=None, also=(), near_also=()):
    CASES.append((finding, spoil, near or (lambda w: None), set(also), set(near_also)))


def option(letter, value):
    return lambda w: w.options.__setitem__(letter, str(value))


def options(**values):
    return lambda w: w.options.update({f"-{k}": str(v) for k, v in values.items()})


def library(text):
    return lambda w: setattr(w, "library", text)


def line(text):
    """One more line in the library file."""
    return library(LIBRARY + text + "\n")


def file_of(name, make, key="f"):
    """One more read file in the library."""
    def change(w):
        w.files[name] = make(w)
        w.library = LIBRARY + f"{key}={name}\n"
    return change


# The command line, the outputs and the machine.


def free_memory():
    with open("/proc/meminfo", encoding="ascii") as lines:
        fields = dict(one.split(":") for one in lines)
    free = int(fields["MemAvailable"].split()[0]) * 1024
    try:
        with open("/sys/fs/cgroup/memory.max", encoding="ascii") as limit, \
                open("/sys/fs/cgroup/memory.current", encoding="ascii") as used:
            free = min(free, int(limit.read()) - int(used.read()))
    except (OSError, ValueError):
        pass
    return free


def threads_of(share):
    """-t for threads that take a share of the free memory: stack, heap and a row of results each."""
    return lambda w: option("-t", int(share * free_memory() / 135208))(w)


case("option-missing", lambda w: w.options.pop("-o"))
case("stray-argument", lambda w: w.more.append("x"), lambda w: w.more.extend(["-t", "1"]))
case("value-not-number", option("-r", "100bp"), option("-r", "100"))
case("value-refused", option("-t", 0), option("-t", 1))
case("kmer-over-32", option("-k", 33), option("-k", 32))
case("kmer-short", option("-k", 14), option("-k", 15))
case("threads-many", lambda w: option("-t", os.cpu_count() + 1)(w),
     lambda w: option("-t", os.cpu_count())(w))
case("load-factor-replaced", option("-f", 1), option("-f", 0.99))
case("ratio-odd", option("-O", -0.1), option("-O", 0.1))
case("cutoff-negative", option("-L", -1), option("-L", 31), also=["nothing-indexed"])
case("cutoff-below-kmer", option("-L", 30), option("-L", 31))
case("cutoff-drops-contigs", option("-L", 1700), option("-L", 1500))
case("edge-cut-no-effect", options(r=1300, C=50), options(r=1100, C=50))
case("edge-cut-large", option("-C", 101), option("-C", 100))
case("contigs-ignored", option("-c", "c.fa"))
case("output-is-input", option("-o", "r_1.fq"), option("-o", "r_1.fa"))
case("output-unwritable", option("-o", "folder/out.fa"),
     lambda w: (option("-o", "folder/out.fa")(w), w.folders.append("folder")))
case("output-exists", lambda w: w.files.update({"out.fa": "x"}),
     lambda w: w.files.update({"out.fasta": "x"}))
case("table-refused", option("-m", 2000000000000), option("-m", 20000))
case("memory-short", threads_of(1.3), threads_of(0.6), also=["threads-many"],
     near_also=["threads-many"])
case("memory-tight", threads_of(0.9), threads_of(0.6), also=["threads-many"],
     near_also=["threads-many"])


# The library file.


SECOND = "[LIB]\navg_ins={}\nq1=few_1.fq\nq2=few_2.fq\n"


def few_pairs(insert):
    """A second library of too few pairs to measure."""
    def change(w):
        pairs = simulated_pairs(w.genomes, 20, 300, 13)
        w.files["few_1.fq"] = fastq([one for one, _ in pairs])
        w.files["few_2.fq"] = fastq([two for _, two in pairs])
        w.library = LIBRARY + SECOND.format(insert)
    return change


def single_insert(insert):
    def change(w):
        few_pairs(2500)(w)
        w.library += f"[LIB]\navg_ins={insert}\nf=single.fa\n"
    return change


def interleaved(key):
    def change(w):
        w.files["both.fq"] = "".join(fastq([one], "/1", f"{i}.") + fastq([two], "/2", f"{i}.")
                                     for i, (one, two) in enumerate(w.pairs))
        w.library = f"[LIB]\navg_ins=300\n{key}=both.fq\n"
    return change


def every_pair(change, share=1.0):
    """Changes the first pairs of the library."""
    def spoil(w):
        count = round(share * len(w.pairs))
        w.pairs = [change(pair) if i < count else pair for i, pair in enumerate(w.pairs)]
    return spoil


def outwards(pair):
    return reverse_complement(pair[0]), reverse_complement(pair[1])


case("library-unreadable", option("-l", "b.lib"))
case("library-empty", library("\n"))
case("section-without-files", line("[LIB]\navg_ins=300"), line("[LIB]\nf=single.fa"))
case("section-case", line("[lib]\nf=single.fa"), line("[LIB]\nf=single.fa"))
case("section-tail", library(LIBRARY.replace("[LIB]", "[LIB] q=single.fa")),
     library(LIBRARY.replace("[LIB]", "[LIB] all reads")))
case("key-before-section", library("f=single.fa\n" + LIBRARY),
     library("max_rd_len=100\n" + LIBRARY), near_also=["key-unknown"])
case("key-case", line("F=single.fa"), line("f=single.fa"))
case("key-blank", line("f =single.fa"), line("f=single.fa"))
case("key-misspelt", line("avg_inz=3"), line("rank=3"), near_also=["key-unknown"])
case("key-unknown", line("rank=3"), line("#rank=3"))
case("key-unused", line("min_ins=3"), line("#min_ins=3"))
case("line-without-equals", line("f single.fa"), line("reads of the first run"))
case("value-blank", line("f=single.fa "), line("f=single.fa"), also=["reads-missing"])
case("name-short", file_of("ab", lambda w: fasta(w.singles)),
     lambda w: (file_of("ab", lambda w: fasta(w.singles))(w), line("f=./ab")(w)))
case("second-missing", interleaved("q1"), interleaved("p"))
case("second-without-first", line("[LIB]\navg_ins=300\nq2=r_2.fq\nf=single.fa"),
     line("[LIB]\navg_ins=300\nf=single.fa"))
case("second-replaced", library(LIBRARY.replace("q2=", "q2=x.fq\nq2=")),
     library(LIBRARY.replace("q2=", "#q2=x.fq\nq2=")))
case("insert-missing", library(LIBRARY.replace("avg_ins=300\n", "")))
case("insert-zero", library(LIBRARY.replace("300", "0")))
case("insert-negative", library(LIBRARY.replace("300", "-300")))
case("insert-not-number", library(LIBRARY.replace("300", "300bp")),
     library(LIBRARY.replace("300", " 300")))
case("insert-repeated", line("avg_ins=300"), line("#avg_ins=300"))
case("insert-below-reads", library(LIBRARY.replace("300", "90")),
     library(LIBRARY.replace("300", "110")), also=["insert-differs"],
     near_also=["insert-differs"])
case("insert-of-singles", single_insert(500), single_insert(300),
     also=["pairs-unmeasured", "no-gap-big-enough"],
     near_also=["pairs-unmeasured", "big-gaps-only"])
case("reverse-ignored", line("reverse_seq=1"), line("reverse_seq=0"), also=["key-unused"],
     near_also=["key-unused"])
case("file-repeated", line("f=r_1.fq"), line("f=single.fa"))
case("big-gaps-only", few_pairs(2500), few_pairs(400),
     also=["pairs-unmeasured"], near_also=["pairs-unmeasured"])
case("no-gap-big-enough", lambda w: (few_pairs(2500)(w), option("-r", 134)(w)),
     lambda w: (few_pairs(2500)(w), option("-r", 133)(w)),
     also=["pairs-unmeasured"], near_also=["pairs-unmeasured", "big-gaps-only"])
case("insert-turns-pairs", library(LIBRARY.replace("300", "3000")),
     library(LIBRARY.replace("300", "950")), also=["big-gaps-only"],
     near_also=["insert-differs"])
case("orientation-wrong", every_pair(outwards))
case("orientation-same", every_pair(lambda pair: (pair[0], reverse_complement(pair[1]))))
case("orientation-mixed", every_pair(outwards, 0.3), every_pair(outwards, 0.1))
case("insert-differs", library(LIBRARY.replace("300", "340")),
     library(LIBRARY.replace("300", "320")))
case("pairs-unmeasured", lambda w: w.pairs.__delitem__(slice(40, None)),
     lambda w: w.pairs.__delitem__(slice(120, None)))


# The assembly.


def headers(*lines):
    return lambda w: setattr(w, "headers", list(lines))


def sequence(change):
    return lambda w: w.sequences.__setitem__(0, change(w.sequences[0]))


def scaffold(header, bases):
    return lambda w: (w.headers.insert(1, header), w.sequences.insert(1, bases))


def contigs(change):
    def use(w):
        w.files["c.fa"] = change(w)
        del w.options["-s"]
        w.options["-c"] = "c.fa"
    return use


def gaps_of(lengths):
    """A third scaffold, of short contigs with gaps of these lengths between them."""
    bases = random_bases(400, 21)
    for i, length in enumerate(lengths):
        bases += "N" * length + random_bases(400, 22 + i)
    return scaffold(">scaffold3", bases)


def swallowed(w):
    w.files["s.fa"] = w.scaffold_text().replace(">scaffold2", ">scaffold3\n>scaffold2")


def filled(w):
    w.sequences = w.genomes


case("assembly-unreadable", option("-s", "t.fa"))
case("assembly-refused", headers(">one", ">two"), headers(">scaffold1", ">scaffold2"))
case("assembly-compressed", lambda w: w.files.update({"s.fa": packed(w.scaffold_text())}))
case("id-cut", headers(">scaffold1", ">scaffold2 Cov=3"), headers(">scaffold1", ">scaffold2 cov=3"))
case("id-equal", headers(">scaffold1", ">scaffold1"), headers(">scaffold1", ">scaffold10"))
case("id-scattered", contigs(lambda w: w.contig_text(((0, 0), (0, 1), (1, 0), (1, 1), (0, 2)))),
     contigs(lambda w: w.contig_text(((0, 0), (0, 1), (0, 2), (1, 0), (1, 1)))))
case("id-empty", headers(">scaffold", ">scaffold2"), headers(">scaffold1", ">scaffold2"))
case("id-underscore", headers(">scaffold_1", ">scaffold_2"), headers(">scaffold-1", ">scaffold-2"))
case("id-tab", headers(">C1\tlong", ">C2"), headers(">scaffold1\tlong", ">scaffold2"))
case("id-carriage-return", headers(">scaffold1\r", ">scaffold2"),
     headers(">scaffold1", ">scaffold2 \r"))
case("scaffold-empty", swallowed)
case("scaffold-all-n", scaffold(">scaffold3", "N" * 500),
     scaffold(">scaffold3", "N" * 500 + random_bases(500, 6)))
case("contig-lower-case", sequence(lambda s: s[:9] + s[9].lower() + s[10:]),
     sequence(lambda s: s.replace("N", "n")))
case("contig-carriage-return", sequence(lambda s: s[:2000] + "\r\n" + s[2000:]),
     sequence(lambda s: s[:2000] + "\n" + s[2000:]))
case("contig-letters", sequence(lambda s: s[:9] + "R" + s[10:]))
case("no-gaps", filled)
case("gap-placeholder", gaps_of([100] * 5), gaps_of([100] * 4))
case("gap-negative", contigs(lambda w: w.contig_text().replace("\t120", "\t-120")),
     contigs(World.contig_text))
case("nothing-indexed", option("-L", 2501), option("-L", 2500), near_also=["cutoff-drops-contigs"])


# The read files.


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


# What needs more than a folder of files: the unit tests that do both.
ELSEWHERE = {"disk-short": "checkTest.cpp"}
