"""For each kind of finding an input that has it, and one that is near it and has it not.

A case is (id, spoil, near, also, near_also): functions that change a World, and the other findings
of the two. Where `near` is None the untouched World is near enough.
"""
import casesAssembly  # noqa: F401  (each fills the table)
import casesCommand  # noqa: F401
import casesLibrary  # noqa: F401
import casesReads  # noqa: F401
from table import CASES  # noqa: F401

# What needs more than a folder of files: the unit tests that do both.
ELSEWHERE = {"disk-short": "adviceTest.cpp"}
