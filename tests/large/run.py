"""Runs of velk, measured, and what they leave compared with what they must leave."""

import collections
import os
import subprocess
import sys

MEASURE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "measure.py")
COMPARED = 1 << 20  # bytes at a time


class Outcome:
    """Of one run: what was found of the records expected, time, memory, and what is wrong."""

    def __init__(self, name, seconds, peak_bytes):
        self.name = name
        self.seconds = seconds
        self.peak_bytes = peak_bytes
        self.found = self.expected = 0
        self.wrong = []


def run(velk, name, arguments, folder):
    with open(os.path.join(folder, "velk.log"), "wb") as log:
        printed = subprocess.run([sys.executable, MEASURE, velk] + arguments, cwd=folder, check=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=log)
    status, seconds, peak = printed.stdout.split()[-3:]
    outcome = Outcome(name, float(seconds), int(peak))
    if int(status) != 0:
        outcome.wrong.append("ended with status %s" % os.fsdecode(status))
    return outcome


def compare_records(outcome, path, records):
    """The reads found, in whatever order, against (header, read) of each."""
    with open(path, "rb") as file:
        lines = file.read().split(b"\n")
    found = collections.Counter(zip(lines[:-1:2], lines[1:-1:2]))
    expected = collections.Counter(records)
    missing = list((expected - found).elements())
    surplus = list((found - expected).elements())
    outcome.expected = len(records)
    outcome.found = len(records) - len(missing)
    if len(lines) % 2 == 0 or lines[-1]:
        outcome.wrong.append("the reads found end in the middle of a record")
    if missing or surplus:
        outcome.wrong.append("%d records missing, %d not expected" % (len(missing), len(surplus)))
    for word, some in (("missing", missing), ("not expected", surplus)):
        outcome.wrong += ["%s: %s %s" % (word, os.fsdecode(header), os.fsdecode(read[:100]))
                          for header, read in some[:3]]


def compare_file(outcome, path, pieces):
    """A file against its content, piece by piece."""
    with open(path, "rb", buffering=COMPARED) as file:
        for piece in pieces:
            at = file.tell()
            if file.read(len(piece)) != piece:
                outcome.wrong.append("%s differs from byte %d on" % (os.path.basename(path), at))
                return
        if file.read(1):
            outcome.wrong.append("%s has more bytes than it should" % os.path.basename(path))
