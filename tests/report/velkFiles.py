#!/usr/bin/env python3
"""The page of velk's own four files, without reasons and names, beside that of velk-run on the same data.

    velkFiles.py VELK_RUN VELK_REPORT VELK
"""

import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

import made

VELK_RUN = VELK_REPORT = VELK = ""
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
EXAMPLES = os.path.join(ROOT, "examples")
HEADINGS = ["Gap", "Scaffold", "Position", "Length", "Reads", "Exact", "Contained", "Covered"]
SVG = "{http://www.w3.org/2000/svg}"


def run(*command, **how):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                          text=True, **how)


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def write(text, *path):
    with open(os.path.join(*path), "w", encoding="utf-8") as file:
        file.write(text)


def lead(page):
    return re.search('<p class="lead">(.*?)</p>', page)[1]


def rows(page):
    """Gap -> the cells of its row, numbers as numbers."""
    table = {}
    for row in re.findall(r"<tr data-why=[^\n]*", page):
        cells = [re.sub("<[^>]*>", "", cell) for cell in row.split("<td")[1:]]
        cells = [cell.split(">", 1)[1].replace(",", "") for cell in cells]
        table[int(cells[0])] = [int(cell) if cell.isdigit() else cell for cell in cells]
    return table


def counts_of(folder):
    """Gap -> reads that belong in it, exact ones and contained ones, as gaps.tsv has them."""
    lines = [line.split("\t") for line in read(folder, "gaps.tsv").splitlines()]
    columns = {kind: [n for n, name in enumerate(lines[0]) if name.endswith(":" + kind)]
               for kind in ("exact", "estimate", "contained")}
    sums = ({kind: sum(int(line[n]) for n in columns[kind]) for kind in columns} for line in lines[1:])
    return {gap: (each["exact"] + each["estimate"], each["exact"], each["contained"])
            for gap, each in enumerate(sums)}


