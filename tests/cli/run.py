#!/usr/bin/env python3
"""Runs command-line cases of velk and compares all that a run leaves behind, byte for byte.

    run.py --velk PATH [--rewrite] CASE_FILE...

A case begins with a comment, what it is about; then follow sections (tests/support/sections.py):

    --- command          lines for sh, in which `velk` is the program
    --- setup            lines for sh that prepare the folder that the command runs in (optional)
    --- input NAME       a file of that folder, there before `setup`
    --- status N         the exit status
    --- stdout           what the run says; nothing when absent
    --- stderr
    --- output NAME      every file that the run creates or changes

No other file may be new, gone or changed. Contents that many cases share stand in shared.txt: a
heading `input s.fa = scaffold` takes the one of that name and has no text below it. --rewrite makes
the expectations of what is seen; read every line of them before you keep them.
"""
import argparse
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER.parent / "support"))
import sections  # noqa: E402

SECONDS = 300

# What differs from build to build or from run to run.
OPEN_TEXTS = [
    (rb"(?m)^Compile Date:\t[A-Z][a-z]{2} [ \d]\d \d{4}\t\d\d:\d\d:\d\d$",
     b"Compile Date:\tDATE\tTIME"),
    (rb"Used time: \d+s", b"Used time: Ns"),
    (rb"Line: \d+(. Function: (?:init_hashset|enlarge_hashset|splitScaffold)\b"
     rb"|\tFunction: InitialScaffold\b)", rb"Line: N\1"),
]

SHARED = {name: sections.decoded(text) for name, text in sections.read(FOLDER / "shared.txt")[1]}


class Case:
    """What a case file says: scripts as text, all else as bytes."""

    def __init__(self, path):
        self.comment, self.given = sections.read(path)
        self.scripts = {"setup": ""}
        self.inputs = {}
        self.outputs = {}
        self.said = {"stdout": b"", "stderr": b""}
        for heading, text in self.given:
            kind, _, rest = heading.partition(" ")
            name, _, shared = rest.partition(" = ")
            if kind in ("command", "setup"):
                self.scripts[kind] = text
            elif kind == "status":
                self.said[kind] = name.encode()
            elif kind in ("stdout", "stderr"):
                self.said[kind] = sections.decoded(text)
            elif kind in ("input", "output"):
                into = self.inputs if kind == "input" else self.outputs
                into[name] = SHARED[shared] if shared else sections.decoded(text)
            else:
                raise ValueError(f"{path}: {heading!r} is no heading")


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


def prepare(case, folder, options):
    for name, content in case.inputs.items():
        (folder / name).write_bytes(content)
    subprocess.run(["sh", "-e", "-c", case.scripts["setup"]], check=True, **options)


def run(case, velk):
    """Runs the case in a folder of its own. Returns the folder before, after and what was said."""
    with tempfile.TemporaryDirectory(prefix="velk-cli-") as temporary:
        programs, folder = pathlib.Path(temporary, "bin"), pathlib.Path(temporary, "run")
        programs.mkdir()
        folder.mkdir()
        (programs / "velk").symlink_to(velk.resolve())
        command = programs / "command"
        command.write_text(case.scripts["command"])
        environment = {**os.environ, "LC_ALL": "C", "PATH": f"{programs}:{os.environ['PATH']}"}
        options = {"cwd": folder, "env": environment, "stdin": subprocess.DEVNULL,
                   "timeout": SECONDS}
        prepare(case, folder, options)
        before = tree(folder)
        ended = subprocess.run(["sh", command], capture_output=True, **options)
        said = {"status": b"%d" % ended.returncode, "stdout": normalised(ended.stdout),
                "stderr": normalised(ended.stderr)}
        return before, tree(folder), said


def show_difference(name, expected, actual):
    lines = [text.decode("utf-8", "backslashreplace").splitlines(keepends=True)
             for text in (expected, actual)]
    for line in difflib.unified_diff(*lines, f"expected {name}", f"actual {name}"):
        print(line, end="" if line.endswith("\n") else "\n\\ No newline at end\n")


def passes(case, velk):
    before, after, said = run(case, velk)
    good = True
    for name, actual in said.items():
        if actual != case.said[name]:
            show_difference(name, case.said[name], actual)
            good = False
    wanted = {**before, **{name: ("file", content) for name, content in case.outputs.items()}}
    for name in sorted(wanted.keys() | after.keys()):
        expected, actual = (side.get(name, ("nothing", b"")) for side in (wanted, after))
        if actual != expected:
            print(f"{name}: expected a {expected[0]}, found a {actual[0]}")
            show_difference(name, expected[1], actual[1])
            good = False
    return good


def expectations(before, after, said):
    """The sections that hold what was seen."""
    yield f"status {said['status'].decode()}", ""
    for name in ("stdout", "stderr"):
        if said[name]:
            yield name, sections.encoded(said[name])
    for name, (kind, content) in after.items():
        if kind == "file" and before.get(name) != (kind, content):
            shared = [known for known in SHARED if SHARED[known] == content]
            yield (f"output {name} = {shared[0]}", "") if shared else (
                f"output {name}", sections.encoded(content))


def rewrite(case, velk, path):
    kept = [section for section in case.given
            if section[0].split()[0] in ("command", "setup", "input")]
    sections.write(path, case.comment, kept + list(expectations(*run(case, velk))))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--velk", type=pathlib.Path, required=True)
    parser.add_argument("--rewrite", action="store_true")
    parser.add_argument("cases", type=pathlib.Path, nargs="+", metavar="CASE_FILE")
    arguments = parser.parse_args()
    failed = 0
    for path in arguments.cases:
        case = Case(path)
        if arguments.rewrite:
            rewrite(case, arguments.velk, path)
        elif not passes(case, arguments.velk):
            print(f"FAILED: {path}")
            failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
