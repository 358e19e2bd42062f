"""A saved index as a test takes it apart, changes it and seals it again (run/savedFormat.h)."""

import hashlib
import struct

PAGE = 4096
PARTS = ["list of placeholders", "names", "scaffolds", "contigs", "placeholders of gaps", "bases",
         "text", "seeds", "ranges of seeds", "windows", "ranges of windows"]
SMALL = [0, 1, 2, 3, 4, 8, 10]  # whose sums every run takes
VERSION, BYTES, KMER, PLACES, HEADER_SUM, HEADER_END = 12, 16, 24, 200, 728, 760
PLACE = struct.Struct("<QQ32s")


class SavedIndex:
    def __init__(self, name):
        self.name = name
        with open(name, "rb") as file:
            self.data = bytearray(file.read())

    def place(self, part):
        """Offset and bytes of a part."""
        return PLACE.unpack_from(self.data, PLACES + PLACE.size * part)[:2]

    def number(self, part, at):
        """The `at`-th number of 64 bits of a part."""
        return struct.unpack_from("<Q", self.data, self.place(part)[0] + 8 * at)[0]

    def set_number(self, part, at, value):
        struct.pack_into("<Q", self.data, self.place(part)[0] + 8 * at, value)

    def seal(self):
        """Gives all parts, and the header, the sums that they have now."""
        for part in range(len(PARTS)):
            offset, size = self.place(part)
            md5 = hashlib.md5(self.data[offset:offset + size]).hexdigest().encode()
            PLACE.pack_into(self.data, PLACES + PLACE.size * part, offset, size, md5)
        self.seal_header()
        return self

    def seal_header(self):
        struct.pack_into("<32s", self.data, HEADER_SUM,
                         hashlib.md5(self.data[:HEADER_SUM]).hexdigest().encode())

    def write(self, name=None):
        with open(name or self.name, "wb") as file:
            file.write(self.data)
