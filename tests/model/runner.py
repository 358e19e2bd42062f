#!/usr/bin/env python3
"""Compare the program with the model over generated runs.

    runner.py --velk PATH [--zlib PATH] A-B [--jobs N] [--keep DIR]

For every seed from A to B the run is generated twice: the program works in one
directory, the model looks at the other.  Status, both streams and every file
must agree byte by byte, no further file may appear, and inputs stay as they are.
Exit status 1 when any seed differs.

The model inflates like zlib. Of a damaged block ISA-L may hand out other bytes, so that a run with
such a file takes the program built without ISA-L, if --zlib names it.
"""

import argparse
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import tempfile

import generate
import streams
import velk_model

TIMEOUT = 60  # seconds for one run of the program

# What may differ between builds and between runs.
STDERR_VARIES = [
    (re.compile(rb"Line: \d+(\. Function: (?:init_hashset|enlarge_hashset|splitScaffold)\b"
                rb"|\tFunction: InitialScaffold\b)"), rb"Line: <n>\1"),
    (re.compile(rb"Used time: \d+s\."), rb"Used time: <n>s."),
]
NAME = rb"[^\s;|&<>]+"
STDOUT_VARIES = [
    (re.compile(rb"^Compile Date:\t[A-Z][a-z]{2} [ \d]\d \d{4}\t\d\d:\d\d:\d\d$", re.M),
     rb"Compile Date:\t<date>"),
    (re.compile(rb"(?<=^Example:\n)\S*velk (?=.*-l " + NAME + rb")(?=.*-s " + NAME
                + rb")(?=.*-m seqlength\*1/LoadFactor)(?=.*-o " + NAME + rb")(?=.*2> ?" + NAME
                + rb").*\n\S*velk (?=.*-l " + NAME + rb")(?=.*-c " + NAME
                + rb")(?=.*-m seqlength\*1/LoadFactor)(?=.*-o " + NAME + rb")(?=.*2> ?" + NAME
                + rb").*$", re.M), rb"<two examples>"),
]


def normalise(text, rules):
    for pattern, instead in rules:
        text = pattern.sub(instead, text)
    return text


def tree(directory):
    """Everything below a directory: path -> ("file", bytes), ("link", target) or ("dir",)."""
    found = {}
    for folder, folders, files in os.walk(directory):
        for name in folders + files:
            path = os.path.join(folder, name)
            short = os.path.relpath(path, directory)
            if os.path.islink(path):
                found[short] = ("link", os.fsencode(os.readlink(path)))
            elif os.path.isdir(path):
                found[short] = ("dir", b"")
            else:
                with open(path, "rb") as file:
                    found[short] = ("file", file.read())
    return found


def first_difference(program, model):
    """The first line that differs, in words."""
    ours, theirs = program.split(b"\n"), model.split(b"\n")
    for number, (a, b) in enumerate(zip(ours, theirs), 1):
        if a != b:
            return "line %d: program %r, model %r" % (number, a[:200], b[:200])
    number = min(len(ours), len(theirs)) + 1
    longer, lines = ("program", ours) if len(ours) > len(theirs) else ("model", theirs)
    return "line %d: only the %s has %r" % (number, longer, lines[number - 1][:200])


def compare(status, stdout, stderr, after, before, model):
    """A list of differences between what the program did and what the model says."""
    differences = []
    if status != model.status:
        differences.append("status: program %d, model %d" % (status, model.status))
    for what, ours, theirs, rules in (("stdout", stdout, model.stdout, STDOUT_VARIES),
                                      ("stderr", stderr, model.stderr, STDERR_VARIES)):
        ours, theirs = normalise(ours, rules), normalise(theirs, rules)
        if ours != theirs:
            differences.append("%s: %s" % (what, first_difference(ours, theirs)))
    expected = dict(before)
    for path, content in model.files.items():
        expected[os.fsdecode(path)] = ("file", content)
    for path in sorted(set(expected) | set(after)):
        ours, theirs = after.get(path), expected.get(path)
        if ours == theirs:
            continue
        if theirs is None:
            differences.append("%s: unexpected %s" % (path, ours[0]))
        elif ours is None:
            differences.append("%s: missing" % path)
        elif ours[0] != theirs[0]:
            differences.append("%s: program has a %s, model a %s" % (path, ours[0], theirs[0]))
        else:
            differences.append("%s: %s" % (path, first_difference(ours[1], theirs[1])))
    return differences


