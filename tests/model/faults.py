"""Ways to make a planned run fail, or report damage."""

import os

import readfiles


def any_entry(plan, wanted=lambda section, entry: True):
    """(library, entry) of some read file of the plan; None when none will do."""
    choices = [both for both in plan.read_entries() if wanted(*both)]
    return plan.r.choice(choices) if choices else None


def drop(plan, name):
    plan.files.pop(name, None)


# ------------------------------------------------------------- command line

def no_arguments(plan):
    plan.argv = []


def help_text(plan):
    r = plan.r
    values = {"O": ["0.25", "1e-7", "nan", "-nan", "inf", "1234567", "x"],
              "M": ["1", "0.123456789"],
              "C": ["5", "-1"], "k": ["25", "word", "99999999999", "-0"], "t": ["4", "0x10"],
              "r": ["150", " 7"], "m": ["2000000000000", "-1", "99999999999999999999", "0"],
              "L": ["1", "+3"], "f": ["0.5", "1e39", "0.1", "1e-46"]}
    plan.argv = []
    for letter in r.sample(sorted(values), r.randint(0, 4)):
        plan.argv += ["-" + letter, r.choice(values[letter])]
    plan.argv += r.choice([["-h"], ["-help", "x"], ["-x", "5"], ["-"], ["-", "x"], ["-k"], ["-l"],
                           ["--help"], ["-H"]])


def stray(plan):
    plan.tail = plan.r.choice([["extra"], [""], ["extra", "-k", "5"], ["extra", "-h"]])


def no_library(plan):
    plan.library = ""


def no_sequence(plan):
    plan.sequence = ""


def no_output(plan):
    plan.out = None


def bad_value(plan):
    r = plan.r
    for letter in r.sample("tkCr", r.randint(1, 2)):
        plan.options[letter] = r.choice([-1, -7, -2147483648, "4294967295"])
    if r.random() < 0.3:
        plan.options["t"] = r.choice(["0", "none", "4294967296"])


def huge_table(plan):
    plan.options["m"] = plan.r.choice(["-1", "9223372036854775807", "99999999999999999999",
                                       "4000000000000", "-9223372036854775808"])
    if plan.r.random() < 0.3:
        stray(plan)


def tiny_load(plan):
    plan.options["f"] = plan.r.choice(["1e-20", "1e-30", "1e-40"])
    plan.options["m"] = plan.r.choice([0, 10, 1000])


# -------------------------------------------------------------- named files

def library_missing(plan):
    plan.library = plan.r.choice(["absent.cfg", "absent/lib.cfg"])
    plan.library_written = False


def library_directory(plan):
    plan.directories.append("library.d")
    plan.library = "library.d"
    plan.library_written = False


def sequence_missing(plan):
    drop(plan, plan.sequence)
    plan.sequence = plan.r.choice(["absent.fa", plan.sequence])


def sequence_directory(plan):
    drop(plan, plan.sequence)
    plan.sequence = "sequence.d"
    plan.directories.append("sequence.d")


def sequence_empty(plan):
    plan.files[plan.sequence] = plan.r.choice([b"", b"\n"])


def output_unmakable(plan):
    plan.out = plan.r.choice(["absent/found.fa", "output.d", ""])
    plan.directories.append("output.d")


def output_is_input(plan):
    r = plan.r
    plan.options.pop("c", None)
    names = [plan.library, plan.sequence] + [name for _, entry in plan.read_entries()
                                             for name in entry.names]
    name = r.choice(names)
    way = r.choice(["same", "dot", "symbolic", "hard"])
    if way == "same":
        plan.out = name
    elif way == "dot":
        plan.out = "./" + name
    else:
        plan.out = "alias.fa"
        plan.links.append(("alias.fa", name, way == "hard"))


def side_names(plan):
    stem = plan.sequence if plan.from_scaffolds else ""
    return [stem + ending for ending in
            ([".contigPos", ".contig", ".gapsinfo"] if plan.from_scaffolds else [".gapsinfo"])]


def side_is_other(plan):
    """A side file meets the output, or a listed read file, or another side file."""
    r = plan.r
    name = r.choice(side_names(plan))
    way = r.choice(["output", "read file", "alias"])
    if way == "output":
        plan.out = name
    elif way == "read file" and plan.sections:
        plan.files[name] = b">r\nACGTACGTACGTACGTACGTACGT\n"
        plan.sections[-1].groups.append(["f=" + name])
    else:
        plan.links.append((name, os.path.relpath(plan.sequence, os.path.dirname(name)), False))
        drop(plan, name)


def side_directory(plan):
    name = plan.r.choice(side_names(plan))
    drop(plan, name)
    plan.directories.append(name)


# ------------------------------------------------------------ sequence files

def sequence_lines(plan):
    return plan.files[plan.sequence].decode().split("\n")


def set_sequence(plan, lines):
    plan.files[plan.sequence] = "\n".join(lines).encode()


