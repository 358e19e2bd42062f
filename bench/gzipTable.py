#!/usr/bin/env python3
"""Measures runs on gzip files as sequencers and archives make them, and prints a table of ratios
within the rounds.

    gzipTable.py --programs FOLDER --data FOLDER [--scales small] [--rounds N] [--threads N]
                 [--mapper-rounds N] [--packers NAME,...]

Each way to pack is measured by turns with the run on the plain files: the whole run, what it takes
more of processor time, `zcat` and `igzip -dc` of the same files and, in the first N rounds of
--mapper-rounds, minimap2 with its filter; then the whole run with the files out of the page cache.
The packed files stay in the data's folder. doc/labbook.md explains the columns.
"""

import os
import shlex
import statistics
import subprocess
import sys
from dataclasses import dataclass

from measure import SCALES, Dataset, Rounds, options_parser, run
from table import mapper_command, velk_command

# Name -> shell command that packs standard input.
PACKERS = {
    "gzip -1": "gzip -1",
    "gzip -6": "gzip -6",
    "gzip -9": "gzip -9",
    "members": "split -b 20000 --filter='gzip -6'",  # one for every 20 kB
    "bgzip": "bgzip -c",
    "igzip": "igzip -2 -c",
}
LIBRARY = "gzip.lib"  # of the data, whose read files are those of plain.lib with the ending .gz


def folder_of(data, packer):
    return data.path("packed." + packer.replace(" ", ""))


def pack(data, packer):
    """Makes the packed files of a folder, which has all else of the data by links."""
    folder = folder_of(data, packer)
    stamp = os.path.join(folder, "packed")
    if os.path.exists(stamp) and os.path.getmtime(stamp) >= os.path.getmtime(data.path("options")):
        return
    os.makedirs(folder, exist_ok=True)
    for name in ("scaffolds.fa", LIBRARY):
        link = os.path.join(folder, name)
        if not os.path.lexists(link):
            os.symlink(data.path(name), link)
    script = f"{PACKERS[packer]} <$1 >{shlex.quote(folder)}/$1.gz"
    subprocess.run(f"printf '%s\\n' {data.read_files('')} |"
                   f" xargs -P 2 -n 1 bash -c {shlex.quote(script)} pack",
                   shell=True, check=True, cwd=data.folder)
    open(stamp, "w", encoding="ascii").close()


def forget_files(data, folder, ending):
    """Puts the read files out of the page cache."""
    for name in data.read_files(ending).split():
        with open(os.path.join(folder, name), "rb") as file:
            os.fsync(file.fileno())
            os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)


@dataclass
class Runs:
    """The commands of one way to pack, each with its folder."""

    data: Dataset
    packer: str
    options: object

    def __post_init__(self):
        self.packed = folder_of(self.data, self.packer)

    def commands(self, with_mapper):
        """Name -> command, to be run in the data's folder."""
        threads, files = self.options.threads, self.data.read_files(".gz")
        inside = f"cd {shlex.quote(self.packed)} && "
        velk = velk_command(self.options.programs, self.data, LIBRARY, threads)
        found = {
            "plain": velk_command(self.options.programs, self.data, "plain.lib", threads),
            "gzip": inside + velk,
            "zcat": inside + f"zcat {files} >/dev/null",
            "igzip": inside + f"for file in {files}; do igzip -dc $file >/dev/null; done",
        }
        if with_mapper:
            found["mapper"] = inside + mapper_command(threads, ".gz")
        return found

    def measure(self):
        """Returns the costs, by name; those of files out of the page cache as `cold ...`."""
        rounds = Rounds(self.data)
        for number in range(self.options.rounds):
            commands = self.commands(number < self.options.mapper_rounds)
            run(f"cat {self.data.read_files('.gz')} >/dev/null", self.packed)
            rounds.run({"gzip": commands.pop("gzip")}, 1)  # first: the mapper takes its contigs
            rounds.run(commands, 1)
            for name, folder, ending in (("plain", self.data.folder, ""), ("gzip", self.packed, ".gz")):
                forget_files(self.data, folder, ending)
                rounds.costs["cold " + name].append(
                    run(self.commands(False)[name], self.data.folder))
        return rounds

    def row(self):
        rounds = self.measure()

        def ratio(name, base, cost):
            return statistics.median(cost(a) / cost(b)
                                     for a, b in zip(rounds.costs[name], rounds.costs[base]))

        def wall(cost):
            return cost.wall

        zcat = rounds.costs["zcat"]
        extra = statistics.median((a.processor - b.processor) / c.processor for a, b, c in
                                  zip(rounds.costs["gzip"], rounds.costs["plain"], zcat))
        mapper = f"{ratio('mapper', 'gzip', wall):.2f}" if rounds.costs["mapper"] else ""
        return [self.data.name, self.packer, f"{rounds.wall('gzip'):.2f} s",
                f"{ratio('gzip', 'plain', wall):.2f}", f"{extra:.2f}",
                f"{ratio('gzip', 'zcat', wall):.2f}", f"{ratio('gzip', 'igzip', wall):.2f}", mapper,
                f"{ratio('cold gzip', 'cold plain', wall):.2f}"]


def main():
    parser = options_parser("Measures runs on gzip files of several kinds.", "small")
    parser.add_argument("--mapper-rounds", type=int, default=1)
    parser.add_argument("--packers", default=",".join(PACKERS), help="some of: %(default)s")
    options = parser.parse_args()
    rows = []
    for name in filter(None, options.scales.split(",")):
        data = SCALES[name]
        data.make(options.programs, options.data)
        for packer in options.packers.split(","):
            print(f"{name}, {packer}, load {os.getloadavg()[0]:.1f}", file=sys.stderr)
            pack(data, packer)
            rows.append(Runs(data, packer, options).row())
    print("| Data | packed by | whole run | by plain | more processor time, by zcat | by zcat |"
          " by igzip -dc | minimap2 by it | by plain, out of the cache |")
    print("|---|---|---|---|---|---|---|---|---|")
    for row in rows:
        print("| " + " | ".join(row) + " |")


if __name__ == "__main__":
    main()
