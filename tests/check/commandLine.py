#!/usr/bin/env python3
"""Statuses, the two streams, colours and the advice of velk-check, on the bundled example.
Usage: commandLine.py VELK-CHECK EXAMPLES"""
import gzip
import json
import os
import pathlib
import pty
import random
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(sys.argv[1]).resolve()
EXAMPLES = pathlib.Path(sys.argv[2]).resolve()
RUN = ["-l", "reads.lib", "-s", "scaffolds.fa", "-o", "found.fa"]


class CommandLine(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="velk-check-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        for file in EXAMPLES.iterdir():
            if file.is_file():
                shutil.copy(file, self.folder)

    def run_check(self, *arguments, **options):
        return subprocess.run([PROGRAM, *arguments], cwd=self.folder, capture_output=True,
                              text=True, check=False, timeout=300, **options)

    def on_terminal(self, *arguments, **environment):
        """What is printed when standard output and error are a terminal."""
        ours, theirs = pty.openpty()
        with subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stdout=theirs, stderr=theirs,
                              env={**os.environ, **environment}) as process:
            os.close(theirs)
            text = b""
            while True:
                try:
                    piece = os.read(ours, 4096)
                except OSError:
                    break
                if not piece:
                    break
                text += piece
            process.wait()
        os.close(ours)
        return text.decode()

    def assert_usage_error(self, ended, word):
        self.assertEqual((ended.returncode, ended.stdout), (3, ""))
        self.assertTrue(ended.stderr.startswith("velk-check: "), ended.stderr)
        self.assertIn(word, ended.stderr)

    def test_example_has_notes_only(self):
        for form in [[], ["--deep"], ["--sample", "100"]]:
            ended = self.run_check("--json", *form, *RUN)
            report = json.loads(ended.stdout)
            self.assertEqual((ended.returncode, report["status"], ended.stderr), (0, 0, ""))
            self.assertEqual({finding["level"] for finding in report["findings"]}, {"note"})

    def test_example_is_measured(self):
        report = json.loads(self.run_check("--json", *RUN).stdout)
        measured = report["libraries"][0]["measured"]
        self.assertAlmostEqual(measured["insert"], 215, delta=4)
        self.assertGreater(measured["inwards"], 0.99 * measured["pairs"])
        self.assertTrue(report["advice"]["is_exact"])
        self.assertEqual((report["advice"]["distinct_kmers"], report["advice"]["r"]), (8111, 100))

    def test_advised_command_line_is_good_advice(self):
        report = json.loads(self.run_check("--json", "-r", "50", *RUN).stdout)
        self.assertIn("reads-longer", [finding["id"] for finding in report["findings"]])
        words = shlex.split(report["advice"]["command"])
        self.assertEqual(words[0], "velk")
        report = json.loads(self.run_check("--json", *words[1:]).stdout)
        self.assertNotIn("reads-longer", [finding["id"] for finding in report["findings"]])

    def test_growth_beyond_the_largest_table_is_foretold(self):
        self.assertIn("-f", self.findings(*RUN, "-f", "1e-12")["table-refused"]["text"])
        self.assertNotIn("table-refused", self.findings(*RUN, "-f", "1e-3"))

    def test_other_arguments_stay_in_the_advice(self):
        ended = self.run_check("--json", *RUN, "-t", "1", "-f", "0.9", "-M", "0.9")
        self.assertIn(" -t 1 -f 0.9 -M 0.9 -r ", json.loads(ended.stdout)["advice"]["command"])

    def test_names_are_quoted_in_the_advice(self):
        ended = self.run_check("--json", *RUN[:4], "-o", "it's found.fa")
        words = shlex.split(json.loads(ended.stdout)["advice"]["command"])
        self.assertIn("it's found.fa", words)

    def test_help_and_version(self):
        for option, word in [("--help", "Usage: velk-check"), ("--version", "velk-check 1."),
                             ("-h", "Usage: velk-check")]:
            ended = self.run_check(option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertIn(word, ended.stdout)

    def test_usage_errors(self):
        self.assert_usage_error(self.run_check(), "no arguments")
        self.assert_usage_error(self.run_check("--shallow", *RUN), "--shallow")
        self.assert_usage_error(self.run_check("--sample", "0", *RUN), "--sample")
        self.assert_usage_error(self.run_check("--sample"), "--sample")
        self.assert_usage_error(self.run_check(*RUN, "-x", "1"), "-x")
        self.assert_usage_error(self.run_check(*RUN, "-t"), "-t")
        self.assert_usage_error(self.run_check(*RUN, "-"), "-")

    def test_a_value_may_look_like_an_option(self):
        ended = self.run_check("--json", *RUN[:4], "-o", "--deep")
        report = json.loads(ended.stdout)
        self.assertEqual(report["arguments"][-2:], ["-o", "--deep"])

    def test_report_that_cannot_be_written_is_its_own_failure(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            ended = subprocess.run([PROGRAM, *RUN], cwd=self.folder, stdout=full, check=False,
                                   stderr=subprocess.PIPE, text=True, timeout=300)
        self.assertEqual(ended.returncode, 3)
        self.assertIn("can't write the report", ended.stderr)

    def test_closed_descriptors(self):
        for closed in range(8):
            shut = " ".join(f"{number}>&-" for number in range(3) if closed >> number & 1)
            ended = subprocess.run(["sh", "-c", f'"$@" {shut}', "sh", PROGRAM, *RUN],
                                   cwd=self.folder, capture_output=True, text=True, check=False,
                                   timeout=300)
            self.assertEqual(ended.returncode, 3 if closed & 2 else 0, shut)
            self.assertEqual(ended.stderr, "velk-check: can't write the report\n"
                             if closed & 6 == 2 else "", shut)

    def test_names_that_are_no_utf8_leave_json_valid(self):
        (self.folder / "reads.lib").write_bytes(b"[LIB]\nf=reads\xff.fa\n")
        report = json.loads(self.run_check("--json", *RUN).stdout)
        self.assertEqual(report["status"], 2)

    def findings(self, *arguments):
        ended = self.run_check("--json", *arguments)
        return {finding["id"]: finding for finding in json.loads(ended.stdout)["findings"]}

    def one_file(self, name, content):
        (self.folder / name).write_bytes(content)
        (self.folder / "reads.lib").write_text(f"[LIB]\nf={name}\n", encoding="ascii")

    def report_on(self, names):
        """The report on a library of single reads: packed ones without the ending for it."""
        packed = gzip.compress(b">r\n" + b"ACGTTGCA" * 12 + b"\n")
        for name in names:
            if name != "gone.fa":
                (self.folder / name).write_bytes(packed)
        library = "[LIB]\n" + "".join(f"f={name}\n" for name in names)
        (self.folder / "reads.lib").write_text(library, encoding="ascii")
        ended = self.run_check(*RUN)
        self.assertEqual((ended.returncode, ended.stderr), (2, ""))
        return ended.stdout

    def test_a_kind_is_told_once_with_all_its_places(self):
        said = self.report_on(["one.fa", "gone.fa", "two.fa"])
        self.assertEqual(said[:said.index("    k-mers: ")], """\
error [gzip-plain-name] a gzip file without .gz at the end of its name
    one.fa: the file is compressed with gzip
    two.fa: the file is compressed with gzip
    velk: velk reads it as text and stops, or loses its reads as second mates
    fix: add .gz to the name
    velk-run: needs no fix
error [reads-missing] a plain read file cannot be opened
    gone.fa: No such file or directory
    velk: velk stops there with status 1; what follows is lost
    fix: check the name and the permissions

What a run takes, the errors fixed
""")
        self.assertEqual(said.splitlines()[-1], "2 errors, 0 warnings, 0 notes")

    def test_of_many_places_the_first_are_shown(self):
        said = self.report_on([f"{number}.fa" for number in range(13)])
        self.assertIn("    9.fa: the file is compressed with gzip\n"
                      "    and 3 more (--json lists all)\n    velk: ", said)
        self.assertNotIn("10.fa", said)
        report = json.loads(self.run_check("--json", *RUN).stdout)
        places = [finding["file"] for finding in report["findings"]]
        self.assertEqual(places, [f"{number}.fa" for number in range(13)])
        self.assertEqual({finding["velk_run"] for finding in report["findings"]}, {"needs no fix"})

    def test_a_command_line_is_printed_where_there_is_no_error(self):
        for more, status in [([], 0), (["-r", "50"], 1), (["-L", "-1"], 2)]:
            said = self.run_check(*RUN, *more)
            report = json.loads(self.run_check("--json", *RUN, *more).stdout)
            self.assertEqual((said.returncode, report["status"]), (status, status))
            self.assertEqual("Command line to run\n    velk -l reads.lib" in said.stdout, status < 2)
            self.assertEqual("velk -l" in said.stdout, status < 2)
            self.assertEqual("command" in report.get("advice", {}), status < 2)

    def test_deep_reads_gzip_files_to_their_end(self):
        record = b"@r\n" + b"ACGTTGCA" * 12 + b"\n+\n" + b"I" * 96 + b"\n"
        whole = gzip.compress(record * 400000, compresslevel=1)  # 80 MB
        self.one_file("one.fq.gz", whole[:-8] + bytes(4) + whole[-4:])
        self.assertNotIn("gzip-damaged", self.findings(*RUN))
        self.assertIn("gzip-damaged", self.findings("--deep", *RUN))

    def test_plain_files_are_looked_at_further_on(self):
        record = b"@r\n" + b"ACGTTGCA" * 12 + b"\n+\n" + b"I" * 96 + b"\n"
        wrapped = record.replace(b"ACGTTGCA\n", b"ACGTTGCA\nACGT\n")
        self.one_file("one.fq", record * 9000)
        self.assertNotIn("fastq-lines", self.findings("--sample", "100", *RUN))
        self.one_file("one.fq", record * 6000 + wrapped * 3000)
        found = self.findings("--sample", "100", *RUN)["fastq-lines"]
        self.assertNotIn("record", found)
        self.assertIn("behind byte", found["text"])
        self.assertEqual(self.findings("--deep", *RUN)["fastq-lines"]["record"], 6001)

    def test_long_work_shows_a_bar_on_a_terminal_only(self):
        bases = "".join(random.Random(1).choices("ACGT", k=3100000))
        (self.folder / "scaffolds.fa").write_text(f">scaffold1\n{bases}N{bases[:500]}\n",
                                                  encoding="ascii")
        self.assertIn("indexing [", self.on_terminal(*RUN))
        self.assertEqual(self.run_check(*RUN).stderr, "")

    def test_colours_on_a_terminal_only(self):
        self.assertNotIn("\033", self.run_check(*RUN).stdout)
        self.assertIn("\033[1;36mnote\033[0m [key-unused]", self.on_terminal(*RUN, NO_COLOR=""))
        self.assertNotIn("\033", self.on_terminal(*RUN, NO_COLOR="1"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
