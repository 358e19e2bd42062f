// The plain engine's index: every k-mer of the contigs in one hash set, looked up one by one.
//
// It follows the rules of indexing literally; tests compare the fast engine's index with it.
// FetchKmers1 fills the set before any worker exists; afterwards any thread may look up.
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
  /// The answers of `set`, which addContigKmers has filled with the k-mers of this model. Set,
  /// model and Kmer must stay as they are.
  PlainIndex(const HashSet& set, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum)
      : set_(set), scaffoldInfo_(scaffoldInfo), scaffoldSum_(scaffoldSum) {}

  /// The answer for a packed k-mer; none if no contig has it. In an assembly whose indexes outgrow
  /// an entity's fields, the place is the first that agrees with the fields' low bits and holds
  /// this k-mer.
  std::optional<KmerAnswer> placeOf(uint64_t key) const;

 private:
  uint64_t keyAt(const ContigInfo& contig, uint64_t offset) const;
  uint64_t offsetOf(const Entity& hit, const ContigInfo& contig) const;
  KmerPlace firstPlaceOf(const Entity& hit) const;

  const HashSet& set_;
  const ScaffoldInfo* scaffoldInfo_;
  uint32_t scaffoldSum_;
};

}  // namespace velk