class VelkFiles(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)

    def file(self, name):
        return os.path.join(self.folder, name)

    def page(self, found, scaffolds):
        done = run(VELK_REPORT, "--found", found, scaffolds)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def example(self, *options):
        """velk itself on the bundled example."""
        for name in os.listdir(EXAMPLES):
            if os.path.isfile(os.path.join(EXAMPLES, name)):
                shutil.copy(os.path.join(EXAMPLES, name), self.folder)
        done = run(VELK, "-l", "reads.lib", "-s", "scaffolds.fa", "-o", "found.fa", *options,
                   cwd=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        return self.file("found.fa"), self.file("scaffolds.fa")

    def failure(self, message, found, scaffolds):
        done = run(VELK_REPORT, "--found", found, scaffolds, "-o", self.file("page.html"))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"[ERROR]: {message}\n"))
        self.assertFalse(os.path.exists(self.file("page.html")))

    def test_each_kind(self):
        """The drawn example of the document: one read of each kind, and a single one."""
        document = read(ROOT, "doc", "run.md")
        for name, text in re.findall(r"```text file=(\S+)\n(.*?)```", document, re.DOTALL):
            write(text, self.folder, name)
        done = run(VELK_RUN, "tiny.fa", "--samplesheet", "tiny.tsv", "-k", "11", "-L", "20", "-o", "tiny",
                   "--quiet", "--native", cwd=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        native = self.file("tiny/native/")
        page = self.page(native + "found.fa", native + "scaffolds.fa")
        self.assertEqual(rows(page)[0][:7], [0, 1, "61&ndash;80", 20, 3, 2, 1])
        self.assertEqual(lead(page), "4 reads were found at gaps; 1 of 1 gaps have reads.")

    def test_like_the_page_of_velk_run(self):
        """Two libraries, whose spreads are a tenth of the insert size, as it is taken to be here."""
        chance = random.Random(8)
        scaffolds, genomes = made.many_gaps(chance, 120)
        write(made.fasta(scaffolds), self.folder, "a.fa")
        pairs, singles = made.Reads(), made.Reads()
        for genome in genomes:
            for pair in made.pairs_of(chance, genome, 12, 100, 350, 35):
                pairs.add(*pair)
            for _ in range(len(genome) // 50):
                start = chance.randrange(len(genome) - 100)
                singles.add(genome[start:start + 100])
        pairs.write(self.file("1.fq"), self.file("2.fq"))
        singles.write(self.file("s.fq"))
        done = run(VELK_RUN, "a.fa", "1.fq", "2.fq", "--single", "s.fq", "-o", "out", "--native", "--quiet",
                   cwd=self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        page = self.page(self.file("out/native/found.fa"), self.file("out/native/scaffolds.fa"))
        table, counts = rows(page), counts_of(self.file("out"))
        self.assertEqual(len(table), 120)
        for column in range(3):  # the measured insert is a base or two off, and so are some places
            one = sum(row[4 + column] for row in table.values())
            other = sum(each[column] for each in counts.values())
            self.assertGreater(other, 500)
            self.assertLess(abs(one - other), 0.02 * other)
        same = sum(table[gap][4] == counts[gap][0] for gap in counts)
        self.assertGreater(same, 90)
        whole = read(self.folder, "out", "report.html")
        covered = [int(re.search(r'id="tile-covered"><b>(\d+)', text)[1]) for text in (page, whole)]
        self.assertLess(abs(covered[0] - covered[1]), 3)
        places = [{gap: row[2] for gap, row in rows(text).items()} for text in (page, whole)]
        self.assertEqual(places[0], places[1])

    def test_without_reasons_and_names(self):
        page = self.page(*self.example())
        headings = re.sub("<[^>]*>", " ", re.search("<thead>.*</thead>", page)[0]).split()
        self.assertEqual(headings, HEADINGS)
        body = page.split("<script>")[0].split("</style>")[1]
        for left_out in ("Why", "predict", " mates", ">anchor", "reads_1"):
            self.assertEqual(body.count(left_out), 0, left_out)
        self.assertEqual(page.count("<figure"), 6)
        self.assertIn('id="tile-covered"', page)

    def test_positions_of_cut_contigs(self):
        """With -C the search takes gaps as shorter than they lie in the scaffold."""
        found, scaffolds = self.example("-C", "20")
        lines = [line.split("\t") for line in read(scaffolds + ".contigPos").splitlines()]
        table = rows(self.page(found, scaffolds))
        for gap, row in table.items():
            self.assertTrue(row[2].startswith(f"{int(lines[gap][3]) + 1}&ndash;"), (row, lines[gap]))
        for gap in table:
            self.assertGreater(table[gap][5], table[gap][4] / 4)  # places that agree with the contigs

    def test_text_and_drawing(self):
        found, scaffolds = self.example()
        done = run(VELK_REPORT, "--text", "--found", found, scaffolds)
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout.replace("\n", " "), r"^found.fa: found 2,462 reads; 6 of 6 gaps have")
        self.assertIn("  insert size 215: found 2,462\n", done.stdout)
        done = run(VELK_REPORT, "--gap", "3", "--found", found, scaffolds)
        root = xml.etree.ElementTree.fromstring(done.stdout)
        strokes = [path.get("d") for path in root.iter(SVG + "path")
                   if path.get("class", "").startswith("read ")]
        self.assertGreater(sum(d.count("M") for d in strokes), 290)
        self.assertFalse([path for path in root.iter(SVG + "path") if path.get("class") == "join"])
        done = run(VELK_REPORT, "--gap", "6", "--found", found, scaffolds)
        self.assertEqual((done.returncode, done.stderr),
                         (2, f"[ERROR]: there is no gap 6; {scaffolds}.gapsinfo has 6, numbered from 0\n"))
        done = run(VELK_REPORT, "--found", found, scaffolds, scaffolds)
        self.assertEqual((done.returncode, done.stderr), (2, "[ERROR]: --found takes one scaffold file"
                                                             " (velk-report --help tells more)\n"))

    def test_numbers_that_are_left_out(self):
        """A last base alone behind a gap takes a number, and gives no gap."""
        found, scaffolds = self.example()
        text = read(scaffolds)
        first = text.split("\n", 1)[1].replace("\n", "")
        write(f">scaffold1\n{first}NNNNNA\n>scaffold2\n{first}\n", scaffolds)
        done = run(VELK, "-l", "reads.lib", "-s", "scaffolds.fa", "-o", "found.fa", "-k", "21",
                   cwd=self.folder)
        self.assertEqual(done.returncode, 0)
        numbers = [int(line.split("\t")[0]) for line in read(scaffolds + ".gapsinfo").splitlines()
                   if not line.startswith(">")]
        self.assertEqual(numbers, [0, 1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 12])
        self.assertEqual(sorted(rows(self.page(found, scaffolds))), numbers)
        self.assertEqual(run(VELK_REPORT, "--gap", "12", "--found", found, scaffolds).returncode, 0)
        self.assertEqual(run(VELK_REPORT, "--gap", "6", "--found", found, scaffolds).returncode, 2)

    def test_nothing_found(self):
        found, scaffolds = self.example()
        reads = made.Reads()
        reads.add(made.bases(random.Random(1), 100))
        reads.write(self.file("other.fq"))
        write("[LIB]\nf=other.fq\n", self.file("other.lib"))
        done = run(VELK, "-l", "other.lib", "-s", "scaffolds.fa", "-o", "found.fa", cwd=self.folder)
        self.assertEqual(done.returncode, 0)
        page = self.page(found, scaffolds)
        self.assertEqual(lead(page), "0 reads were found at gaps; 0 of 6 gaps have reads.")
        self.assertEqual([row[4] for row in rows(page).values()], [0] * 6)

    def test_files_that_do_not_fit(self):
        found, scaffolds = self.example()
        self.failure(self.file("gone") + " can't be opened: No such file or directory",
                     self.file("gone"), scaffolds)
        whole = read(found)
        records = whole.count(">")
        line = f"{found}, line {2 * records}: not a line that velk writes"
        write(whole[:-1], found)  # cut short
        self.failure(line, found, scaffolds)
        write(whole.rsplit(">", 1)[0], found)  # a record less
        last = whole.rsplit(">", 1)[1].split("\t")[0]
        done = run(VELK_REPORT, "--found", found, scaffolds)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, rf"^\[ERROR\]: {re.escape(found)} has (\d+) reads of gap {last}, and"
                         rf" {re.escape(scaffolds)}.gapsinfo says \d+: they are not of one run, or not"
                         r" whole\n$")
        for header in ("0\t1\t0\t1\t0\t0", "7\t10\t0\t1\t0\t0", "x", "0\t754\t-\t1\t0\t0", "0\t754\t0\t1\t0\tx"):
            write(f">{header}\nACGT\n", found)
            self.failure(f"{found}, line 1: not a line that velk writes", found, scaffolds)
        write(whole, found)
        for name, number, change in ((".gapsinfo", 3, "x"), (".gapsinfo", 2, "0\t754"),
                                     (".contigPos", 2, "1\t7\t1\t2"), (".contigPos", 7, "1\t6\t2\t1"),
                                     (".contig", 1, ">scaffold2_0\t0"), (".contig", 2, "ACGT")):
            kept = read(scaffolds + name)
            lines = kept.splitlines()
            lines[number - 1] = change
            write("\n".join(lines) + "\n", scaffolds + name)
            self.failure(f"{scaffolds}{name}, line {number}: not a line that velk writes", found, scaffolds)
            write("\n".join(kept.splitlines()[:-2]) + "\n", scaffolds + name)
            done = run(VELK_REPORT, "--found", found, scaffolds)
            self.assertEqual(done.returncode, 1, name)
            self.assertTrue(done.stderr.startswith(f"[ERROR]: {scaffolds}."), done.stderr)
            write(kept, scaffolds + name)
        self.page(found, scaffolds)

    def test_hostile_names(self):
        """An id of a scaffold, and the names of the files, stay text."""
        found, scaffolds = self.example()
        hostile = "<script>alert(1)</script>\"'&" + "x" * 10000
        text = read(scaffolds)
        write(f">C{hostile}\n" + text.split("\n", 1)[1], self.file("a<b>&\".fa"))
        done = run(VELK, "-l", "reads.lib", "-s", "a<b>&\".fa", "-o", "<i>found.fa", cwd=self.folder)
        self.assertEqual(done.returncode, 0)
        page = self.page(self.file("<i>found.fa"), self.file("a<b>&\".fa"))
        self.assertEqual(page.count("<script>"), 1)
        self.assertEqual((page.count("<i>found"), page.count("<b>&")), (0, 0))
        shown = re.search(r'<td class="word name"><bdi>(.*?)</bdi>', page)[1]
        self.assertTrue(shown.startswith("&lt;script&gt;alert(1)&lt;/script&gt;&quot;&#39;&amp;xxx"), shown)
        self.assertLess(len(page), 3_000_000)


if __name__ == "__main__":
    VELK_RUN, VELK_REPORT, VELK = map(os.path.abspath, sys.argv[1:4])
    unittest.main(argv=sys.argv[:1])
