// Kernels of the index: packing, hashing, the hash set.
#include <benchmark/benchmark.h>

#include <array>

#include "bench/world.h"
#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"
#include "kmer/rollingKey.h"

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

void packRolling(benchmark::State& state) {
  makeWorld();
  const std::string read = interiorReads().front();
  for (auto _ : state) {
    RollingKey keys(read, Kmer);
    for (std::size_t i = 0; i < 100; ++i) {
      keys.advance();
      benchmark::DoNotOptimize(keys.key());
    }
  }
  state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(packRolling);

void packAtOnce(benchmark::State& state) {
  makeWorld();
  const std::string read = interiorReads().front();
  PackedBases packed;
  for (auto _ : state) {
    benchmark::DoNotOptimize(packed.fill(read));
    for (std::size_t i = 0; i < 100; ++i) benchmark::DoNotOptimize(packed.key(i, Kmer));
  }
  state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(packAtOnce);

// The hash set.

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

void lookUpOneByOne(benchmark::State& state, std::vector<std::string> (*reads)()) {
  makeWorld();
  const std::vector<uint64_t> keys = keysOf(reads());
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(get_hashset(kmerHash, {keys[at], 0, 0, 0, 0}));
    at = at + 1 == keys.size() ? 0 : at + 1;
  }
}
BENCHMARK_CAPTURE(lookUpOneByOne, hit, interiorReads);
BENCHMARK_CAPTURE(lookUpOneByOne, miss, foreignReads);

void lookUpInGroups(benchmark::State& state, std::vector<std::string> (*reads)()) {
  makeWorld();
  constexpr std::size_t kGroup = 16;
  const std::vector<uint64_t> keys = keysOf(reads());
  std::size_t at = 0;
  std::array<SlotProbe, kGroup> probes;
  for (auto _ : state) {
    for (std::size_t i = 0; i < kGroup; ++i) probes[i] = startProbe(*kmerHash, keys[at + i]);
    for (const SlotProbe& probe : probes) benchmark::DoNotOptimize(findBegun(*kmerHash, probe));
    at = at + 2 * kGroup > keys.size() ? 0 : at + kGroup;
  }
  state.SetItemsProcessed(state.iterations() * int64_t{kGroup});
}
BENCHMARK_CAPTURE(lookUpInGroups, hit, interiorReads);
BENCHMARK_CAPTURE(lookUpInGroups, miss, foreignReads);

}  // namespace
}  // namespace velk::bench
