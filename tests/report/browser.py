#!/usr/bin/env python3
"""The page in headless Chromium: what it shows, sorts and filters, that it fetches nothing, and that it
is there without script, in the dark and on paper. Leaves screenshots.

    browser.py VELK_RUN VELK_REPORT SCREENSHOTS
"""

import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import unittest

import made
from devtools import Browser

VELK_RUN = VELK_REPORT = SCREENSHOTS = ""
EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples")
COLUMN = """Array.from(document.querySelectorAll("#table tbody tr:not([hidden])"),
                       row => row.cells[%d].textContent)"""
CONTRAST = """(() => {  // of the text of an element with what is behind it
    const of = (element, what) => getComputedStyle(element)[what].match(/[0-9.]+/g).map(Number);
    const linear = part => part <= 10 ? part / 3294.6 : ((part / 255 + 0.055) / 1.055) ** 2.4;
    const light = ([red, green, blue]) =>
        0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue) + 0.05;
    const element = document.querySelector("%s");
    const behind = light(of(element.closest(".panel") || document.body, "backgroundColor"));
    const text = light(of(element, "color"));
    return Math.max(text, behind) / Math.min(text, behind);
})()"""
TILES = """Object.fromEntries(Array.from(document.querySelectorAll(".tile"),
                                          tile => [tile.id, tile.querySelector("b").textContent]))"""


def make_example(folder):
    subprocess.run([VELK_RUN, "scaffolds.fa", "reads_1.fq.gz", "reads_2.fq.gz", "-o", folder,
                    "--sample", "Ecoli", "--quiet"], cwd=EXAMPLES, check=True)


