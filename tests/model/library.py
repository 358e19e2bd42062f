"""The read-library file."""

import number
from options import MIN_LARGE_INSERT
from world import lines_of


class Lib:
    def __init__(self):
        self.avg_ins = 0
        self.pairs = []       # [first file, second file]
        self.single2 = []     # interleaved pairs
        self.single = []      # single-end files of key f
        self.singlequal = []  # single-end files of key q

    def read_files(self):
        """Every listed name, in the order in which an output is compared with them."""
        return ([name for pair in self.pairs for name in pair]
                + self.single2 + self.single + self.singlequal)


def split_column(line):
    """(key, value) of a line, None without an equals sign."""
    if b"=" not in line:
        return None
    key, value = line.split(b"=", 1)
    if len(value) >= 3 and value.endswith(b"\r"):
        value = value[:-1]
    return key, value


def load(world, parameters):
    """The libraries; sets big_gap_len and max_insert."""
    name = parameters.lib_file
    if not world.disk.opens(name):
        world.end(255, b"Fail to open ", name, b"\n")
    world.say(b"Starting load lib file ", name, b"\n")
    content = world.read(name)

    libs = []
    max_small_insert = 0
    for line in lines_of(content):
        if b"[LIB]" in line:
            libs.append(Lib())
            continue
        column = split_column(line)
        if column is None or not libs:
            continue
        lib = libs[-1]
        key, value = column
        if key in (b"q1", b"f1"):
            lib.pairs.append([value, b""])
        elif key in (b"q2", b"f2"):
            if lib.pairs:  # without an open pair there is nothing to complete
                lib.pairs[-1][1] = value
        elif key == b"f":
            lib.single.append(value)
        elif key == b"p":
            lib.single2.append(value)
        elif key == b"q":
            lib.singlequal.append(value)
        elif key == b"avg_ins":
            lib.avg_ins = number.atoi(value)
            if max_small_insert < lib.avg_ins < MIN_LARGE_INSERT:
                max_small_insert = lib.avg_ins
            parameters.max_insert = max(parameters.max_insert, lib.avg_ins)

    world.say(b"Find lib number: ", len(libs), b"\n")
    for i, lib in enumerate(libs):
        if lib.single:
            world.say(b"single fa file number of lib ", i, b" is ", len(lib.single), b"\n")
        if lib.pairs:
            world.say(b"pair file number of lib ", i, b" is ", len(lib.pairs), b"\n")
        if lib.single2:
            world.say(b"PE in single file number of lib ", i, b" is ", len(lib.single2), b"\n")
        if lib.singlequal:
            world.say(b"single fq file number of lib ", i, b"is", len(lib.singlequal), b"\n")
    world.say(b"Lib file load finished!\n")
    parameters.big_gap_len = min(number.INT_MAX, parameters.read_len + max_small_insert)
    world.say(b"Max small insert is ", max_small_insert,
              b"\tbig gap length: ", parameters.big_gap_len,
              b"\t Max insert: ", parameters.max_insert, b"\n")
    return libs
