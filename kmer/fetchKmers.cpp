#include "kmer/fetchKmers.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <string_view>
#include <system_error>
#include <thread>

#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/packedBases.h"
#include "kmer/rollingKey.h"
#include "kmer/tableMemory.h"

namespace velk {
namespace {

bool outgrowsEntity = false;  // some index or offset of the model doesn't fit its field

uint64_t keyAt(const ContigInfo& contig, uint64_t offset) {
  const auto length = static_cast<std::size_t>(Kmer);
  return packedKmer(std::string_view(contig.contigSeq).substr(offset, length));
}

// The offset, of those that agree with `hit` in its field's bits, at which `contig` holds the
// k-mer; the number of the contig's windows when it doesn't.
uint64_t offsetOf(const Entity& hit, const ContigInfo& contig) {
  const uint64_t windows = windowsOf(contig);
  for (uint64_t offset = hit.startPos; offset < windows; offset += kOffsets) {
    if (keyAt(contig, offset) == hit.bitSeq) return offset;
  }
  return windows;
}

KmerPlace searchedPlaceOf(const Entity& hit) {
  for (uint64_t i = hit.scaffoldNum; i < scaffoldSum; i += kScaffolds) {
    const ScaffoldInfo& info = scaffoldInfo[i];
    for (uint64_t j = hit.contigNum; j < info.contigsSum; j += kContigs) {
      const uint64_t offset = offsetOf(hit, info.contigsInfo[j]);
      if (offset < windowsOf(info.contigsInfo[j])) return {i, j, offset};
    }
  }
  std::abort();  // cannot be: a unique k-mer was added from one of these places
}

constexpr std::size_t kBatch = 64;  // k-mers whose memory is fetched at the same time

// Neighbouring k-mers of a contig on their way into the index.
struct Batch {
  KmerPlace first;                       // of its k-mers
  std::size_t count;                     // k-mers
  std::array<SlotProbe, kBatch> probes;  // their begun look-ups
  uint64_t tableSize;                    // slots of the table when it was prepared
};

// Adds k-mers in batches, each in three steps: the home slots are worked out, their memory is
// fetched, the k-mers are added. A batch is fetched while the one before it is added, a k-mer of
// each by turns, as only so many fetches can be under way. Little is computed between two fetches:
// a processor that waits for the page of one begins with the next ones only if they are near.
class Indexer {
 public:
  Indexer(HashSet& set, SideIndex& side, int kmer) : set_(set), side_(side), kmer_(kmer) {}

  /// Makes the batch, of its stretch of `bases`, ready for its turn as `next`.
  void prepare(Batch& batch, const std::string& bases) {
    const auto length = static_cast<std::size_t>(kmer_);
    const std::string_view stretch =
        std::string_view(bases).substr(batch.first.start, batch.count + length - 1);
    batch.tableSize = set_.size;
    if (packed_.fill(stretch)) {
      beginAll(batch, [&](std::size_t w) { return packed_.key(w, kmer_); });
      return;
    }
    RollingKey keys(stretch, kmer_);
    beginAll(batch, [&](std::size_t w) {
      if (w != 0) keys.advance();
      return keys.key();
    });
  }

  /// Fetches the memory for `next` and adds `done`, which was `next` in the turn before. Either may
  /// be null.
  void turn(const Batch* next, const Batch* done) {
    const std::size_t fetches = next == nullptr ? 0 : next->count;
    const std::size_t adds = done == nullptr ? 0 : done->count;
    for (std::size_t w = 0; w < std::max(fetches, adds); ++w) {
      if (w < fetches) fetchSlots(set_, next->probes[w]);
      if (w < adds) add(*done, w);
    }
  }

 private:
  // keyOf(w): the key of the batch's w-th k-mer; asked for in order.
  template <class KeyOf>
  void beginAll(Batch& batch, KeyOf keyOf) const {
    for (std::size_t w = 0; w < batch.count; ++w) {
      batch.probes[w] = beginProbe(set_, keyOf(w));
    }
  }

  void add(const Batch& batch, std::size_t w) {
    SlotProbe probe = batch.probes[w];
    if (set_.size != batch.tableSize) probe.slot = homeSlot(set_, probe.key);
    const KmerPlace place{batch.first.scaffold, batch.first.contig, batch.first.start + w};
    const uint64_t before = addBegun(&set_, uniqueEntity(probe.key, place), probe);
    if (before != set_.size && side_.isMade()) side_.noteRepeat(set_, place, before);
  }

  HashSet& set_;
  SideIndex& side_;
  int kmer_;
  PackedBases packed_;  // room for prepare()
};

// Calls onContig(i, j, contig, windows) for every contig that has k-mers in the index, in order.
template <class OnContig>
void forEachIndexed(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, OnContig onContig) {
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      const ContigInfo& contig = scaffoldInfo[i].contigsInfo[j];
      if (const uint32_t windows = windowsOf(contig); windows != 0) onContig(i, j, contig, windows);
    }
  }
}

