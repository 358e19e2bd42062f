#!/usr/bin/env python3
"""The time of one run with one thread against that of its tasks on a Slurm of two nodes of one
processor, by the job array, and what the plan said before. The machine should have nothing else to do.
Slurm looks for jobs as often as it does by default.

    speed.py VELK_RUN ROOT FOLDER [ROUNDS]      FOLDER: of scaffolds.fa, sheet.tsv and its files

Prints seconds, each the median of the rounds; ends with status 1 where the results differ.
"""

import datetime
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from privateSlurm import PrivateSlurm
from workflow import result

DATA = ["scaffolds.fa", "--samplesheet", "sheet.tsv", "-t", "1"]


def timed(call):
    start = time.monotonic()
    call()
    return time.monotonic() - start


class Speed:
    def __init__(self, velk_run, root, slurm, out):
        self.velk_run, self.root, self.slurm, self.out = velk_run, root, slurm, out
        os.symlink(velk_run, os.path.join(out, "velk-run"))
        self.environment = dict(slurm.environment, PATH=f"{out}:{slurm.environment['PATH']}")
        self.plan = os.path.join(out, "plan.json")

    def call(self, *arguments):
        subprocess.run([self.velk_run, *arguments, "--quiet"], check=True)

    def array(self):
        subprocess.run([os.path.join(self.root, "workflow/jobArray"), self.plan,
                        os.path.join(self.out, "found")], env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)
        self.slurm.finish_jobs()

    def stages(self):
        """Seconds of the jobs, as Slurm has them: of the array from its first start to its last end."""
        spans = {}
        for name, facts in self.slurm.jobs().items():
            start, end = (datetime.datetime.fromisoformat(facts[key]).timestamp()
                          for key in ("StartTime", "EndTime"))
            stage = name.split(".")[0]
            earlier = spans.get(stage, (start, end))
            spans[stage] = min(start, earlier[0]), max(end, earlier[1])
        return {stage: end - start for stage, (start, end) in spans.items()}

    def round(self):
        for name in ("one", "found", "found.shares"):
            shutil.rmtree(os.path.join(self.out, name), ignore_errors=True)
        times = {"plan": timed(lambda: self.call("plan", *DATA, "-o", self.plan)),
                 "one run": timed(lambda: self.call(*DATA, "-o", os.path.join(self.out, "one"))),
                 "two nodes": timed(self.array)}
        stages = self.stages()
        for stage, seconds in stages.items():
            times[f"of them {stage}"] = seconds
        times["of them waiting for jobs"] = times["two nodes"] - sum(stages.values())
        one, found = (os.path.join(self.out, name) for name in ("one", "found"))
        if result(one) != result(found):
            sys.exit(f"the results differ: {one}, {found}")
        with open(os.path.join(found, "summary.json"), encoding="utf-8") as file:
            for phase, seconds in json.load(file)["seconds"].items():
                times[f"{phase}, summed over tasks"] = seconds
        return times


def main():
    velk_run, root, folder = (os.path.abspath(path) for path in sys.argv[1:4])
    rounds = int(sys.argv[4]) if len(sys.argv) > 4 else 3
    os.chdir(folder)
    place = tempfile.mkdtemp(prefix="velk.speed.", dir=folder)
    os.chmod(place, 0o755)
    os.mkdir(os.path.join(place, "slurm"))
    with PrivateSlurm(os.path.join(place, "slurm"), in_haste=False) as slurm:
        speed = Speed(velk_run, root, slurm, place)
        measured = [speed.round() for _ in range(rounds)]
    done = subprocess.run([velk_run, "plan", *DATA, "-o", speed.plan], check=True, text=True,
                          stderr=subprocess.PIPE)
    for name in measured[0]:
        print(f"{statistics.median(times[name] for times in measured):8.1f}  {name}")
    print(re.search("One run takes.*", done.stderr)[0])
    shutil.rmtree(place)


if __name__ == "__main__":
    main()
