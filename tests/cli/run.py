#!/usr/bin/env python3
"""Runs command-line cases of velk and compares all that a run leaves behind, byte for byte.

    run.py --velk PATH [--rewrite] [--without REGEX] CASES...
    run.py --list [--threads] CASES...       the cases, and of them those that start threads

CASES is a file with all its cases, or FILE:NAME, one of them. A case begins with a line `=== NAME`
and a comment, what it is about; then follow sections (tests/support/sections.py):

    --- command          lines for sh, in which `velk` is the program
    --- setup            lines for sh that prepare the folder that the command runs in (optional)
    --- input NAME       a file of that folder, there before `setup`
    --- status N         the exit status
    --- stdout           what the run says; nothing when absent
    --- stderr
    --- output NAME      every file that the run creates or changes

No other file may be new, gone or changed. The inputs in front of a file's first case are those of all
its cases that have no other of the name. A heading that ends with `= TEXT` begins with the text of
that name in shared.txt, as `input s.fa = scaffold` does; what stands below it follows. --rewrite makes
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
STARTS_THREADS = re.compile(rb"threads created!|can't create worker thread")


class Case:
    """What a case says: scripts as text, all else as bytes."""

    def __init__(self, name, sections_of_it):
        self.name = name
        self.scripts = {"setup": ""}
        self.inputs = {}
        self.outputs = {}
        self.said = {"stdout": b"", "stderr": b""}
        for heading, text in sections_of_it:
            heading, _, shared = heading.partition(" = ")
            kind, _, name = heading.partition(" ")
            if kind in ("command", "setup"):
                self.scripts[kind] = text
                continue
            content = (SHARED[shared] if shared else b"") + sections.decoded(text)
            if kind == "status":
                self.said[kind] = name.encode()
            elif kind in ("stdout", "stderr"):
                self.said[kind] = content
            elif kind in ("input", "output"):
                into = self.inputs if kind == "input" else self.outputs
                into[name] = content
            else:
                raise ValueError(f"{self.name}: {heading!r} is no heading")

    def starts_threads(self):
        return any(STARTS_THREADS.search(text) for text in self.said.values())


class CaseFile:
    """A file of cases, all or one of which are meant."""

    def __init__(self, argument):
        path, _, name = argument.partition(":")
        self.path = pathlib.Path(path)
        self.front, self.groups = sections.read_groups(self.path)
        self.cases = [Case(found, self.front[1] + given)
                      for found, (_, given) in self.groups.items() if name in ("", found)]
        if not self.cases:
            raise ValueError(f"{argument}: no such case")


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


def shared_part(content, whole):
    """The longest shared text that is the content or, if not the whole is asked for, begins it."""
    fitting = [name for name, text in SHARED.items()
               if content == text or not whole and content.startswith(text)]
    return max(fitting, key=lambda name: len(SHARED[name]), default=None)


def section(heading, content, whole):
    shared = shared_part(content, whole)
    if shared is None:
        return heading, sections.encoded(content)
    return f"{heading} = {shared}", sections.encoded(content[len(SHARED[shared]):])


def expectations(before, after, said):
    """The sections that hold what was seen."""
    yield f"status {said['status'].decode()}", ""
    for name in ("stdout", "stderr"):
        if said[name]:
            yield section(name, said[name], whole=False)
    for name, (kind, content) in after.items():
        if kind == "file" and before.get(name) != (kind, content):
            yield section(f"output {name}", content, whole=True)


def rewrite(file, velk):
    for case in file.cases:
        comment, given = file.groups[case.name]
        kept = [part for part in given if part[0].split()[0] in ("command", "setup", "input")]
        file.groups[case.name] = comment, kept + list(expectations(*run(case, velk)))
    sections.write_groups(file.path, file.front, file.groups)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    task = parser.add_mutually_exclusive_group(required=True)
    task.add_argument("--velk", type=pathlib.Path)
    task.add_argument("--list", action="store_true")
    parser.add_argument("--threads", action="store_true")
    parser.add_argument("--rewrite", action="store_true")
    parser.add_argument("--without", type=re.compile, metavar="REGEX")
    parser.add_argument("cases", type=CaseFile, nargs="+", metavar="CASES")
    arguments = parser.parse_args()
    failed = 0
    for file in arguments.cases:
        if arguments.rewrite:
            rewrite(file, arguments.velk)
            continue
        for case in file.cases:
            if arguments.without and arguments.without.fullmatch(case.name):
                continue
            if arguments.list:
                if case.starts_threads() or not arguments.threads:
                    print(f"{file.path}:{case.name}")
            elif not passes(case, arguments.velk):
                print(f"FAILED: {file.path}:{case.name}")
                failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
