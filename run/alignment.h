// A read laid on its scaffold without gaps of its own: which of its bases count as aligned, and
// which are clipped; and a read on the other strand. Pure functions; positions count from 0.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "run/assembly.h"

namespace velk::run {

/// A scaffold with the bases of its contigs, all of which outlive it.
struct ScaffoldText {
  const Scaffold& places;
  const ContigInfo* bases;

  ScaffoldText(const Scaffold& scaffold, const ContigInfo* contigs)
      : places(scaffold), bases(contigs) {}
  ScaffoldText(const Assembly& assembly, uint64_t number)
      : ScaffoldText(assembly.scaffolds()[number], assembly.model()[number].contigsInfo) {}

  const std::vector<ContigPlace>& contigs() const { return places.contigs; }
  int64_t length() const { return static_cast<int64_t>(places.length); }
  std::string_view basesOf(uint64_t contig) const { return bases[contig].bases(); }
};

/// A stretch of a scaffold, signed for arithmetic on positions.
struct Stretch {
  int64_t start;
  int64_t end;  // behind the last base

  int64_t length() const { return end - start; }
};

inline Stretch stretchOf(const ContigPlace& contig) {
  return {static_cast<int64_t>(contig.start), static_cast<int64_t>(contig.end)};
}

/// What two stretches have in common; of a negative length where that is nothing.
inline Stretch common(const Stretch& one, const Stretch& other) {
  return {std::max(one.start, other.start), std::min(one.end, other.end)};
}

/// Whether so many of the read's bases are the contig's as an overlap asks for: the least share
/// is `mapCut`. Bases are compared as they stand. True without any base.
bool agrees(const char* contig, const char* read, int64_t length, double mapCut);

/// Which bases of a read are aligned.
struct Alignment {
  Stretch aligned{-1, -1};      // the aligned bases; without any, -1
  std::vector<uint32_t> cigar;  // as BAM has it; none without an aligned base

  bool isEmpty() const { return cigar.empty(); }
};

/// A read that lies on the stretch `read`, aligned within `limits` and clipped beyond.
Alignment alignedWithin(const Stretch& read, const Stretch& limits);

/// A read that agrees with a contig: aligned there and over the gaps next to it; over the contigs
/// beyond, too, as far as it agrees with each; clipped from the first on with which it does not,
/// and at the scaffold's ends.
Alignment alignedOnContig(const ScaffoldText& scaffold, uint64_t contig, int64_t start,
                          std::string_view read, double mapCut);

/// The number of aligned bases that are not a contig's; those over gaps count.
int differences(const ScaffoldText& scaffold, int64_t start, std::string_view read,
                const Alignment& alignment);

/// The reverse complement: codes of several bases too; other letters stay what they are.
std::string reverseComplementOf(std::string_view bases);

/// The qualities of the reverse complement.
std::string reversedQuality(std::string_view quality);

}  // namespace velk::run
