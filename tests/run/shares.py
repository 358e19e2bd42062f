#!/usr/bin/env python3
"""Random small runs, cut at random into read files: the shares of their tasks, gathered in any order,
must make the files of the plan run in one go, byte for byte, and the same summary but for times and
memory. The plan itself must make the files of a run without one, and so must a run with a saved index,
which some of the tasks have, too.

    shares.py VELK_RUN SEEDS        SEEDS: FIRST-LAST

Prints how often each class of runs was met; ends with status 1 at the first difference, whose files
stay in the folder that it names.
"""

import collections
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile

from againstVelk import Maker, MessyFiles, content

MEASURED = ("seconds", "machines", "peak_memory_bytes", "spilled_bytes")  # of a summary: not the same twice


class CutFiles(MessyFiles):
    """The files of a run, each library's reads in several of them."""

    def cut(self, records):
        """The records in their order, cut at random; some stand twice, so that places tie."""
        records = [copy for record in records
                   for copy in [record] * (2 if self.random.random() < 0.05 else 1)]
        cuts = sorted(self.random.choices(range(len(records) + 1), k=self.random.randrange(4)))
        parts = [records[a:b] for a, b in zip([0, *cuts], [*cuts, len(records)])]
        return [part for part in parts if part] or [records]

    def sheet(self):
        rows = ["library\tR1\tR2\tkind\tinsert\torientation"]
        for number, library in enumerate(self.made.pairs, 1):
            kind = self.random.choice(("pairs", "mate-pairs"))
            for part, records in enumerate(self.cut(library.records)):
                one = self.reads(f"p{number}.{part}_1", [a for a, _ in records], "/1")
                other = self.reads(f"p{number}.{part}_2", [b for _, b in records], "/2")
                rows.append(f"p{number}\t{one}\t{other}\t{kind}\t{library.insert}\t"
                            + ("RF" if library.is_outward else "FR"))
        for number, singles in enumerate(self.made.singles, 1):
            for part, records in enumerate(self.cut(singles)):
                rows.append(f"s{number}\t{self.reads(f's{number}.{part}', records, '/1')}"
                            "\t.\tsingle\t.\t.")
        with open(os.path.join(self.folder, "sheet.tsv"), "w", encoding="ascii") as file:
            file.write("\n".join(rows) + "\n")
        return len(rows) - 1


def result(folder):
    """Name -> bytes of all files, and the summary without what is measured."""
    files = {}
    for path, _, names in os.walk(folder):
        for name in names:
            files[os.path.relpath(os.path.join(path, name), folder)] = content(path, name)
    summary = json.loads(files.pop("summary.json"))
    for key in MEASURED:
        del summary[key]
    return files, summary


class Comparison:
    def __init__(self, velk_run):
        self.velk_run = os.path.abspath(velk_run)
        self.met = collections.Counter()

    def check(self, arguments, folder):
        command = [self.velk_run, *arguments, "--quiet"]
        done = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              check=False)
        if done.returncode != 0:
            sys.exit(f"{folder}: {' '.join(command)}: status {done.returncode}\n"
                     + done.stderr.decode())

    def run(self, seed):
        maker = Maker(seed)
        made = maker.make()
        rng = maker.random
        folder = tempfile.mkdtemp(prefix=f"velk-run.shares.{seed}.")
        files = CutFiles(folder, made, rng)
        assembly = files.assembly()
        tasks = files.sheet()
        options = [part for name, value in made.options.items() for part in (name, str(value))]
        options += [option for option in ("--native", "--no-anchors") if rng.random() < 0.5]
        if made.placeholder:
            options += ["--placeholder", str(made.placeholder)]
        inputs = [assembly, "--samplesheet", "sheet.tsv", "--force", *options]
        self.check(["plan", *inputs, "-o", "plan.json"], folder)
        self.make_index(folder, rng)
        self.check([*inputs, "-o", "plain", *self.threads(rng)], folder)
        self.check([*inputs, "-o", "indexed", *(self.index(rng, folder) or self.index(rng, folder)),
                    *self.threads(rng)], folder)
        self.check(["--plan", "plan.json", "-o", "one", *self.index(rng, folder),
                    *self.threads(rng)], folder)
        self.gather(folder, tasks, rng)
        self.compare(seed, folder, tasks)
        maker.classes.add("one task" if tasks == 1 else "several tasks")
        self.met.update(maker.classes)
        shutil.rmtree(folder)

    @staticmethod
    def threads(rng):
        return ["-t", str(rng.choice((1, 2, 3)))]

    def make_index(self, folder, rng):
        """Makes the index of the plan, unless there is nothing to index."""
        done = subprocess.run([self.velk_run, "index", "--plan", "plan.json", "-o", "index", "--force",
                               *self.threads(rng)], cwd=folder, stderr=subprocess.PIPE, check=False)
        if done.returncode != 0 and not done.stderr.endswith(b"[ERROR]: there is nothing to index\n"):
            sys.exit(f"{folder}: no index: {done.stderr.decode()}")
        self.met["index" if done.returncode == 0 else "nothing to index"] += 1

    @staticmethod
    def index(rng, folder):
        """The options of a call with the index, or of one without."""
        index = os.path.join(folder, "index")
        return rng.choice(([], ["--index", index])) if os.path.exists(index) else []

    def gather(self, folder, tasks, rng):
        """Runs all tasks in any order, some from elsewhere, and gathers their shares."""
        shares = []
        for task in rng.sample(range(tasks), tasks):
            share = os.path.join(folder, f"share.{task}")
            where, root = (("/", ["--inputs-root", folder]) if rng.random() < 0.3 else
                           (folder, []))
            self.check(["task", os.path.join(folder, "plan.json"), str(task), "-o", share, *root,
                        *self.index(rng, folder), *self.threads(rng)], where)
            shares.append(share)
        rng.shuffle(shares)
        self.check(["gather", "plan.json", *shares, "-o", "gathered", *self.index(rng, folder),
                    *self.threads(rng)], folder)

    def compare(self, seed, folder, tasks):
        plain, indexed, one, gathered = (result(os.path.join(folder, name))
                                         for name in ("plain", "indexed", "one", "gathered"))
        for kind, (files, summary) in (("plain", plain), ("indexed", indexed),
                                       ("gathered", gathered)):
            for name in sorted(files.keys() | one[0].keys()):
                if files.get(name) != one[0].get(name):
                    sys.exit(f"seed {seed}: {folder}/{kind}/{name} differs from that in one")
            if summary != one[1]:
                sys.exit(f"seed {seed}: {folder}/{kind}/summary.json differs from that in one")
        found = one[1]["results"]["reads_found"]
        self.met["something found" if found else "nothing found"] += 1
        if one[1]["results"]["names_in_several_libraries"]:
            self.met["names in several libraries"] += 1
        self.met["tasks"] += tasks
        self.met["reads found"] += found


def main():
    velk_run, seeds = sys.argv[1:]
    first, last = (int(number) for number in seeds.split("-"))
    comparison = Comparison(velk_run)
    for seed in range(first, last + 1):
        comparison.run(seed)
    print(f"{last - first + 1} runs, no difference; " + ", ".join(
        f"{name} {count}" for name, count in sorted(comparison.met.items())))


if __name__ == "__main__":
    main()
