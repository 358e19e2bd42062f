#!/usr/bin/env python3
"""Checks that sources include downwards only: a file may include what stands on lower floors and,
on its own floor, its own folder. Usage: floors.py ROOT"""
import pathlib
import re
import sys

# From the ground up; a folder stands for those of its files that are not named.
FLOORS = [
    ["driver"],
    ["libinfo", "contig", "kmer"],
    ["kmer/fetchKmers", "kmer/fillIndex", "kmer/indexer", "kmer/sideIndex"],
    ["streaming/readBuffer"],
    ["placement"],
    ["streaming"],
    ["driver/gapReport", "driver/main"],
    ["check"],
]
FLOOR_OF = {name: number for number, floor in enumerate(FLOORS) for name in floor}
FOLDERS = sorted({name.split("/")[0] for name in FLOOR_OF})


def floor_of(file):
    """The floor of "folder/name.ext", from 0."""
    return FLOOR_OF.get(file.rsplit(".", 1)[0], FLOOR_OF[file.split("/")[0]])


def main(root):
    files = [path for folder in FOLDERS for path in sorted((root / folder).glob("**/*.[ch]*"))]
    wrong = []
    for path in files:
        file = path.relative_to(root).as_posix()
        for included in re.findall(r'^\s*#\s*include\s*"(.*?)"', path.read_text(), re.MULTILINE):
            if not (root / included).is_file() or included.split("/")[0] not in FOLDERS:
                wrong.append(f'{file}: "{included}" is no path from the root to a source')
                continue
            here, there = floor_of(file), floor_of(included)
            if there > here or (there == here and included.split("/")[0] != file.split("/")[0]):
                wrong.append(f'{file} (floor {here}) includes "{included}" (floor {there})')
    print("\n".join(wrong) or f"{len(files)} files include downwards only")
    return 1 if wrong or not files else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
