"""Small runs of the program, and what became of one that met a fault."""

import collections
import gzip
import os
import random
import re
import shutil
import subprocess
import tempfile

SECONDS = 30  # a run that takes longer hangs

# How a message about a failure begins.
MESSAGE = re.compile(rb"^(\[ERROR\]: |Out of memory! Line: |Fail creat file: |"
                     rb"Fail to (open|load file) |Can't open )", re.M)
SKIPPED = re.compile(rb"^Can't open file: (.*)$", re.M)

RIGHT = "right"            # status 0 and every byte in place
SKIPS = "file skipped"     # status 0 without a gzip file that could not be opened, as documented
MESSAGED = "message"       # another status and a message
SIGNALLED = "by signal"    # ended by the very signal that was sent
WRONG = "0 but wrong"
SILENT = "no message"
HARMED = "input harmed"
HANG = "hang"
CRASH = "crash"
GOOD = (RIGHT, MESSAGED, SKIPS, SIGNALLED)
BAD = (WRONG, SILENT, HARMED, HANG, CRASH)


class Scenario:
    """A run: its input files and its arguments, and the status that it ends with as it is."""

    def __init__(self, name, files, argv, links=(), status=0):
        self.name = name
        self.files = files  # name -> bytes
        self.argv = argv
        self.links = links  # (new name, name) of hard links
        self.status = status
        self.expected = {}  # skipped files -> all files behind such a run

    def lay_out(self, folder, without=()):
        for name, content in self.files.items():
            if name not in without:
                with open(os.path.join(folder, name), "wb") as file:
                    file.write(content)
        for new, name in self.links:
            os.link(os.path.join(folder, name), os.path.join(folder, new))


Ended = collections.namedtuple("Ended", "status said files")  # status None: it hung


def contents(folder):
    """Names and bytes of the regular files of a folder, links followed to such."""
    found = {}
    for name in os.listdir(folder):
        path = os.path.join(folder, name)
        if os.path.isfile(path):
            with open(path, "rb") as file:
                found[name] = file.read()
    return found


class Bench:
    """Runs the program in folders of its own below one that close() removes."""

    def __init__(self, velk):
        self.velk = os.path.abspath(velk)
        self.folder = tempfile.mkdtemp(prefix="velk-faults-")

    def close(self):
        shutil.rmtree(self.folder, ignore_errors=True)

    def run(self, scenario, prefix=(), environment=None, prepare=None, without=()):
        """One run of `prefix` velk ARGUMENTS; prepare(folder) may change the folder before it."""
        folder = tempfile.mkdtemp(dir=self.folder)
        try:
            scenario.lay_out(folder, without)
            if prepare:
                prepare(folder)
            try:
                done = subprocess.run([*prefix, self.velk, *scenario.argv], cwd=folder,
                                      env={**os.environ, **(environment or {})},
                                      stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                      stderr=subprocess.STDOUT, timeout=SECONDS, check=False)
            except subprocess.TimeoutExpired:
                return Ended(None, b"", {})
            return Ended(done.returncode, done.stdout, contents(folder))
        finally:
            shutil.rmtree(folder)

    def expected(self, scenario, without=()):
        """The files behind a run without faults, and without some of its input files."""
        if without not in scenario.expected:
            ended = self.run(scenario, without=without)
            if ended.status != 0:
                raise SystemExit("%s: status %r without a fault" % (scenario.name, ended.status))
            scenario.expected[without] = ended.files
        return scenario.expected[without]

    def judge(self, scenario, ended, sent=None):
        """What became of a run that met a fault; `sent`: the signal that it was sent."""
        if ended.status is None:
            return HANG
        if any(ended.files.get(name) != content for name, content in scenario.files.items()):
            return HARMED
        if ended.status < 0:
            return SIGNALLED if sent is not None and ended.status == -sent else CRASH
        if ended.status > 0:
            return MESSAGED if MESSAGE.search(ended.said) else SILENT
        if scenario.status != 0:
            return WRONG
        if ended.files == self.expected(scenario):
            return RIGHT
        skipped = tuple(sorted({os.fsdecode(name) for name in SKIPPED.findall(ended.said)}))
        if skipped:
            without = self.expected(scenario, skipped)
            absent = {name: scenario.files[name] for name in skipped}
            if ended.files == {**without, **absent}:
                return SKIPS
        return WRONG


# ------------------------------------------------------------------------- inputs

def reverse_complement(seq):
    return seq[::-1].translate(str.maketrans("ACGT", "TGCA"))


