#!/usr/bin/env python3
"""velk-run with a saved index: the bytes of a run without one, what is refused and said, and what
damaged and hostile files come to.

    indexes.py VELK_RUN EXAMPLES [CLASS...]
"""

import gzip
import json
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

import plans
from plans import SHORT, change_byte, rounds, write
from savedIndex import BYTES, HEADER_END, KMER, PAGE, PARTS, SMALL, VERSION, SavedIndex
from shares import result

READS = ["reads_1.fq.gz", "reads_2.fq.gz"]


class Base(unittest.TestCase):
    """A folder for each test, and calls of velk-run in it."""

    run_on = staticmethod(plans.Plans.run_on)
    refuses = plans.Plans.refuses

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        os.chdir(self.folder)
        for name in ["scaffolds.fa", *READS]:
            shutil.copy(os.path.join(EXAMPLES, name), name)

    def call(self, *arguments):
        done = self.run_on(*arguments)
        self.assertEqual(0, done.returncode, done.stderr)

    def make_index(self, *options):
        self.call("index", "scaffolds.fa", "-o", "index", *options)

    def run_refuses(self, message, *options, status=3, inputs=READS):
        self.refuses(message, "scaffolds.fa", *inputs, "--index", "index", *options, "-o", "out",
                     status=status)


