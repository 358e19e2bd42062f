// The kernels one by one: packing, the hash set, the walk, the checks, the line sources, output.
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "bench/simulate.h"
#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/fetchKmers.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"
#include "kmer/rollingKey.h"
#include "placement/Read2Scaf.h"
#include "placement/countEqual.h"
#include "streaming/lineSource.h"
#include "streaming/readBuffer.h"

namespace velk::bench {
namespace {

constexpr uint64_t kGenome = 10'000'000;  // bases
constexpr std::size_t kReads = 4096;      // of each sort, more than the caches keep the slots of
constexpr std::size_t kRead = 150;        // bases

// A folder of this process, removed at its end.
class Folder {
 public:
  Folder() { std::filesystem::create_directories(path_); }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string file(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("velk-kernels." + std::to_string(::getpid()));
};

// An indexed assembly and read files, made once.
struct World {
  Folder folder;
  Simulator simulator{kGenome, ReadModel{}, 1};

  World() {
    const std::string scaffolds = folder.file("scaffolds.fa");
    {
      std::ofstream out(scaffolds);
      simulator.writeScaffolds(out);
    }
    uint64_t gaps = 0;
    InitialScaffold(scaffoldInfo, scaffolds, scaffoldSum);
    LoadScaffolds(scaffoldInfo, scaffolds, scaffoldSum, gaps);
    kmerHash = init_hashset(kGenome * 4 / 3, LoadFactor);
    FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum);
    readSumInEachGap = new int[gaps]();
    allocateWorkerArrays(1);
    allocateRow(0, 1);
    writeReads();
  }

  void writeReads() const {
    std::ostringstream text;
    Simulator reads(1'000'000, ReadModel{}, 2);
    for (uint64_t i = 0; i < 20000; ++i) reads.writeRecord(text, reads.single(), i, '1');
    std::ofstream(folder.file("reads.fq")) << text.str();
    gzFile gzip = gzopen(folder.file("reads.fq.gz").c_str(), "wb");
    gzwrite(gzip, text.str().data(), static_cast<unsigned>(text.str().size()));
    gzclose(gzip);
  }
};

const World& world() {
  static const World made;
  return made;
}

const ContigInfo& contigOf(std::mt19937_64& random) {
  while (true) {
    const ScaffoldInfo& info = scaffoldInfo[random() % scaffoldSum];
    if (info.contigsSum < 3) continue;
    const ContigInfo& contig = info.contigsInfo[1 + random() % (info.contigsSum - 2)];
    if (contig.contigSeq.size() > 1000) return contig;
  }
}

std::vector<std::string> interiorReads() {
  std::mt19937_64 random(3);
  std::vector<std::string> reads(kReads);
  for (std::string& read : reads) {
    const std::string& bases = contigOf(random).contigSeq;
    read = bases.substr(1 + random() % (bases.size() - kRead - 2), kRead);
  }
  return reads;
}

std::string randomBases(std::mt19937_64& random, std::size_t length) {
  std::string bases(length, 'A');
  for (char& base : bases) base = "ACGT"[random() % 4];
  return bases;
}

std::vector<std::string> edgeReads() {
  std::mt19937_64 random(4);
  std::vector<std::string> reads(kReads);
  for (std::string& read : reads) {
    const std::string& bases = contigOf(random).contigSeq;
    read = bases.substr(bases.size() - 100) + randomBases(random, kRead - 100);
  }
  return reads;
}

std::vector<std::string> foreignReads() {
  std::mt19937_64 random(5);
  std::vector<std::string> reads(kReads);
  for (std::string& read : reads) read = randomBases(random, kRead);
  return reads;
}

std::vector<uint64_t> keysOf(const std::vector<std::string>& reads) {
  std::vector<uint64_t> keys;
  for (const std::string& read : reads) {
    RollingKey rolling(read, Kmer);
    for (std::size_t i = 0; i + static_cast<std::size_t>(Kmer) < read.size(); ++i) {
      if (i != 0) rolling.advance();
      if (i % 8 == 0) keys.push_back(rolling.key());
    }
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937_64(6));
  return keys;
}

// Packing, a k-mer.

void packAfresh(benchmark::State& state) {
  world();
  const std::string read = interiorReads().front();
  std::size_t at = 0;
  for (auto _ : state) {
    uint64_t key = 0;
    Seq2Kmer(key, read.substr(at, static_cast<std::size_t>(Kmer)));
    benchmark::DoNotOptimize(key);
    at = (at + 1) % (kRead - static_cast<std::size_t>(Kmer));
  }
}
BENCHMARK(packAfresh);

void packRolling(benchmark::State& state) {
  world();
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
  world();
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
  world();
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
  world();
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
  world();
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

// The walk with its checks, a read on one strand.

void walk(benchmark::State& state, std::vector<std::string> (*reads)()) {
  world();
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
  world();
  constexpr uint64_t kEntries = 50000;
  Simulator simulator(kGenome, ReadModel{kRead, error}, 1);
  std::ostringstream unused;
  simulator.writeScaffolds(unused);
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

void checkOnContig(benchmark::State& state) {
  world();
  std::mt19937_64 random(8);
  const std::string& contig = contigOf(random).contigSeq;
  const std::string read = contig.substr(500, kRead);
  for (auto _ : state) benchmark::DoNotOptimize(MapRead2Contig(contig, read, 500));
}
BENCHMARK(checkOnContig);

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

// The line sources, a FASTQ record.

template <class Source>
void lines(benchmark::State& state, const std::string& name) {
  const std::string file = world().folder.file(name);
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

// Output, a record.

void output(benchmark::State& state) {
  world();
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
