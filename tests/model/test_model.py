"""The model against worked examples.  Run: python3 -m unittest in this directory."""

import gzip
import os
import tempfile
import unittest
import zlib

import assembly
import generate
import index
import number
import options
import placement
import runner
import streaming
import streams
import velk_model
from world import World


def split(seq, contig_len=70, cutt_edge=0, read_len=100):
    p = options.Parameters()
    p.contig_len, p.cutt_edge, p.read_len = contig_len, cutt_edge, read_len
    model, scaffold, positions = assembly.Assembly(), assembly.Scaffold(), bytearray()
    assembly.split_scaffold(p, model, scaffold, seq, b"x", positions)
    contigs = [(len(c.seq), c.front_gap_num, c.front_gap_size) for c in scaffold.contigs]
    return contigs, bytes(positions), model.gap_sum


class Splitting(unittest.TestCase):
    def test_short_run_joins_the_gap(self):
        seq = b"A" * 100 + b"N" * 10 + b"C" * 30 + b"N" * 5 + b"G" * 200 + b"N" * 3
        contigs, positions, gap_sum = split(seq)
        self.assertEqual(contigs, [(100, 0, 0), (200, 0, 45)])
        self.assertEqual(positions, b"x\t0\t0\t100\nx\t1\t145\t345\n")
        self.assertEqual(gap_sum, 1)

    def test_leading_gap_is_counted_in_positions_only(self):
        self.assertEqual(split(b"NNn" + b"A" * 20), ([(20, 0, 0)], b"x\t0\t3\t23\n", 0))

    def test_trimming_begins_at_two_read_lengths_and_cuts(self):
        self.assertEqual(split(b"A" * 219, cutt_edge=10)[0], [(219, 0, 0)])
        contigs, positions, _ = split(b"A" * 220, cutt_edge=10)
        self.assertEqual(contigs, [(200, 0, 10)])
        self.assertEqual(positions, b"x\t0\t10\t210\n")

    def test_single_last_base_has_a_line_and_no_slot(self):
        contigs, positions, gap_sum = split(b"A" * 80 + b"NNN" + b"C")
        self.assertEqual(contigs, [(80, 0, 0)])
        self.assertEqual(positions, b"x\t0\t0\t80\nx\t1\t83\t84\n")
        self.assertEqual(gap_sum, 1)

    def test_every_run_behind_the_first_dropped(self):
        contigs, _, gap_sum = split(b"A" * 80 + b"N" * 3 + b"CC" + b"N" + b"GG" + b"N")
        self.assertEqual((contigs, gap_sum), ([(80, 0, 0)], 0))

    def test_short_end_is_kept_and_two_drops_add_up(self):
        seq = b"A" * 80 + b"NN" + b"CC" + b"NNN" + b"GG" + b"N" + b"TT"
        self.assertEqual(split(seq)[0], [(80, 0, 0), (2, 0, 10)])

    def test_nothing_but_gap(self):
        self.assertEqual(split(b"NNNN"), ([], b"", 0))
        self.assertEqual(split(b""), ([], b"", 0))
        self.assertEqual(split(b"NA")[0], [(1, 0, 0)])


class Keys(unittest.TestCase):
    def test_packing(self):
        for window, key in ((b"ACGT", 27), (b"TTTT", 255), (b"A", 0), (b"AN", 4), (b"NA", 16),
                            (b"acgt", 27), (b"GN", 12), (b"CN", 4), (b"TN", 12), (b"", 0),
                            (b"\xff\x00", 20)):
            self.assertEqual(index.pack(window), key, window)

    def test_long_windows_keep_their_last_bases(self):
        tail = b"GATTACA" * 5
        self.assertEqual(index.pack(b"TTTTTTTT" + tail[-32:]), index.pack(tail[-32:]))
        self.assertEqual(index.pack(b"N" + tail[-32:]), index.pack(b"A" + tail[-32:]))
        self.assertEqual(index.pack(b"N" + tail[-31:]), index.pack(b"A" + tail[-31:]))
        self.assertEqual(index.pack(b"N" + tail[-30:]), 1 << 62 | index.pack(tail[-30:]))

    def test_packing_is_shift_and_or(self):
        for window in (b"ACNNGTTNAC", b"NNNNN", b"ACGTRYKMACGTACGTACGTACGTACGTACGTACGTNNTA"):
            key = 0
            for c in window:
                key = (key << 2 | {65: 0, 67: 1, 71: 2, 84: 3}.get(c, 4)) & number.U64
            self.assertEqual(index.pack(window), key)


