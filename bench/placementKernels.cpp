// Kernels of placement: the preparing of reads, the walk, a pass over a batch, the checks, reverse
// complements.
#include <benchmark/benchmark.h>

#include <array>
#include <tuple>
#include <vector>

#include "bench/simulate.h"
#include "bench/world.h"
#include "placement/Read2Scaf.h"
#include "placement/edgeCheck.h"
#include "placement/readPreparer.h"
#include "streaming/readBuffer.h"

namespace velk::bench {
namespace {

// The preparing of reads up to a step, sixteen at a time, a read.

enum class Step { kPack, kAlign, kSift };

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
    if (last >= Step::kSift) preparer.sift(group);
    at = (at + group.size()) % all.size();
  }
  state.SetItemsProcessed(state.iterations() * int64_t{group.size()});
}
BENCHMARK_CAPTURE(prepare, packed, Step::kPack, interiorReads);
BENCHMARK_CAPTURE(prepare, aligned, Step::kAlign, interiorReads);
BENCHMARK_CAPTURE(prepare, foreignSifted, Step::kSift, foreignReads);
BENCHMARK_CAPTURE(prepare, edgeSifted, Step::kSift, edgeReads);

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

}  // namespace
}  // namespace velk::bench
