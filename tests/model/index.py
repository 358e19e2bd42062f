"""The k-mer key, the sizes of the hash set, and the index of the contigs' k-mers.

Look-ups go through a dict.  Only the sizes of the table show outside, so only
they are modelled: size, count, max and the moments at which the table grows.
"""

import math

import number

MOST_SLOTS = 2 ** 40
DOUBLING_LIMIT = 0x3FFFFFFF

# Base codes as digits: A 0, C 1, G 2, T 3, and 0 for every other byte, ...
CODE = bytes(b"0123"[b"ACGT".find(bytes([c]).upper())] if bytes([c]).upper() in
             (b"A", b"C", b"G", b"T") else ord("0") for c in range(256))
# ... whose code is 4: a 1 one place higher, that is in the low bit of the base before it.
OTHER = bytes(ord("0") if bytes([c]).upper() in (b"A", b"C", b"G", b"T") else ord("1")
              for c in range(256))


def pack(window):
    """The 64-bit key of a k-mer: two bits a base, other letters folded as code 4."""
    if not window:
        return 0
    codes = int(window.translate(CODE), 4)
    others = int(window.translate(OTHER), 4)
    return (codes | others << 2) & number.U64


def is_prime(n):
    """The sizing test; it lets some odd composites pass, squares of primes among them."""
    if n < 4:
        return True
    if n % 2 == 0:
        return False
    limit = int(number.to_float(math.sqrt(number.to_float(n))))
    divisor = 3
    while divisor < limit:
        if n % divisor == 0:
            return False
        divisor += 2
    return True


def find_next_prime(n):
    if n % 2 == 0:
        n += 1
    while not is_prime(n):
        n += 2
    return n


class OutOfMemory(Exception):
    pass


class HashSet:
    def __init__(self, init_size, load_factor):
        if init_size > MOST_SLOTS:
            raise OutOfMemory()
        self.size = find_next_prime(init_size) if init_size > 2 else 3
        self.count = 0
        if math.isnan(load_factor) or load_factor >= 1:
            load_factor = 0.75
        elif load_factor <= 0:
            load_factor = 0.25
        self.load_factor = load_factor
        self.max = min(int(self.limit(self.size)), self.size - 1)
        self.places = {}  # key -> (scaffold, contig, offset), or None once repeated

    def limit(self, size):
        """size times load factor in single precision."""
        return number.to_float(number.to_float(size) * self.load_factor)

    def enlarge(self, more):
        if (self.count + more) / self.load_factor > MOST_SLOTS:
            raise OutOfMemory()
        size = self.size
        while True:
            size = size * 2 if size < DOUBLING_LIMIT else size + DOUBLING_LIMIT
            if size > MOST_SLOTS:
                raise OutOfMemory()
            size = find_next_prime(size)
            if number.to_float(self.count + more) <= self.limit(size):
                break
        self.size = size
        self.max = min(int(self.limit(size) + 0.5), size - 1)

    def add(self, key, place, world):
        if key in self.places:
            self.places[key] = None
            return
        if self.count + 1 > self.max:
            world.say(b"old set->size: ", self.size, b"\n")
            self.enlarge(1)
            world.say(b"new set->size: ", self.size, b"\n")
        self.places[key] = place
        self.count += 1


def make_hash_set(world, parameters):
    try:
        return HashSet(parameters.init_size, parameters.load_factor)
    except OutOfMemory:
        world.end(1, b"Out of memory! Line: 0. Function: init_hashset\n")


def index_contigs(world, parameters, assembly, hash_set):
    """Add every k-mer of every contig that is long enough."""
    k = parameters.kmer
    shortest = parameters.contig_len & 0xFFFFFFFF
    try:
        for s, scaffold in enumerate(assembly.scaffolds):
            for c, contig in enumerate(scaffold.contigs):
                seq = contig.seq
                if len(seq) < shortest:
                    continue
                for p in range(len(seq) - k + 1):
                    hash_set.add(pack(seq[p:p + k]), (s, c, p), world)
    except OutOfMemory:
        world.end(1, b"Out of memory! Line: 0. Function: enlarge_hashset.\n")


class Lookup:
    """Finds the places of a read's k-mers that occur once in the contigs."""

    def __init__(self, kmer, places):
        self.kmer = kmer
        self.places = places
        self.known = {}  # window -> place or None; the same window is packed once

    def unique_hits(self, read):
        """(offset in the read, (scaffold, contig, offset)) of every unique k-mer, in order."""
        k = self.kmer
        known = self.known
        for i in range(len(read) - k + 1):
            window = read[i:i + k]
            if window in known:
                place = known[window]
            else:
                place = known[window] = self.places.get(pack(window))
            if place is not None:
                yield i, place
