"""System calls that fail: each one that a small run makes, in each way, by strace."""

import collections
import os
import re
import shutil
import subprocess
import tempfile

import runs

ERRORS = ("EIO", "ENOSPC", "EINTR", "EMFILE", "EAGAIN")
# Calls and the errors they fail with.
FAULTS = {**{call: ERRORS for call in ("openat", "read", "write", "writev", "close", "clone3",
                                       "clone", "newfstatat", "lseek")},
          **{call: ("ENOMEM",) for call in ("mmap", "mprotect")},
          "clock_nanosleep": ("EINTR",)}
# An early call of main(): all in front of it that may fail are the loader's.
MAIN = "rt_sigaction(SIGPIPE"
RAW_BLOCK = 128 << 10  # bytes of a gzip file that are read at once

Call = collections.namedtuple("Call", "name number text")  # number: from 1, the loader's included


def strace(log, *options):
    return ["strace", "-f", "-qq", "--seccomp-bpf", "-o", log, *options]


def is_allowed():
    """Whether there is a strace that may trace and inject."""
    if not shutil.which("strace"):
        return False
    done = subprocess.run(strace("/dev/null", "-e", "inject=close:error=EIO:when=1", "true"),
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return done.returncode in (0, 1)


def calls_of(bench, scenario):
    """The calls that the main thread makes in main() and that can be made to fail, in order."""
    log = tempfile.mktemp(dir=bench.folder)
    ended = bench.run(scenario, strace(log, "-e", "trace=rt_sigaction," + ",".join(FAULTS)))
    if ended.status != scenario.status:
        raise SystemExit("%s under strace: status %r" % (scenario.name, ended.status))
    with open(log) as file:
        lines = [line.split(None, 1) for line in file]
    os.unlink(log)
    main_thread = lines[0][0]
    found, counts, in_main = [], collections.Counter(), False
    for thread, text in lines:
        in_main = in_main or text.startswith(MAIN)
        name = re.match(r"\w*", text).group()
        if thread == main_thread and name in FAULTS:
            counts[name] += 1
            if in_main:
                found.append(Call(name, counts[name], text.strip()))
    if not found:
        raise SystemExit(scenario.name + ": no call of main() in the trace")
    return found


def chosen(calls, short):
    """The calls to fail: not a failure's own message, nor most pieces of others and most naps."""
    kept, passed = [], collections.Counter()
    for call in calls:
        if "[ERROR]" in call.text:
            continue
        dull = "nap" if call.name == "clock_nanosleep" else \
            "message" if call.text.startswith(("write(1,", "write(2,")) else None
        passed[dull] += 1
        if dull is None or passed[dull] % (200 if short else 25) == 1:
            kept.append(call)
    return kept


def one(bench, scenario, call, error):
    """What became of the run; None when it did not make the call."""
    log = tempfile.mktemp(dir=bench.folder)
    inject = "inject=%s:error=%s:when=%d" % (call.name, error, call.number)
    ended = bench.run(scenario, strace(log, "-e", "trace=" + call.name, "-e", inject))
    with open(log, errors="replace") as file:
        met = "(INJECTED)" in file.read()
    os.unlink(log)
    return (bench.judge(scenario, ended), ended) if met else None


def inject_ahead(bench, pool, table):
    """Threads beside the workers that cannot be started, and files that cannot be read on while they
    are inflated ahead."""
    scenario = runs.ahead(bench)
    reads = [name for name in scenario.files if name.endswith(".gz")]
    threads = sum(call.name == "clone3" for call in calls_of(bench, scenario))
    injections = [("clone3", "thread %d of %d, and later ones" % (number, threads), (), "EAGAIN",
                   "%d+" % number) for number in range(threads - len(reads) + 1, threads + 1)]
    for name in reads:
        last = len(scenario.files[name]) // RAW_BLOCK + 2
        injections += [("read", "read %d of %s" % (number, name), ("-P", name), "EIO", str(number))
                       for number in range(1, last + 1)]

    def run(injection):
        call, _, paths, error, when = injection
        log = tempfile.mktemp(dir=bench.folder)
        inject = "inject=%s:error=%s:when=%s" % (call, error, when)
        ended = bench.run(scenario, strace(log, *paths, "-e", "trace=" + call, "-e", inject))
        with open(log, errors="replace") as file:
            met = "(INJECTED)" in file.read()
        os.unlink(log)
        return met, ended

    for (call, what, *_), (met, ended) in zip(injections, pool.map(run, injections)):
        outcome = bench.judge(scenario, ended)
        if call == "clone3" and outcome != runs.RIGHT or call == "read" and outcome == runs.RIGHT:
            outcome = runs.WRONG
        if not met:
            raise SystemExit("%s: %s was not met" % (scenario.name, what))
        table.add(call + ", ahead", "%s: %s" % (scenario.name, what), outcome, ended)


def inject(bench, pool, table, short):
    if not is_allowed():
        print("SKIPPED: failing system calls, strace is missing or may not trace here", flush=True)
        return
    kinds = [(False, True, True)] if short else \
        [(False, True, True), (True, True, False), (False, False, False), (True, False, True)]
    for scenario in [runs.refused(bench)] + [runs.small(bench, *kind) for kind in kinds]:
        faults = [(call, error) for call in chosen(calls_of(bench, scenario), short)
                  for error in FAULTS[call.name]]
        if short and scenario.status == 0:
            faults = faults[::3]
        outcomes = pool.map(lambda fault: one(bench, scenario, *fault), faults)
        for (call, error), outcome in zip(faults, outcomes):
            if outcome:
                table.add(call.name, "%s, %s with %s" % (scenario.name, call.text, error), *outcome)
    inject_ahead(bench, pool, table)
