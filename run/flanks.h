// flanks.fa.gz: the contigs' ends beside each gap, which an assembly of the gap's reads is set
// beside.
#pragma once

#include <cstdint>
#include <string>

#include "run/assembly.h"

namespace velk::run {

/// So many bases of each flank are kept at most.
constexpr uint64_t kLongestFlank = 500;

/// The two records of a gap, each with its sequence on one line: the end of the contig in front,
/// and the start of the one behind.
std::string flanksOf(const Assembly& assembly, uint64_t gap);

}  // namespace velk::run
