// Lengths of reads, contigs and gaps, signed for arithmetic on positions.
#pragma once

#include <cstdint>
#include <string_view>

#include "contig/contig.h"

namespace velk {

/// Length of the gap in front of `contig`, bases; negative where a contig file says so.
inline int64_t gapBefore(const ContigInfo& contig) {
  return static_cast<int64_t>(contig.frontGapSize);
}

/// Number of bases of a contig or a read.
inline int64_t lengthOf(std::string_view bases) {
  return static_cast<int64_t>(bases.size());
}

}  // namespace velk
