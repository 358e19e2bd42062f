// What placement does with the letters of a read: reverse complements, and the three ungapped
// checks of a read against a contig. And what all of placement shares: lengths, the options of a
// run.
//
// A check says why the read does not lie there. Its `offset` is the contig position of the read's
// first base, negative if that is to the left of the contig. Letters are compared byte by byte.
// Pure functions; any thread may call them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "contig/contig.h"

namespace velk {

/// What placement needs to know of the run and of the library.
struct PlacementOptions {
  int kmer;                 // bases in a k-mer
  int insert;               // bases of a fragment, both reads included; 0 for single reads
  int bigGapLength;         // longer inserts are used at gaps of at least so many bases only
  int readLength;           // bases that a read is expected to have
  double mapCut;            // least share of equal bases in an overlap
  double overRatio;         // least share of a read that overlaps a contig
  bool areOutward = false;  // outward pairs: their reverse complements are tried
};

enum class Refusal : uint8_t {
  kNone,
  kNoGap,         // there is no gap on the side on which the read, or its mate, would reach one
  kAtFirstBase,   // a single read that starts on the contig's first base
  kInsideContig,  // a single read that ends before the contig does
  kSmallGap,      // a large insert at a small gap: the walk ends, and the whole pair is given up
  kShortOverlap,  // too few bases of the read lie on the contig
  kUnlike         // too few of those are the contig's
};

/// Length of the gap to the left of `contig`, bases; negative if a contig file says so.
inline int64_t gapBefore(const ContigInfo& contig) {
  return static_cast<int64_t>(contig.frontGapSize);
}

/// Number of bases of a contig or a read.
inline int64_t lengthOf(std::string_view bases) {
  return static_cast<int64_t>(bases.size());
}

/// Returns the number of i in [0, length) with one[i] == other[i].
/// A plain loop: gcc makes vector instructions of it at -O3.
inline std::size_t countEqual(const char* one, const char* other, std::size_t length) {
  std::size_t equal = 0;
  for (std::size_t i = 0; i < length; ++i) equal += one[i] == other[i] ? 1 : 0;
  return equal;
}

/// Writes the reverse complement of `src` to `dest` (inout), in upper case, N as A.
/// REQUIRES: dest.size() == src.size().
void ReverseComplementSeq(std::string& dest, const std::string& src);

/// Makes an inward pair of an outward one: a becomes the reverse complement of the old b, b that of
/// the old a (both inout). REQUIRES: &a != &b.
void LongReverseComplement(std::string& a, std::string& b);

/// The read starts inside the contig and runs to or over its right end. REQUIRES: offset > 0.
Refusal checkOverRightEnd(std::string_view contig, const std::string& read, int64_t offset,
                          const PlacementOptions& options);

/// The read starts to the left of the contig and runs onto it. REQUIRES: offset < 0.
Refusal checkOverLeftEnd(std::string_view contig, const std::string& read, int64_t offset,
                         const PlacementOptions& options);

/// The read lies anywhere on the contig.
Refusal checkOnContig(std::string_view contig, const std::string& read, int64_t offset,
                      const PlacementOptions& options);

}  // namespace velk