class Table(unittest.TestCase):
    def test_creation(self):
        for size, load, expected in ((2, 0.75, (3, 2)), (10, 0.0, (11, 2)), (8, 1.5, (9, 6)),
                                     (1048576, 0.75, (1048583, 786437)),
                                     (3, float("nan"), (3, 2))):
            made = index.HashSet(size, load)
            self.assertEqual((made.size, made.max), expected)
        self.assertEqual(index.HashSet(10, 0.0).load_factor, 0.25)

    def test_composites_that_pass(self):
        self.assertTrue(all(index.is_prime(n) for n in (0, 1, 2, 3, 5, 9, 15, 25, 35, 49)))
        self.assertFalse(any(index.is_prime(n) for n in (4, 21, 27, 45, 63)))

    def test_growth(self):
        world, table = World("."), index.HashSet(2, 0.75)
        for key in (1, 2, 1, 1, 3):
            table.add(key, (0, 0, key), world)
        self.assertEqual(table.count, 3)
        self.assertEqual((table.size, table.max), (7, 5))
        self.assertEqual(table.places, {1: None, 2: (0, 0, 2), 3: (0, 0, 3)})
        self.assertEqual(world.stderr, b"old set->size: 3\nnew set->size: 7\n")


def scaffold_of(lengths, gaps):
    """Contigs of random-looking bases with the given gaps between them."""
    model = assembly.Assembly()
    scaffold = assembly.Scaffold()
    state = 1
    for i, length in enumerate(lengths):
        contig = assembly.Contig()
        letters = bytearray()
        for _ in range(length):
            state = (state * 1103515245 + 12345) % 2 ** 31
            letters.append(b"ACGT"[state >> 16 & 3])
        contig.seq = bytes(letters)
        if i:
            contig.front_gap_num, contig.front_gap_size = i - 1, gaps[i - 1]
        scaffold.contigs.append(contig)
    model.scaffolds.append(scaffold)
    model.gap_sum = len(gaps)
    return model


class Placement(unittest.TestCase):
    def placer(self, lengths, gaps, insert=0, **changes):
        p = options.Parameters()
        for name, value in changes.items():
            setattr(p, name, value)
        model = scaffold_of(lengths, gaps)
        table = index.HashSet(10, 0.75)
        index.index_contigs(World("."), p, model, table)
        placer = placement.Placer(p, model, index.Lookup(p.kmer, table.places))
        placer.insert_length = insert
        self.records = []
        placer.found = lambda r: self.records.append(
            (r.front_contig, r.position, r.gap_num, r.gap_size, len(r.read)))
        return placer, [c.seq for c in model.scaffolds[0].contigs]

    def test_forward_positions(self):
        expected = {500: [150], 300: [-50], 200: [-100], 180: [], 760: [400], 812: []}
        for insert, positions in expected.items():
            placer, (contig, _) = self.placer([300, 100], [400], insert)
            self.assertTrue(placer.forward(contig[50:150], b"A" * 100))
            self.assertEqual(self.records, [(0, x, 0, 400, 100) for x in positions], insert)

    def test_large_insert_gives_up_at_a_small_gap(self):
        placer, (contig, _) = self.placer([300, 100], [500], 2000)
        self.assertTrue(placer.forward(contig[50:150], b"A" * 100))
        self.assertEqual(self.records, [])

    def test_single_reads(self):
        placer, (left, right) = self.placer([100, 100], [50], kmer=21)
        self.assertTrue(placer.single(left[70:] + b"C" * 70))
        self.assertTrue(placer.single(left[60:]))
        self.assertFalse(placer.single(left[50:99]))
        self.assertTrue(placer.single(b"C" * 40 + right[:60]))
        self.assertFalse(placer.single(right[:60]))
        self.assertEqual(self.records, [(0, -30, 0, 50, 100), (0, -40, 0, 50, 40),
                                        (0, 10, 0, 50, 100)])

    def test_reverse_mirror(self):
        placer, (_, contig) = self.placer([100, 300], [400], 500)
        self.assertTrue(placer.reverse(contig[150:250], b"A" * 100))
        self.assertEqual(self.records, [(0, 150, 0, 400, 100)])

    def test_reverse_right_edge_names_the_gap_after_the_anchor(self):
        placer, contigs = self.placer([100, 300, 200, 100], [40, 60, 80], 150)
        self.assertTrue(placer.reverse(contigs[1][250:] + b"C" * 50, b"A" * 100))
        self.assertEqual(self.records, [(1, -50, 1, 60, 100)])

    def test_left_edge_over_a_short_contig(self):
        placer, _ = self.placer([100, 100], [10])
        contig = b"ACGTA" * 10
        self.assertFalse(placer.map_left_edge(contig, b"C" * 40 + contig + b"C" * 10, -40))

    def test_overlap_at_the_right_edge(self):
        placer, (contig, _) = self.placer([100, 100], [10])
        self.assertFalse(placer.map_right_edge(contig, contig[80:] + b"C" * 80, 80))
        self.assertTrue(placer.map_right_edge(contig, contig[70:] + b"C" * 70, 70))
        self.assertFalse(placer.map_right_edge(contig, contig[50:99], 50))

    def test_strands(self):
        self.assertEqual(placement.reverse_complement(b"ACGTN"), b"AACGT")
        self.assertEqual(placement.reverse_complement(b"acgt"), b"ACGT")
        self.assertEqual(placement.long_reverse_complement(b"AAC", b"GGT"), (b"ACC", b"GTT"))


