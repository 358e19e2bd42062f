#!/usr/bin/env python3
"""A slow, plain model of the whole program.

run(argv, cwd) predicts, without starting the program and without writing a file,
what a run in cwd prints, how it ends, and which bytes every file that it
creates holds afterwards.  Numbers that differ from build to build or from run to
run (source lines, seconds, the compile date) are stand-ins.
"""

import os
import sys

import assembly as assemblies
import index
import number
import options
from placement import Placer
from streaming import Streaming
from world import Ended, World


class Result:
    def __init__(self, status, stdout, stderr, files):
        self.status = status
        self.stdout = stdout
        self.stderr = stderr
        self.files = files  # path below the working directory -> bytes


def run(argv, cwd):
    """argv is without the program's name, as str or bytes."""
    world = World(cwd)
    parameters = options.Parameters()
    try:
        drive(world, parameters, [os.fsencode(argument) for argument in argv])
        status = 1 if world.damaged else 0
    except options.Help:
        world.stdout += options.usage(parameters)
        status = 1
    except Ended as ended:
        status = ended.status
    return Result(status, bytes(world.stdout), bytes(world.stderr), world.disk.files())


def check_ranges(world, p):
    for value, least, option in ((p.thread_num, 1, b"-t"), (p.kmer, 0, b"-k"),
                                 (p.cutt_edge, 0, b"-C"), (p.read_len, 0, b"-r")):
        if value < least:
            world.end(1, b"[ERROR]: ", option, b" must be at least ", least, b"\n")


def drive(world, p, argv):
    if not argv:
        raise options.Help()
    consumed = options.parse(p, argv)
    if not p.lib_file:
        world.end(1, b"Please check input lib file!\n")
    world.say(b"initSize=", p.init_size, b"\n")
    world.say(b"OverRatio=", number.show_double(p.over_ratio), b"\n")
    world.say(b"ContigLen=", p.contig_len, b"\n")
    hash_set = index.make_hash_set(world, p)
    if consumed != len(argv):
        world.end(255, b"Please check input!\n")
    check_ranges(world, p)

    libs = options.load_libraries(world, p)
    read_files = [name for lib in libs for name in lib.read_files()]
    protected = [p.lib_file, p.scaffold_file, p.contig_file] + read_files
    if p.scaffold_file or p.contig_file:
        protected.append(p.scaffold_file + b".gapsinfo")
    world.refuse_same_file(p.out_file, protected)
    found_file = world.disk.create(p.out_file)
    if found_file is None:
        world.end(1, b"Fail creat file: ", p.out_file, b"\n")

    used_sequence = p.scaffold_file or p.contig_file
    inputs = [p.lib_file, used_sequence] + read_files + [p.out_file]
    if p.scaffold_file:
        assembly = assemblies.load_scaffolds(world, p, inputs)
    elif p.contig_file:
        assembly = assemblies.load_contigs(world, p)
    else:
        world.end(1, b"Please input scaffold sequence or contig sequence!\n")

    index.index_contigs(world, p, assembly, hash_set)
    world.say(b"Fetch kmers finished!\nInitialize finished!\n")
    world.say(p.thread_num, b" threads created!\n")

    placer = Placer(p, assembly, index.Lookup(p.kmer, hash_set.places))
    streaming = Streaming(world, p, assembly, placer, found_file)
    streaming.all_libraries(libs)
    world.say(b"All the libs treated finish!\n")

    report = assemblies.side_file(world, p.scaffold_file + b".gapsinfo", inputs)
    report += gap_report(assembly, streaming.reads_in_gap)
    world.say(b"Output gaps information done!\n")
    world.say(b"lib clear done!\n")
    world.say(b"kmerHash->count: ", hash_set.count, b"\n")
    world.say(b"kmerHash->size: ", hash_set.size, b"\n")
    world.say(b"Free resource done!\n")


def gap_report(assembly, reads_in_gap):
    lines = []
    for scaffold in assembly.scaffolds:
        contigs = scaffold.contigs
        lines.append(b">%s\t%d\t%d\n" % (scaffold.name, len(contigs),
                                         (len(contigs) - 1) & 0xFFFFFFFF))
        for left, right in zip(contigs, contigs[1:]):
            lines.append(b"%d\t%d\t%d\t%d\t%d\n" % (
                number.unsigned64(right.front_gap_num),
                number.unsigned64(right.front_gap_size),
                reads_in_gap[right.front_gap_num], len(left.seq), len(right.seq)))
    return b"".join(lines)


def main():
    """Behave like the program in the current directory, files included."""
    result = run(sys.argv[1:], os.curdir)
    for path, content in result.files.items():
        with open(path, "wb") as file:
            file.write(content)
    sys.stdout.buffer.write(result.stdout)
    sys.stderr.buffer.write(result.stderr)
    return result.status


if __name__ == "__main__":
    sys.exit(main())
