"""System calls that fail in small runs of a program, or at which it is killed: by strace, at every call.

A bench has `errors` (call -> errors that it may meet), `inputs` (its folder) and `run(strace)`, which
returns the ended process and the folder that it ran in; `inject(call, number, way)` of it makes one
such run.
"""

import collections
import concurrent.futures
import gzip
import os
import re
import shutil
import tempfile

PAIRS = 400  # of the example's


def first_reads(examples, mate):
    """The first reads of the example, as FASTQ text."""
    with gzip.open(os.path.join(examples, f"reads_{mate}.fq.gz"), "rb") as file:
        return b"\n".join(file.read().split(b"\n")[:4 * PAIRS]) + b"\n"


def count_calls(bench):
    """Call -> how often a run makes it."""
    log = tempfile.mktemp()
    process, folder = bench.run(["strace", "-f", "-o", log, "-e", "trace=" + ",".join(bench.errors)])
    assert process.returncode == 0, process.stderr
    shutil.rmtree(folder)
    with open(log, encoding="utf-8", errors="replace") as file:
        calls = collections.Counter(re.findall(r"^\d+ +(\w+)\(", file.read(), re.MULTILINE))
    os.unlink(log)
    return calls


def faults_of(bench, every):
    """Every so many of all faults: (call, its number, what happens at it)."""
    faults = []
    for call, count in sorted(count_calls(bench).items()):
        ways = [f"error={error}" for error in bench.errors[call]] + ["signal=KILL"]
        faults += [(call, number, way) for way in ways for number in range(1, count + 1)]
    return faults[::every]


def is_kill(way):
    return "signal=KILL" in way


def strace_with(call, number, way):
    """The command in front of a run that meets this fault."""
    return ["strace", "-f", "-o", "/dev/null", "-e", f"trace={call}", "-e",
            f"inject={call}:{way}:when={number}"]


def meet_all(bench, faults):
    """Yields each fault with what `inject` says of it, and removes the bench's inputs."""
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        yield from zip(faults, pool.map(lambda fault: bench.inject(*fault), faults))
    shutil.rmtree(bench.inputs)


def wrong_words(process):
    """What is wrong with the words of a run that failed by itself; empty when nothing is."""
    is_loader = process.returncode == 127 and b"loading shared libraries" in process.stderr
    if is_loader or any(line.startswith(b"[ERROR]: ") for line in process.stderr.splitlines()):
        return ""
    return f"status {process.returncode} and {process.stderr[:80]!r}"