class Numbers(unittest.TestCase):
    def test_integers(self):
        for text, value in ((b"12x", 12), (b" -7", -7), (b"4294967295", -1), (b"x", 0),
                            (b"99999999999999999999", -1), (b"-99999999999999999999", 0)):
            self.assertEqual(number.atoi(text), value, text)

    def test_doubles(self):
        for text, shown in ((b"0.3", b"0.3"), (b"1e300", b"1e+300"), (b"0x1p-1", b"0.5"),
                            (b".5e", b"0.5"), (b"-inf", b"-inf"), (b"nan", b"nan"),
                            (b"-nan", b"-nan"), (b"0x", b"0"), (b"1234567", b"1.23457e+06"),
                            (b"-0", b"-0"), (b"1e999", b"inf")):
            self.assertEqual(number.show_double(number.atof(text)), shown, text)


class Run(unittest.TestCase):
    """Whole runs in a directory of their own."""

    def run_with(self, files, *argv):
        with tempfile.TemporaryDirectory() as directory:
            for name, content in files.items():
                with open(os.path.join(directory, name), "wb") as file:
                    file.write(content)
            return velk_model.run(argv, directory)

    CONTIGS = b">scaffold1_0\t0\n" + b"ACGGTTCAGC" * 8 + b"\n"

    def read_counts(self, name, reads, key="q", insert=0):
        result = self.run_with(
            {"lib": b"[LIB]\navg_ins=%d\n%s=%s\n" % (insert, key.encode(), name.encode()),
             "c.fa": self.CONTIGS, name: reads}, "-l", "lib", "-c", "c.fa", "-o", "o")
        return result.status, [line for line in result.stderr.split(b"\n")
                               if line.startswith(b"bufferNum")]

    def test_endings_of_plain_and_gzip_files(self):
        two = b">a\nACGT\n>b\nACGT"
        self.assertEqual(self.read_counts("r.fa", two), (0, [b"bufferNum: 2"]))
        self.assertEqual(self.read_counts("r.fa", two + b"\n"), (0, [b"bufferNum: 3"]))
        self.assertEqual(self.read_counts("r.gz", gzip.compress(two + b"\n")),
                         (0, [b"bufferNum: 2"]))
        self.assertEqual(self.read_counts("r.gz", gzip.compress(two + b"\n")[:-1])[0], 1)
        self.assertEqual(self.read_counts("r.gz", b""), (1, []))

    def test_no_arguments(self):
        result = self.run_with({})
        self.assertEqual((result.status, result.stderr), (1, b""))
        self.assertIn(b"kmer length(<=63), default=31\n", result.stdout)

    def test_sorted_scaffolds_and_report(self):
        contigs = (b">scaffold9_0\t0\nAC\n>scaffold9_1\t12\nACGT\n"
                   b">scaffold10_0\t0\nA\n>scaffold10_1\t-3\nAA\n")
        result = self.run_with({"lib": b"", "c.fa": contigs},
                               "-l", "lib", "-c", "c.fa", "-o", "o")
        self.assertEqual(result.files[b".gapsinfo"],
                         b">10\t2\t1\n1\t18446744073709551613\t0\t1\t2\n"
                         b">9\t2\t1\n0\t12\t0\t2\t4\n")

    def test_labels_of_headers(self):
        text = b">scaffold7 length=5000\nACGT\n>scaffold8 Cov=3\nAC\n>scaffold9\tx\n>b\nGG\n"
        result = self.run_with({"lib": b"", "s.fa": text}, "-l", "lib", "-s", "s.fa", "-o", "o")
        self.assertEqual(result.files[b"s.fa.contig"],
                         b">scaffold7_0\t0\nACGT\n>scaffoldcaffold8 Cov=3_0\t0\nAC\n"
                         b">scaffold9_0\t0\n>bGG\n")
        self.assertTrue(result.files[b"s.fa.gapsinfo"].endswith(b">\t0\t4294967295\n"))

    def test_a_slot_keeps_its_earlier_pair_with_mates_exchanged(self):
        world, p = World("."), options.Parameters()
        placer = placement.Placer(p, assembly.Assembly(), index.Lookup(p.kmer, {}))
        placer.insert_length = 1001
        stream = streaming.Streaming(world, p, placer.assembly, placer, bytearray())
        stream.reads_a, stream.reads_b = [], []
        batch, streaming.BATCH = streaming.BATCH, 2
        try:
            stream.read_plain(streams.PlainStream(b">1\nAAC\n>\nGGT\n" * 2),
                              streams.FASTA_PAIR)
        finally:
            streaming.BATCH = batch
        self.assertEqual(world.stderr, b"bufferNum: 2\nbufferNum: 1\n")
        # Reversed once in the first batch, and back again in the second.
        self.assertEqual((stream.reads_a, stream.reads_b), ([b"AAC", b"ACC"], [b"GGT", b"GTT"]))


