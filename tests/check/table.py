"""The table of cases and the changes of a World that its parts share."""
from world import LIBRARY

CASES = []


def case(finding, spoil, near=None, also=(), near_also=()):
    CASES.append((finding, spoil, near or (lambda w: None), set(also), set(near_also)))


def option(letter, value):
    return lambda w: w.options.__setitem__(letter, str(value))


def options(**values):
    return lambda w: w.options.update({f"-{k}": str(v) for k, v in values.items()})


def library(text):
    return lambda w: setattr(w, "library", text)


def line(text):
    """One more line in the library file."""
    return library(LIBRARY + text + "\n")


def file_of(name, make, key="f"):
    """One more read file in the library."""
    def change(w):
        w.files[name] = make(w)
        w.library = LIBRARY + f"{key}={name}\n"
    return change