// Makes the side index where there is memory for it; the run is slower without it, and the same.
void makeSideIndex(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, uint64_t kmers) {
  try {
    sideIndex.make(scaffoldInfo, scaffoldSum, kmers);
  } catch (const std::bad_alloc&) {
    sideIndex.release();
  }
}

// The bytes of the table under which pages are put ahead: all, where so many k-mers, if they are
// not repeats for the most part, come to nearly every page and do not make it grow; else none.
uint64_t bytesToPopulate(const HashSet& set, uint64_t kmers) {
  const uint64_t pages = set.size * sizeof(Entity) / kPage;
  constexpr uint64_t kFew = 4;  // k-mers for each page, with which one in fifty is left out
  const bool willFill = set.count + kmers <= set.max && kmers >= kFew * pages;
  return willFill ? set.size * sizeof(Entity) : 0;
}

// What is done beside the adding of the k-mers. A thread of its own, where the run has more than
// one, puts pages under the table, ahead of the k-mers, and adds the contigs to the side index;
// else the contigs are added afterwards.
class SideWork {
 public:
  SideWork(const HashSet& set, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum,
           uint64_t kmers)
      : scaffoldInfo_(scaffoldInfo), scaffoldSum_(scaffoldSum) {
    const uint64_t bytes = bytesToPopulate(set, kmers);
    if (thread_num < 2 || (bytes == 0 && !sideIndex.isMade())) return;
    try {
      thread_ = std::jthread([this, slots = set.array, bytes] {
        populate(slots, bytes);
        fill();
      });
    } catch (const std::system_error&) {
      // finish() fills the side index then; pages come as they are written to
    }
  }

  /// Ends it, when all k-mers are in `index`.
  void finish(const HashSet& index) {
    thread_.joinable() ? thread_.join() : fill();
    if (!sideIndex.isMade()) return;
    if (memoryRanOut_) {
      sideIndex.release();
    } else {
      sideIndex.finish(index, scaffoldInfo_, scaffoldSum_, Kmer);
    }
  }

 private:
  void fill() {
    if (!sideIndex.isMade()) return;
    try {
      forEachIndexed(scaffoldInfo_, scaffoldSum_,
                     [](uint32_t i, uint32_t j, const ContigInfo& contig, uint32_t windows) {
                       sideIndex.addContig(i, j, contig.contigSeq, windows, Kmer);
                     });
    } catch (const std::bad_alloc&) {
      memoryRanOut_ = true;
    }
  }

  const ScaffoldInfo* scaffoldInfo_;
  uint32_t scaffoldSum_;
  bool memoryRanOut_ = false;
  std::jthread thread_;
};

}  // namespace

// Never destroyed: a run may end while it is being filled.
SideIndex& sideIndex = *new SideIndex;

uint32_t windowsOf(const ContigInfo& contig) {
  const std::size_t length = contig.contigSeq.size();
  if (length < static_cast<uint32_t>(CONTIGLEN)) return 0;
  if (static_cast<int64_t>(length) < Kmer) return 0;
  return static_cast<uint32_t>(length - static_cast<std::size_t>(Kmer) + 1);
}

void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  uint64_t kmers = 0;
  outgrowsEntity = scaffoldSum > kScaffolds;
  forEachIndexed(scaffoldInfo, scaffoldSum,
                 [&](uint32_t, uint32_t j, const ContigInfo&, uint32_t windows) {
                   kmers += windows;
                   outgrowsEntity = outgrowsEntity || j >= kContigs || windows > kOffsets;
                 });
  sideIndex.release();
  if (hasGrams(Kmer) && !outgrowsEntity) makeSideIndex(scaffoldInfo, scaffoldSum, kmers);

  SideWork sideWork(*kmerHash, scaffoldInfo, scaffoldSum, kmers);
  Indexer indexer(*kmerHash, sideIndex, Kmer);
  std::array<Batch, 2> batches;
  Batch* next = batches.data();
  Batch* done = nullptr;  // in its second turn
  forEachIndexed(scaffoldInfo, scaffoldSum,
                 [&](uint32_t i, uint32_t j, const ContigInfo& contig, uint32_t windows) {
                   for (std::size_t offset = 0; offset < windows; offset += kBatch) {
                     next->first = {i, j, offset};
                     next->count = std::min<std::size_t>(kBatch, windows - offset);
                     indexer.prepare(*next, contig.contigSeq);
                     indexer.turn(next, done);
                     done = next;
                     next = next == batches.data() ? next + 1 : next - 1;
                   }
                 });
  indexer.turn(nullptr, done);
  noteFilled(kmerHash);  // for whoever reads the bits; a run itself reads slots alone
  sideWork.finish(*kmerHash);
}

KmerPlace placeOf(const Entity& hit) {
  if (outgrowsEntity) return searchedPlaceOf(hit);
  return {hit.scaffoldNum, hit.contigNum, hit.startPos};
}

}  // namespace velk
