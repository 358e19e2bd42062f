// Kernels of the index: packing, seeds, look-ups in the seed index; the plain engine's hash set. Of
// placement and streaming: below.
#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <tuple>
#include <vector>

#include "bench/simulate.h"
#include "bench/world.h"
#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"
#include "kmer/seedIndex.h"
#include "placement/Read2Scaf.h"
#include "placement/edgeCheck.h"
#include "placement/readPreparer.h"
#include "streaming/gzipInput.h"
#include "streaming/lineSource.h"
#include "streaming/readBuffer.h"

namespace velk::bench {
namespace {

// Packing, a k-mer.

void packAfresh(benchmark::State& state) {
  makeWorld();
  const std::string read = interiorReads().front();
  std::size_t at = 0;
  for (auto _ : state) {
    uint64_t key = 0;
    Seq2Kmer(key, std::string_view(read).substr(at, static_cast<std::size_t>(Kmer)));
    benchmark::DoNotOptimize(key);
    at = (at + 1) % (kRead - static_cast<std::size_t>(Kmer));
  }
}
BENCHMARK(packAfresh);

void packAtOnce(benchmark::State& state) {
  makeWorld();
  const std::string read = interiorReads().front();
  PackedBases packed;
  for (auto _ : state) {
    benchmark::DoNotOptimize(packed.fill(read));
    for (std::size_t i = 0; i < 100; ++i) benchmark::DoNotOptimize(packed.at(i, Kmer));
  }
  state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(packAtOnce);

// The seeds of a read, a window.

void seedsOfRead(benchmark::State& state) {
  makeWorld();
  PackedBases packed;
  packed.fill(interiorReads().front());
  const std::size_t windows = kRead - static_cast<std::size_t>(Kmer) + 1;
  for (auto _ : state) {
    seedIndex->seeds().forEachRun(packed, 0, windows,
                                  [](const SeedRun& run) { benchmark::DoNotOptimize(run.hash); });
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(windows));
}
BENCHMARK(seedsOfRead);

// Look-ups in the seed index, a k-mer: of k-mers that it holds, or of others.

void find(benchmark::State& state, std::vector<std::string> (*reads)()) {
  makeWorld();
  const std::vector<uint64_t> keys = keysOf(reads());
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(seedIndex->find(keys[at]));
    at = at + 1 == keys.size() ? 0 : at + 1;
  }
}
BENCHMARK_CAPTURE(find, hit, interiorReads);
BENCHMARK_CAPTURE(find, miss, foreignReads);

// What the seeds of a read say of its windows, a window, the memory prefetched.
void verdicts(benchmark::State& state, std::vector<std::string> (*reads)()) {
  makeWorld();
  const std::vector<std::string> all = reads();
  PackedBases packed;
  std::vector<SeedRun> runs;
  const std::size_t windows = kRead - static_cast<std::size_t>(Kmer) + 1;
  std::size_t at = 0;
  for (auto _ : state) {
    packed.fill(all[at]);
    runs.clear();
    seedIndex->seeds().forEachRun(packed, 0, windows, [&](const SeedRun& run) {
      seedIndex->prefetchSeed(run);
      runs.push_back(run);
    });
    std::erase_if(runs, [](const SeedRun& run) { return !seedIndex->prefetchText(run); });
    for (const SeedRun& run : runs) {
      benchmark::DoNotOptimize(seedIndex->verdictOn(run, packed));
    }
    at = (at + 1) % all.size();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(windows));
}
BENCHMARK_CAPTURE(verdicts, hit, interiorReads);
BENCHMARK_CAPTURE(verdicts, miss, foreignReads);

// The plain engine's hash set.

void hashing(benchmark::State& state) {
  Entity entity{1, 0, 0, 0, 0};
  for (auto _ : state) entity.bitSeq = hash_code(entity);
  benchmark::DoNotOptimize(entity.bitSeq);
}
BENCHMARK(hashing);

void insert(benchmark::State& state) {
  makeWorld();
  const std::vector<uint64_t> keys = keysOf(foreignReads());
  for (auto _ : state) {
    state.PauseTiming();
    HashSet* set = init_hashset(keys.size() * 4 / 3, LoadFactor);
    state.ResumeTiming();
    for (const uint64_t key : keys) add_hashset(set, {key, 0, 0, 0, 1});
    state.PauseTiming();
    free_hash(set);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys.size()));
}
BENCHMARK(insert);

// Looks up the keys that a set holds, with `changed` bits.
void lookUp(benchmark::State& state, uint64_t changed) {
  makeWorld();
  std::vector<uint64_t> keys = keysOf(interiorReads());
  const std::unique_ptr<HashSet, int (*)(HashSet*)> set(
      init_hashset(keys.size() * 4 / 3, LoadFactor), free_hash);
  for (const uint64_t key : keys) add_hashset(set.get(), {key, 0, 0, 0, 1});
  for (uint64_t& key : keys) key ^= changed;
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(get_hashset(set.get(), {keys[at], 0, 0, 0, 0}));
    at = at + 1 == keys.size() ? 0 : at + 1;
  }
}
BENCHMARK_CAPTURE(lookUp, hit, 0);
BENCHMARK_CAPTURE(lookUp, miss, uint64_t{1} << 63);  // above the bits of a k-mer of 31 bases

