"""Cases of the library file."""
from table import case, file_of, library, line, option
from world import LIBRARY, fasta, fastq, simulated_pairs, reverse_complement

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
