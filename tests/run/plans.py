#!/usr/bin/env python3
"""What velk-run plan, task and gather refuse, say and leave behind, on the bundled example cut into
tasks: nothing stands under a final name that is not whole, and the next call goes on.

    plans.py VELK_RUN EXAMPLES
"""

import gzip
import hashlib
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import unittest

from shares import result

VELK_RUN = EXAMPLES = ""
INPUTS = ["scaffolds.fa", "--samplesheet", "sheet.tsv", "--native"]
TASKS = 3
SHARES = [f"share.{task}" for task in range(TASKS)]
# In front of a command whose files may have 20,000 bytes. gcc's counters would be cut, too: they go to
# a folder of their own, and what gcc says of them to no one.
COUNTERS = tempfile.TemporaryDirectory()  # pylint: disable=consider-using-with
SMALL_FILES = ["env", f"GCOV_PREFIX={COUNTERS.name}", "GCOV_ERROR_FILE=/dev/null", "prlimit",
               "--fsize=20000"]
COMPLEMENT = str.maketrans("ACGTN", "TGCAN")
SHORT = "VELK_SHORT" in os.environ


def rounds(whole):
    """What a test makes of so many rounds: all; with VELK_SHORT the fifth part."""
    return whole // 5 if SHORT else whole


def write(name, text):
    with open(name, "w", encoding="ascii") as file:
        file.write(text)


def change_byte(name, at):
    with open(name, "r+b") as file:
        file.seek(at)
        byte = file.read(1)[0]
        file.seek(at)
        file.write(bytes([byte ^ 1]))


