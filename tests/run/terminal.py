#!/usr/bin/env python3
"""What velk-run shows on a terminal, and in a file: the bar while it works, the lines at its end,
and how a signal ends it.

    terminal.py VELK_RUN EXAMPLES
"""

import gzip
import os
import pty
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

VELK_RUN = EXAMPLES = ""
READS = ["reads_1.fq.gz", "reads_2.fq.gz"]
LAST = (
    r"Found 2,462 of 16,000 reads; 6 of 6 gaps have reads\.",
    r"  at gaps: 1,300 exact, 808 estimate, 354 contained \(belong in a contig near by\)",
    r"  lib1: found 2,462 of 16,000, insert size 215 \+- 11, FR",
    r"Files in out: reads\.bam .* summary\.json",
    r"Time \d+ s, peak memory \d+ MiB",
)


class Shown(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        for name in ["scaffolds.fa", *READS]:
            shutil.copy(os.path.join(EXAMPLES, name), self.folder)

    def start(self, *arguments, **streams):
        return subprocess.Popen([VELK_RUN, "scaffolds.fa", *arguments, "-o", "out"],
                                cwd=self.folder, **streams)

    def on_terminal(self, *arguments, pauses=0, **streams):
        """Returns what a terminal for standard error gets. `pauses`: how often the run is halted for
        longer than the bar stands, so that a run of any speed draws it again."""
        master, slave = pty.openpty()
        with self.start(*arguments, stderr=slave, **streams) as run:
            os.close(slave)
            for _ in range(pauses):
                run.send_signal(signal.SIGSTOP)
                time.sleep(0.25)
                run.send_signal(signal.SIGCONT)
                time.sleep(0.01)
            text = b""
            while True:
                try:
                    part = os.read(master, 65536)
                except OSError:  # of Linux, where the other end is closed
                    break
                if not part:
                    break
                text += part
        os.close(master)
        self.assertEqual(0, run.returncode, text)
        return text.decode().replace("\r\n", "\n")

    def assert_last(self, text):
        lines = text.splitlines()
        self.assertEqual(len(LAST), len(lines), text)
        for expected, line in zip(LAST, lines):
            self.assertRegex(line, f"^{expected}$")

    def test_bar(self):
        """It is drawn over itself, and wiped before anything else is said."""
        with gzip.open(os.path.join(EXAMPLES, READS[0]), "rt", encoding="ascii") as file:
            text = file.read()
        with open(os.path.join(self.folder, "many.fq"), "w", encoding="ascii") as file:
            for _ in range(40):
                file.write(text)
        text = self.on_terminal("--single", "many.fq", "-t", "1", pauses=20)
        states = text.split("\r\033[K")
        self.assertEqual("", states[0])
        self.assertRegex(states[-1], r"^Found 23,400 of 320,000 reads;")
        for state in states[1:-1]:
            self.assertRegex(state, r"^(\[#* *\] )?(preparing|indexing|searching|writing)(, \d+ %)?"
                             r"(, [\d,]+ reads, [\d,]+ a second)?(, \d+ s left)?$")
        bars = [state for state in states if "[" in state]
        self.assertTrue(bars, text)
        for bar in bars:
            self.assertRegex(bar, r"^\[#* *\] searching, \d+ %, [\d,]+ reads, [\d,]+ a second,"
                             r" \d+ s left$")
            self.assertEqual(31, bar.index("]"))

    def test_bar_without_known_size(self):
        """A pipe has no size, so there is no end to tell."""
        command = f"zcat {' '.join(4 * READS[:1])}; sleep 1; zcat {READS[0]}"
        with subprocess.Popen(command, shell=True, cwd=self.folder, stdout=subprocess.PIPE) as slow:
            text = self.on_terminal("--single", "/dev/stdin", stdin=slow.stdout)
        states = text.split("\r\033[K")[1:-1]
        self.assertTrue([state for state in states if "a second" in state], text)
        for state in states:
            self.assertRegex(state, r"^(preparing|indexing|searching|writing)"
                             r"(, [\d,]+ reads, [\d,]+ a second)?$")

    def test_quiet(self):
        self.assertEqual("", self.on_terminal(*READS, "--quiet"))

    def test_file(self):
        with self.start(*READS, stderr=subprocess.PIPE) as run:
            text = run.stderr.read().decode()
        self.assertEqual(0, run.returncode)
        self.assert_last(text)

    def test_what_was_fixed(self):
        with open(os.path.join(self.folder, "scaffolds.fa"), encoding="ascii") as file:
            lines = file.read().splitlines()
        lines[1] = lines[1][:10].lower() + "RY" + lines[1][12:] + "\r"
        with open(os.path.join(self.folder, "scaffolds.fa"), "w", encoding="ascii",
                  newline="") as file:
            file.write("\n".join(lines) + "\n>empty\n")
        with open(os.path.join(self.folder, "a.fa"), "w", encoding="ascii", newline="") as file:
            file.write(">a\r\nACGTTGCATGCA\n>b\nacgttgcatg\n>c\nACGTTG\nACGGTA\n")
        with self.start("--single", "a.fa", stderr=subprocess.PIPE) as run:
            text = run.stderr.read().decode()
        self.assertEqual(0, run.returncode, text)
        self.assertIn("\nFixed: 10 bases of the assembly in lower case, 1 of its lines with a carriage"
                      " return, 1 of its scaffolds without a base, 1 reads in lower case, 1 reads with"
                      " carriage returns, 1 reads on several lines, 2 bases of the assembly that are"
                      " none of A, C, G, T and N (kept)\n", text)

    def test_signals(self):
        """A run that waits for its reads ends by the signal; what was there before stays."""
        os.mkfifo(os.path.join(self.folder, "pipe"))
        os.mkdir(os.path.join(self.folder, "out"))
        for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
            with self.start("--single", "pipe", stderr=subprocess.PIPE) as run:
                while not os.path.exists(os.path.join(self.folder, "out", ".partial")):
                    time.sleep(0.01)
                time.sleep(0.1)  # until signals are taken
                run.send_signal(number)
                self.assertEqual(b"", run.stderr.read())
            self.assertEqual(-number, run.returncode)
            self.assertEqual([], os.listdir(os.path.join(self.folder, "out")))


if __name__ == "__main__":
    VELK_RUN, EXAMPLES = (os.path.abspath(path) for path in sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
