// From a place in the model to a found-read record.
#pragma once

#include <cstdint>
#include <string>

#include "contig/contig.h"
#include "streaming/readBuffer.h"

namespace velk {

/// Length of the gap in front of `contig`, bases; negative where a contig file says so.
inline int64_t gapBefore(const ContigInfo& contig) {
  return static_cast<int64_t>(contig.frontGapSize);
}

/// Number of bases of a contig or a read, signed for arithmetic on positions.
inline int64_t lengthOf(const std::string& bases) {
  return static_cast<int64_t>(bases.size());
}

/// Records `read` for the gap in front of contig `contigBehind` of `scaffoldIndex`, its first base
/// `position` bases behind the gap's first base. t, n: see recordFound.
/// REQUIRES: contigBehind >= 1.
inline void recordAtGap(int t, uint32_t& n, const std::string& read, uint64_t scaffoldIndex,
                        uint64_t contigBehind, int64_t position) {
  const ContigInfo& behind = scaffoldInfo[scaffoldIndex].contigsInfo[contigBehind];
  recordFound(t, n, read,
              {scaffoldIndex, contigBehind - 1, position, behind.frontGapNum, behind.frontGapSize});
}

}  // namespace velk
