#!/usr/bin/env python3
"""Compares the list of findings in a document with the program's own.
Usage: list.py VELK-CHECK FILE"""
import difflib
import pathlib
import subprocess
import sys


def main(program, document):
    listed = subprocess.run([program, "--list-findings"], check=True, capture_output=True,
                            text=True)
    rows = listed.stdout.splitlines()
    written = pathlib.Path(document).read_text(encoding="utf-8").splitlines()
    start = written.index(rows[0]) if rows[0] in written else len(written)
    difference = list(difflib.unified_diff(written[start:], rows, "document", "program",
                                           lineterm=""))
    print("\n".join(difference) or f"{len(rows)} lines are the same")
    return 1 if difference or len(rows) < 50 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
