#!/usr/bin/env python3
"""Takes fuzz corpora out of their text files, and puts further inputs in.

    corpus.py unpack CORPUS FOLDER         writes every input to a file of the folder
    corpus.py add CORPUS NAME FILE         adds the file's bytes under that name

A corpus, tests/fuzz/corpus/TARGET.txt, has a section for each input (tests/support/sections.py).
"""
import pathlib
import shutil
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "support"))
import sections  # noqa: E402


def unpack(corpus, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, text in sections.read(corpus)[1]:
        (folder / name).write_bytes(sections.decoded(text))


def add(corpus, name, file):
    comment, inputs = sections.read(corpus)
    if name in dict(inputs):
        sys.exit(f"{corpus} has an input {name} already")
    inputs.append((name, sections.encoded(file.read_bytes())))
    sections.write(corpus, comment, sorted(inputs))


def main(arguments):
    if len(arguments) == 3 and arguments[0] == "unpack":
        unpack(pathlib.Path(arguments[1]), pathlib.Path(arguments[2]))
    elif len(arguments) == 4 and arguments[0] == "add":
        add(pathlib.Path(arguments[1]), arguments[2], pathlib.Path(arguments[3]))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
