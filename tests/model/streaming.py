"""Reading the libraries' files in batches, and writing what was found."""

import os

import number
from streams import FASTA, FASTA_PAIR, FASTQ, FASTQ_PAIR, GzipStream, PlainStream

BATCH = 500000  # reads, or pairs, that one hand-over holds


class Streaming:
    def __init__(self, world, parameters, assembly, placer, found_file):
        self.world = world
        self.p = parameters
        self.assembly = assembly
        self.placer = placer
        self.found_file = found_file
        self.reads_in_gap = [0] * assembly.gap_sum
        self.found_in_file = 0
        self.total_found = 0
        self.buffer_num = 0
        self.reads_a = []
        self.reads_b = None

    # ----------------------------------------------------------------- batches

    def hand_over(self):
        """Let every worker take its share, then write the records worker by worker."""
        world, placer, workers = self.world, self.placer, self.p.thread_num
        world.say(b"bufferNum: ", self.buffer_num, b"\n")
        for worker in range(workers):
            records = []
            placer.found = records.append
            for j in range(worker, self.buffer_num, workers):
                if self.reads_b is None:
                    placer.scan_single(self.reads_a[j])
                else:
                    self.reads_a[j], self.reads_b[j] = placer.scan_pair(
                        self.reads_a[j], self.reads_b[j])
            self.found_in_file += len(records)
            for record in records:
                self.write(record)

    def write(self, record):
        self.reads_in_gap[record.gap_num] += 1
        self.found_file += b">%d\t%d\t%d\t%s\t%d\t%d\n%s\n" % (
            record.gap_num, number.unsigned64(record.gap_size), record.position,
            self.assembly.scaffolds[record.scaffold].name, record.front_contig,
            self.placer.insert_length, record.read)

    def slot(self, reads):
        """Make room for the entry at buffer_num; what the slot held before stays."""
        if len(reads) == self.buffer_num:
            reads.append(b"")

    def entry_done(self):
        self.buffer_num += 1
        if self.buffer_num == BATCH:
            self.hand_over()
            self.buffer_num = 0

    def flush(self):
        if self.buffer_num >= 1:
            self.hand_over()

    # ----------------------------------------------------------------- readers

    def read_plain(self, stream, shape):
        """One plain file, single-end or interleaved."""
        self.buffer_num = 0
        while not stream.ended:
            self.slot(self.reads_a)
            if self.reads_b is not None:
                self.slot(self.reads_b)
            n = self.buffer_num
            for i in range(shape.lines):
                if i == shape.keep_a:
                    self.reads_a[n] = stream.line(self.reads_a[n])
                elif i == shape.keep_b:
                    self.reads_b[n] = stream.line(self.reads_b[n])
                else:
                    stream.line(b"")
            self.entry_done()
        self.flush()

    def read_plain_mates(self, first, second, shape):
        """Two plain files in step."""
        self.buffer_num = 0
        while not first.ended and not second.ended:
            self.slot(self.reads_a)
            self.slot(self.reads_b)
            n = self.buffer_num
            for i in range(shape.lines):
                if i == shape.keep_a:
                    self.reads_a[n] = first.line(self.reads_a[n])
                    self.reads_b[n] = second.line(self.reads_b[n])
                else:
                    first.line(b"")
                    second.line(b"")
            self.entry_done()
        self.flush()

    def gzip_read(self, name, stream):
        """One line; the first read that meets the damage reports it."""
        met = stream.at_damage
        got = stream.read()
        if stream.at_damage and not met:
            self.tell_damage(name, stream.damage)
        return got

    def gzip_finish(self, name, stream):
        while self.gzip_read(name, stream):
            pass

    def tell_damage(self, name, reason):
        self.world.say(b"[ERROR]: damaged gzip file: ", name, b": ", reason, b"\n")
        self.world.damaged = True

    def read_gzip(self, name, shape):
        """One gzip file, single-end or interleaved."""
        self.buffer_num = 0
        stream = GzipStream(self.world.disk.read(name))
        while self.gzip_read(name, stream):
            self.slot(self.reads_a)
            if self.reads_b is not None:
                self.slot(self.reads_b)
            for i in range(1, shape.lines):
                self.gzip_read(name, stream)
                if i == shape.keep_a:
                    self.reads_a[self.buffer_num] = stream.kept()
                elif i == shape.keep_b:
                    self.reads_b[self.buffer_num] = stream.kept()
            self.entry_done()
        self.gzip_finish(name, stream)
        self.flush()

    def read_gzip_mates(self, name_a, name_b, shape):
        """Two files in step through zlib; the second may be plain."""
        self.buffer_num = 0
        first = GzipStream(self.world.disk.read(name_a))
        try:
            second = GzipStream(self.world.disk.read(name_b))
        except OSError as error:
            self.tell_damage(name_b, os.strerror(error.errno).encode())
            self.gzip_finish(name_a, first)
            return
        while self.gzip_read(name_a, first) and self.gzip_read(name_b, second):
            self.slot(self.reads_a)
            self.slot(self.reads_b)
            self.gzip_read(name_a, first)
            self.reads_a[self.buffer_num] = first.kept()
            self.gzip_read(name_b, second)
            self.reads_b[self.buffer_num] = second.kept()
            for name, stream in ((name_a, first), (name_b, second)):
                for _ in range(2, shape.lines):
                    self.gzip_read(name, stream)
            self.entry_done()
        self.gzip_finish(name_a, first)
        self.gzip_finish(name_b, second)
        self.flush()

    # ----------------------------------------------- one file or pair of files

    def first_character(self, name, cannot_open):
        """First character of a file, empty if it has none; None if a gzip file does not open."""
        world = self.world
        if not name.endswith(b".gz"):
            if not world.disk.opens(name):
                world.end(1, *cannot_open)
            return PlainStream(world.read(name)).line(b"")[:1]
        try:
            stream = GzipStream(world.disk.read(name))
        except OSError:
            world.say(b"Can't open file: ", name, b"\n")
            return None
        stream.read()
        first = stream.buffer[:1]
        if first not in (b">", b"@") and stream.at_damage:
            self.tell_damage(name, stream.damage)
        return first

    def find_reads(self, name_a, name_b):
        if self.placer.insert_length != 0:
            done = self.find_paired(name_a, name_b)
        else:
            done = self.find_single(name_a, name_b)
        if done:
            self.world.say(self.found_in_file, b" reads were found in gaps.\n")
            self.total_found += self.found_in_file
            self.found_in_file = 0

    def find_paired(self, name_a, name_b):
        world = self.world
        first = self.first_character(
            name_a, (b"[ERROR]: can't open input file: ", name_a, b"\n"))
        if first is None:
            return False
        if first not in (b">", b"@"):
            world.end(1, b" reads should be kept in *.fa or *.fq format!\n")
        self.reads_a, self.reads_b = [], []
        fasta = first == b">"
        gzip = name_a.endswith(b".gz")
        if name_b:
            shape = FASTA if fasta else FASTQ
            if gzip:
                self.read_gzip_mates(name_a, name_b, shape)
            else:
                if not (world.disk.opens(name_a) and world.disk.opens(name_b)):
                    world.end(1, b"[ERROR]: can't open pair-end read files\n")
                self.read_plain_mates(PlainStream(world.read(name_a)),
                                      PlainStream(world.read(name_b)), shape)
            world.say(b"Load pair-end reads in *.fa format done!\n" if fasta else
                      b"Load pair-end reads in *.fq format done!\n")
        else:
            shape = FASTA_PAIR if fasta else FASTQ_PAIR
            if gzip:
                self.read_gzip(name_a, shape)
            else:
                self.read_plain(PlainStream(world.read(name_a)), shape)
            world.say(b"Load pair-end reads in *.pair format done!\n" if fasta else
                      b"Load pari-end reads in *.pair format done!\n")
        return True

    def find_single(self, name_a, name_b):
        world = self.world
        world.say(b"load SE file:", name_a, b"!\n")
        first = self.first_character(name_a, (b"[ERROR]: can't open input file\n",))
        if first is None:
            return False
        if first not in (b">", b"@"):
            world.end(1, b"Input files should be in *.fa or *.fq format!\n")
        self.reads_a, self.reads_b = [], None
        fasta = first == b">"
        shape = FASTA if fasta else FASTQ
        if name_a.endswith(b".gz"):
            self.read_gzip(name_a, shape)
        else:
            if name_b:
                world.end(1, b"[ERROR]:the input file should be single end file!\n")
            self.read_plain(PlainStream(world.read(name_a)), shape)
        world.say(b"Find reads finished!\n")
        world.say(b"Load single-end reads in *.fa format done!\n" if fasta else
                  b"Load single-end reads in *.fq format done!\n")
        world.say(b"load SE read finished!\n")
        return True

    # ------------------------------------------------------------ all libraries

    def find_list(self, library_number, key, files, insert_length):
        for j, (name_a, name_b) in enumerate(files):
            self.placer.insert_length = insert_length
            if len(name_a) < 3:
                self.world.end(1, b"[ERROR]: read file name \"", name_a,
                               b"\" is shorter than three characters, library ",
                               library_number, b", key ", key, b"\n")
            self.find_reads(name_a, name_b)
            self.world.say(b"\tlibrary ", j + 1, b" done.\n")

    def all_libraries(self, libs):
        say = self.world.say
        say(b"Starting to find reads for each gap in ", len(libs), b" librarys.\n")
        for i, lib in enumerate(libs, 1):
            say(b"Processing library ", i, b"...\n")
            if lib.pairs:
                say(b"\t processing pair-end read files in ", len(lib.pairs),
                    b" librarys...\n")
                self.find_list(i, b"q1/f1", lib.pairs, lib.avg_ins)
                say(b"\tprocessing pair-end read files done!\n")
            if lib.single2:
                say(b"\tprocessing pair-end read files in ", len(lib.single2),
                    b" librarys...\n")
                self.find_list(i, b"p", [(name, b"") for name in lib.single2], lib.avg_ins)
                say(b"\tprocessing pair-end read files done!\n")
            if lib.single:
                say(b"\tprocessing single read files in ", len(lib.single),
                    b" librarys...\n")
                self.find_list(i, b"f", [(name, b"") for name in lib.single], 0)
                say(b"\tprocessing single read files done!\n")
            if lib.singlequal:
                say(b"\tprocessing single qual read files in ", len(lib.singlequal),
                    b" librarys... \n")
                self.find_list(i, b"q", [(name, b"") for name in lib.singlequal], 0)
                say(b"\tprocessing single read files done!\n")
        say(b"Find reads in gaps done! There are ", self.total_found,
            b" reads found. Used time: 0s.\n")