class Plans(unittest.TestCase):
    """The bundled example: one library in two pairs of files, and single reads."""

    @classmethod
    def setUpClass(cls):
        cls.made = tempfile.mkdtemp()
        os.chdir(cls.made)
        shutil.copy(os.path.join(EXAMPLES, "scaffolds.fa"), "scaffolds.fa")
        for mate in "12":
            with gzip.open(os.path.join(EXAMPLES, f"reads_{mate}.fq.gz"), "rb") as file:
                lines = file.read().splitlines(keepends=True)
            with open(f"a_{mate}.fq", "wb") as file:
                file.writelines(lines[:12000])
            with gzip.open(f"b_{mate}.fq.gz", "wb") as file:
                file.writelines(lines[12000:])
            with open(f"single_{mate}.fq", "wb") as file:
                file.writelines(lines[:8000])
        write("sheet.tsv", "library\tR1\tR2\npairs\ta_1.fq\ta_2.fq\nsingle\tsingle_1.fq\t.\n"
              "pairs\tb_1.fq.gz\tb_2.fq.gz\n")
        cls.call("plan", *INPUTS, "-o", "plan.json", "-t", "2")
        cls.call("--plan", "plan.json", "-o", "one")
        for task, share in enumerate(SHARES):
            cls.call("task", "plan.json", str(task), "-o", share)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.made)

    def setUp(self):
        self.folder = os.path.join(tempfile.mkdtemp(), "copy")
        self.addCleanup(shutil.rmtree, os.path.dirname(self.folder))
        shutil.copytree(self.made, self.folder)
        os.chdir(self.folder)

    @staticmethod
    def run_on(*arguments, program=None, before=()):
        return subprocess.run([*before, program or VELK_RUN, *arguments, "--quiet"], check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    @classmethod
    def call(cls, *arguments):
        done = cls.run_on(*arguments)
        assert done.returncode == 0, done.stderr.decode()

    def refuses(self, message, *arguments, status=1, **how):
        """The call ends with this status and message, and makes nothing."""
        before = sorted(os.listdir("."))
        done = self.run_on(*arguments, **how)
        self.assertEqual((status, b"", f"[ERROR]: {message}\n"),
                         (done.returncode, done.stdout, done.stderr.decode()))
        self.assertEqual(before, sorted(os.listdir(".")))

    def gather_refuses(self, message, shares=None, **how):
        self.refuses(message, "gather", "plan.json", *(shares or SHARES), "-o", "got", **how)

    def gathers(self):
        """All shares make the result of one run."""
        self.call("gather", "plan.json", *SHARES, "-o", "got")
        self.assertEqual(result("one"), result("got"))

    def test_the_shares_make_the_result(self):
        self.gathers()
        self.assertGreater(result("got")[1]["results"]["reads_found"], 2000)
        self.assertEqual([], [path for path, folders, files in os.walk(".")
                              if not folders + files or ".partial" in folders + files])

    def test_what_the_summary_adds_up(self):
        """Times, machines and memory of the tasks and of gathering."""
        shares = []
        for task, host in ((0, "n1"), (1, "n2"), (2, "n1")):
            self.call("task", "plan.json", str(task), "-o", f"share.{task}")
            with open(f"share.{task}/share.json", encoding="utf-8") as file:
                share = json.load(file)
            self.assertEqual(os.uname().nodename, share["machine"])
            share |= {"machine": host, "peak_memory_bytes": (task + 1) << 40, "spilled_bytes": 7 + task}
            del share["checksum"]
            packed = json.dumps(share, separators=(",", ":"), ensure_ascii=False)
            share["checksum"] = hashlib.md5(packed.encode()).hexdigest()
            write(f"share.{task}/share.json", json.dumps(share, indent=2, ensure_ascii=False) + "\n")
            shares.append(share)
        self.gathers()
        with open("got/summary.json", encoding="utf-8") as file:
            summary = json.load(file)
        with open("one/summary.json", encoding="utf-8") as file:
            self.assertEqual(1, json.load(file)["machines"])
        self.assertEqual((3, 3 << 40), (summary["machines"], summary["peak_memory_bytes"]))
        self.assertGreaterEqual(summary["spilled_bytes"], 7 + 8 + 9)
        for phase in ("preparing", "indexing", "searching"):
            self.assertAlmostEqual(sum(share["seconds"][phase] for share in shares),
                                   summary["seconds"][phase], places=2)
        self.assertIn("gathering", summary["seconds"])

    def test_a_plan_has_the_same_bytes_from_everywhere(self):
        copy = os.path.join(self.folder, "again.json")
        os.chdir("/")
        self.call("plan", *(os.path.join(self.folder, part) if "." in part else part
                            for part in INPUTS), "--inputs-root", self.folder, "-o", copy, "-t", "2")
        with open(copy, "rb") as again, open(os.path.join(self.folder, "plan.json"), "rb") as file:
            self.assertEqual(file.read(), again.read())

    def test_a_plan_has_what_was_measured(self):
        with open("plan.json", encoding="utf-8") as file:
            plan = json.load(file)
        pairs = plan["libraries"][0]
        self.assertEqual(("FR", "measured", 215, "measured"),
                         tuple(pairs[key] for key in ("orientation", "orientation_source", "insert",
                                                      "insert_source")))
        self.assertEqual(["pairs", "pairs", "single"], [task["library"] for task in plan["tasks"]])
        self.assertEqual([0, 1, 2], [task["task"] for task in plan["tasks"]])

    def test_what_a_plan_refuses(self):
        self.refuses("a_1.fq is an input, and the plan would replace it", "plan", "scaffolds.fa",
                     "a_1.fq", "a_2.fq", "-o", "a_1.fq")
        self.refuses("pipe is no regular file; the files of a plan are read more than once",
                     "plan", "scaffolds.fa", "pipe", "a_2.fq", "-o", "p",
                     before=["sh", "-c", 'mkfifo pipe; "$@"; s=$?; rm pipe; exit $s', "sh"])
        self.refuses(f"/bin/sh does not lie below the root of the inputs, {self.folder}/"
                     " (--inputs-root)", "plan", "scaffolds.fa", "a_1.fq", "/bin/sh", "-o", "p",
                     status=2)
        self.refuses("gone.fq: No such file or directory", "plan", "scaffolds.fa",
                     "a_1.fq", "gone.fq", "-o", "p")
        self.refuses("no pair of library lib1 lies on one contig; give its insert size, and the"
                     " orientation, in a sample sheet (--samplesheet)", "plan", "scaffolds.fa",
                     "--interleaved", "none.fq", "-o", "p",
                     status=3, before=["sh", "-c", ': >none.fq; "$@" 2>&1 >/dev/null |'
                                       ' grep -v WARNING >&2; rm none.fq; exit 3', "sh"])

    def test_no_such_task(self):
        self.refuses("there is no task 3; plan.json has 3, numbered from 0", "task", "plan.json",
                     "3", "-o", "s", status=2)

    def test_what_a_plan_has_is_not_given_again(self):
        for option, arguments in (("-k", ["-k", "25"]), ("--min-identity=0.9", ["--min-identity=0.9"]),
                                  ("a_1.fq", ["a_1.fq"]), ("--pairs", ["--pairs", "a_1.fq", "a_2.fq"])):
            for name, verb in (("velk-run", ["--plan", "plan.json"]),
                               ("velk-run task", ["task", "plan.json", "0"])):
                self.refuses(f"{option} can't be given with a plan, which has the files and options of its"
                             f" run ({name} --help tells more)", *verb, *arguments, "-o", "x", status=2)
        self.refuses("-k can't be given with a plan, which has the files and options of its run (velk-run"
                     " gather --help tells more)", "gather", "plan.json", *SHARES, "-k", "25", "-o", "x",
                     status=2)
        for arguments in (["-k", "25"], ["--placeholder", "10"], ["-r", "9"]):
            self.refuses(f"{arguments[0]} can't be given with a plan, which has the files and options of its"
                         " run (velk-run index --help tells more)", "index", "--plan", "plan.json",
                         *arguments, "-o", "x", status=2)

    def test_a_misspelt_option_beside_a_plan(self):
        self.refuses("--inputs-rot can't be given with a plan, which has the files and options of its run;"
                     " did you mean --inputs-root by --inputs-rot? (velk-run task --help tells more)",
                     "task", "plan.json", "0", "--inputs-rot", ".", "-o", "x", status=2)

    def test_no_plan(self):
        for text, why in (("{}", "it lacks a key, or a value is of another kind"),
                          ("[]", "it lacks a key, or a value is of another kind"),
                          ('{"program": 1}', "it lacks a key, or a value is of another kind"),
                          ("", "it is no JSON, or a part of it only"),
                          ('{"program": {', "it is no JSON, or a part of it only"),
                          (">s\nACGT\n", "it is no JSON, or a part of it only")):
            write("no.json", text)
            for arguments in (["task", "no.json", "0"], ["gather", "no.json", "share.0"],
                              ["--plan", "no.json"], ["index", "--plan", "no.json"]):
                done = self.run_on(*arguments, "-o", "out")
                self.assertEqual(2, done.returncode)
                self.assertRegex(done.stderr.decode(),
                                 rf"^\[ERROR\]: no\.json is no plan of velk-run [0-9.]+: {why}\n$")
        for arguments in (["task", "share.0/share.json", "0"], ["--plan", "one/summary.json"]):
            done = self.run_on(*arguments, "-o", "out")
            self.assertRegex(done.stderr.decode(), r"json is no plan of velk-run [0-9.]+: it lacks a key")

    def test_damaged_plans_are_refused_or_are_others(self):
        rng = random.Random(1)
        size = os.path.getsize("plan.json")
        for at in rng.sample(range(size), rounds(150)):
            change_byte("plan.json", at)
            done = self.run_on("gather", "plan.json", *SHARES, "-o", "got")
            change_byte("plan.json", at)
            self.assertIn(done.returncode, (1, 2), at)
            self.assertIn(b"[ERROR]: ", done.stderr)
            self.assertFalse(os.path.exists("got"), at)

    def test_missing_share(self):
        self.gather_refuses("the share of task 1 (b_1.fq.gz, b_2.fq.gz) is missing",
                            ["share.2", "share.0"])

    def test_doubled_share(self):
        shutil.copytree("share.2", "copy")
        self.gather_refuses("share.2 and copy are both shares of task 2 (single_1.fq)",
                            [*SHARES, "copy"])

    def test_share_of_other_options(self):
        self.call("plan", *INPUTS, "-M", "0.97", "-o", "other.json")
        self.call("task", "other.json", "1", "-o", "other")
        shutil.rmtree("share.1")
        os.rename("other", "share.1")
        self.gather_refuses("share.1 is a share of another plan")

    def test_a_whole_share_of_another_plan_stays(self):
        self.call("plan", *INPUTS, "-M", "0.97", "-o", "other.json")
        for threads in "12":
            self.refuses("share.1 is a share of another plan; remove it, or choose another folder", "task",
                         "other.json", "1", "-o", "share.1", "-t", threads)
        self.gathers()
        with open("share.1/share.json", "ab") as file:  # it is whole no longer
            file.write(b" ")
        self.call("task", "other.json", "1", "-o", "share.1")
        self.gather_refuses("share.1 is a share of another plan")

    def test_share_of_another_program(self):
        shutil.copy(VELK_RUN, "other")
        with open("other", "ab") as file:
            file.write(b"\0")
        done = self.run_on("task", "plan.json", "1", "-o", "share.1", program="./other")
        self.assertEqual(0, done.returncode)
        self.gather_refuses("share.1 was made by another velk-run than this one")

    def test_swapped_files(self):
        for name in os.listdir("share.0"):
            if name == "share.json":
                continue
            with self.subTest(name=name):
                os.rename(f"share.0/{name}", "swapped")
                shutil.copy(f"share.1/{name}", f"share.0/{name}")
                self.gather_refuses(
                    f"share.0 is no whole share: {name} is not as its task has written it")
                os.rename("swapped", f"share.0/{name}")
        self.gathers()

    def test_one_byte_changed(self):
        rng = random.Random(2)
        for name in sorted(os.listdir("share.0")):
            size = os.path.getsize(f"share.0/{name}")
            for at in [0, size - 1, *rng.sample(range(size), rounds(20))]:
                change_byte(f"share.0/{name}", at)
                self.gather_refuses(
                    f"share.0 is no whole share: {name} is not as its task has written it")
                change_byte(f"share.0/{name}", at)
        self.gathers()

    def test_partial_shares(self):
        for name in sorted(os.listdir("share.0")):
            os.rename(f"share.0/{name}", "moved")
            self.gather_refuses(f"share.0 is no whole share: {name} is missing")
            os.rename("moved", f"share.0/{name}")
        self.gather_refuses("nothing is no whole share: share.json is missing",
                            [*SHARES[1:], "nothing"])
        self.gathers()

    def test_changed_inputs(self):
        self.call("task", "plan.json", "1", "-o", "share.1")
        with open("a_1.fq", "ab") as file:
            file.write(b"\n")
        message = ("a_1.fq is not the file that the plan was made with: it has {} bytes, and the"
                   " plan says {}")
        size = os.path.getsize("a_1.fq")
        message = message.format(f"{size:,}", f"{size - 1:,}")
        self.refuses(message, "task", "plan.json", "0", "-o", "s")
        self.refuses(message, "--plan", "plan.json", "-o", "s")
        change_byte("b_1.fq.gz", os.path.getsize("b_1.fq.gz") - 1)
        self.refuses("b_1.fq.gz is not the file that the plan was made with: the checksum of its"
                     " first and last bytes differs", "task", "plan.json", "1", "-o", "s")
        os.remove("single_1.fq")
        self.refuses("single_1.fq can't be read: No such file or directory", "task", "plan.json",
                     "2", "-o", "s")

    def test_changed_assembly(self):
        change_byte("scaffolds.fa", 5000)
        message = ("scaffolds.fa is not the file that the plan was made with: its checksum differs")
        self.refuses(message, "task", "plan.json", "0", "-o", "s")
        self.gather_refuses(message)
        change_byte("scaffolds.fa", 5000)
        self.gathers()

    def test_damaged_reads(self):
        with open("b_2.fq.gz", "rb") as file:
            data = bytearray(file.read())
        data[len(data) // 2] ^= 255
        with open("b_2.fq.gz", "wb") as file:
            file.write(data)
        self.call("plan", *INPUTS, "--force", "-o", "plan.json")
        done = self.run_on("task", "plan.json", "1", "-o", "s")
        self.assertEqual(1, done.returncode)
        self.assertIn(b"b_2.fq.gz, record ", done.stderr)
        self.assertFalse(os.path.exists("s"))
        self.call("task", "plan.json", "0", "-o", "s")  # the others are not spoilt

    def test_file_size_limit(self):
        for arguments in (["task", "plan.json", "0"], ["gather", "plan.json", *SHARES]):
            # What fails in a helper's thread has no reason that is known here.
            for threads, reasons in (("1", ["File too large"]),
                                     ("2", ["File too large", "no reason is known"])):
                done = self.run_on(*arguments, "-o", "out", "-t", threads,
                                   before=SMALL_FILES)
                self.assertEqual(1, done.returncode)
                said = done.stderr.decode().splitlines()
                self.assertEqual(1, len(said), said)
                self.assertIn(said[0].split(" can't be written: ")[1], reasons)
                self.assertFalse(os.path.exists("out"))
        self.gathers()

    @unittest.skipIf(SHORT, "a killed program has nothing to say to a sanitizer")
    def test_killed_at_each_rename(self):
        """The names become final by renames; after a kill at one, the next call ends well."""
        for arguments in (["task", "plan.json", "0", "-o", "share.0"],
                          ["gather", "plan.json", *SHARES, "-o", "got"]):
            for number in range(1, 30):
                done = self.run_on(*arguments, before=[
                    "strace", "-f", "-o", "/dev/null", "-e", "trace=rename", "-e",
                    f"inject=rename:signal=KILL:when={number}"])
                if done.returncode == 0:
                    break
                self.assertEqual(-9, done.returncode)
                if "task" in arguments and not os.path.exists("share.0/share.json"):
                    done = self.run_on("gather", "plan.json", *SHARES, "-o", "got")
                    self.assertIn(b"share.0 is no whole share: share.json is missing",
                                  done.stderr)
                self.call(*arguments)
                self.gathers()
            self.assertGreater(number, 5)

    def test_two_copies_at_once(self):
        for _ in range(rounds(10)):
            command = [VELK_RUN, "task", "plan.json", "0", "-o", "share.0", "--quiet"]
            with subprocess.Popen(command, stderr=subprocess.PIPE) as one, \
                    subprocess.Popen(command, stderr=subprocess.PIPE) as other:
                said = [process.communicate()[1] for process in (one, other)]
            self.assertIn(0, (one.returncode, other.returncode))
            for process, text in zip((one, other), said):
                if process.returncode != 0:
                    self.assertEqual(b"[ERROR]: another run writes to share.0\n", text)
            self.gathers()

    def test_a_result_and_its_shares_may_share_a_folder(self):
        os.mkdir("all")
        for share in SHARES:
            os.rename(share, f"all/{share}")
        self.call("gather", "plan.json", *(f"all/{share}" for share in SHARES), "-o", "all")
        for share in SHARES:
            os.rename(f"all/{share}", share)
        self.assertEqual(result("one"), result("all"))


class BigGapLength(unittest.TestCase):
    """Long inserts are used at big gaps only, and how big that is depends on the other libraries:
    a task must take the value of the plan, not one of its own."""

    def test_a_task_takes_the_value_of_the_plan(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        os.chdir(folder)
        rng = random.Random(3)
        genome = "".join(rng.choices("ACGT", k=30000))
        bases = genome
        for start, length in ((6000, 200), (12000, 300), (18000, 700), (24000, 150)):
            bases = bases[:start] + "N" * length + bases[start + length:]
        write("scaffolds.fa", f">s\n{bases}\n")
        for name, insert in (("short", 400), ("long", 3000)):
            files = ([], [])
            for number in range(3000):
                at = rng.randrange(len(genome) - insert)
                fragment = genome[at:at + insert]
                mates = [fragment[:100], fragment.translate(COMPLEMENT)[::-1][:100]]
                if insert > 1000:  # outward: from the ends of the fragment
                    mates = [mate.translate(COMPLEMENT)[::-1] for mate in mates]
                for lines, mate in zip(files, mates):
                    lines += [f">{name}{number}", mate]
            for number, lines in enumerate(files, 1):
                write(f"{name}_{number}.fa", "\n".join(lines) + "\n")
        short, long = ([f"{name}_1.fa", f"{name}_2.fa"] for name in ("short", "long"))
        inputs = ["scaffolds.fa", "--pairs", *short, "--mate-pairs", *long]
        Plans.call("plan", *inputs, "-o", "plan.json")
        Plans.call("plan", "scaffolds.fa", "--mate-pairs", *long, "-o", "alone.json")
        Plans.call("--plan", "plan.json", "-o", "one")
        Plans.call(*inputs, "-o", "plain")
        for task in (0, 1):
            Plans.call("task", "plan.json", str(task), "-o", f"share.{task}")
        Plans.call("task", "alone.json", "0", "-o", "alone")
        Plans.call("gather", "plan.json", "share.1", "share.0", "-o", "got")
        self.assertEqual(result("one"), result("got"))
        self.assertEqual(result("one"), result("plain"))
        with open("share.1/share.json", encoding="utf-8") as file:
            planned = json.load(file)["counts"]["reads_found"]
        with open("alone/share.json", encoding="utf-8") as file:
            alone = json.load(file)["counts"]["reads_found"]
        self.assertGreater(planned, 0)
        self.assertGreater(alone, planned)


class Memory(unittest.TestCase):
    """Gathering merges shares as they stand on disk."""

    @staticmethod
    def gather(genome, pairs):
        """Gathers what is found of so many pairs; returns its records, and the most memory, KiB."""
        rng = random.Random(pairs)
        for lane in "01":
            with open(f"{lane}_1.fa", "w", encoding="ascii") as one, \
                    open(f"{lane}_2.fa", "w", encoding="ascii") as other:
                for number in range(pairs // 2):
                    at = rng.randrange(len(genome) - 400)
                    one.write(f">{lane}{number}\n{genome[at:at + 100]}\n")
                    second = genome[at + 300:at + 400].translate(COMPLEMENT)[::-1]
                    other.write(f">{lane}{number}\n{second}\n")
        Plans.call("plan", "scaffolds.fa", "--pairs", "0_1.fa", "0_2.fa", "--pairs", "1_1.fa", "1_2.fa",
                   "--native", "-o", "plan.json")
        for task in "01":
            shutil.rmtree(f"share.{task}", ignore_errors=True)
            Plans.call("task", "plan.json", task, "-o", f"share.{task}")
        with subprocess.Popen([VELK_RUN, "gather", "plan.json", "share.0", "share.1", "-o", "got", "-t",
                               "1", "--quiet"]) as process:
            _, status, used = os.wait4(process.pid, 0)
            process.returncode = status
        assert status == 0
        return result("got")[1]["results"]["alignment_records"], used.ru_maxrss

    def test_of_gathering_does_not_grow_with_what_was_found(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        os.chdir(folder)
        genome = "".join(random.Random(8).choices("ACGT", k=400000))
        gaps = [genome[at:at + 900] + "N" * 100 for at in range(0, len(genome), 1000)]
        write("scaffolds.fa", ">s\n" + "".join(gaps) + genome[:500] + "\n")
        few, little = self.gather(genome, 20000)
        many, more = self.gather(genome, 200000)
        print(f"gathering {few:,} records: {little:,} KiB; {many:,} records: {more:,} KiB")
        self.assertGreater(many, 9 * few)
        self.assertGreater(many, 100000)
        self.assertLess(more, 1.1 * little)


if __name__ == "__main__":
    VELK_RUN, EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
