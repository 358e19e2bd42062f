#!/usr/bin/env python3
"""Checks the deliberate oddities: each "KEPT: ..." comment names its test in brackets at its end,
doc/kept.md names it too, and every test that a comment or doc/kept.md names exists.
Usage: kept.py ROOT"""
import pathlib
import re
import sys

FOLDERS = ["driver", "libinfo", "contig", "kmer", "placement", "streaming"]
# A GoogleTest, "Suite.Name", or another test that ctest knows, "group.name" ("cli name", too).
TEST = r"[A-Z]\w*\.[A-Z]\w*|(?:example|batches|docs)\.\w+|cli[ .]\w+"


def text_of(path):
    """The file, with comments that go over several lines joined into one."""
    text = re.sub(r"\s*\n\s*//\s*", " ", path.read_text())
    return re.sub(r"\(cli (\w+)\)", r"(cli.\1)", text)


def existing_tests(root):
    tests = set()
    for path in (root / "tests/cli").glob("*.cases"):
        tests.update(f"cli.{name}" for name in re.findall(r"(?m)^=== (\w+)$", path.read_text()))
    for path in (root / "tests").rglob("*.cpp"):
        for suite, name in re.findall(r"\b(?:TYPED_)?TEST(?:_[FP])?\((\w+),\s*(\w+)\)",
                                      path.read_text()):
            tests.add(f"{suite}.{name}")
    for path in (root / "tests").rglob("CMakeLists.txt"):
        tests.update(re.findall(r"\b\w+_test\((?:NAME )?(\S+)", path.read_text()))
    return tests


def main(root):
    wrong = []
    tests = existing_tests(root)
    documented = set(re.findall(f"`({TEST})`", (root / "doc/kept.md").read_text()))
    wrong += [f"doc/kept.md: no test {name}" for name in sorted(documented - tests)]
    kept = 0
    for path in sorted(file for folder in FOLDERS for file in (root / folder).glob("*.[ch]*")):
        text = text_of(path)
        file = path.relative_to(root)
        wrong += [f"{file}: no test {name}"
                  for name in re.findall(rf"\(({TEST})\)", text) if name not in tests]
        for comment in re.findall(r"KEPT:(.*)", text):
            kept += 1
            named = re.search(rf"\(({TEST})\)", comment)
            if not named:
                wrong.append(f"{file}: KEPT without the name of a test:{comment}")
            elif named[1] not in documented:
                wrong.append(f"{file}: {named[1]} is not in doc/kept.md")
    print("\n".join(wrong) or f"{kept} deliberate oddities, {len(documented)} tests in doc/kept.md")
    return 1 if wrong or not kept else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