class Damage(unittest.TestCase):
    def test_what_stood_before_the_damage(self):
        text = b"".join(b">r%d\nACGT%d\n" % (i, i * i) for i in range(200))
        packed = gzip.compress(text)
        self.assertEqual(streams.gunzip(packed + b"\0\0"), (text, None))
        self.assertEqual(streams.gunzip(packed + packed), (text + text, None))
        self.assertEqual(streams.gunzip(packed + b"x"),
                         (text, b"trailing bytes after the last member"))
        self.assertEqual(streams.gunzip(packed[:-5] + b"\7" + packed[-4:]),
                         (text, b"incorrect data check"))
        self.assertEqual(streams.gunzip(packed[:-1] + b"\7"), (text, b"incorrect length check"))
        content, reason = streams.gunzip(packed[:-30])
        self.assertTrue(text.startswith(content))
        self.assertEqual(reason, b"unexpected end of file")

    def test_unpacking_agrees_with_the_library(self):
        for level in (0, 1, 9):
            text = b">r\n" + b"ACGTTGCA" * 40 + bytes(range(256))
            self.assertEqual(streams.before_damage(gzip.compress(text, level)), text)
            self.assertEqual(streams.before_damage(gzip.compress(text, level), True), text)

    def test_blocks_before_the_damaged_one(self):
        packer = zlib.compressobj(9, zlib.DEFLATED, 31)
        first = packer.compress(b">r1\nACGT\n") + packer.flush(zlib.Z_FULL_FLUSH)
        packed = first + packer.compress(b">r2\nTTGA\n") + packer.flush()
        whole = gzip.compress(b">r0\nCC\n")
        for damaged, reason in ((packed[:-12], b"unexpected end of file"),
                                (first + b"\xff" + packed[len(first) + 1:],
                                 b"invalid compressed data")):
            self.assertEqual(streams.gunzip(whole + damaged, to_block=True),
                             (b">r0\nCC\n>r1\nACGT\n", reason))
        self.assertEqual(streams.gunzip(whole + whole[:-1], to_block=True),
                         (b">r0\nCC\n" * 2, b"unexpected end of file"))

    def test_files_with_a_damaged_block(self):
        whole = gzip.compress(b">r1\nACGTTGCAACGTAC\n")
        damaged = whole[:10] + b"\xff" + whole[11:]
        for content, expected in ((whole, False), (damaged, True), (whole + damaged, True),
                                  (whole[:-9], False), (whole[:-1], False), (whole + b"x", False),
                                  (whole[10:], False)):
            files = {"a": ("file", content), "b": ("link", b"a"), "c": ("dir", b"")}
            self.assertEqual(runner.has_damaged_block(files), expected)


class Generator(unittest.TestCase):
    def test_a_seed_gives_the_same_run(self):
        def once(seed):
            with tempfile.TemporaryDirectory() as directory:
                argv = generate.generate(seed, directory)
                content = {}
                for folder, _, files in os.walk(directory):
                    for name in files:
                        with open(os.path.join(folder, name), "rb") as file:
                            content[os.path.relpath(file.name, directory)] = file.read()
                result = velk_model.run(argv, directory)
                return argv, content, result.status, result.stderr, result.files
        for seed in (1, 2, 3):
            self.assertEqual(once(seed), once(seed))


if __name__ == "__main__":
    unittest.main()
