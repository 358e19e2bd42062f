// Pairs that span a gap: one read lies in the contig in front of it, the other in the contig
// behind, and the insert size then says how long the gap is. Any thread may ask.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "kmer/seedIndex.h"
#include "run/alignment.h"
#include "run/found.h"
#include "run/library.h"

namespace velk::run {

/// What a pair says of a gap.
struct Span {
  uint64_t gap;    // number, from 0
  int64_t length;  // what the insert size leaves for it, bases; may be negative
  int64_t bases;   // of both reads, which is the least of the fragment that lies on the contigs
};

/// The two reads of a pair as they were sequenced.
struct PairBases {
  std::string_view anchor;
  std::string_view mate;
};

class Spans {
 public:
  /// All of these outlive it. `kmer`: that of the index, bases; `mapCut`: the least share of equal
  /// bases.
  Spans(const Assembly& assembly, const SeedIndex& index, int kmer, double mapCut)
      : assembly_(assembly), index_(index), kmer_(kmer), mapCut_(mapCut) {}

  /// A pair whose anchor lies within a contig spans the gap on its mate's side if all of the mate
  /// lies in the next contig, and not so far that the gap would be more than three deviations below
  /// nothing. The mate is looked up by its middle k-mer.
  std::optional<Span> find(const FoundAnchor& anchor, const PairBases& pair,
                           const Library& library) const;

 private:
  const Assembly& assembly_;
  const SeedIndex& index_;
  int kmer_;
  double mapCut_;
};

}  // namespace velk::run