def bad_header(plan):
    """The wrong label, or too few characters for an id."""
    r = plan.r
    lines = sequence_lines(plan)
    headers = [i for i, line in enumerate(lines) if line.startswith(">")]
    if plan.from_scaffolds:
        if r.random() < 0.4:
            lines[0] = r.choice([">unitig7", ">", "", ">sequen_e 1"])
        elif r.random() < 0.4:
            lines[0] = r.choice([">caffold", "caffold", "C", "c"])
        else:
            lines[r.choice(headers)] = r.choice([">", ">scaff", ">s", ">unitig7"])
    else:
        lines[r.choice(headers)] = r.choice([">", ">s\t1", ">scaff_1", ">scaffold1_2",
                                             ">scaffold", ">scaffold1 2 30"])
    set_sequence(plan, lines)


def no_first_header(plan):
    """A first line that is no header."""
    lines = sequence_lines(plan)
    if plan.from_scaffolds:
        lines[0] = plan.r.choice(["scaffold1", "Scaffold1 x", "cC1", "acgt"])
    else:
        lines.insert(0, plan.r.choice(["ACGTACGT", "N", " ", "\r"]))
        if plan.r.random() < 0.5:
            lines.insert(0, "")
    set_sequence(plan, lines)


# ---------------------------------------------------------------- read files

def reads_missing(plan):
    found = any_entry(plan, lambda section, entry: not entry.gzip())
    if found is None:
        if plan.sections:
            plan.sections[0].groups.append(["p=absent.pair"])
        return
    entry = found[1]
    name = plan.r.choice(entry.names)
    drop(plan, name)
    if plan.r.random() < 0.3 and not name.endswith(".gz"):
        plan.directories.append(name)


def bad_format(plan):
    found = any_entry(plan)
    if found is None:
        return
    name = found[1].names[0]
    content = plan.r.choice([b"", b"\n", b"ACGT\n", b"", b" >r\nACGT\n", b"\x1f", b"\0>r\nA\n"])
    if name.endswith(".gz") and plan.r.random() < 0.6:
        content = readfiles.member(plan.r, content)
    plan.files[name] = content


def short_name(plan):
    r = plan.r
    if not plan.sections:
        return
    name = r.choice(["", "a", "fq", ".g", "gz"])
    plan.files["fq"] = b">r\nACGTACGTACGTACGTACGTACGTACGTACGTACGT\n"
    section = r.choice(plan.sections)
    section.groups.append(["%s=%s" % (r.choice(["q1", "f1", "p", "f", "q"]), name)])


def pairs_without_insert(plan):
    """Two mate files in a library that is read as single ends."""
    if not plan.sections:
        return
    found = any_entry(plan, lambda section, entry: len(entry.names) == 2)
    section = found[0] if found else plan.sections[-1]
    for group in section.groups:
        group[:] = [line for line in group if not line.startswith("avg_ins=")]
    if found is None or plan.r.random() < 0.5:
        name = plan.r.choice(["bare.fa", "bare.fq"])
        plan.files[name] = readfiles.text(
            plan.r, [readfiles.record(plan.r, name == "bare.fa", "r", "ACGT" * 10)],
            name == "bare.fa", True)
        section.groups.append(["q1=" + name, "q2=" + name])


# --------------------------------------------------------------- gzip damage

def damaged_reads(plan):
    r = plan.r
    entry = r.choice(plan.files_gzip())
    names = [name for name in entry.names if name.endswith(".gz")]
    name = r.choice(names)
    text = entry.texts[entry.names.index(name)]
    for other in entry.names:
        if other != name and other.endswith(".gz"):
            plan.files[other] = readfiles.member(r, entry.texts[entry.names.index(other)])
    plan.files[name] = readfiles.damaged(r, text)


def second_mate_missing(plan):
    choices = [entry for entry in plan.files_gzip() if len(entry.names) == 2]
    if not choices:
        damaged_reads(plan)
        return
    drop(plan, plan.r.choice(choices).names[1])


FAULTS = [
    (no_arguments, 1), (help_text, 5), (stray, 3), (no_library, 2), (no_sequence, 2),
    (no_output, 1), (bad_value, 4), (huge_table, 3), (tiny_load, 3),
    (library_missing, 2), (library_directory, 1), (sequence_missing, 3), (sequence_directory, 2),
    (sequence_empty, 1), (output_unmakable, 3), (output_is_input, 6), (side_is_other, 5),
    (side_directory, 3),
    (bad_header, 7), (no_first_header, 4),
    (reads_missing, 6), (bad_format, 6), (short_name, 4), (pairs_without_insert, 3),
    (damaged_reads, 22), (second_mate_missing, 4),
]
APPLY = {function.__name__: function for function, _ in FAULTS}
NAMES = [function.__name__ for function, _ in FAULTS]
WEIGHTS = [weight for _, weight in FAULTS]
GZIP = {"damaged_reads", "second_mate_missing"}
