// velk-run extract: the reads of some gaps out of a folder of results, without reading the others.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velk::run {

enum class ExtractForm : uint8_t { kFastq, kFasta, kBam };

struct ExtractRequest {
  std::string folder;
  std::vector<uint64_t> gaps;
  ExtractForm form = ExtractForm::kFastq;
  uint64_t flankBases = 0;  // of each flank, in front of a gap's reads; 0: none. None in BAM.
};

/// Writes to `output` ("-": standard output), gap by gap as asked for: the flanks, the pairs with
/// interleaved, the single reads; or the BAM records, ordered by place, of all these gaps.
/// Throws Failure: where the folder holds no whole result, has no such gap, or a file fails.
void extractReads(const ExtractRequest& request, const std::string& output);

}  // namespace velk::run
