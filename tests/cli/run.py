#!/usr/bin/env python3
"""Runs command-line cases of velk and compares all that a run leaves behind, byte for byte.

    run.py --velk PATH [--rewrite] CASE_FOLDER...

A case folder holds
    cmd            a line for sh, in which `velk` is the program
    input/         the files of the folder that cmd runs in
    setup          lines for sh that prepare that folder further (optional)
    expect/status  the exit status
    expect/stdout, expect/stderr   what the run says; nothing when absent
    expect/files/  every file that the run creates or changes

No other file may be new, gone or changed. --rewrite makes the expectations of what is seen; read
every line of them before you keep them.
"""
import argparse
import difflib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SECONDS = 300

# What differs from build to build or from run to run.
OPEN_TEXTS = [
    (rb"(?m)^Compile Date:\t[A-Z][a-z]{2} [ \d]\d \d{4}\t\d\d:\d\d:\d\d$",
     b"Compile Date:\tDATE\tTIME"),
    (rb"Used time: \d+s", b"Used time: Ns"),
    (rb"Line: \d+(. Function: (?:init_hashset|enlarge_hashset|splitScaffold)\b"
     rb"|\tFunction: InitialScaffold\b)", rb"Line: N\1"),
]


def normalised(text):
    for pattern, replacement in OPEN_TEXTS:
        text = re.sub(pattern, replacement, text)
    return text


def tree(folder):
    """All that is in the folder: what each path is and, of a file, its bytes."""
    found = {}
    for path in sorted(folder.rglob("*")):
        name = str(path.relative_to(folder))
        if path.is_symlink():
            found[name] = ("link", os.readlink(path).encode())
        elif path.is_file():
            found[name] = ("file", path.read_bytes())
        else:
            found[name] = ("folder" if path.is_dir() else "special file", b"")
    return found


def run(case, velk):
    """Runs the case in a folder of its own. Returns the folder before, after and what was said."""
    with tempfile.TemporaryDirectory(prefix="velk-cli-") as temporary:
        programs, folder = pathlib.Path(temporary, "bin"), pathlib.Path(temporary, "run")
        programs.mkdir()
        (programs / "velk").symlink_to(velk.resolve())
        folder.mkdir()
        if (case / "input").is_dir():
            shutil.copytree(case / "input", folder, symlinks=True, dirs_exist_ok=True)
        environment = {**os.environ, "LC_ALL": "C", "PATH": f"{programs}:{os.environ['PATH']}"}
        options = {"cwd": folder, "env": environment, "stdin": subprocess.DEVNULL,
                   "timeout": SECONDS}
        if (case / "setup").exists():
            subprocess.run(["sh", "-e", case.resolve() / "setup"], check=True, **options)
        before = tree(folder)
        ended = subprocess.run(["sh", case.resolve() / "cmd"], capture_output=True, **options)
        said = {"status": b"%d\n" % ended.returncode, "stdout": normalised(ended.stdout),
                "stderr": normalised(ended.stderr)}
        return before, tree(folder), said


def show_difference(name, expected, actual):
    lines = [text.decode("utf-8", "backslashreplace").splitlines(keepends=True)
             for text in (expected, actual)]
    for line in difflib.unified_diff(*lines, f"expected {name}", f"actual {name}"):
        print(line, end="" if line.endswith("\n") else "\n\\ No newline at end\n")


def passes(case, velk):
    before, after, said = run(case, velk)
    expect = case / "expect"
    good = True
    for name, actual in said.items():
        expected = (expect / name).read_bytes() if (expect / name).exists() else b""
        if actual != expected:
            show_difference(name, expected, actual)
            good = False
    wanted = {**before, **tree(expect / "files")}
    for name in sorted(wanted.keys() | after.keys()):
        expected, actual = (side.get(name, ("nothing", b"")) for side in (wanted, after))
        if actual != expected:
            print(f"{name}: expected a {expected[0]}, found a {actual[0]}")
            show_difference(name, expected[1], actual[1])
            good = False
    return good


def rewrite(case, velk):
    before, after, said = run(case, velk)
    shutil.rmtree(case / "expect", ignore_errors=True)
    seen = {name: text for name, text in said.items() if text}
    for name, (kind, content) in after.items():
        if kind == "file" and before.get(name) != (kind, content):
            seen[f"files/{name}"] = content
    for name, text in seen.items():
        path = case / "expect" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--velk", type=pathlib.Path, required=True)
    parser.add_argument("--rewrite", action="store_true")
    parser.add_argument("cases", type=pathlib.Path, nargs="+", metavar="CASE_FOLDER")
    arguments = parser.parse_args()
    failed = 0
    for case in arguments.cases:
        if arguments.rewrite:
            rewrite(case, arguments.velk)
        elif not passes(case, arguments.velk):
            print(f"FAILED: {case}")
            failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
