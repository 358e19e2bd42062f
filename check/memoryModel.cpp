#include "check/memoryModel.h"

#include <algorithm>
#include <cmath>

#include "check/machine.h"
#include "check/tableAdvice.h"
#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/hashSet.h"
#include "kmer/sideIndex.h"

namespace velk::check {
namespace {

constexpr uint64_t kProgram = 5 << 20;      // code, libraries and buffers of files, bytes
constexpr uint64_t kPerThread = 100 << 10;  // stack and heap of a worker, bytes
constexpr uint64_t kSmallPage = 4 << 10;
constexpr uint64_t kHugePage = 2 << 20;
constexpr uint64_t kFirstRow = 1024;  // records that a row of results begins with
constexpr uint64_t kRowEntry = 5 * sizeof(uint64_t);

// What a string of `length` bytes takes on the heap.
uint64_t heapBytes(uint64_t length) {
  constexpr uint64_t kInside = 15;  // bytes that a string keeps in itself
  constexpr uint64_t kHead = 8;     // bytes in front of a piece of the heap
  if (length <= kInside) return 0;
  return std::max<uint64_t>((length + 1 + kHead + 15) / 16 * 16, 32);
}

// The part of `slots` slots that is in use when `kmers` of them, spread evenly, are filled.
uint64_t bytesInUse(uint64_t slots, uint64_t kmers) {
  const uint64_t page = hasHugePages() ? kHugePage : kSmallPage;
  const auto bytes = static_cast<double>(slots * sizeof(Entity));
  const double pages = std::max(1.0, bytes / static_cast<double>(page));
  const double untouched = std::exp(-static_cast<double>(kmers) / pages);
  return static_cast<uint64_t>(bytes * (1 - untouched));
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

uint64_t contigBases() {
  uint64_t bases = 0;
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      bases += scaffoldInfo[i].contigsInfo[j].contigSeq.size();
    }
  }
  return bases;
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

MemoryEstimate estimateMemory(const Survey& survey, uint64_t initSlots, float loadFactor) {
  MemoryEstimate estimate;
  const uint64_t slots = finalSlots(initSlots, survey.distinctKmers, loadFactor);
  const bool grows = slots != slotsFor(initSlots);
  const uint64_t bitmap = slots / 8;
  estimate.asked = slots * sizeof(Entity) + 2 * bitmap;
  // A grown table is written to its end; of a new one's two bitmaps only one is ever written to.
  estimate.table = grows ? slots * sizeof(Entity) + 2 * bitmap
                         : bytesInUse(slots, survey.distinctKmers) + bitmap;
  estimate.assembly = assemblyBytes();
  if (hasGrams(Kmer)) estimate.side = SideIndex::bytesFor(survey.kmers, contigBases());
  const uint64_t growth = grows ? bitmap : 0;  // the old bitmaps, half as large
  estimate.batch = batchBytes(survey);
  estimate.peak = kProgram + static_cast<uint64_t>(std::max(thread_num, 1)) * kPerThread +
                  estimate.table + estimate.assembly + estimate.side +
                  std::max(growth, estimate.batch);
  return estimate;
}

}  // namespace velk::check
