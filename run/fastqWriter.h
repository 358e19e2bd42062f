// pairs.fq.gz and singles.fq.gz: the reads of the gaps as they were sequenced, and where in them
// each gap's begin.
//
// Any thread encodes; one thread then writes what was encoded, ordered by gap.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "run/bgzipWriter.h"
#include "run/found.h"
#include "run/nameClashes.h"

namespace velk::run {

/// Which reads of an entry are written for a gap: both, or one of them.
enum class Written : uint8_t { kFirst, kSecond, kBoth };

/// The quality of every base of reads that have none: Phred 33, as samtools gives it.
constexpr char kUnknownQuality = 'B';

/// What FastqWriter::write() takes.
std::string encodeFastq(const FoundEntry& entry, Written written);

/// Where the text of a gap begins in both files, bytes of text.
struct TextPlace {
  uint64_t pairs;
  uint64_t singles;
};

class FastqWriter {
 public:
  /// Throws Failure. `gaps`: how many there are.
  FastqWriter(BgzipWriter& pairs, BgzipWriter& singles, const NameClashes& clashes, uint64_t gaps)
      : pairs_(pairs), singles_(singles), clashes_(clashes), gaps_(gaps) {}

  /// Writes the reads of an entry for a gap. REQUIRES: gaps in ascending order. Throws Failure.
  void write(uint64_t gap, std::string_view encoded);

  /// To be called after the last: where each gap begins, and at last the ends.
  std::vector<TextPlace> finish();

 private:
  void beginGapsTo(uint64_t gap);

  BgzipWriter& pairs_;
  BgzipWriter& singles_;
  const NameClashes& clashes_;
  uint64_t gaps_;
  std::vector<TextPlace> places_;
};

}  // namespace velk::run
