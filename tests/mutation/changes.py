"""The small changes that can be made in sources, and the order in which they are made."""

import pathlib
import random
import re
import subprocess
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

# Pattern -> what may stand in its place. Operators have blanks around them: clang-format sees to it.
CHANGES = [
    (r" < ", (" <= ", " >= ")), (r" <= ", (" < ", " > ")),
    (r" > ", (" >= ", " <= ")), (r" >= ", (" > ", " < ")),
    (r" == ", (" != ",)), (r" != ", (" == ",)),
    (r" \+ ", (" - ",)), (r" - ", (" + ",)), (r" \* ", (" + ",)), (r" / ", (" * ",)),
    (r" % ", (" / ",)), (r" \+= ", (" -= ",)), (r" -= ", (" += ",)),
    (r" << ", (" >> ",)), (r" >> ", (" << ",)),
    (r" && ", (" || ",)), (r" \|\| ", (" && ",)),
    (r"(?<=\()!(?=\w)", ("",)), (r"(?<=[^\w.])(\d+)(?=[^\w.'\"])", ("+1", "-1")),
    (r"\btrue\b", ("false",)), (r"\bfalse\b", ("true",)),
    (r"\b(break|continue)\b", ("swap",)), (r"^\s+[a-z_][\w.\->\[\]]*(\(.*\)| [-+|&]?= .*);$", ("drop",)),
]
SKIPPED = re.compile(r"^\s*(//|///|#|static_assert|assert\(|template|using|namespace|class |struct |"
                     r"friend|operator|enum |public:|private:|\}|inline constexpr bool)")


@dataclass(frozen=True)
class Change:
    file: str
    line: int  # from 0
    before: str
    after: str

    def key(self):
        return f"{self.file} | {self.before.strip()} | {self.after.strip() or '(left out)'}"

    def place(self):
        return f"{self.file}:{self.line + 1}"


def changed(line, match, new):
    """The line with one place of it changed; None where that is no change."""
    old = match[0]
    if new == "drop":
        return ""
    if new == "swap":
        new = "continue" if old == "break" else "break"
    if new in ("+1", "-1"):
        new = str(int(old) + int(new))
        if new.startswith("-"):
            return None
    return line[:match.start()] + new + line[match.end():]


def changes_of(file):
    """All changes of a source file."""
    found = []
    for number, line in enumerate((ROOT / file).read_text().split("\n")):
        code = re.sub(r'"(\\.|[^"\\])*"', lambda text: "~" * len(text[0]), line)
        code = re.sub(r"'(\\.|[^'\\])'", "~~~", code).split("  //")[0]
        if SKIPPED.match(code) or "KEPT" in line:
            continue
        for pattern, places in CHANGES:
            for match in re.finditer(pattern, code):
                for new in places:
                    after = changed(line, match, new)
                    if after is not None and after != line:
                        found.append(Change(file, number, line, after))
    return found


def chosen(folders, seed):
    """The changes of all folders, in the order in which they are made: each folder has its turn."""
    choice = random.Random(seed)
    of_folders = []
    for folder in folders:
        files = subprocess.run(["git", "ls-files", f"{folder}/*.cpp", f"{folder}/*.h"], cwd=ROOT,
                               check=True, capture_output=True, text=True).stdout.split()
        found = [change for file in files for change in changes_of(file)]
        choice.shuffle(found)
        of_folders.append(found)
    while any(of_folders):
        for found in of_folders:
            if found:
                yield found.pop()
