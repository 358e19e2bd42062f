// The plain engine's index: every k-mer of the contigs in one hash set, looked up one by one.
//
// The rules of indexing as they are, with nothing made faster: what the fast engine answers is
// compared with this. FetchKmers1 fills the set before any worker exists; any thread may look up.
#pragma once

#include <cstdint>
#include <optional>

#include "kmer/contigWindows.h"
#include "kmer/hashSet.h"

namespace velk {

/// Adds every k-mer of every contig of at least CONTIGLEN bases to `kmerHash`, forward strand only,
/// in the order scaffold, contig, offset. A k-mer that occurs again keeps its first place and loses
/// its `unique` bit.
void addContigKmers(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum);

class PlainIndex {
 public:
  /// The answers of `set`, filled by addContigKmers with k-mers of `kmer` bases. Set and model must
  /// stay as they are. REQUIRES: kmer == Kmer.
  PlainIndex(const HashSet& set, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer)
      : set_(set), scaffoldInfo_(scaffoldInfo), scaffoldSum_(scaffoldSum), kmer_(kmer) {}

  /// The answer for a packed k-mer; none when no contig holds it. In an assembly whose indexes
  /// outgrow an entity's fields, the place is the first that agrees with the fields' low bits and
  /// holds this k-mer.
  std::optional<KmerAnswer> placeOf(uint64_t key) const;

 private:
  uint64_t keyAt(const ContigInfo& contig, uint64_t offset) const;
  uint64_t offsetOf(const Entity& hit, const ContigInfo& contig) const;
  KmerPlace firstPlaceOf(const Entity& hit) const;

  const HashSet& set_;
  const ScaffoldInfo* scaffoldInfo_;
  uint32_t scaffoldSum_;
  int kmer_;  // bases
};

}  // namespace velk
