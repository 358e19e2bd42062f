"""Cases of the assembly."""
from table import case, option
from world import World, packed, random_bases

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
