"""Seeded small runs of the program, rich in everything it can meet.

generate(seed, directory) fills an empty directory with inputs and returns the
arguments of the run.  The same seed gives the same run.
"""

import os
import random

import faults
import readfiles
import sequences
import simulate

FAULTY = 0.12  # share of the runs that are made to fail


class ReadFile:
    """One entry of the library file: a read file, or two mate files."""

    def __init__(self, key, names, texts, paired):
        self.key = key        # "pair", "p", "f" or "q"
        self.names = names    # one or two
        self.texts = texts    # as text, before compression
        self.paired = paired  # read as pairs

    def gzip(self):
        return self.names[0].endswith(".gz")


class Section:
    """One library."""

    def __init__(self, insert):
        self.header = "[LIB]"
        self.insert = insert
        self.groups = []  # lists of lines that stay together
        self.in_order = False  # the groups are not shuffled
        self.files = []


class Plan:
    """A run before it is written to disk."""

    def __init__(self, r):
        self.r = r
        self.files = {}         # name -> bytes
        self.directories = []
        self.links = []         # (new name, existing name, hard)
        self.sections = []
        self.library = "lib.cfg"
        self.sequence = ""
        self.from_scaffolds = True
        self.options = {}       # letter -> value
        self.out = "found.fa"
        self.argv = None        # set by a fault that replaces the whole command line
        self.tail = []          # arguments behind all options
        self.library_written = True
        self.inserts = []       # of the libraries
        self.read_size = 0
        self.named = 0          # read files named so far

    def read_entries(self):
        return [(section, entry) for section in self.sections for entry in section.files]

    def files_gzip(self):
        return [entry for _, entry in self.read_entries() if entry.gzip()]


def generate(seed, directory):
    r = random.Random(seed)
    plan = Plan(r)
    fault = r.choices(faults.NAMES, faults.WEIGHTS)[0] if r.random() < FAULTY else None
    parameters(plan)
    large = any(insert > 800 for insert in plan.inserts)
    chromosomes = simulate.genome(r, large)
    if plan.from_scaffolds:
        sequences.scaffold_file(plan, chromosomes)
    else:
        sequences.contig_file(plan, chromosomes)
    reads(plan, chromosomes, fault in faults.GZIP)
    oddities(plan)
    if fault:
        faults.APPLY[fault](plan)
    library_file(plan)
    write(plan, directory)
    return plan.argv if plan.argv is not None else command_line(plan)


# -------------------------------------------------------------------- parameters

def parameters(plan):
    r = plan.r
    o = plan.options
    plan.from_scaffolds = r.random() < 0.6
    if r.random() < 0.9:
        o["k"] = r.choices([r.randint(13, 31), r.randint(4, 12), 32, 33, r.randint(34, 63),
                            r.randint(64, 70), r.randint(1, 3), 0],
                           [66, 8, 5, 5, 8, 2, 1, 0.6])[0]
        if r.random() < 0.004:
            o["k"] = r.choice([1000, 2147483647])
    k = min(70, o.get("k", 31))
    plan.read_size = r.randint(max(30, k + 4), max(80, k + 90))
    if r.random() < 0.6:
        o["t"] = r.choices([r.randint(1, 9), 16, 33], [97, 2, 1])[0]
    if r.random() < 0.5:
        o["L"] = r.choices([r.randint(20, 120), r.randint(0, 20), 250, -1, 2147483647],
                           [70, 22, 4, 1, 0.5])[0]
    if r.random() < 0.25:
        o["C"] = r.choices([r.randint(1, 12), r.randint(13, 60), 2147483647], [70, 29, 1])[0]
    if r.random() < 0.6:
        o["r"] = r.choices([plan.read_size, r.randint(20, 160), r.randint(1, 19), 0, 3000,
                            2147483647], [40, 40, 14, 3, 2, 1])[0]
    if r.random() < 0.3:
        o["O"] = r.choices(["0.3", "0.1", "0.5", "0.8", "0", "1", "-0.5", "nan", "inf", "1e300",
                            "0x0.4p0", ".25e0x", "-inf"],
                           [10, 10, 8, 4, 8, 1, 2, 1, 1, 1, 2, 2, 1])[0]
    if r.random() < 0.3:
        o["M"] = r.choices(["0.95", "0.9", "0.8", "0.5", "0.98", "1", "0", "-1", "1.01", "nan"],
                           [12, 12, 8, 4, 5, 6, 2, 1, 1, 1])[0]
    if r.random() < 0.8:
        o["m"] = r.choices([r.randint(0, 20), r.randint(21, 400), r.randint(401, 5000), 100003],
                           [25, 35, 30, 10])[0]
    if r.random() < 0.4:
        o["f"] = r.choices(["0.5", "0.25", "0.1", "0.9", "0.99", "0.9999999", "1", "1.5", "0",
                            "-2", "nan", "inf", "-inf", "1e-50", "0.01", "0.75abc", "1e60"])[0]
    plan.inserts = [r.choices([r.randint(120, 500), r.randint(30, 120), r.randint(501, 999), 1000,
                               1001, r.randint(1002, 1999), 2000, r.randint(2001, 3500), 0, -150,
                               2147483647],
                              [58, 5, 10, 3, 3, 5, 3, 6, 5, 0.7, 0.3])[0]
                    for _ in range(r.choices([0, 1, 2, 3], [1, 60, 30, 9])[0])]
    if any(insert >= 2000 for insert in plan.inserts):
        o["r"] = r.randint(20, 100)