// Kernels of placement: the preparing of reads, the walk, a pass over a batch, the checks, reverse
// complements.

// The preparing of reads up to a step, sixteen at a time, a read.

enum class Step { kPack, kAlign, kFilter };

void prepare(benchmark::State& state, Step last, std::vector<std::string> (*reads)()) {
  makeWorld();
  std::vector<std::string> all = reads();
  std::array<PreparedRead, 16> group;
  ReadPreparer preparer(*seedIndex, Kmer);
  std::size_t at = 0;
  for (auto _ : state) {
    for (std::size_t i = 0; i < group.size(); ++i) group[i].bases = &all[at + i];
    preparer.pack(group);
    if (last >= Step::kAlign) preparer.align(group);
    if (last >= Step::kFilter) preparer.filter(group);
    at = (at + group.size()) % all.size();
  }
  state.SetItemsProcessed(state.iterations() * int64_t{group.size()});
}
BENCHMARK_CAPTURE(prepare, packed, Step::kPack, interiorReads);
BENCHMARK_CAPTURE(prepare, aligned, Step::kAlign, interiorReads);
BENCHMARK_CAPTURE(prepare, foreignFiltered, Step::kFilter, foreignReads);
BENCHMARK_CAPTURE(prepare, edgeFiltered, Step::kFilter, edgeReads);

// The walk with its checks, a read on one strand, of which nothing is prepared.

void walk(benchmark::State& state, std::vector<std::string> (*reads)()) {
  makeWorld();
  const std::vector<std::string> all = reads();
  std::size_t at = 0;
  for (auto _ : state) {
    int64_t i = 0;
    uint32_t n = 0;
    checkSingleRead(i, all[at], n, 0);
    benchmark::DoNotOptimize(i);
    at = (at + 1) % all.size();
  }
}
BENCHMARK_CAPTURE(walk, interiorRead, interiorReads);
BENCHMARK_CAPTURE(walk, edgeRead, edgeReads);
BENCHMARK_CAPTURE(walk, foreignRead, foreignReads);

// A pass over a batch of simulated pairs or single reads, a read.

void pass(benchmark::State& state, bool pairs, double error) {
  makeWorld();
  constexpr uint64_t kEntries = 50000;
  Simulator simulator(kGenome, ReadModel{kRead, error}, 1);
  std::vector<std::string> first(kEntries);
  std::vector<std::string> second(kEntries);
  for (uint64_t i = 0; i < kEntries; ++i) {
    std::tie(first[i], second[i]) = simulator.pair({400, 40, Facing::kInward});
    simulator.putErrors(first[i]);
    simulator.putErrors(second[i]);
  }
  readsA = first.data();
  readsB = pairs ? second.data() : nullptr;
  bufferNum = kEntries;
  insertLength = pairs ? 400 : 0;
  for (auto _ : state) FindReads(0);
  state.SetItemsProcessed(state.iterations() * int64_t{kEntries} * (pairs ? 2 : 1));
  foundReadNum[0] = 0;
  readsA = readsB = nullptr;
}
BENCHMARK_CAPTURE(pass, pairs, true, 0.01)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pass, pairsWithoutErrors, true, 0.0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(pass, singles, false, 0.01)->Unit(benchmark::kMillisecond);

