"""Text files that hold several contents, as the command-line cases and the fuzzers' corpora do.

A line `--- HEADING` begins a section; what follows up to the next such line is its text. Lines in
front of the first section are a comment. A line `=== NAME` begins a group of sections with a comment
of its own; what stands in front of the first group belongs to all of them. `decoded` turns a section's text into the bytes that it
stands for, `encoded` back:

    \\\\      a backslash
    \\r      a carriage return
    \\xHH    the byte HH: what else is not printable ASCII, tab or newline, a blank at the end of a
            line, the first character of a line that begins like a heading
    \\       at the very end: no newline behind the last line
"""
import re

MARK = "--- "
GROUP_MARK = "=== "
ESCAPE = re.compile(rb"\\(\\|r|x[0-9a-f]{2}|\n\Z)?")
MEANINGS = {b"\\": b"\\", b"r": b"\r", b"\n": b""}
ESCAPES = {b"\\": b"\\\\", b"\r": b"\\r"}


def parse(text):
    comment, *sections = re.split(rf"(?m)^{MARK}", text)
    return comment, [tuple(section.split("\n", 1)) for section in sections]


def read(path):
    """Returns the comment and a list of headings with their texts, all as they stand."""
    return parse(path.read_bytes().decode("ascii"))


def read_groups(path):
    """Returns what `read` does of the lines in front of the first group, and the same of each group
    by its name."""
    front, *groups = re.split(rf"(?m)^{GROUP_MARK}", path.read_bytes().decode("ascii"))
    named = [group.split("\n", 1) for group in groups]
    if len(dict(named)) < len(named):
        raise ValueError(f"{path} has two groups of one name")
    return parse(front), {name: parse(text) for name, text in named}


def composed(comment, sections):
    return comment + "".join(f"{MARK}{heading}\n{text}" for heading, text in sections)


def write(path, comment, sections):
    path.write_bytes(composed(comment, sections).encode("ascii"))


def write_groups(path, front, groups):
    text = composed(*front) + "".join(
        f"{GROUP_MARK}{name}\n{composed(*group)}" for name, group in groups.items())
    path.write_bytes(text.encode("ascii"))


def decoded(text):
    def meaning(escape):
        if escape[1] is None:
            raise ValueError(f"a backslash that begins no escape in {text!r}")
        return MEANINGS[escape[1]] if escape[1] in MEANINGS else bytes([int(escape[1][1:], 16)])

    return ESCAPE.sub(meaning, text.encode("ascii"))


def encoded(content):
    def escape(byte):
        return ESCAPES.get(byte[0], b"\\x%02x" % byte[0][0])

    text = re.sub(rb"(?m)[^\t\n -\[\]-~]|\\| $|^-(?=-- )|^=(?=== )", escape, content)
    if content and not content.endswith(b"\n"):
        text += b"\\\n"
    return text.decode("ascii")
