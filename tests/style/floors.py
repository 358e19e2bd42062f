#!/usr/bin/env python3
"""Checks that sources include downwards only: a file may include what stands on lower floors and,
on its own floor, its own folder; and that the plain engine, with which the fast one is compared,
rests on nothing of it, not even through other headers. Usage: floors.py ROOT"""
import pathlib
import re
import sys

# From the ground up; a folder stands for those of its files that are not named.
FLOORS = [
    ["driver"],
    ["libinfo", "contig", "kmer"],
    ["kmer/contigText", "kmer/contigWindows", "kmer/fetchKmers", "kmer/fetchKmersFast",
     "kmer/fetchKmersPlain", "kmer/plainIndex", "kmer/regionBuilder", "kmer/seedIndex",
     "kmer/seedIndexBuilder"],
    ["streaming/readBuffer"],
    ["placement"],
    ["streaming"],
    ["survey"],
    ["driver/gapReport", "driver/main", "driver/runFiles"],
    ["reads"],
    ["run"],
    ["report"],
    ["check", "run/main"],
]
# The plain engine, and what both engines share; all else of these folders is the fast engine.
PLAIN = ["kmer/fetchKmersPlain", "kmer/hashSet", "kmer/plainIndex"]
SHARED = ["kmer/Sequence", "kmer/contigWindows", "kmer/fetchKmers", "kmer/tableSize"]
OF_ENGINES = ["kmer", "placement"]
FLOOR_OF = {name: number for number, floor in enumerate(FLOORS) for name in floor}
FOLDERS = sorted({name.split("/")[0] for name in FLOOR_OF})


def floor_of(file):
    """The floor of "folder/name.ext", from 0."""
    return FLOOR_OF.get(file.rsplit(".", 1)[0], FLOOR_OF[file.split("/")[0]])


def includes(path):
    return re.findall(r'^\s*#\s*include\s*"(.*?)"', path.read_text(), re.MULTILINE)


def reached(root, files):
    """These files, and all that they include."""
    seen = set()
    waiting = list(files)
    while waiting:
        file = waiting.pop()
        if file not in seen and (root / file).is_file():
            seen.add(file)
            waiting += includes(root / file)
    return seen


def engine_errors(root):
    files = [path.relative_to(root).as_posix() for name in PLAIN for path in root.glob(name + ".*")]
    missing = [f"{name}: no such source" for name in PLAIN + SHARED
               if not list(root.glob(name + ".*"))]
    return missing + [f"the plain engine includes {file}" for file in sorted(reached(root, files))
                      if file.split("/")[0] in OF_ENGINES
                      and file.rsplit(".", 1)[0] not in PLAIN + SHARED]


def main(root):
    files = [path for folder in FOLDERS for path in sorted((root / folder).glob("**/*.[ch]*"))]
    wrong = engine_errors(root)
    for path in files:
        file = path.relative_to(root).as_posix()
        for included in includes(path):
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