# -------------------------------------------------------------------- read files

def file_name(plan, stem, fasta, gzip):
    r = plan.r
    plan.named += 1
    ending = r.choice([".fa", ".fasta", ".pair"]) if fasta else r.choice([".fq", ".fastq", ""])
    folder = r.choices(["", "reads/", "my reads/"], [75, 20, 5])[0]
    return "%s%s%d%s%s" % (folder, stem, plan.named, ending, ".gz" if gzip else "")


def reads(plan, chromosomes, wants_gzip):
    r = plan.r
    total = r.choices([r.randint(100, 300), r.randint(20, 100), r.randint(300, 500)],
                      [70, 15, 15])[0]
    for insert in plan.inserts or ([250] if wants_gzip else []):
        section = Section(insert)
        plan.sections.append(section)
        for _ in range(r.choices([1, 2, 3], [60, 28, 12])[0]):
            kind = r.choice(["mates", "mates", "interleaved", "single"])
            if insert == 0 and kind != "single":
                kind = r.choice(["single", "interleaved"])
            fasta = r.random() < 0.5
            gzip = True if wants_gzip and not plan.files_gzip() else r.random() < 0.5
            count = max(3, total // (1 if len(plan.inserts) < 2 else 2) // r.randint(1, 3))
            add_reads(plan, section, chromosomes, kind, fasta, gzip, count)


def add_reads(plan, section, chromosomes, kind, fasta, gzip, count):
    r = plan.r
    insert, size = section.insert, plan.read_size
    if kind == "single":
        key = r.choice("fq")
        records = [readfiles.record(r, fasta, "r%d" % i,
                                    simulate.single_read(r, chromosomes, size))
                   for i in range(count)]
        entry = ReadFile(key, [file_name(plan, "single", fasta, gzip)],
                         [readfiles.text(r, records, fasta, False)], False)
        section.groups.append(["%s=%s" % (key, entry.names[0])])
    else:
        outward = insert > 1000 and r.random() < 0.95
        pairs = [simulate.read_pair(r, chromosomes, size, insert or 200, outward)
                 for _ in range(max(2, count // 2))]
        first = [readfiles.record(r, fasta, "p%d/1" % i, a) for i, (a, b) in enumerate(pairs)]
        second = [readfiles.record(r, fasta, "p%d/2" % i, b) for i, (a, b) in enumerate(pairs)]
        if kind == "interleaved":
            records = [record for both in zip(first, second) for record in both]
            entry = ReadFile(r.choices(["p", "pair"], [75, 25 if insert else 0])[0],
                             [file_name(plan, "both", fasta, gzip)],
                             [readfiles.text(r, records, fasta, False)], insert != 0)
            key = "p" if entry.key == "p" else r.choice(["q1", "f1"])
            section.groups.append(["%s=%s" % (key, entry.names[0])])
        else:
            if r.random() < 0.1:
                shorter = r.choice([first, second])
                del shorter[r.randint(1, len(shorter)):]
            other_gzip = gzip if r.random() < 0.94 else not gzip
            entry = ReadFile("pair", [file_name(plan, "mate", fasta, gzip),
                                      file_name(plan, "mate", fasta, other_gzip)],
                             [readfiles.text(r, first, fasta, False),
                              readfiles.text(r, second, fasta, False)], True)
            group = ["%s=%s" % (r.choice(["q1", "f1"]), entry.names[0]),
                     "%s=%s" % (r.choice(["q2", "f2"]), entry.names[1])]
            if r.random() < 0.03:
                group.insert(1, "q2=replaced.fq")
            section.groups.append(group)
    section.files.append(entry)
    for name, text in zip(entry.names, entry.texts):
        plan.files[name] = pack(plan, entry, name, text)


def pack(plan, entry, name, text):
    if not name.endswith(".gz"):
        return text
    if not entry.gzip() and plan.r.random() < 0.7:
        return text  # the second mate of a plain first one is read as it stands
    return readfiles.compress(plan.r, text)


# ----------------------------------------------- odd, and yet no reason to fail

def oddities(plan):
    r = plan.r
    for section in plan.sections:
        if r.random() < 0.04:
            section.groups.append(["f=nothing_here.fa.gz"])
        if r.random() < 0.02 and section.files:
            section.groups.append(list(r.choice(section.groups)))  # listed twice
        if r.random() < 0.03:
            section.groups.insert(0, ["q2=before_any.fq"])
            section.in_order = True
        for key in ("min_ins", "max_ins", "rd_len_cutoff", "reverse_seq", "asm_flags",
                    "reads_sum", "pair_reads_sum"):
            if r.random() < 0.15:
                section.groups.append(["%s=%d" % (key, r.randint(0, 1000))])
        junk = ["# a comment", "", "name=x", "Q1=upper.fq", "q1 =blank.fq", " f=blank.fa",
                "avg_ins = 700", "=", "f", "q1", "p1=none", "\tp=tab.fa"]
        for line in junk:
            if r.random() < 0.04:
                section.groups.append([line])
        section.header = r.choices(["[LIB]", "[LIB] number one", "x[LIB]f=header.fa", " [LIB]"],
                                   [85, 7, 4, 4])[0]
        if section.insert or r.random() < 0.5:
            lines = ["avg_ins=" + r.choices(["%d", " %d", "%dbp", "%d"], [85, 5, 5, 5])[0]
                     % section.insert]
            if r.random() < 0.05:
                lines.insert(0, "avg_ins=%d" % r.randint(0, 1500))
            section.groups.append(lines)
    if r.random() < 0.1:
        for name in (plan.out, plan.sequence + ".contigPos", plan.sequence + ".contig",
                     plan.sequence + ".gapsinfo", ".gapsinfo"):
            if r.random() < 0.5:
                plan.files.setdefault(name, b"left from an earlier run\n")
    if r.random() < 0.05:
        plan.out = r.choice(["./found.fa", "out/found.fa", "link.fa", plan.sequence + ".gapsinfo"])
        if plan.out == "out/found.fa":
            plan.directories.append("out")
        if plan.out == "link.fa":
            plan.files["target.fa"] = b"old\n"
            plan.links.append(("link.fa", "target.fa", False))
    if plan.from_scaffolds and plan.sections and r.random() < 0.01:
        plan.sections[-1].groups.append(["f=%s.contig" % plan.sequence])


# ------------------------------------------------------------- writing it down

def library_file(plan):
    r = plan.r
    lines = []
    if r.random() < 0.08:
        lines += r.choice([["q1=before_the_first_library.fq"], ["# made by hand", ""], ["[lib]"]])
    for section in plan.sections:
        lines.append(section.header)
        groups = section.groups
        if not section.in_order:
            r.shuffle(groups)
        lines += [line for group in groups for line in group]
    end = "\r\n" if r.random() < 0.06 else "\n"
    text = "".join(line + end for line in lines)
    if r.random() < 0.1:
        text = text[:-len(end)]
    if plan.library and plan.library_written:
        plan.files[plan.library] = text.encode()


def write(plan, directory):
    root = os.fspath(directory)
    for name in plan.directories:
        os.makedirs(os.path.join(root, name), exist_ok=True)
    for name, content in plan.files.items():
        path = os.path.join(root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
    for new, existing, hard in plan.links:
        make = os.link if hard else os.symlink
        make(os.path.join(root, existing) if hard else existing, os.path.join(root, new))


def command_line(plan):
    r = plan.r
    options = {letter: str(value) for letter, value in plan.options.items()}
    options["l"] = plan.library
    if plan.out is not None:
        options["o"] = plan.out
    if plan.sequence:
        options["s" if plan.from_scaffolds else "c"] = plan.sequence
    if plan.from_scaffolds and r.random() < 0.04:
        options.setdefault("c", "never_read.fa")
    pairs = [("-" + letter, value) for letter, value in options.items()]
    r.shuffle(pairs)
    earlier = {"k": "9", "t": "0", "l": "other.cfg", "o": "other.fa", "m": "-5", "f": "x"}
    if r.random() < 0.06:
        letter = r.choice(sorted(earlier))
        if letter in options:
            pairs.insert(0, ("-" + letter, earlier[letter]))
    argv = []
    for option, value in pairs:
        if r.random() < 0.03:
            option += r.choice(["x", "ib", "=1", "-"])
        argv += [option, value]
    return argv + plan.tail
