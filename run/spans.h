// Pairs that span a gap: one read lies in the contig in front of it, the other in the contig
// behind, and the insert size then says how long the gap is. Any thread may ask.
//
// Of the fragments that reach over a gap with both reads on contigs the longer ones have more
// places, and those that are too short have none. So the pairs seen are longer than the library's
// fragments are, and the length is the one for which they are likeliest, not the mean of what the
// insert size leaves.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "kmer/seedIndex.h"
#include "run/alignment.h"
#include "run/found.h"
#include "run/library.h"

namespace velk::run {

/// The pairs of a library that span a gap.
struct SpanningPairs {
  double number;
  double left;    // mean of the insert size less what lies on the contigs, bases
  double bases;   // mean of both reads' bases
  double insert;  // of the library
  double spread;  // of the library, standard deviation
};

/// The likeliest length in bases, of fragments whose lengths are distributed normally; at least
/// three deviations below 0. REQUIRES: there are pairs.
double likeliestLength(const std::vector<SpanningPairs>& pairs);

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
