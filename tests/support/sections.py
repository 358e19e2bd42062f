"""Text files that hold several contents, as the command-line cases and the fuzzers' corpora do.

A line `--- HEADING` begins a section; what follows up to the next such line is its text. Lines in
front of the first section are a comment. `decoded` turns a section's text into the bytes that it
stands for, `encoded` back:

    \\\\      a backslash
    \\r      a carriage return
    \\xHH    the byte HH: what else is not printable ASCII, tab or newline, a blank at the end of a
            line, the first dash of a line that begins like a heading
    \\       at the very end: no newline behind the last line
"""
import re

MARK = "--- "
ESCAPE = re.compile(rb"\\(\\|r|x[0-9a-f]{2}|\n\Z)?")
MEANINGS = {b"\\": b"\\", b"r": b"\r", b"\n": b""}
ESCAPES = {b"\\": b"\\\\", b"\r": b"\\r"}


def read(path):
    """Returns the comment and a list of headings with their texts, all as they stand."""
    comment, *sections = re.split(rf"(?m)^{MARK}", path.read_bytes().decode("ascii"))
    return comment, [tuple(section.split("\n", 1)) for section in sections]


def write(path, comment, sections):
    text = comment + "".join(f"{MARK}{heading}\n{text}" for heading, text in sections)
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

    text = re.sub(rb"(?m)[^\t\n -\[\]-~]|\\| $|^-(?=-- )", escape, content)
    if content and not content.endswith(b"\n"):
        text += b"\\\n"
    return text.decode("ascii")