def make_many(folder, less):
    """3,000 gaps, two libraries, stretches without reads and with other bases; and a run with less
    identity and no mate pairs."""
    chance = random.Random(5)
    scaffolds, genomes = made.many_gaps(chance, 3000)
    inputs = tempfile.mkdtemp(dir=os.path.dirname(folder))
    files = {name: os.path.join(inputs, name) for name in ("a.fa", "p1", "p2", "m1", "m2")}
    with open(files["a.fa"], "w", encoding="ascii") as file:
        file.write(made.fasta(scaffolds))
    pairs, mates = made.Reads(), made.Reads()
    for genome in genomes:
        holes = [made.stretch(chance, genome) for _ in range(len(genome) // 40000 + 1)]
        strange = [made.stretch(chance, genome) for _ in range(len(genome) // 60000 + 1)]
        keep = lambda start, end: not any(one < end and start < other for one, other in holes)
        change = lambda start, read: (made.changed(chance, read, (1, 30, 98))
                                      if any(one < start < other for one, other in strange) else read)
        for pair in made.pairs_of(chance, genome, 8, 100, 350, 40, keep=keep, change=change):
            pairs.add(*pair)
        for pair in made.outward_of(chance, genome, 3, 100, 3000, 300):
            mates.add(*pair)
    pairs.write(files["p1"], files["p2"])
    mates.write(files["m1"], files["m2"])
    pair_run = [VELK_RUN, files["a.fa"], files["p1"], files["p2"], "--placeholder", "100", "--quiet"]
    subprocess.run([*pair_run, "--mate-pairs", files["m1"], files["m2"], "--sample", "made", "-o",
                    folder], check=True)
    subprocess.run([*pair_run, "-M", "0.9", "--sample", "less", "-o", less], check=True)


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp()
        cls.names = ("example", "many")
        make_example(os.path.join(cls.folder, "example"))
        many, less = (os.path.join(cls.folder, name) for name in ("many", "less"))
        make_many(many, less)
        os.mkdir(os.path.join(cls.folder, "both"))
        subprocess.run([VELK_REPORT, many, less, "-o",
                        os.path.join(cls.folder, "both", "report.html")], check=True)
        cls.browser = Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        shutil.rmtree(cls.folder)

    def open(self, name, **settings):
        return self.browser.open(f"file://{self.folder}/{name}/report.html", **settings)

    def summary(self, name):
        with open(os.path.join(self.folder, name, "summary.json"), encoding="utf-8") as file:
            return json.load(file)

    def test_it_shows_the_figures_of_the_summary(self):
        for name in self.names:
            page, summary = self.open(name), self.summary(name)
            results = summary["results"]
            self.assertEqual(page.evaluate("document.title"), summary["sample"] + ": velk report")
            self.assertEqual(page.evaluate("document.querySelector('h1').textContent"),
                             summary["sample"])
            tiles = page.evaluate(TILES)
            self.assertEqual(tiles["tile-gaps"], f"{results['gaps_with_reads']:,}")
            self.assertEqual(tiles["tile-found"], f"{results['reads_found']:,}")
            at_gaps = [library["reads_at_gaps"] for library in summary["libraries"]]
            exact = sum(counts["exact"] for counts in at_gaps)
            both = exact + sum(counts["estimate"] for counts in at_gaps)
            self.assertEqual(tiles["tile-exact"], f"{round(100 * exact / both)} %")
            self.assertEqual(tiles["tile-few"], f"{summary['report']['gaps_with_few_reads']:,}")
            self.assertEqual(tiles["tile-covered"],
                             f"{summary['report']['gaps_covered_by_exact_reads']:,}")
            self.assertIn(f"Of {results['reads_searched']:,} reads searched",
                          page.evaluate("document.querySelector('.lead').textContent"))
            self.assertEqual(page.evaluate("document.querySelectorAll('.library').length"),
                             len(summary["libraries"]))

    def test_it_fetches_nothing_and_complains_of_nothing(self):
        for name in self.names:
            page = self.open(name)
            self.assertEqual(page.requests(), [f"file://{self.folder}/{name}/report.html"])
            self.assertEqual(page.complaints(), [])

    def test_no_sideways_scrolling(self):
        for name in self.names:
            for width in (1280, 800):
                page = self.open(name, width=width)
                self.assertLessEqual(page.evaluate("document.documentElement.scrollWidth"), width)
        wide = "Array.from(document.querySelectorAll('.scroll'), x => x.scrollWidth - x.clientWidth)"
        self.assertEqual(self.open("many").evaluate(wide), [0])
        self.assertEqual(self.open("both").evaluate(wide), [0, 0])

    def test_sorting_by_what_was_lost(self):
        page = self.open("both")
        page.evaluate("""Array.from(document.querySelectorAll("#kinds th [role=button]"))
                             .find(x => x.textContent == "Lost").click()""")
        cells = page.evaluate("""Array.from(document.querySelectorAll("#kinds tbody tr"),
                                            row => row.cells[7].textContent)""")
        values = [int(text.replace(",", "").replace("\u2212", "-")) for text in cells]
        self.assertLess(values[0], -1000)
        self.assertEqual(values, sorted(values))

    def test_sorting(self):
        page = self.open("many")
        click = ("Array.from(document.querySelectorAll('#table th [role=button]'))"
                 ".find(x => x.textContent == '%s').click()")
        for title, column in (("Gap", 0), ("Length", 3), ("Reads", 5)):
            page.evaluate(click % title)
            values = [int(text.replace(",", "")) for text in page.evaluate(COLUMN % column)]
            self.assertEqual(len(values), 2000)
            self.assertEqual(values, sorted(values))
            page.evaluate(click % title)
            values = [int(text.replace(",", "")) for text in page.evaluate(COLUMN % column)]
            self.assertEqual(values, sorted(values, reverse=True))
        page.evaluate("""(() => { const header = document.querySelector("#table th [role=button]");
            header.dispatchEvent(new KeyboardEvent("keydown", {key: "Enter"})); })()""")
        values = [int(text) for text in page.evaluate(COLUMN % 0)]
        self.assertEqual(values, sorted(values))
        page.evaluate(click % "Scaffold")
        names = page.evaluate(COLUMN % 1)
        self.assertEqual(names, sorted(names))

    def test_filtering(self):
        page = self.open("many")
        page.evaluate("""(() => { const field = document.querySelector(".filters input");
            field.value = "scaffold_12"; field.dispatchEvent(new Event("input")); })()""")
        names = set(page.evaluate(COLUMN % 1))
        self.assertEqual(names, {"scaffold_12"})
        page.evaluate("""(() => { const field = document.querySelector(".filters input");
            field.value = ""; field.dispatchEvent(new Event("input"));
            const choice = document.querySelector(".filters select");
            choice.value = "too many differences"; choice.dispatchEvent(new Event("change")); })()""")
        given = page.evaluate(COLUMN % 11)
        self.assertGreater(len(given), 10)
        self.assertTrue(all(text.startswith("too many differences") for text in given))
        self.assertEqual(page.evaluate("document.querySelector('.filters [role=status]').textContent"),
                         f"{len(given)} of 2,000 rows")

    def test_reasons_add_up(self):
        page, report = self.open("many"), self.summary("many")["report"]
        keys = page.evaluate("""Array.from(document.querySelectorAll("#reasons .keys li"),
                                           item => item.textContent)""")
        shown = sum(int(key.split()[0].replace(",", "")) for key in keys)
        self.assertEqual(shown, sum(sum(gaps.values()) for gaps in report["reasons"].values()))
        self.assertGreater(shown, 100)

    def test_paper_has_what_is_folded_or_says_that_it_is_missing(self):
        page = self.open("many")
        meanings = "document.querySelector('#reasons dl').checkVisibility()"
        note = "document.querySelector('#drawings .hint').innerText.includes('the first 4 of each kind')"
        self.assertEqual((page.evaluate(meanings), page.evaluate(note)), (False, False))
        page.scheme("light", "print")
        self.assertEqual((page.evaluate(meanings), page.evaluate(note)), (True, True))

    def test_a_link_unfolds_its_drawing(self):
        page = self.open("many")
        folded = page.evaluate("document.querySelector('details figure').id")
        page.evaluate(f"location.hash = '{folded}'")
        page.evaluate("new Promise(done => setTimeout(done, 300))")
        self.assertTrue(page.evaluate(f"document.getElementById('{folded}').closest('details').open"))
        drawn = page.evaluate("document.querySelectorAll('figure').length")
        self.assertEqual(drawn, page.evaluate("document.querySelectorAll('figure svg').length"))
        self.assertGreater(drawn, 150)
        linked = "Array.from(document.querySelectorAll('#table td a'), a => a.hash.slice(1))"
        missing = page.evaluate(f"{linked}.filter(id => !document.getElementById(id))")
        self.assertEqual(missing, [])

    def test_without_script(self):
        page = self.open("many", script=False)
        text = page.evaluate("document.body.innerText")
        for wanted in ("gaps have reads.", "Gap by gap", "Why gaps have few reads or none"):
            self.assertIn(wanted, text)
        self.assertEqual(page.evaluate("document.querySelectorAll('#table tbody tr').length"), 2000)
        self.assertEqual(page.evaluate("document.querySelectorAll('.filters').length"), 0)

    def test_small_text_has_enough_contrast(self):
        page = self.open("many")
        for scheme in ("light", "dark"):
            page.scheme(scheme)
            for part in ("footer", "td.none", ".hint", "#table td small"):
                with self.subTest(scheme=scheme, part=part):
                    self.assertGreaterEqual(page.evaluate(CONTRAST % part), 4.5)

    def test_dark_and_paper(self):
        for name in self.names:
            page = self.open(name)
            colour = "getComputedStyle(document.body).backgroundColor"
            light = page.evaluate(colour)
            page.screenshot(os.path.join(SCREENSHOTS, name + "-light.png"))
            page.scheme("dark")
            self.assertNotEqual(page.evaluate(colour), light)
            page.screenshot(os.path.join(SCREENSHOTS, name + "-dark.png"))
            page.scheme("dark", "print")
            self.assertEqual(page.evaluate(colour), "rgb(255, 255, 255)")
            self.assertEqual(page.evaluate(
                "getComputedStyle(document.querySelector('nav')).display"), "none")
            page.screenshot(os.path.join(SCREENSHOTS, name + "-paper.png"))
            paper = self.open(name, width=690)  # A4 or Letter between margins
            paper.scheme("light", "print")
            self.assertLessEqual(paper.evaluate("document.documentElement.scrollWidth"), 690)
            right = "Math.max(...Array.from(%s, x => x.getBoundingClientRect().right))"
            boxes = "document.querySelectorAll('.panel, .tile')"
            self.assertLess(paper.evaluate(right % boxes), 690)  # with a border that is seen
            left = "document.querySelector('%s').getBoundingClientRect().left"
            foot = "parseFloat(getComputedStyle(document.querySelector('footer')).paddingLeft)"
            self.assertEqual(paper.evaluate(f"{left % 'footer'} + {foot}"),
                             paper.evaluate(left % "h2"))
            page.print(os.path.join(SCREENSHOTS, name + ".pdf"))
            self.assertGreater(os.path.getsize(os.path.join(SCREENSHOTS, name + ".pdf")), 10000)


if __name__ == "__main__":
    VELK_RUN, VELK_REPORT, SCREENSHOTS = map(os.path.abspath, sys.argv[1:4])
    os.makedirs(SCREENSHOTS, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