def has_damaged_block(files):
    """Whether a gzip file has a block that can't be inflated."""
    return any(content[:2] == streams.MAGIC and streams.gunzip(content)[1] == streams.DAMAGED_BLOCK
               for _, content in files.values())


def one_seed(velk, zlib, seed, keep):
    """Differences of one seed; its two directories stay in keep when there are any."""
    base = tempfile.mkdtemp(prefix="velk-model-")
    try:
        ours, theirs = os.path.join(base, "program"), os.path.join(base, "model")
        os.mkdir(ours)
        os.mkdir(theirs)
        argv = generate.generate(seed, theirs)
        generate.generate(seed, ours)
        before = tree(theirs)
        model = velk_model.run(argv, theirs)
        program = zlib if zlib and has_damaged_block(before) else velk
        try:
            done = subprocess.run([program] + argv, cwd=ours, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  timeout=TIMEOUT, check=False)
        except subprocess.TimeoutExpired:
            differences = ["no end within %d s" % TIMEOUT]
        else:
            differences = compare(done.returncode, done.stdout, done.stderr, tree(ours), before,
                                  model)
        if differences and keep:
            keep_run(base, os.path.join(keep, str(seed)), argv, model)
        return seed, differences
    except Exception as error:  # a failing model is a finding too
        return seed, ["%s: %s" % (type(error).__name__, error)]
    finally:
        shutil.rmtree(base, ignore_errors=True)


def keep_run(base, target, argv, model):
    """The run's directories, its arguments, and what the model expects."""
    shutil.rmtree(target, ignore_errors=True)
    shutil.copytree(base, target, symlinks=True)
    with open(os.path.join(target, "arguments"), "w") as file:
        file.write("".join(argument + "\n" for argument in argv))
    expected = os.path.join(target, "expected")
    os.mkdir(expected)
    files = dict(model.files)
    files["stdout"], files["stderr"] = model.stdout, model.stderr
    files["status"] = b"%d\n" % model.status
    for path, content in files.items():
        with open(os.path.join(expected, os.fsdecode(path).replace("/", "_")), "wb") as file:
            file.write(content)


def main():
    parser = argparse.ArgumentParser(description="compare velk with its model")
    parser.add_argument("--velk", required=True, help="the program")
    parser.add_argument("--zlib", help="the program built without ISA-L")
    parser.add_argument("--jobs", type=int, default=1, help="runs at a time")
    parser.add_argument("--keep", help="directory for the runs that differ")
    parser.add_argument("seeds", help="A-B, or one seed")
    options = parser.parse_args()
    first, _, last = options.seeds.partition("-")
    seeds = range(int(first), int(last or first) + 1)
    velk = os.path.abspath(options.velk)
    zlib = options.zlib and os.path.abspath(options.zlib)
    for program in filter(None, (velk, zlib)):
        if not os.access(program, os.X_OK):
            parser.error("cannot run " + program)
    keep = options.keep and os.path.abspath(options.keep)
    if keep:
        os.makedirs(keep, exist_ok=True)

    passed = failed = 0
    with concurrent.futures.ProcessPoolExecutor(options.jobs) as pool:
        waiting = set()
        upcoming = iter(seeds)
        while True:
            for seed in upcoming:
                waiting.add(pool.submit(one_seed, velk, zlib, seed, keep))
                if len(waiting) >= 4 * options.jobs:
                    break
            if not waiting:
                break
            done, waiting = concurrent.futures.wait(
                waiting, return_when=concurrent.futures.FIRST_COMPLETED)
            for future in done:
                seed, differences = future.result()
                if differences:
                    failed += 1
                    for difference in differences:
                        print("seed %d: %s" % (seed, difference), flush=True)
                else:
                    passed += 1
    print("%d passed, %d failed" % (passed, failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