class SameResult(Base):
    def compare(self, *options):
        """Runs with and without the index have the same bytes, with any number of threads."""
        self.make_index(*(option for option in options if option != "--native"))
        self.call("scaffolds.fa", *READS, *options, "-o", "one")
        for threads in "124":
            self.call("scaffolds.fa", *READS, *options, "-o", "got", "--index", "index", "-t",
                      threads)
            self.assertEqual(result("one"), result("got"))
        self.call("index", "--check", "index")
        return result("one")[1]["results"]

    def test_of_the_example(self):
        self.assertGreater(self.compare("--native")["reads_found"], 2000)

    def test_with_other_options(self):
        for options in (["-k", "21"], ["-k", "40"], ["-k", "16"], ["-L", "400"]):
            self.assertGreater(self.compare(*options)["reads_found"], 0)
        options = ["-C", "25", "-r", "100", "-k", "25"]
        self.assertGreater(self.compare(*options)["reads_found"], 0)

    def test_of_a_hard_assembly(self):
        """Repeats, letters that are no bases, empty scaffolds, short contigs, a lone last base."""
        with open("scaffolds.fa", encoding="ascii") as file:
            text = file.read()
        lines = text.splitlines()
        bases = "".join(line for line in lines if not line.startswith(">")).replace("\n", "")
        rng = random.Random(4)
        odd = "".join(rng.choice("RYKM") if rng.random() < 0.01 else base for base in bases[:20000])
        write("scaffolds.fa", text + f">odd\n{odd}\n>empty\n>gaps\nNNNNN\n>none x\n{bases[:900].lower()}\n"
              f">repeat\r\n{bases[5000:9000]}NNNNNNNNNN{bases[5000:9000]}NNNACGTNNN{'A' * 300}N"
              f"{'ACACACAC' * 100}NNT\n")
        write("a.agp", "odd\t1\t100\t1\tU\t100\tscaffold\tno\tna\n")
        for options in (["--native"], ["--placeholder", "10,3,1"], ["--agp", "a.agp", "-k", "17"]):
            self.compare(*options)

    def test_of_a_plan(self):
        write("sheet.tsv", "library\tR1\tR2\npairs\treads_1.fq.gz\treads_2.fq.gz\n"
              "single\treads_1.fq.gz\t.\n")
        inputs = ["scaffolds.fa", "--samplesheet", "sheet.tsv", "--force", "--native"]
        self.call("plan", *inputs, "-o", "plain.json")
        self.call("--plan", "plain.json", "-o", "one")
        self.make_index()
        self.call("plan", *inputs, "-o", "plan.json", "--index", "index")
        with open("plan.json", encoding="utf-8") as file, open("plain.json", encoding="utf-8") as other:
            plan, plain = json.load(file), json.load(other)
        index = SavedIndex("index")
        self.assertEqual(index.data[HEADER_END - 32:HEADER_END].decode(), plan.pop("index")["md5"])
        for task in plan["tasks"] + plain["tasks"]:
            del task["minutes"]
        self.assertEqual(plain, plan)
        os.rename("scaffolds.fa", "elsewhere")  # the index has all of it
        for name in ("plan.json", "plain.json"):
            for task in "01":
                self.call("task", name, task, "-o", f"{name}.{task}", "--index", "index")
            self.call("gather", name, f"{name}.1", f"{name}.0", "-o", "got", "--index", "index")
            self.assertEqual(result("one"), result("got"))
            self.call("--plan", name, "-o", "got", "--index", "index", "-t", "3")
            self.assertEqual(result("one"), result("got"))
        os.rename("elsewhere", "scaffolds.fa")
        self.call("task", "plan.json", "0", "-o", "share.0")  # without it is as well
        self.call("task", "plan.json", "1", "-o", "share.1", "--index", "index")
        self.call("gather", "plan.json", "share.1", "share.0", "-o", "got")
        self.assertEqual(result("one"), result("got"))
        self.make_index("--placeholder", "200000")
        self.refuses("index is the index of other options: --placeholder is 200000 in it, and none"
                     " here", "task", "plain.json", "0", "-o", "s", "--index", "index", status=3)
        self.make_index()
        self.call("task", "plan.json", "1", "-o", "share.1", "--index", "index")
        change_byte("scaffolds.fa", 3000)
        self.make_index()
        self.refuses("index is the index of another assembly than scaffolds.fa", "task",
                     "plan.json", "0", "-o", "s", "--index", "index", status=3)

    def test_of_the_plan_itself(self):
        """An index that is made by a plan is the one that is made with its options."""
        options = ["-C", "20", "-k", "25", "--placeholder", "87"]
        self.call("plan", "scaffolds.fa", *READS, *options, "-o", "plan.json")
        self.call("index", "scaffolds.fa", *options, "-r", "100", "-o", "plain")
        folder = self.folder
        os.chdir("/")
        self.call("index", "--plan", f"{folder}/plan.json", "--inputs-root", folder, "-o",
                  f"{folder}/index")
        os.chdir(folder)
        with open("plain", "rb") as plain, open("index", "rb") as index:
            self.assertEqual(plain.read(), index.read())
        self.call("task", "plan.json", "0", "--index", "index", "-o", "share")
        self.call("gather", "plan.json", "share", "--index", "index", "-o", "got")
        self.call("scaffolds.fa", *READS, *options, "-o", "one")
        self.assertEqual(result("one"), result("got"))
        change_byte("scaffolds.fa", 3000)
        self.refuses("scaffolds.fa is not the file that the plan was made with: its checksum"
                     " differs", "index", "--plan", "plan.json", "-o", "index")

    def test_another_index_than_that_of_the_plan(self):
        self.make_index()
        self.call("plan", "scaffolds.fa", *READS, "-o", "plan.json", "--index", "index")
        index = SavedIndex("index")
        index.data[index.place(PARTS.index("bases"))[0]] ^= 6
        index.seal().write()
        self.refuses("index is not the index that the plan was made with: its checksum differs",
                     "task", "plan.json", "0", "-o", "s", "--index", "index")

    def test_the_index_has_the_same_bytes_with_any_threads(self):
        self.make_index("-t", "1")
        with open("index", "rb") as file:
            one = file.read()
        self.make_index("-t", "3")
        with open("index", "rb") as file:
            self.assertEqual(one, file.read())