// The checks, and the reverse complement.

void equalBases(benchmark::State& state) {
  std::mt19937_64 random(7);
  const std::string one = randomBases(random, kRead);
  const std::string other = randomBases(random, kRead);
  for (auto _ : state) benchmark::DoNotOptimize(countEqual(one.data(), other.data(), kRead));
}
BENCHMARK(equalBases);

using Check = int (*)(const std::string& contig, const std::string& read, int64_t offset);

// A read on a contig, or a third of it over the left or the right end.
void check(benchmark::State& state, Check check, const std::string& before,
           const std::string& after) {
  makeWorld();
  std::mt19937_64 random(8);
  const std::string& contig = contigOf(random).contigSeq;
  const std::string laid = before + contig + after;
  const auto overLeft = static_cast<int64_t>(before.size());
  const std::size_t first = before.empty() ? contig.size() + after.size() - kRead : 0;
  const std::string read = laid.substr(first, kRead);
  const int64_t offset = static_cast<int64_t>(first) - overLeft;
  for (auto _ : state) benchmark::DoNotOptimize(check(contig, read, offset));
}
BENCHMARK_CAPTURE(check, onContig, MapRead2Contig, "", "");
BENCHMARK_CAPTURE(check, overLeftEnd, MapRead2Rcontig, std::string(kRead / 3, 'A'), "");
BENCHMARK_CAPTURE(check, overRightEnd, MapRead2Lcontig, "", std::string(kRead / 3, 'A'));

void reverseComplementOfRead(benchmark::State& state) {
  std::mt19937_64 random(9);
  const std::string read = randomBases(random, kRead);
  std::string reversed(kRead, 'A');
  for (auto _ : state) {
    ReverseComplementSeq(reversed, read);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(reverseComplementOfRead);

// Kernels of streaming: the line sources and the output.

// The line sources, a FASTQ record.

template <class Source>
void lines(benchmark::State& state, const std::string& name) {
  const std::string file = readFile(name);
  std::string entry;
  int64_t records = 0;
  for (auto _ : state) {
    Source source(file);
    if (!source.open()) state.SkipWithError("no file");
    for (; source.startRecord(); ++records) {
      source.keepLine(entry);
      source.skipLine();
      source.skipLine();
    }
    source.finish();
  }
  state.SetItemsProcessed(records);
}

void plainLines(benchmark::State& state) {
  lines<PlainLineSource>(state, "reads.fq");
}
BENCHMARK(plainLines);

void gzipLines(benchmark::State& state) {
  lines<GzipLineSource>(state, "reads.fq.gz");
}
BENCHMARK(gzipLines);

// A file of bgzip, inflated ahead by so many threads, a byte.

void bgzfAhead(benchmark::State& state) {
  const std::string file = readFile("reads.fq.bgz");
  int64_t bytes = 0;
  for (auto _ : state) {
    GzipInput input;
    if (!input.open(file)) state.SkipWithError("no file");
    input.inflateAhead(static_cast<int>(state.range(0)));
    for (std::string_view some = input.next(); !some.empty(); some = input.next()) {
      bytes += static_cast<int64_t>(some.size());
    }
  }
  state.SetBytesProcessed(bytes);
}
BENCHMARK(bgzfAhead)->DenseRange(1, 3)->MeasureProcessCPUTime()->UseRealTime();

// Output, a record.

void output(benchmark::State& state) {
  makeWorld();
  constexpr uint32_t kRecords = 10000;
  fout.open("/dev/null");
  std::mt19937_64 random(10);
  const std::string read = randomBases(random, kRead);
  uint32_t n = 0;
  while (n < kRecords) recordFound(0, n, read, {n % scaffoldSum, n, -75, 0, 300});
  foundReadNum[0] = kRecords;
  for (auto _ : state) OutputBuffer();
  foundReadNum[0] = 0;
  fout.close();
  state.SetItemsProcessed(state.iterations() * int64_t{kRecords});
}
BENCHMARK(output);

}  // namespace

}  // namespace velk::bench

BENCHMARK_MAIN();
