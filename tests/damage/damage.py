#!/usr/bin/env python3
"""Damage read files in every way, and compare what the program makes of them with the model.

    damage.py --velk PATH [--every N] [--jobs N]

Files of three records of the twelve kinds are cut at every byte; gzip files are also
changed and followed by something.  Status, both streams and all files must be the
model's, and gzip damage must end with status 1 and a message.  Exit status 1 when
any run differs.  --every N takes each Nth damage only.
"""

import argparse
import collections
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile

import kinds

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "model"))
import gunzip
import runner
import velk_model

NAMED = re.compile(rb"^\[ERROR\]: damaged gzip file: .+|.* should be (kept )?in \*\.fa or", re.M)

PLAIN = "plain text"       # cut text is sound text: what is left is read
SOUND = "sound"            # gzip without a fault, cut between members or padded
NO_GZIP = "no gzip left"   # the first two bytes are not gzip's: read as plain text
DAMAGED = "damaged"


def nature(kind, content):
    if not kind.packed:
        return PLAIN
    if content[:2] != gunzip.MAGIC:
        return NO_GZIP
    return SOUND if gunzip.gunzip(content)[1] is None else DAMAGED


def differences(velk, kind, name, content):
    """How the program's run differs from the model's, and from what damage must lead to."""
    with tempfile.TemporaryDirectory(prefix="velk-damage-") as folder:
        for file_name, data in kind.files(name, content).items():
            with open(os.path.join(folder, file_name), "wb") as file:
                file.write(data)
        before = runner.tree(folder)
        model = velk_model.run(kinds.ARGUMENTS, folder)
        try:
            done = subprocess.run([velk, *kinds.ARGUMENTS], cwd=folder, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  timeout=runner.TIMEOUT, check=False)
        except subprocess.TimeoutExpired:
            return ["no end within %d s" % runner.TIMEOUT]
        found = runner.compare(done.returncode, done.stdout, done.stderr, runner.tree(folder),
                               before, model)
    what = nature(kind, content)
    if what == DAMAGED or what == NO_GZIP and not name.startswith("two"):
        if done.returncode != 1 or not NAMED.search(done.stderr):
            found.append("status %d, or no word about the damage" % done.returncode)
    return found


def check_sound(velk, kind):
    """Without damage every kind finds reads, so that a lost one shows."""
    name, text = next(iter(kind.texts.items()))
    content = kinds.member(text) if kind.packed else text
    with tempfile.TemporaryDirectory(prefix="velk-damage-") as folder:
        for file_name, data in kind.files().items():
            with open(os.path.join(folder, file_name), "wb") as file:
                file.write(data)
        model = velk_model.run(kinds.ARGUMENTS, folder)
    if model.status != 0 or not model.files[b"found.fa"].count(b">") >= 3:
        raise SystemExit("%s: the sound files do not find their reads" % kind.name)
    if found := differences(velk, kind, name, content):
        raise SystemExit("%s, sound: %s" % (kind.name, "; ".join(found)))


def main():
    parser = argparse.ArgumentParser(description="compare velk with its model on damaged files")
    parser.add_argument("--velk", required=True, help="the program")
    parser.add_argument("--every", type=int, default=1, help="take each Nth damage")
    parser.add_argument("--jobs", type=int, default=2, help="runs at a time")
    options = parser.parse_args()
    velk = os.path.abspath(options.velk)

    counts = collections.Counter()
    failed = taken = 0
    with concurrent.futures.ProcessPoolExecutor(options.jobs) as pool:
        for kind in kinds.all_kinds():
            check_sound(velk, kind)
            cases = []
            for case in kinds.damages(kind):
                taken += 1
                if taken % options.every == 0:
                    cases.append(case)
            waiting = [pool.submit(differences, velk, kind, name, content)
                       for _, name, content in cases]
            for (what, name, content), future in zip(cases, waiting):
                counts[kind.name, nature(kind, content)] += 1
                if found := future.result():
                    failed += 1
                    print("%s: %s: %s: %s" % (kind.name, name, what, "; ".join(found)), flush=True)
    show(counts)
    print("%d files, %d differ" % (sum(counts.values()), failed))
    return 1 if failed or not counts else 0


def show(counts):
    natures = (PLAIN, SOUND, NO_GZIP, DAMAGED)
    names = list(dict.fromkeys(name for name, _ in counts))
    width = max(map(len, names))
    print("  ".join(["kind".ljust(width), *natures]))
    for name in names:
        print("  ".join([name.ljust(width)] + [str(counts[name, nature]).rjust(len(nature))
                                               for nature in natures]))


if __name__ == "__main__":
    sys.exit(main())
