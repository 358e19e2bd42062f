#include "check/memoryModel.h"

#include <algorithm>

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/buckets.h"
#include "kmer/seedIndex.h"
#include "kmer/seeds.h"

namespace velk::check {
namespace {

constexpr uint64_t kProgram = 5 << 20;      // code, libraries and buffers of files, bytes
constexpr uint64_t kPerThread = 100 << 10;  // stack and heap of a worker, bytes
constexpr uint64_t kFirstRow = 1024;        // records that a row of results begins with
constexpr uint64_t kRowEntry = 5 * sizeof(uint64_t);

// What a string of `length` bytes takes on the heap.
uint64_t heapBytes(uint64_t length) {
  constexpr uint64_t kInside = 15;  // bytes that a string keeps in itself
  constexpr uint64_t kHead = 8;     // bytes in front of a piece of the heap
  if (length <= kInside) return 0;
  return std::max<uint64_t>((length + 1 + kHead + 15) / 16 * 16, 32);
}

uint64_t assemblyBytes() {
  uint64_t bytes = scaffoldSum * sizeof(ScaffoldInfo);
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    bytes += heapBytes(scaffoldInfo[i].scaffoldId.size());
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      bytes += sizeof(ContigInfo) + heapBytes(scaffoldInfo[i].contigsInfo[j].contigSeq.size());
    }
  }
  return bytes;
}

// Rows of results for `found` records of reads of `length` bases, shared by the workers.
uint64_t rowBytes(uint64_t found, uint64_t length) {
  const auto workers = static_cast<uint64_t>(std::max(thread_num, 1));
  const uint64_t each = found / workers + 1;
  uint64_t room = kFirstRow;
  while (room < each) room *= 2;
  const uint64_t before = room > kFirstRow ? room / 2 : 0;  // kept while a row grows
  return workers * (room * sizeof(std::string) + each * kRowEntry + before * sizeof(std::string)) +
         found * heapBytes(length);
}

uint64_t batchBytes(const Survey& survey) {
  uint64_t most = 0;
  for (const ReadInput& input : survey.inputs) {
    if (!input.isReadable) continue;
    const uint64_t arrays = input.isPaired ? 2 : 1;
    const uint64_t records = std::min<uint64_t>(input.records, bufferSize);
    const auto length = static_cast<uint64_t>(input.stats.meanLength());
    const uint64_t buffers =
        arrays * (bufferSize * sizeof(std::string) + records * heapBytes(length + 1));
    const auto found =
        static_cast<uint64_t>(survey.foundPerRead * static_cast<double>(records * arrays));
    most = std::max(most, buffers + rowBytes(found, length));
  }
  return most;
}

}  // namespace

uint64_t contigBases() {
  uint64_t bases = 0;
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      bases += scaffoldInfo[i].contigsInfo[j].contigSeq.size();
    }
  }
  return bases;
}

uint64_t indexBytes(uint64_t kmers, uint64_t bases) {
  constexpr double kBytesPerBase = 0.5;  // of the packed text, with two marks a base
  const Seeds seeds(std::clamp(Kmer, 1, DATA_LEN), kmers);
  const double places = 2.0 / (seeds.offsets() + 1) * static_cast<double>(kmers);
  const double placesOfBucket =
      SeedIndex::kSeedLoad * static_cast<double>(BucketShape::forPlacesBelow(bases).room);
  return static_cast<uint64_t>(kBytesPerBase * static_cast<double>(bases) +
                               sizeof(Bucket) / placesOfBucket * places);
}

MemoryEstimate estimateMemory(const Survey& survey) {
  MemoryEstimate estimate;
  estimate.index = indexBytes(survey.kmers, contigBases());
  estimate.assembly = assemblyBytes();
  estimate.batch = batchBytes(survey);
  estimate.peak = kProgram + static_cast<uint64_t>(std::max(thread_num, 1)) * kPerThread +
                  estimate.index + estimate.assembly + estimate.batch;
  return estimate;
}

}  // namespace velk::check
