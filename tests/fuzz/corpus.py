#!/usr/bin/env python3
"""Takes fuzz corpora out of their text files, and puts further inputs in.

    corpus.py unpack TARGET FOLDER         writes every input to a file of the folder
    corpus.py add TARGET NAME FILE         adds the file's bytes under that name

Each file of tests/fuzz/corpus holds the corpora of some targets: a group for each target, and in it a
section for each input (tests/support/sections.py).
"""
import pathlib
import shutil
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "support"))
import sections  # noqa: E402


def corpus_of(target):
    """The file that holds the target's corpus, and what is in it."""
    for path in sorted((HERE / "corpus").glob("*.txt")):
        front, groups = sections.read_groups(path)
        if target in groups:
            return path, front, groups
    sys.exit(f"no file of tests/fuzz/corpus has a target {target}")


def unpack(target, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, text in corpus_of(target)[2][target][1]:
        (folder / name).write_bytes(sections.decoded(text))


def add(target, name, file):
    path, front, groups = corpus_of(target)
    comment, inputs = groups[target]
    if name in dict(inputs):
        sys.exit(f"{target} has an input {name} already")
    inputs.append((name, sections.encoded(file.read_bytes())))
    groups[target] = comment, sorted(inputs)
    sections.write_groups(path, front, groups)


def main(arguments):
    if len(arguments) == 3 and arguments[0] == "unpack":
        unpack(arguments[1], pathlib.Path(arguments[2]))
    elif len(arguments) == 4 and arguments[0] == "add":
        add(arguments[1], arguments[2], pathlib.Path(arguments[3]))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
