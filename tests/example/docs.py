#!/usr/bin/env python3
"""Runs the examples of a Markdown file or a manual page. Usage: docs.py VELK FILE [EXAMPLES]

Works in a new folder, with copies of the files in EXAMPLES, through the file's blocks in order:
    ```console            a session: what stands behind "$ " is run, and both outputs must hold
                          just what stands below it, where "..." is any text
    ```text file=NAME     writes the file NAME
    ```sh run             runs the commands; velk is found in the PATH
    ```sh run=PROGRAM     the same, where the PATH has PROGRAM; else skipped, with the outputs
                          below it
    ```text output=NAME   the file NAME must hold just this; "..." as last line: and more
Other blocks are skipped. In a manual page (mdoc) a block is a literal display, .Bd to .Ed, below a
comment like .\\" file=NAME."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SESSION = "console"
BLOCK = re.compile(r"^```(?:\w+ )?(run|file|output|console)(?:=(\S+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)
DISPLAY = re.compile(r'^\.\\" (run|file|output)(?:=(\S+))?\n\.Bd -literal.*\n((?:.*\n)*?)\.Ed$',
                     re.MULTILINE)


def blocks_of(document):
    text = pathlib.Path(document).read_text()
    if document.endswith(".md"):
        return BLOCK.findall(text)
    return [(kind, file, block.replace("\\e", "\\")) for kind, file, block in DISPLAY.findall(text)]


def agrees(actual, expected):
    if expected.endswith("\n...\n"):
        return actual.startswith(expected.removesuffix("...\n"))
    return actual == expected


def steps_of(session):
    """The commands of a session, each with what it must say."""
    steps = []
    for line in session.splitlines(keepends=True):
        if line.startswith("$ "):
            steps.append([line[2:], ""])
        elif steps[-1][0].endswith("\\\n"):
            steps[-1][0] += line
        else:
            steps[-1][1] += line
    return steps


def held(session, folder, path):
    """Runs a session up to the first step that does not say what it must; whether there is none."""
    for command, shown in steps_of(session):
        done = subprocess.run(["bash", "-ec", command], cwd=folder, check=False, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, env={**os.environ, "PATH": path})
        pattern = ".*".join(re.escape(part) for part in shown.split("..."))
        if done.returncode or not re.fullmatch(pattern, done.stdout, re.DOTALL):
            print(f"{command}status {done.returncode}, not as shown, but:\n{done.stdout[:4000]}")
            return False
    return True


def main(velk, document, examples=None):
    path = os.pathsep.join([os.path.dirname(os.path.abspath(velk)), os.environ["PATH"]])
    blocks = blocks_of(document)
    compared = 0
    lacking = None
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        if examples:
            shutil.copytree(examples, folder, dirs_exist_ok=True)
        for kind, file, text in blocks:
            if kind == SESSION:
                if not held(text, folder, path):
                    return 1
                compared += len(steps_of(text))
            elif kind == "file":
                (folder / file).write_text(text)
            elif kind == "run":
                lacking = file if file and not shutil.which(file, path=path) else None
                if lacking:
                    print(f"no {lacking}, so skipped: {text}")
                    continue
                print(text, flush=True)
                subprocess.run(["bash", "-ec", text], cwd=folder, check=True,
                               env={**os.environ, "PATH": path})
            elif not lacking:
                actual = (folder / file).read_text()
                if not agrees(actual, text):
                    print(f"{document}: {file} is not as shown, but:\n{actual[:2000]}")
                    return 1
                compared += 1
    print(f"{compared} files and steps as shown")
    return 0 if compared else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
