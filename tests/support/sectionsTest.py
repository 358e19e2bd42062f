#!/usr/bin/env python3
"""Checks that sections come back as they were written: contents of random, awkward pieces."""
import pathlib
import random
import tempfile
import unittest

import sections

PIECES = [b"--- ", b"=== ", b"-", b"=", b"\\", b" ", b"\n", b"\r", b"a", b"r", b"x41", b"\t",
          b"\0", b"\v", b"\x85", b"\xff"]


class Sections(unittest.TestCase):
    def test_round_trip(self):
        chance = random.Random(1)
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "some.txt")
            for _ in range(2000):
                contents = [b"".join(chance.choices(PIECES, k=chance.randrange(9)))
                            for _ in range(3)]
                written = [("name = x", sections.encoded(content)) for content in contents]
                sections.write(path, "# About it.\n", written)
                comment, found = sections.read(path)
                self.assertEqual(("# About it.\n", written), (comment, found))
                self.assertEqual(contents, [sections.decoded(text) for _, text in found])

    def test_round_trip_of_groups(self):
        awkward = sections.encoded(b"=== a\n--- b\n== c\n")
        front = ("# About all.\n", [("input x", awkward)])
        groups = {"one": ("# About one.\n", [("text", awkward), ("none", "")]), "two": ("", [])}
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "some.txt")
            sections.write_groups(path, front, groups)
            self.assertEqual((front, groups), sections.read_groups(path))
            path.write_text("=== one\n=== one\n")
            with self.assertRaises(ValueError):
                sections.read_groups(path)

    def test_plain_text_stays_readable(self):
        self.assertEqual("@r0\nACGT\n+\n\tI~\n", sections.encoded(b"@r0\nACGT\n+\n\tI~\n"))
        self.assertEqual("a\\x20\n\\x2d-- b\\r\n\\x3d== \\\\\\\n",
                         sections.encoded(b"a \n--- b\r\n=== \\"))

    def test_unknown_escape_is_refused(self):
        for text in ("\\n\n", "a\\\nb\n", "\\x4\n"):
            with self.assertRaises(ValueError):
                sections.decoded(text)


if __name__ == "__main__":
    unittest.main()
