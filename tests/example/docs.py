#!/usr/bin/env python3
"""Runs the examples of a Markdown file or a manual page. Usage: docs.py VELK FILE [EXAMPLES]

Works in a new folder, with copies of the files in EXAMPLES, through the file's blocks in order:
    ```text file=NAME     writes the file NAME
    ```sh run             runs the commands; velk is found in the PATH
    ```sh run=PROGRAM     the same, where the PATH has PROGRAM; else passed over, with the outputs
                          below it
    ```text output=NAME   the file NAME must hold just this; "..." as last line: and more
Other blocks are passed over. In a manual page (mdoc) a block is a literal display, .Bd to .Ed, below a
comment like .\\" file=NAME."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```\w+ (run|file|output)(?:=(\S+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)
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
            if kind == "file":
                (folder / file).write_text(text)
            elif kind == "run":
                lacking = file if file and not shutil.which(file, path=path) else None
                if lacking:
                    print(f"no {lacking}, so passed over: {text}")
                    continue
                print(text, flush=True)
                subprocess.run(["bash", "-ec", text], cwd=folder, check=True,
                               env={**os.environ, "PATH": path})
            elif not lacking:
                actual = (folder / file).read_text()
                if not agrees(actual, text):
                    print(f"{document}: {file} is not as told, but:\n{actual[:2000]}")
                    return 1
                compared += 1
    print(f"{compared} files as told")
    return 0 if compared else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
