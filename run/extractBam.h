// The alignment records of some gaps.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/gapIndex.h"

namespace velk::run {

/// Writes the records of these gaps, ordered by place: those found there, and the other reads of
/// their pairs. `bam`, `bamIndex`: the files; `gaps`: numbers in ascending order. Throws Failure.
void extractBam(const std::string& bam, const std::string& bamIndex, const GapIndex& index,
                const std::vector<uint64_t>& gaps, const std::string& output);

}  // namespace velk::run
