#include "survey/costModel.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <string>

#include "driver/velk.h"
#include "kmer/buckets.h"
#include "kmer/seedIndex.h"
#include "kmer/seeds.h"
#include "placement/Read2Scaf.h"
#include "placement/batchScan.h"
#include "placement/verdict.h"

namespace velk::survey {
namespace {

constexpr uint64_t kProgram = 5 << 20;      // code, libraries and buffers of files, bytes
constexpr uint64_t kPerThread = 100 << 10;  // stack and heap of a worker, bytes

// What a string of `length` bytes takes on the heap.
uint64_t heapBytes(uint64_t length) {
  constexpr uint64_t kInside = 15;  // bytes that a string keeps in itself
  constexpr uint64_t kHead = 8;     // bytes in front of a piece of the heap
  if (length <= kInside) return 0;
  return std::max<uint64_t>((length + 1 + kHead + 15) / 16 * 16, 32);
}

uint64_t atLeastOne(int threads) {
  return static_cast<uint64_t>(std::max(threads, 1));
}

// Rows of results for `found` records of reads of `length` bases, shared by the workers.
uint64_t rowBytes(uint64_t found, uint64_t length, int threads) {
  const uint64_t workers = atLeastOne(threads);
  const uint64_t each = found / workers + 1;
  uint64_t room = kFirstRowSize;
  while (room < each) room *= 2;
  const uint64_t before = room > kFirstRowSize ? room / 2 : 0;  // kept while a row grows
  return workers * (room * sizeof(std::string) + each * sizeof(FoundRecord) +
                    before * sizeof(std::string)) +
         found * heapBytes(length);
}

}  // namespace

uint64_t indexBytes(int kmer, uint64_t kmers, uint64_t bases) {
  constexpr double kBytesPerBase = 0.5;  // of the packed text, with two marks a base
  const Seeds seeds(std::clamp(kmer, 1, DATA_LEN), kmers);
  const double places = 2.0 / (seeds.offsets() + 1) * static_cast<double>(kmers);
  const double placesOfBucket =
      SeedIndex::kSeedLoad * static_cast<double>(BucketShape::forPlacesBelow(bases).room);
  return static_cast<uint64_t>(kBytesPerBase * static_cast<double>(bases) +
                               sizeof(Bucket) / placesOfBucket * places);
}

uint64_t assemblyBytes(Scaffolds scaffolds) {
  uint64_t bytes = scaffolds.size_bytes();
  for (const ScaffoldInfo& info : scaffolds) bytes += heapBytes(info.scaffoldId.size());
  forEachContig(scaffolds, [&](const ContigInfo& contig) {
    bytes += sizeof(ContigInfo) + heapBytes(contig.contigSeq.size());
  });
  return bytes;
}

uint64_t batchBytes(const BatchShape& shape) {
  const uint64_t arrays = shape.arePairs ? 2 : 1;
  const uint64_t entries = std::min(shape.entries, shape.room);
  const uint64_t buffers =
      arrays * (shape.room * sizeof(std::string) + entries * heapBytes(shape.readLength + 1));
  const auto found =
      static_cast<uint64_t>(shape.foundPerRead * static_cast<double>(entries * arrays));
  return buffers + rowBytes(found, shape.readLength, shape.threads);
}

MemoryEstimate peakMemory(uint64_t index, uint64_t assembly, uint64_t batch, int threads) {
  const uint64_t peak = kProgram + atLeastOne(threads) * kPerThread + index + assembly + batch;
  return {index, assembly, batch, peak};
}

namespace {

// A sink that counts records.
struct CountingSink {
  static constexpr bool kTakesRefusals = false;

  uint64_t count = 0;

  void found(const Found& /*found*/, const std::string& /*bases*/) { ++count; }
  static void anchored(const Anchored& /*anchored*/) {}
};

}  // namespace

SearchTrial trySearch(const BoundedIndex& index, Scaffolds scaffolds,
                      const PlacementOptions& options, std::vector<Sample> samples) {
  SearchTrial trial;
  Engine engine = index.engine();
  CountingSink sink;
  const auto start = std::chrono::steady_clock::now();
  for (Sample& sample : samples) {
    const bool arePairs = sample.insert != 0;
    assert(!arePairs || sample.b.size() == sample.a.size());
    PlacementOptions ofSample = options;
    ofSample.insert = sample.insert;
    ofSample.areOutward = sample.insert > kLongestShortInsert;
    const Batch batch{sample.a.data(),
                      arePairs ? sample.b.data() : nullptr,
                      static_cast<int64_t>(sample.a.size()),
                      0,
                      1,
                      scaffolds.data(),
                      ofSample};
    scanBatch(engine, batch, sink);
    trial.reads += sample.a.size() * (arePairs ? 2 : 1);
  }
  const std::chrono::duration<double> used = std::chrono::steady_clock::now() - start;
  trial.seconds = used.count();
  trial.found = sink.count;
  return trial;
}

double inputSeconds(const InputCost& input, double secondsPerRead, int threads) {
  const double searching = secondsPerRead * (input.arePairs ? 2 : 1) / threads;
  return static_cast<double>(input.records) * (input.secondsToRead + searching);
}

}  // namespace velk::survey
