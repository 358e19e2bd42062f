#!/usr/bin/env python3
"""Measures what each step of velk's speed brings, and prints a table of ratios: velk without the
step by velk as it is.

    steps.py --programs FOLDER --data FOLDER [--scales small,medium] [--rounds N] [--threads N]

The programs are velk and makeData of one build and, for every steps/STEP.patch, without.STEP, which
is velk built with that patch. A patch begins with two lines: `# ` and a sentence that says what its
velk does not do, then `# run: ` and the run that is measured: `none`, with one read, which leaves
the making of the index; `none -m 1000000`, the same with a table that has to grow; `plain`, with all
reads of plain files; `plain -k 15`, the same of k-mers too short for the gram filter.
"""

import hashlib
import os
import pathlib
import sys
from dataclasses import dataclass

from datasets import SCALES, Dataset
from measure import Rounds, options_parser, run
from table import velk_command

RUNS = ("none", "none -m 1000000", "plain", "plain -k 15")


@dataclass
class Step:
    name: str
    without: str  # what velk does not do without it
    run: str  # one of RUNS

    @property
    def program(self):
        return f"without.{self.name}"

    @property
    def compared(self):
        """The run whose reads are compared: the same with all reads."""
        return self.run.replace("none", "plain")


def read_steps():
    """All steps, those of the index first."""
    steps = []
    for path in sorted((pathlib.Path(__file__).resolve().parent / "steps").glob("*.patch")):
        without, run_line = path.read_text(encoding="ascii").split("\n")[:2]
        steps.append(Step(path.stem, without.removeprefix("# "), run_line.removeprefix("# run: ")))
    return sorted(steps, key=lambda step: RUNS.index(step.run))


def run_command(name, programs, data, threads, program="velk"):
    """The command of one of RUNS: a library, and options besides."""
    library, *arguments = name.split(" ")
    command = velk_command(programs, data, f"{library}.lib", threads, program)
    return " ".join([command, *arguments])


def found(data):
    """The checksum of the reads found by the last run."""
    with open(data.path("found.fa"), "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def require_same_reads(steps, programs, data, threads):
    """Raises RuntimeError unless velk finds the same reads, byte for byte, without each step."""
    for name in sorted({step.compared for step in steps}):
        run(run_command(name, programs, data, threads), data.folder)
        if os.path.getsize(data.path("found.fa")) == 0:
            raise RuntimeError(f"{data.name}: no read is found")
        expected = found(data)
        for step in (step for step in steps if step.compared == name):
            run(run_command(name, programs, data, threads, step.program), data.folder)
            if found(data) != expected:
                raise RuntimeError(f"{data.name}: other reads are found without {step.name}")


def measure(steps, programs, data, options):
    """Returns the costs, by name of a run and by name of a step."""
    rounds = Rounds(data)
    commands = {}
    for name in RUNS:
        commands[name] = run_command(name, programs, data, options.threads)
        for step in steps:
            if step.run == name:
                commands[step.name] = run_command(name, programs, data, options.threads,
                                                  step.program)
    rounds.run(commands, options.rounds)
    return rounds


def print_row(fields):
    print("| " + " | ".join(fields) + " |")


def print_table(steps, costs):
    """costs: name of a scale -> its Rounds."""
    print_row(["Step", "Without it", "run",
               *(f"{scale}, {kind}" for scale in costs for kind in ("processor", "wall"))])
    print("|---|---|---|" + "---|---|" * len(costs))
    for name in RUNS:
        print_row(["", "velk as it is", name, *(
            f"{seconds:.2f} s" for rounds in costs.values()
            for seconds in (rounds.processor(name), rounds.wall(name)))])
        for step in steps:
            if step.run == name:
                print_row([step.name, step.without, name, *(
                    f"{ratio:.2f}" for rounds in costs.values()
                    for ratio in (rounds.processor(step.name) / rounds.processor(name),
                                  rounds.wall(step.name) / rounds.wall(name)))])


def main():
    options = options_parser("Measures what each step of velk's speed brings.",
                             "small,medium").parse_args()
    steps = read_steps()
    costs = {}
    for name in filter(None, options.scales.split(",")):
        data: Dataset = SCALES[name]
        print(f"{name}: data", file=sys.stderr)
        data.make(options.programs, options.data)
        print(f"{name}: comparing the reads found", file=sys.stderr)
        require_same_reads(steps, options.programs, data, options.threads)
        print(f"{name}: measuring, load {os.getloadavg()[0]:.1f}", file=sys.stderr)
        costs[name] = measure(steps, options.programs, data, options)
    print_table(steps, costs)


if __name__ == "__main__":
    main()
