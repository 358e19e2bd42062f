#!/usr/bin/env python3
"""Compares what the manual pages name with what the programs know: the options of each program's
help with its page, the keys of the library file's loader with velk.lib.5.
Usage: names.py ROOT PROGRAM..."""
import pathlib
import re
import subprocess
import sys


def items(page, macro):
    """What the items (.It) of a page name with a macro, as in ".It Fl a , b" or ".It Cm a , b"."""
    found = set()
    for line in re.findall(rf"^\.It {macro} (.*)$", page.read_text(), re.MULTILINE):
        found.update(word for word in re.sub(r" Ar .*", "", line).split() if word != ",")
    return found


def options(program):
    """The options that a program's help names, without their first dash."""
    name = pathlib.Path(program).name
    own = name != "velk"
    verbs = ["extract", "index", "plan", "task", "gather"] if name == "velk-run" else []
    commands = [["--help" if own else "-h"]] + [[verb, "--help"] for verb in verbs]
    shown = "".join(subprocess.run([program, *command], capture_output=True, text=True,
                                   check=False).stdout for command in commands)
    pattern = r"^ +(?:-(\w),)?-(-[a-z-]+)" if own else r"^\t-(\w)()[\t ]"
    return {name for names in re.findall(pattern, shown, re.MULTILINE) for name in names if name}


def keys(source):
    """The keys that the loader of the library file compares with."""
    return set(re.findall(r'\bid == "(\w+)"', source.read_text()))


def main(root, *programs):
    manual = root / "doc/man"
    compared = [("velk.lib.5", items(manual / "velk.lib.5", "Cm"),
                 keys(root / "libinfo/libinfo.cpp"))]
    for program in programs:
        page = pathlib.Path(program).name + ".1"
        compared.append((page, items(manual / page, "Fl") - {"h"}, options(program) - {"h"}))
    wrong = 0
    for page, listed, known in compared:
        print(f"{page}: {len(listed)} names")
        for name in sorted(listed ^ known):
            print(f"    {name} is {'not known' if name in listed else 'missing'}")
        wrong += listed != known or not listed
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), *sys.argv[2:]))
