// What stands beside the hash set to save look-ups: the gram filter, and two marks for every k-mer.
//
// FetchKmers1 fills it together with the hash set; the workers read it without locks. It never
// changes an answer: it only says, for certain, what a look-up would. It is not made, and says
// nothing, for k-mer lengths without grams (kmer/gramFilter.h), for assemblies that outgrow the
// fields of an Entity, and where there is no memory for it.
#pragma once

#include <cstdint>
#include <vector>

#include "contig/contig.h"
#include "kmer/gramFilter.h"
#include "kmer/hashSet.h"

namespace velk {

/// Where a stretch of neighbouring k-mers lies: scaffold, contig, offset of the first.
struct Stretch {
  uint64_t scaffold;
  uint64_t contig;
  uint64_t offset;
};

class SideIndex {
 public:
  /// Makes it, empty, for `kmers` k-mers of the model. Throws std::bad_alloc without memory, and is
  /// to be released then.
  void make(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, uint64_t kmers);

  /// Releases its memory: it is not made any more.
  void release();

  /// The bytes that it takes for so many k-mers of contigs of so many bases, about.
  static uint64_t bytesFor(uint64_t kmers, uint64_t bases) {
    return GramFilter::bytesFor(kmers) + 2 * bases / 8;
  }

  bool isMade() const { return filter_.isBuilt(); }

  const GramFilter& filter() const { return filter_; }

  /// Says that the k-mer at stretch.offset + w has been added before, to slot `first`.
  void noteRepeat(const HashSet& index, const Stretch& stretch, std::size_t w, uint64_t first);

  /// Takes in `count` neighbouring k-mers that have just been added to `index`, in the order in
  /// which the contig has them. bases: those of the stretch, count + kmer - 1, packed.
  void add(const HashSet& index, const Stretch& stretch, const PackedBases& bases,
           std::size_t count, int kmer);

  /// Takes in one such k-mer of a stretch that has other letters than bases in it.
  void addOdd(const HashSet& index, const Stretch& stretch, uint64_t key, int kmer);

  /// Ends the making, when every k-mer has been added.
  void finish(const HashSet& index, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum,
              int kmer);

  /// Whether the k-mer of a contig at `offset` occurs more than once.
  /// REQUIRES: isMade(), it is indexed.
  bool isRepeated(uint64_t scaffold, uint64_t contig, uint64_t offset) const {
    return isSet(repeats_, markOf(Stretch{scaffold, contig, offset}));
  }

  /// Whether the index may hold the reverse complement of a k-mer of the contig at an offset in
  /// [from, to); false is certain. REQUIRES: isMade(), the contig is indexed.
  bool mayHoldReverse(uint64_t scaffold, uint64_t contig, uint64_t from, uint64_t to) const;

  /// Has the memory fetched that mayHoldReverse reads of the k-mers from there on.
  void prefetchMark(const Stretch& stretch) const {
    __builtin_prefetch(&reversed_[markOf(stretch) / 64]);
  }

 private:
  uint64_t markOf(const Stretch& stretch) const {
    return firstMark_[firstContig_[stretch.scaffold] + stretch.contig] + stretch.offset;
  }
  uint64_t markOf(const Entity& entity) const {
    return markOf(Stretch{entity.scaffoldNum, entity.contigNum, entity.startPos});
  }
  using Marks = ZeroedArray<uint64_t>;

  static void set(Marks& marks, uint64_t bit) { marks[bit / 64] |= uint64_t{1} << (bit % 64); }
  static bool isSet(const Marks& marks, uint64_t bit) {
    return (marks[bit / 64] >> (bit % 64) & 1U) != 0;
  }

  void markPair(const HashSet& index, uint64_t bit, uint64_t reversed);

  GramFilter filter_;
  std::vector<uint64_t> firstContig_;  // by scaffold: number of its first contig in firstMark_
  std::vector<uint64_t> firstMark_;    // by contig: mark of its k-mer at offset 0
  // A bit per k-mer of the model each.
  Marks repeats_;   // it occurs more than once
  Marks reversed_;  // its reverse complement is in the index
};

}  // namespace velk
