// Kernels of the index: packing, seeds, look-ups in the seed index; the plain engine's hash set.
#include <benchmark/benchmark.h>

#include <memory>

#include "bench/world.h"
#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"
#include "kmer/seedIndex.h"

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

}  // namespace
}  // namespace velk::bench
