// velk-run extract: the reads of some gaps, or their alignment records, out of a folder of results,
// without reading the others.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/tables.h"

namespace velk::run {

enum class ExtractForm : uint8_t { kFastq, kFasta, kBam };

enum class ExtractPart : uint8_t { kAll, kPairs, kSingles };

/// Gaps that follow each other, or one.
struct GapRange {
  // cppcheck-suppress noExplicitConstructor ; a gap is as good as a range
  GapRange(uint64_t gap) : first(gap), last(gap) {}  // NOLINT: a gap is as good as a range
  GapRange(uint64_t from, uint64_t to) : first(from), last(to) {}

  uint64_t first;
  uint64_t last;
};

struct ExtractRequest {
  std::string folder;
  std::vector<GapRange> gaps;
  ExtractForm form = ExtractForm::kFastq;
  uint64_t flankBases = 0;               // of each flank, in front of a gap's reads; none in BAM
  ExtractPart part = ExtractPart::kAll;  // of a gap's reads; all in BAM
};

/// Writes to `output` ("-": standard output), gap by gap as asked for: the flanks, the pairs with
/// interleaved, the single reads; or the BAM records, ordered by place, of all these gaps.
/// Throws Failure: where the folder holds no whole result, has no such gap, or a file fails.
void extractReads(const ExtractRequest& request, const std::string& output);

/// Writes the records of these gaps, ordered by place: those found there, and the other reads of
/// their pairs. `bam`, `bamIndex`: the files; `gaps`: numbers in ascending order. Throws Failure.
void extractBam(const std::string& bam, const std::string& bamIndex, const GapIndex& index,
                const std::vector<uint64_t>& gaps, const std::string& output);

}  // namespace velk::run