class Refused(Base):
    def test_other_options(self):
        self.make_index("-C", "20", "-r", "100", "--placeholder", "50,10")
        options = {"-k": "31", "-L": "70", "-C": "20", "-r": "100", "--placeholder": "10,50,10"}
        for name, value, now, then in (("-k", "25", "25", "31"), ("-L", "71", "71", "70"),
                                       ("-C", "0", "0", "20"), ("-r", "99", "99", "100"),
                                       ("--placeholder", "10", "10", "10,50")):
            arguments = [part for pair in {**options, name: value}.items() for part in pair]
            self.run_refuses(f"index is the index of other options: {name} is {then} in it, and"
                             f" {now} here", *arguments)

    def test_another_agp_file(self):
        write("a.agp", "x\t1\t100\t1\tU\t100\tscaffold\tno\tna\n")
        write("b.agp", "x\t1\t101\t1\tU\t100\tscaffold\tno\tna\n")
        self.make_index()
        self.run_refuses("index is the index of an assembly without an AGP file (--agp)", "--agp",
                         "a.agp")
        self.make_index("--agp", "a.agp")
        self.run_refuses("index is the index of an assembly with an AGP file (--agp), and none is"
                         " given")
        self.run_refuses("index is the index of an assembly with another AGP file (--agp)",
                         "--agp", "b.agp")

    def test_another_assembly(self):
        self.make_index()
        change_byte("scaffolds.fa", 2000)
        self.run_refuses("index is the index of another assembly than scaffolds.fa, or of a copy of"
                         " it that is compressed in another way")

    def test_an_assembly_that_differs_in_its_middle(self):
        """It is said at the end, before there is a result."""
        rng = random.Random(1)
        with open("scaffolds.fa", "a", encoding="ascii") as file:
            file.write(">long\n" + "".join(rng.choices("ACGT", k=2500000)) + "\n")
        self.make_index()
        change_byte("scaffolds.fa", os.path.getsize("scaffolds.fa") // 2)
        self.run_refuses("index is the index of another assembly than scaffolds.fa")

    def test_what_is_no_index(self):
        for text in ("", "velk-", "no index of anything\n" * 1000):
            write("index", text)
            self.run_refuses("index is no index of velk-run", status=1)
        os.remove("index")
        self.run_refuses("index can't be opened: No such file or directory", status=1)
        os.mkdir("index")
        self.run_refuses("index is no regular file", status=1)

    def test_other_forms(self):
        self.make_index()
        index = SavedIndex("index")
        index.data[VERSION] = 77
        index.write()
        self.run_refuses("index is an index of form 77, and this velk-run has 1: make it again",
                         status=1)
        index.data[8:12] = index.data[8:12][::-1]
        index.write()
        self.run_refuses("index is an index for machines of another byte order", status=1)

    def test_usage(self):
        more = " (velk-run index --help tells more)"
        for arguments in ([], ["scaffolds.fa"], ["-o", "index"],
                          ["scaffolds.fa", "--plan", "plan.json", "-o", "index"]):
            self.refuses("an assembly or a plan (--plan), and the file of the index (-o), must be"
                         " given" + more, "index", *arguments, status=2)
        self.refuses("with -C the read length of the runs (-r) must be given: contigs are cut by it",
                     "index", "scaffolds.fa", "-o", "index", "-C", "5", status=2)
        self.refuses("scaffolds.fa is an input, and the index would replace it", "index",
                     "scaffolds.fa", "-o", "scaffolds.fa")
        self.refuses("/dev/stdin is no regular file; the files of an index are read more than once",
                     "index", "/dev/stdin", "-o", "index",
                     before=["sh", "-c", 'cat scaffolds.fa | "$@"', "sh"])
        self.refuses("scaffolds.fa is no index of velk-run", "index", "--check", "scaffolds.fa")


class Damaged(Base):
    def setUp(self):
        super().setUp()
        self.make_index("--placeholder", "10")
        self.index = SavedIndex("index")

    def check_refuses(self, message):
        self.refuses("index is a damaged index: " + message, "index", "--check", "index")

    def refuses_all(self, message):
        self.run_refuses("index is a damaged index: " + message, "--placeholder", "10", status=1)
        self.check_refuses(message)

    def test_every_byte_of_the_header(self):
        for at in range(16, HEADER_END, 7 if SHORT else 1):
            change_byte("index", at)
            self.check_refuses("its header has another checksum than was written")
            change_byte("index", at)

    def test_cut_short(self):
        size = len(self.index.data)
        for length in (HEADER_END, PAGE - 1):
            os.truncate("index", length)
            self.refuses_all("it ends in its header")
            self.index.write()
        for length in (PAGE, size // 2, size - 1, size + 1):
            os.truncate("index", length)
            self.refuses_all(f"it has {length:,} bytes, and {size:,} were written")
            self.index.write()

    def test_one_byte_of_a_part(self):
        for part, name in enumerate(PARTS):
            offset, size = self.index.place(part)
            if size == 0:
                self.assertIn(name, ("placeholders of gaps", ))
                continue
            for at in (offset, offset + size - 1):
                change_byte("index", at)
                message = f"its {name} have another checksum than was written"
                self.refuses_all(message) if part in SMALL else self.check_refuses(message)
                for verb in ([], ["plan"]):
                    done = self.run_on(*verb, "scaffolds.fa", *READS, "--placeholder", "10", "--index",
                                       "index", "-o", "out")
                    self.assertEqual(1, done.returncode, (name, at))
                    self.assertIn(b"[ERROR]: index is a damaged index: its ", done.stderr)
                    self.assertFalse(os.path.exists("out"))
                change_byte("index", at)

    def test_a_damaged_index_of_a_plan(self):
        """What is changed in the middle of any part is said before anything has its name."""
        self.call("plan", "scaffolds.fa", *READS, "--placeholder", "10", "-o", "plan.json")
        self.call("task", "plan.json", "0", "-o", "share")
        verbs = (["task", "plan.json", "0"], ["gather", "plan.json", "share"], ["--plan", "plan.json"])
        for part, name in enumerate(PARTS):
            offset, size = self.index.place(part)
            if size == 0:
                continue
            change_byte("index", offset + size // 2)
            for verb in verbs:
                done = self.run_on(*verb, "--index", "index", "-o", "out")
                self.assertEqual(1, done.returncode, (name, verb))
                self.assertRegex(done.stderr, b"ERROR]: index is a damaged index: its ")
                self.assertFalse(os.path.exists("out"))
            change_byte("index", offset + size // 2)
        for verb in verbs:
            self.call(*verb, "--index", "index", "-o", "out." + verb[0].strip("-"))

    def test_wrong_places(self):
        for part, name in enumerate(PARTS):
            for at, change in ((0, PAGE), (0, -PAGE), (8, 1 << 63), (8, PAGE * 10**6)):
                index = SavedIndex("index")
                where = 200 + 48 * part + at
                value = struct.unpack_from("<Q", index.data, where)[0] + change
                struct.pack_into("<Q", index.data, where, value % (1 << 64))
                index.seal_header()
                index.write("hostile")
                self.refuses(f"hostile is a damaged index: the place of its {name} is wrong",
                             "index", "--check", "hostile")
        index = SavedIndex("index")
        index.data += bytes(PAGE)
        struct.pack_into("<Q", index.data, BYTES, len(index.data))
        index.seal_header()
        index.write()
        self.refuses_all("bytes follow its last part")

    def hostile(self, message, changes):
        """Numbers of parts are changed, and the sums are right."""
        index = SavedIndex("index")
        for part, at, value in changes:
            index.set_number(PARTS.index(part), at, value % (1 << 64))
        index.seal().write("hostile")
        self.refuses("hostile is a damaged index: " + message, "index", "--check", "hostile")

    def test_options_that_cannot_be(self):
        for option, values in enumerate(((0, -1, 1 << 31, 1 << 63), (-1, 1 << 31), (-5, 1 << 40),
                                         (-1, 1 << 32))):
            for value in values:
                index = SavedIndex("index")
                struct.pack_into("<Q", index.data, KMER + 8 * option, value % (1 << 64))
                index.seal().write("hostile")
                self.refuses("hostile is a damaged index: its options can't be so", "index",
                             "--check", "hostile")

    def test_records_that_cannot_be(self):
        index = self.index
        scaffolds, contigs = PARTS.index("scaffolds"), PARTS.index("contigs")
        self.assertGreater(index.place(contigs)[1], 2 * 48)
        for length in (0, 1 << 31):
            self.hostile("its scaffolds can't be so", [("scaffolds", 0, length)])
        self.hostile("its scaffolds can't be so", [("scaffolds", 2, 1 << 40)])
        self.hostile("its scaffolds can't be so", [("scaffolds", 1, 0)])
        self.hostile("its scaffolds can't be so", [("scaffolds", 1, index.number(scaffolds, 0))])
        start, end = index.number(contigs, 0), index.number(contigs, 1)
        for change in ([("contigs", 0, end)], [("contigs", 1, start)], [("contigs", 1, 1 << 40)],
                       [("contigs", 3, 1)], [("contigs", 3, -1)], [("contigs", 4, 1)], [("contigs", 5, 1)],
                       [("contigs", 6, end - 1)], [("contigs", 10, 1 << 20)]):
            self.hostile("its contigs can't be so", change)
        self.hostile("its placeholders of gaps can't be so", [("contigs", 11, 1)])
        self.hostile("its bases can't be so", [("contigs", 0, start + 1)])
        self.hostile("its contigs can't be so", [("scaffolds", 2, index.number(scaffolds, 2) - 1)])

    def test_names_that_cannot_be(self):
        offset, size = self.index.place(PARTS.index("names"))
        names = bytes(self.index.data[offset:offset + size])
        for changed in (b"\0" + names[1:], b"*" + names[1:], names[:-1] + b"x",
                        names.replace(b"\0", b"x", 1), b"\n" + names[1:], b"\xff" + names[1:]):
            index = SavedIndex("index")
            index.data[offset:offset + size] = changed
            index.seal().write("hostile")
            self.refuses("hostile is a damaged index: its names can't be so", "index", "--check",
                         "hostile")

    def test_an_index_that_does_not_fit(self):
        for part in ("ranges of seeds", "ranges of windows"):
            number = PARTS.index(part)
            for at, value in ((0, 1 << 50), (1, 0), (1, 1 << 50), (0, -1), (1, -1), (511, 1 << 20)):
                self.hostile("its parts do not fit each other", [(part, at, value)])
            self.assertEqual(4096, self.index.place(number)[1])
        # The first line of the text has no window: all of its marks stand.
        for word in (4, 5):
            self.hostile("its parts do not fit each other", [("text", word, -2)])
        index = SavedIndex("index")
        struct.pack_into("<Q", index.data, KMER, 500000)
        index.seal().write("hostile")
        self.refuses("hostile is a damaged index: it has no k-mers", "index", "--check", "hostile")
        struct.pack_into("<Q", index.data, KMER, 40)
        index.seal().write("hostile")
        self.refuses("hostile is a damaged index: its parts do not fit each other", "index",
                     "--check", "hostile")

    def test_damage_and_malice_never_crash_a_run(self):
        """Any bytes in any part, with sums that are right or not: a message, or a result."""
        rng = random.Random(7)
        ends = {0: 0, 1: 0, 3: 0}
        for number in range(rounds(150)):
            index = SavedIndex("index")
            parts = rng.sample(range(len(PARTS)), rng.choice((1, 2, 6)))
            for part in parts:
                if part in SMALL and rng.random() < 0.8:
                    continue
                offset, size = index.place(part)
                for _ in range(rng.choice((1, 50, size // 64, size)) if size else 0):
                    index.data[offset + rng.randrange(size)] = rng.choice((0, 1, 12, 10, 255,
                                                                          rng.randrange(256)))
            if rng.random() < 0.9:
                index.seal()
            index.write("hostile")
            done = self.run_on("scaffolds.fa", *READS, "--placeholder", "10", "--index", "hostile",
                               "-o", "out", "-t", rng.choice("12"), "--native")
            self.assertIn(done.returncode, ends, (number, done.stderr))
            ends[done.returncode] += 1
            if done.returncode != 0:
                self.assertRegex(done.stderr.splitlines()[-1],
                                 rb"^\[ERROR\]: (hostile is |no pair of library lib1 lies on)")
        self.assertGreater(ends[0], rounds(20))
        self.assertGreater(ends[1], rounds(20))


class InUse(Base):
    def test_cut_while_it_is_in_use(self):
        """Reads that come through a pipe leave time for it."""
        self.make_index()
        os.mkfifo("pipe")
        command = [plans.VELK_RUN, "scaffolds.fa", "--interleaved", "pipe", "--index", "index", "-o",
                   "out", "--quiet", "-t", "2"]
        mates = []
        for name in READS:
            with gzip.open(name, "rb") as file:
                lines = file.read().splitlines(keepends=True)
            mates.append([b"".join(lines[at:at + 4]) for at in range(0, len(lines), 4)])
        with subprocess.Popen(command, stderr=subprocess.PIPE) as run:
            try:
                with open("pipe", "wb") as pipe:
                    os.truncate("index", PAGE)
                    for pair in zip(*mates):
                        pipe.writelines(pair)
            except BrokenPipeError:
                pass
            said = run.communicate()[1]
        self.assertEqual((1, b"[ERROR]: index can't be read: it was cut while it was in use, or its"
                             b" disk fails\n"), (run.returncode, said))
        self.assertEqual(["pipe", "reads_1.fq.gz", "reads_2.fq.gz", "scaffolds.fa"],
                         [name for name in sorted(os.listdir(".")) if name not in ("index", "out")])
        self.assertFalse(os.path.exists("out/.partial"))


class Injected(Base):
    """What a call of the system that fails comes to; sanitizers make calls of their own."""

    def test_killed_at_each_call(self):
        """Whatever stands under the name is the old file or the whole new one."""
        self.make_index("-k", "25")
        shutil.copy("index", "old")
        with open("old", "rb") as file:
            old = file.read()
        for call in ("write", "fsync", "rename"):
            for number in (1, 2, 3):
                shutil.copy("old", "index")
                done = self.run_on("index", "scaffolds.fa", "-o", "index", before=[
                    "strace", "-f", "-o", "/dev/null", "-e", f"trace={call}", "-e",
                    f"inject={call}:signal=KILL:when={number}"])
                if done.returncode == 0:
                    break
                self.assertEqual(-9, done.returncode)
                with open("index", "rb") as file:
                    self.assertEqual(old, file.read())
                self.assertTrue(os.path.exists("index.partial"))
            self.assertGreater(number, 1)
            self.call("index", "--check", "index")
            self.assertFalse(os.path.exists("index.partial"))

    def test_no_room(self):
        self.make_index()
        for call in ("write", "fsync", "rename", "ftruncate", "flock"):
            done = self.run_on("index", "scaffolds.fa", "-o", "index", before=[
                "strace", "-f", "-o", "/dev/null", "-e", f"trace={call}", "-e",
                f"inject={call}:error=ENOSPC:when=1"])
            self.assertEqual(1, done.returncode, call)
            self.assertRegex(done.stderr.decode(),
                             r"^\[ERROR\]: (\S*/)?index(\.partial)? can't be (written|made|locked): No space left"
                             r" on device\n$")
            self.assertFalse(os.path.exists("index.partial") and call != "flock")
            self.call("index", "--check", "index")


class WholeOrNot(Base):
    def test_two_at_once(self):
        with open("index.partial", "wb") as file:
            import fcntl
            fcntl.flock(file, fcntl.LOCK_EX)
            self.refuses("another run writes to index", "index", "scaffolds.fa", "-o", "index")
        self.make_index()

    def test_the_result_does_not_replace_it(self):
        os.mkdir("out")
        self.call("index", "scaffolds.fa", "-o", "out/reads.bam")
        self.refuses("out/reads.bam is an input, and the results would replace it; choose another"
                     " folder", "scaffolds.fa", *READS, "-o", "out", "--index", "out/reads.bam")


if __name__ == "__main__":
    plans.VELK_RUN, EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