def bases(r, count):
    return "".join(r.choices("ACGT", k=count))


def scaffolds(truths, contig, gap):
    """Scaffold FASTA of the truths: contigs of a length, and gaps of another between them."""
    lines = []
    for number, truth in enumerate(truths, 1):
        lines.append(">scaffold%d" % number)
        lines.append("".join(base if at % (contig + gap) < contig else "N"
                             for at, base in enumerate(truth)))
    return "\n".join(lines) + "\n"


def fragments(r, truths, count, insert, length):
    """Mates of `count` pairs, facing each other."""
    pairs = []
    for _ in range(count):
        truth = r.choice(truths)
        start = r.randrange(len(truth) - insert + 1)
        fragment = truth[start:start + insert]
        pairs.append((fragment[:length], reverse_complement(fragment[-length:])))
    return pairs


def fasta(reads):
    return "".join(">r%d\n%s\n" % both for both in enumerate(reads)).encode()


def fastq(reads):
    return "".join("@r%d\n%s\n+\n%s\n" % (i, read, "I" * len(read))
                   for i, read in enumerate(reads)).encode()


def read_files(pairs, paired, packed):
    """Library file and read files: two mate files, or single reads in FASTA and FASTQ."""
    first, second = [a for a, _ in pairs], [b for _, b in pairs]
    ending = ".gz" if packed else ""
    if paired:
        files = {"one.fq" + ending: fastq(first), "two.fq" + ending: fastq(second)}
        library = "[LIB]\navg_ins=250\nq1=one.fq%s\nq2=two.fq%s\n" % (ending, ending)
    else:
        files = {"a.fa" + ending: fasta(first), "b.fq" + ending: fastq(second)}
        library = "[LIB]\nf=a.fa%s\nq=b.fq%s\n" % (ending, ending)
    if packed:
        files = {name: gzip.compress(text, mtime=0) for name, text in files.items()}
    return {"a.lib": library.encode(), **files}


def small(bench, contig_input, paired, packed):
    """A run of few reads whose look-up table has to grow."""
    r = random.Random(7)
    truths = [bases(r, 3 * 340 + 2 * 60) for _ in range(2)]
    files = read_files(fragments(r, truths, 40, 250, 80), paired, packed)
    name = "%s, %s %s" % ("contigs" if contig_input else "scaffolds", "gzip" if packed else "plain",
                          "pairs" if paired else "singles")
    options = ["-l", "a.lib", "-o", "found.fa", "-t", "2", "-m", "100", "-r", "80"]
    scenario = Scenario(name, {**files, "s.fa": scaffolds(truths, 340, 60).encode()},
                        [*options, "-s", "s.fa"])
    if contig_input:
        contigs = bench.expected(scenario)["s.fa.contig"]
        scenario = Scenario(name, {**files, "c.fa": contigs}, [*options, "-c", "c.fa"])
    if not bench.expected(scenario)["found.fa"]:
        raise SystemExit(name + ": nothing found")
    return scenario


def ahead(bench):
    """A run of mate files that take several reads of the system, and more than is inflated ahead:
    behind the pairs stand many that are too short to be searched for."""
    scenario = small(bench, False, True, True)
    r = random.Random(10)
    short = fastq([bases(r, 20) for _ in range(60000)])
    files = {name: content + gzip.compress(short, 1, mtime=0) if name.endswith(".gz") else content
             for name, content in scenario.files.items()}
    return Scenario("pairs inflated ahead", files, scenario.argv)


def refused(bench):
    """A run that must not begin: its output is one of its inputs, under another name."""
    scenario = small(bench, False, False, False)
    return Scenario("output is an input", scenario.files,
                    scenario.argv + ["-o", "alias.fa"], links=[("alias.fa", "s.fa")], status=1)


def large(bench):
    """A run whose outputs take more than 64 kB each."""
    r = random.Random(8)
    truth = bases(r, 5000 * 60)
    files = read_files(fragments(r, [truth], 3000, 120, 60), False, True)
    scenario = Scenario("large", {**files, "s.fa": scaffolds([truth], 50, 10).encode()},
                        ["-l", "a.lib", "-s", "s.fa", "-o", "found.fa", "-t", "2", "-k", "25", "-L",
                         "40", "-r", "60"])
    for name in set(bench.expected(scenario)) - set(files) - {"s.fa"}:
        if len(scenario.expected[()][name]) <= 64 << 10:
            raise SystemExit("%s of the large run is small" % name)
    return scenario
