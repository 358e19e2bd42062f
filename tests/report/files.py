#!/usr/bin/env python3
"""The files that velk-report makes and what it says, on the bundled example and on hostile names.

    files.py VELK_RUN VELK_REPORT
"""

import fcntl
import hashlib
import os
import pty
import re
import shutil
import struct
import subprocess
import tempfile
import termios
import unittest
import xml.etree.ElementTree
from html.parser import HTMLParser

from exampleRun import EXAMPLES, VELK_REPORT, VELK_RUN, ExampleRun, load, run, sums

MADE = ["report.html", "velk_mqc.json", "velk_gaps_mqc.json"]
HOSTILE = "<script>alert(1)</script>\"'&<img/src=x>" + "x" * 10000


class Elements(HTMLParser):
    """All elements of a page, and the text of each title, heading and table cell."""

    def __init__(self, text):
        super().__init__()
        self.names = []
        self.attributes = []
        self.text = ""
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        self.names.append(tag)
        self.attributes += attrs

    def handle_data(self, data):
        self.text += data


class Files(ExampleRun):
    def test_summary_lists_the_report(self):
        listed = {file["name"]: file for file in load(self.out, "summary.json")["files"]}
        for name in MADE:
            with open(os.path.join(self.out, name), "rb") as file:
                data = file.read()
            self.assertEqual(listed[name]["bytes"], len(data))
            self.assertEqual(listed[name]["md5"], hashlib.md5(data).hexdigest())

    def test_again_gives_the_same(self):
        out = self.copy()
        before = sums(out)
        self.assertEqual(run(VELK_REPORT, out).returncode, 0)
        self.assertEqual(sums(out), before)

    def test_after_a_run_without_report(self):
        out = self.copy("--no-report")
        self.assertFalse(set(MADE) & set(os.listdir(out)))
        self.assertNotIn("report", load(out, "summary.json"))
        self.assertEqual(run(VELK_REPORT, out).returncode, 0)
        for name in MADE:
            self.assertEqual(sums(out)[name], sums(self.out)[name])
        made, whole = load(out, "summary.json"), load(self.out, "summary.json")
        self.assertEqual(made["report"], whole["report"])
        self.assertEqual(made["files"], whole["files"])

    def test_threads_are_not_seen(self):
        self.assertEqual({name: sums(self.copy("-t", "3"))[name] for name in MADE},
                         {name: sums(self.out)[name] for name in MADE})

    def test_figures_for_multiqc(self):
        summary = load(self.out, "summary.json")
        table = load(self.out, "velk_mqc.json")
        row = table["data"]["sample"]
        self.assertEqual(row["reads_found"], summary["results"]["reads_found"])
        self.assertEqual(row["gaps_with_reads"], summary["results"]["gaps_with_reads"])
        self.assertEqual(set(row), set(table["headers"]))
        bars = load(self.out, "velk_gaps_mqc.json")["data"]["sample"]
        self.assertEqual(sum(bars.values()), summary["assembly"]["gaps"])

    def test_drawing(self):
        done = run(VELK_REPORT, "--gap", "3", self.out)
        self.assertEqual(done.returncode, 0)
        root = xml.etree.ElementTree.fromstring(done.stdout)
        self.assertEqual(root.tag, "{http://www.w3.org/2000/svg}svg")
        strokes = [path.get("d") for path in root.iter("{http://www.w3.org/2000/svg}path")
                   if path.get("class", "").startswith("read ")]
        self.assertLessEqual(sum(d.count("M") for d in strokes), 300)
        self.assertGreater(sum(d.count("M") for d in strokes), 290)
        file = os.path.join(self.folder, "gap.svg")
        self.assertEqual(run(VELK_REPORT, "--gap", "3", self.out, "-o", file).returncode, 0)
        with open(file, encoding="utf-8") as drawn:
            self.assertEqual(drawn.read(), done.stdout)

    def test_text(self):
        done = run(VELK_REPORT, "--text", self.out)
        self.assertEqual(done.returncode, 0)
        self.assertIn("found 2,462 of 16,000 reads; 6 of 6 gaps have reads", done.stdout)
        self.assertLessEqual(max(map(len, done.stdout.splitlines())), 80)

    def test_no_gap(self):
        folder = tempfile.mkdtemp(dir=self.folder)
        with open(os.path.join(EXAMPLES, "scaffolds.fa"), encoding="ascii") as file:
            text = file.read()
        with open(os.path.join(folder, "a.fa"), "w", encoding="ascii") as file:
            file.write(text.replace("N", "A"))
        out = os.path.join(folder, "out")
        self.velk_run(out, "--force", assembly=os.path.join(folder, "a.fa"))
        self.assertEqual(run(VELK_REPORT, out).returncode, 0)
        with open(os.path.join(out, "report.html"), encoding="utf-8") as file:
            self.assertIn("The assembly has no gap.", file.read())
        self.assertIn("0 of 0 gaps have reads", run(VELK_REPORT, "--text", out).stdout)
        self.assertEqual(run(VELK_REPORT, "--gap", "0", out).returncode, 2)
        self.assertEqual(run(VELK_REPORT, out, out).returncode, 0)

    @staticmethod
    def of_gaps(folder, kind):
        """What gaps.tsv has of a kind, gap by gap."""
        with open(os.path.join(folder, "gaps.tsv"), encoding="ascii") as file:
            lines = [line.split("\t") for line in file]
        column = lines[0].index("lib1:" + kind)
        return [int(line[column]) for line in lines[1:]]

    def test_a_page_is_not_for_the_terminal(self):
        master, slave = pty.openpty()
        for arguments in (["a", "b"], ["--found", "found.fa", "scaffolds.fa"]):
            done = subprocess.run([VELK_REPORT, *arguments], stdout=slave, stderr=subprocess.PIPE,
                                  text=True, check=False)
            self.assertEqual((done.returncode, done.stderr),
                             (2, "[ERROR]: a page is no text for the terminal: give --output FILE, or"
                              " --text (velk-report --help tells more)\n"))
        os.close(slave)
        os.close(master)

    def test_two_runs(self):
        """Against a run with half of the reads, and one whose scaffold has another name."""
        half = os.path.join(self.folder, "half")
        done = run(VELK_RUN, "scaffolds.fa", "--single", "reads_1.fq.gz", "-o", half, "--quiet",
                   cwd=EXAMPLES)
        self.assertEqual(done.returncode, 0)
        counts = [load(out, "summary.json")["libraries"][0]["reads_at_gaps"]
                  for out in (self.out, half)]
        text = run(VELK_REPORT, "--text", self.out, half).stdout
        page = run(VELK_REPORT, self.out, half).stdout
        rows = dict(re.findall(r"lib1 +(\w+) +(.*)", text))
        for kind in ("exact", "estimate", "contained", "anchor"):
            one, other = (each[kind] for each in counts)
            gains = [after - before for before, after in zip(self.of_gaps(self.out, kind),
                                                             self.of_gaps(half, kind))]
            gained, lost = [gain for gain in gains if gain > 0], [gain for gain in gains if gain < 0]
            wanted = [f"{sum(some):+,} at {len(some)}" if some else "0" for some in (gained, lost)]
            self.assertEqual(rows[kind].split(), f"{one:,} {other:,} {' '.join(wanted)}".split())
            cells = re.search(rf"<td class=word>{kind}<td>(.*?)</tr>", page)[1]
            self.assertEqual(re.sub("<td[^>]*>", " ", cells).split(), [
                f"{one:,}", f"{other:,}", *(f"{n:+,}".replace("-", "&minus;").replace("+0", "0") for n in
                                            (other - one, sum(gained))), str(len(gained)),
                f"{sum(lost):+,}".replace("-", "&minus;").replace("+0", "0"), str(len(lost))])
        self.assertRegex(" ".join(text.split()), "of 6 gaps of both runs 0 gained .* 6 lost some")
        self.assertLessEqual(max(map(len, text.splitlines())), 80)
        elements = Elements(page)
        self.assertEqual(elements.names.count("tr"), 1 + 4 + 1 + 6)
        self.assertIn(f"<title>sample ({self.out}) and sample ({half})", page)
        other = self.copy("--sample", "other")
        self.assertIn("<title>sample and other", run(VELK_REPORT, self.out, other).stdout)
        same = run(VELK_REPORT, "--text", self.out, self.out).stdout
        self.assertRegex(" ".join(same.split()), "of 6 gaps of both runs 0 gained .* 0 lost some")
        self.assertNotIn("Gaps that", same)
        renamed = self.copy()
        path = os.path.join(renamed, "gaps.tsv")
        with open(path, encoding="ascii") as file:
            table = file.read()
        with open(path, "w", encoding="ascii") as file:
            file.write(table.replace("scaffold1", "chr1"))
        text = " ".join(run(VELK_REPORT, "--text", self.out, renamed).stdout.split())
        self.assertRegex(text, "of 0 gaps of both runs .* 6 gaps are of the first run alone, 6 of")

    def test_command_line(self):
        more = " (velk-report --help tells more)"
        self.failure(2, "folder is required" + more)
        self.failure(2, "there is no gap 6; " + self.out + " has 6, numbered from 0",
                     "--gap", "6", self.out)
        self.failure(2, "--gap takes one folder" + more, "--gap", "1", self.out, self.out)
        self.failure(2, "--output takes --gap, --found or two folders; report.html stands in the folder"
                     " of the results" + more, self.out, "-o", "page.html")
        self.assertIn("--gap", run(VELK_REPORT, "--help").stdout)
        self.assertRegex(run(VELK_REPORT, "--version").stdout, r"^velk-report \d+\.\d+\n$")

    def test_as_wide_as_the_terminal(self):
        for columns, widest in ((200, 200), (60, 60), (20, 40), (0, 80)):
            main, terminal = pty.openpty()
            fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
            done = subprocess.run([VELK_REPORT, "--text", self.out], stdout=terminal, check=True)
            self.assertEqual(done.returncode, 0)
            os.close(terminal)
            first = os.read(main, 10000).decode().splitlines()[0]
            os.close(main)
            self.assertLessEqual(len(first), widest)
            self.assertGreater(len(first), widest - 12 if widest < 100 else 90)

    def test_hostile_names(self):
        """What a user may call a sample, a library, a file: all of it stays text."""
        folder = tempfile.mkdtemp(dir=self.folder)
        name = "a\n\x1b[31m<b>\u202e&\"'.fa"
        shutil.copy(os.path.join(EXAMPLES, "scaffolds.fa"), os.path.join(folder, name))
        sheet = os.path.join(folder, "libraries.tsv")
        with open(sheet, "w", encoding="utf-8") as file:
            file.write("library\tR1\tR2\n" + HOSTILE[:3000] + "\t" + EXAMPLES + "/reads_1.fq.gz\t" +
                       EXAMPLES + "/reads_2.fq.gz\n")
        out = os.path.join(folder, "out")
        done = run(VELK_RUN, os.path.join(folder, name), "--samplesheet", sheet, "--sample", HOSTILE,
                   "-o", out, "--quiet")
        self.assertEqual(done.returncode, 0, done.stderr)
        with open(os.path.join(out, "report.html"), encoding="utf-8") as file:
            page = file.read()
        with open(os.path.join(self.out, "report.html"), encoding="utf-8") as file:
            plain = Elements(file.read())
        elements = Elements(page)
        self.assertEqual(elements.names, plain.names)
        self.assertEqual([key for key, _ in elements.attributes],
                         [key for key, _ in plain.attributes])
        self.assertIn(HOSTILE[:60], elements.text)
        self.assertNotRegex(page, "[\x00-\x09\x0b-\x1f\u202a-\u202e]")
        self.assertLess(len(page), 3_000_000)
        done = run(VELK_REPORT, "--text", out)
        self.assertEqual(done.returncode, 0)
        self.assertNotRegex(done.stdout, "[\x00-\x09\x0b-\x1f\u202a-\u202e]")
        self.assertEqual(len(load(out, "velk_mqc.json")["data"]), 1)

    def test_hostile_tables(self):
        """A table that somebody has written a name into."""
        out = self.copy()
        path = os.path.join(out, "gaps.tsv")
        with open(path, encoding="ascii") as file:
            table = file.read()
        with open(path, "w", encoding="utf-8") as file:
            file.write(table.replace("scaffold1", HOSTILE))
        self.assertEqual(run(VELK_REPORT, out).returncode, 0)
        with open(os.path.join(out, "report.html"), encoding="utf-8") as file:
            elements = Elements(file.read())
        self.assertEqual(elements.names.count("script"), 1)
        self.assertNotIn("img", elements.names)
        drawing = run(VELK_REPORT, "--gap", "0", out).stdout
        self.assertIn(HOSTILE[:25], xml.etree.ElementTree.fromstring(drawing).get("aria-label"))


if __name__ == "__main__":
    unittest.main(argv=["files.py"])
