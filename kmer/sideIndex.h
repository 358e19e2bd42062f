// What stands beside the hash set to save look-ups: the gram filter, and two marks for every k-mer.
//
// It is filled beside the hash set (kmer/fillIndex.h); the workers read it without locks. It never
// changes an answer: what it rules out a look-up would not find, or not find unique. It is not
// made, and says nothing, for k-mer lengths without grams (kmer/gramFilter.h), for assemblies that
// outgrow the fields of an Entity, and where there is no memory for it.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "contig/contig.h"
#include "kmer/fetchLine.h"
#include "kmer/gramFilter.h"
#include "kmer/hashSet.h"
#include "kmer/kmerPlace.h"

namespace velk {

class SideIndex {
 public:
  /// Makes it, empty, for `kmers` k-mers of the model. REQUIRES: hasGrams(kmer). Throws
  /// std::bad_alloc without memory, and is to be released then.
  void make(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer, uint64_t kmers);

  /// Releases its memory: it is not made any more.
  void release();

  /// The bytes that it takes for so many k-mers of contigs of so many bases, about.
  static uint64_t bytesFor(uint64_t kmers, uint64_t bases) {
    return GramFilter::bytesFor(kmers) + 2 * bases / 8;
  }

  bool isMade() const { return filter_.isBuilt(); }

  const GramFilter& filter() const { return filter_; }

  /// Says that the k-mer of `again` has been added before, as `first`. Several threads may.
  void noteRepeat(const Entity& again, const Entity& first);

  /// Takes in the first `windows` k-mers of a contig; other threads may call noteRepeat meanwhile.
  /// Throws std::bad_alloc without memory.
  void addContig(uint64_t scaffold, uint64_t contig, std::string_view bases, std::size_t windows,
                 int kmer);

  // The making ends, when every k-mer has been added, here and to `index`, with settleReversed of
  // all contigs, and shareReversed of all contigs. Several threads may call either.

  /// Leaves the marks of a contig's k-mers where the reverse complement is in the index, and marks
  /// that one, too. The reverse complement of a k-mer with other letters than bases is not told by
  /// its key: those keep their marks.
  void settleReversed(const HashSet& index, uint64_t scaffold, uint64_t contig,
                      std::string_view bases, int kmer);

  /// Of a k-mer that occurs more than once, the index knows the first place alone, so that one
  /// bears the mark; those of this contig take it over.
  void shareReversed(const HashSet& index, uint64_t scaffold, uint64_t contig,
                     std::string_view bases, int kmer);

  /// Whether the k-mer of a contig at `offset` occurs more than once.
  /// REQUIRES: isMade(), it is indexed.
  bool isRepeated(uint64_t scaffold, uint64_t contig, uint64_t offset) const {
    return isSet(repeats_, markOf(KmerPlace{scaffold, contig, offset}));
  }

  /// Whether the index may hold the reverse complement of a k-mer of the contig at an offset in
  /// [from, to); false is certain. REQUIRES: isMade(), the contig is indexed.
  bool mayHoldReverse(uint64_t scaffold, uint64_t contig, uint64_t from, uint64_t to) const;

  /// Has the memory fetched that mayHoldReverse reads of the k-mers from there on.
  void prefetchMark(const KmerPlace& place) const { fetchLine(&reversed_[markOf(place) / 64]); }

 private:
  using Marks = ZeroedArray<uint64_t>;

  uint64_t markOf(const KmerPlace& place) const {
    return firstMark_[firstContig_[place.scaffold] + place.contig] + place.start;
  }
  uint64_t markOf(const Entity& entity) const {
    return markOf(KmerPlace{entity.scaffoldNum, entity.contigNum, entity.startPos});
  }

  static uint64_t maskOf(uint64_t bit) { return uint64_t{1} << (bit % 64); }
  static void set(Marks& marks, uint64_t bit) { marks[bit / 64] |= maskOf(bit); }
  static void setShared(Marks& marks, uint64_t bit);  // while other threads do so, too
  static bool isSet(const Marks& marks, uint64_t bit) {
    return (marks[bit / 64] & maskOf(bit)) != 0;
  }

  void addStretch(uint64_t first, std::string_view bases, int kmer);
  void addBases(uint64_t first, const PackedBases& bases, std::size_t windows);
  void addOdd(uint64_t mark, std::string_view bases);

  GramFilter filter_;
  std::vector<uint64_t> firstContig_;  // by scaffold: number of its first contig in firstMark_
  std::vector<uint64_t> firstMark_;    // by contig: mark of its k-mer at offset 0
  // A bit for every base of the contigs each, that of the k-mer which begins there.
  Marks repeats_;   // it occurs more than once
  Marks reversed_;  // its reverse complement may be in the index; when settled, of bases alone: is
};

}  // namespace velk
