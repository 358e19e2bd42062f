// velk's own code at work inside velk-check: a small run of its stages on the sample, with index,
// places of the reads and timed search; a short try of how long it takes to read records. Its
// messages are dropped, its early ends become exceptions.
#pragma once

#include <string>
#include <string_view>

#include "check/survey.h"
#include "driver/listener.h"

namespace velk::check {

/// velk's code would have ended the run with this message (without its last newline).
struct Refusal {
  int status;
  std::string message;
};

/// The listener of velk-check: it drops messages and throws Refusal.
class RefusingListener final : public Listener {
 public:
  void say(std::string_view /*text*/) override {}
  [[noreturn]] void end(ExitStatus status, std::string_view message) override;
};

/// Returns the seconds in which velk's own line sources read one record of `input`: a read, or both
/// reads of a pair. 0 when the file gives none.
double secondsToReadRecord(const ReadInput& input);

/// Counts the k-mers that velk would index into survey.kmers. Returns false when there are none.
bool countKmers(Survey& survey);

/// The k-mers that are indexed here at most; their index takes about 0.14 GB for
/// k-mers of 31 bases.
inline constexpr uint64_t kMostIndexed = 100000000;

/// Builds an index of the first contigs that hold `mostKmers` k-mers or, if the free memory is
/// small, less, and fills in index, distinctKmers, isExact and secondsPerKmer. distinctKmers counts
/// the whole assembly; where it is an estimate it is too large rather than too small. Returns the
/// share of the k-mers that is indexed. REQUIRES: countKmers has answered true.
double buildIndex(Survey& survey, uint64_t mostKmers = kMostIndexed);

/// Fills survey.measures from the samples of all pairs. REQUIRES: the index is built.
void measurePairs(Survey& survey);

/// Searches the samples as velk would and fills in secondsPerRead and foundPerRead. Returns the
/// number of reads searched. The samples are used up. REQUIRES: the index is built.
uint64_t searchSample(Survey& survey);

}  // namespace velk::check
