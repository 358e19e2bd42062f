#!/usr/bin/env python3
"""Damage read files in every way, and compare what the program makes of them with the model.

    damage.py --velk PATH [--library zlib|isal] [--every N] [--jobs N]

Files of three records of the twelve kinds are cut at every byte; gzip files are also
changed and followed by something.  Runs have one thread and two by turns.  Status,
both streams and all files must be the model's, and gzip damage must end with status 1
and a message.  A program that inflates with ISA-L (--library isal) may go another way
behind the beginning of a damaged block: all that is found before it must be there.
Exit status 1 when any run differs.  --every N takes each Nth damage only.
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
import runner
import streams
import velk_model

DAMAGED_FILE = re.compile(rb"^\[ERROR\]: damaged gzip file: (\S+): .+", re.M)
REFUSED = re.compile(rb".* should be (kept )?in \*\.fa or", re.M)

PLAIN = "plain text"       # cut text is sound text: what is left is read
SOUND = "sound"            # gzip without a fault, cut between members or padded
NO_GZIP = "no gzip left"   # the first two bytes are not gzip's: read as plain text
DAMAGED = "damaged"


def nature_of_file(kind, content):
    if not kind.packed:
        return PLAIN
    if content[:2] != streams.MAGIC:
        return NO_GZIP
    return SOUND if streams.gunzip(content)[1] is None else DAMAGED


def nature(kind, changed):
    """The worst of the files."""
    natures = {nature_of_file(kind, content) for content in changed.values()}
    return next(what for what in (DAMAGED, NO_GZIP, SOUND, PLAIN) if what in natures)


def lay_out(files, folder):
    for name, data in files.items():
        with open(os.path.join(folder, name), "wb") as file:
            file.write(data)


def differences(velk, library, kind, changed, threads):
    """How the program's run differs from the model's, and from what damage must lead to."""
    arguments = [*kinds.ARGUMENTS, "-t", str(threads)]
    with tempfile.TemporaryDirectory(prefix="velk-damage-") as folder:
        lay_out(kind.files(changed), folder)
        before = runner.tree(folder)
        model = velk_model.run(arguments, folder)
        try:
            done = subprocess.run([velk, *arguments], cwd=folder, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  timeout=runner.TIMEOUT, check=False)
        except subprocess.TimeoutExpired:
            return ["no end within %d s" % runner.TIMEOUT]
        after = runner.tree(folder)
    found = runner.compare(done.returncode, done.stdout, done.stderr, after, before, model)
    what = nature(kind, changed)
    if found and library == "isal" and what == DAMAGED:
        least = least_found(kind, changed, arguments)
        named = {name for name, content in changed.items()
                 if nature_of_file(kind, content) == DAMAGED} <= names_in(done.stderr)
        inputs_stay = before.items() <= after.items()
        if inputs_stay and least <= records(after["found.fa"][1]) \
                and (named or not least and REFUSED.search(done.stderr)):
            found = []
    mates_only = all(name.startswith("two") for name in changed)
    if what == DAMAGED or what == NO_GZIP and not mates_only:
        if done.returncode != 1 or not names_in(done.stderr) and not REFUSED.search(done.stderr):
            found.append("status %d, or no word about the damage" % done.returncode)
    return found


def names_in(messages):
    """The files that are said to be damaged."""
    return {os.fsdecode(name) for name in DAMAGED_FILE.findall(messages)}


def least_found(kind, changed, arguments):
    """What is found of the records that stand whole before every damaged block."""
    shortest = {}
    for name, content in changed.items():
        lines = streams.gunzip(content, to_block=True)[0].split(b"\n")[:-1]
        del lines[len(lines) // kind.record_lines * kind.record_lines:]
        shortest[name] = b"".join(line + b"\n" for line in lines)
    if not all(shortest.values()):
        return collections.Counter()
    with tempfile.TemporaryDirectory(prefix="velk-damage-") as folder:
        lay_out(kind.files(shortest), folder)
        return records(velk_model.run(arguments, folder).files[b"found.fa"])


def records(found):
    """The records of found reads, which more threads write in another order."""
    return collections.Counter((b"\n" + found.rstrip(b"\n")).split(b"\n>")[1:])


def check_sound(velk, library, kind):
    """Without damage every kind finds reads, so that a lost one shows."""
    with tempfile.TemporaryDirectory(prefix="velk-damage-") as folder:
        lay_out(kind.files(), folder)
        model = velk_model.run(kinds.ARGUMENTS, folder)
    if model.status != 0 or not model.files[b"found.fa"].count(b">") >= 3:
        raise SystemExit("%s: the sound files do not find their reads" % kind.name)
    whole = {name: kind.files()[name] for name in kind.texts}
    for threads in kinds.THREADS:
        if found := differences(velk, library, kind, whole, threads):
            raise SystemExit("%s, sound: %s" % (kind.name, "; ".join(found)))


def main():
    parser = argparse.ArgumentParser(description="compare velk with its model on damaged files")
    parser.add_argument("--velk", required=True, help="the program")
    parser.add_argument("--library", choices=("zlib", "isal"), default="zlib",
                        help="what it inflates with")
    parser.add_argument("--every", type=int, default=1, help="take each Nth damage")
    parser.add_argument("--jobs", type=int, default=2, help="runs at a time")
    options = parser.parse_args()
    velk = os.path.abspath(options.velk)

    counts = collections.Counter()
    failed = taken = 0
    with concurrent.futures.ProcessPoolExecutor(options.jobs) as pool:
        for kind in kinds.all_kinds():
            check_sound(velk, options.library, kind)
            cases = []
            for case in kinds.damages(kind):
                taken += 1
                if taken % options.every == 0:
                    cases.append(case)
            waiting = [pool.submit(differences, velk, options.library, kind, changed,
                                   kinds.THREADS[number % len(kinds.THREADS)])
                       for number, (_, changed) in enumerate(cases)]
            for (what, changed), future in zip(cases, waiting):
                counts[kind.name, nature(kind, changed)] += 1
                if found := future.result():
                    failed += 1
                    print("%s: %s: %s: %s" % (kind.name, ", ".join(changed), what,
                                              "; ".join(found)), flush=True)
    show(counts)
    print("%s: %d runs, %d differ" % (options.library, sum(counts.values()), failed))
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
