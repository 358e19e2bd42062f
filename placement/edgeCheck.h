// The three ungapped checks of a read against a contig: each says why the read does not lie there.
//
// `offset` is the contig position of the read's first base, negative in front of the contig. Bases
// are compared as they stand.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "placement/placementOptions.h"
#include "placement/verdict.h"

namespace velk {

/// The read starts inside the contig and runs to or over its right end. REQUIRES: offset > 0.
Refusal checkOverRightEnd(std::string_view contig, const std::string& read, int64_t offset,
                          const PlacementOptions& options);

/// The read starts in front of the contig and runs onto it. REQUIRES: offset < 0.
Refusal checkOverLeftEnd(std::string_view contig, const std::string& read, int64_t offset,
                         const PlacementOptions& options);

/// The read lies anywhere on the contig.
Refusal checkOnContig(std::string_view contig, const std::string& read, int64_t offset,
                      const PlacementOptions& options);

}  // namespace velk
