// What stands beside the hash set to save look-ups: the k-mer filter and the reverse marks.
//
// FetchKmers1 fills it together with the hash set; the workers read it without locks. It never
// changes an answer: it only says, for certain, that a k-mer is not in the index. It is not made,
// and says nothing, for k-mer lengths without minimizers (kmer/windowBatch.h) and for assemblies
// that outgrow the fields of an Entity.
#pragma once

#include <cstdint>
#include <vector>

#include "contig/contig.h"
#include "kmer/hashSet.h"
#include "kmer/kmerFilter.h"
#include "kmer/windowBatch.h"

namespace velk {

/// Where a stretch of neighbouring k-mers lies: scaffold, contig, offset of the first.
struct Stretch {
  uint64_t scaffold;
  uint64_t contig;
  uint64_t offset;
};

class SideIndex {
 public:
  /// Makes it, empty, for `kmers` k-mers of the model.
  void make(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, uint64_t kmers);

  void release();

  bool isMade() const { return filter_.isBuilt(); }

  const KmerFilter& filter() const { return filter_; }

  /// Says that the k-mer at stretch.offset + w was in the index before, in slot `first`.
  void noteRepeat(const HashSet& index, const Stretch& stretch, std::size_t w, uint64_t first);

  /// Takes in `count` neighbouring k-mers that have just been added to `index`.
  void add(const HashSet& index, const Stretch& stretch, const WindowBatch& batch,
           std::size_t count, int kmer);

  /// Takes in one such k-mer of a batch that has other letters than bases in it.
  void addOdd(const HashSet& index, const Stretch& stretch, uint64_t key, int kmer);

  /// Whether the index may hold the reverse complement of a k-mer of the contig at an offset in
  /// [from, to); false is certain. REQUIRES: isMade(), the contig is indexed.
  bool mayHoldReverse(uint64_t scaffold, uint64_t contig, uint64_t from, uint64_t to) const;

 private:
  uint64_t markOf(const Stretch& stretch) const {
    return firstMark_[firstContig_[stretch.scaffold] + stretch.contig] + stretch.offset;
  }
  uint64_t markOf(const Entity& entity) const {
    return markOf(Stretch{entity.scaffoldNum, entity.contigNum, entity.startPos});
  }
  void mark(uint64_t bit) { marks_[bit / 64] |= uint64_t{1} << (bit % 64); }
  void markPair(const HashSet& index, uint64_t bit, uint64_t reversed);

  KmerFilter filter_;
  std::vector<uint64_t> firstContig_;  // by scaffold: number of its first contig in firstMark_
  std::vector<uint64_t> firstMark_;    // by contig: mark of its k-mer at offset 0
  // A bit per k-mer of the model. Set where its reverse complement is in the index, and for every
  // k-mer that occurs more than once: of these only the first place can be found again later.
  std::vector<uint64_t> marks_;
};

}  // namespace velk
