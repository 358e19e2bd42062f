#!/usr/bin/env python3
"""Compares the versions that programs and files state with the project's.
Usage: version.py ROOT VERSION PROGRAM..."""
import pathlib
import re
import subprocess
import sys

FILES = {
    "CHANGES.md": r"^## (\S+) \(",
    "CITATION.cff": r'^version: "(.*)"$',
    "packaging/conda/meta.yaml": r"^  version: \"(.*)\"$",
    "packaging/deb/changelog": r"^velk \((.*)\) ",
}


def main(root, version, *programs):
    stated = {}
    for name, pattern in FILES.items():
        stated[name] = re.search(pattern, (root / name).read_text(), re.MULTILINE)
    for program in programs:
        name = pathlib.Path(program).name
        option, pattern = ("-h", r"^Version:\tvelk(.*)$") if name == "velk" else (
            "--version", rf"^{name} (.*)$")
        shown = subprocess.run([program, option], capture_output=True, text=True, check=False)
        stated[name] = re.search(pattern, shown.stdout, re.MULTILINE)
    wrong = {name: match and match[1] for name, match in stated.items()
             if not match or match[1] != version}
    print("\n".join(f"{name}: {found} instead of {version}" for name, found in wrong.items()) or
          f"{len(stated)} times {version}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), *sys.argv[2:]))
