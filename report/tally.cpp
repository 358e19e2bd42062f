#include "report/tally.h"

#include <algorithm>

namespace velk::report {

Tally tallyOf(const Findings& findings) {
  Tally tally;
  std::vector<uint64_t> reads;
  for (std::size_t gap = 0; gap < findings.gaps.size(); ++gap) {
    const Judgement& judged = findings.gaps[gap];
    reads.push_back(judged.belonging);
    if (judged.hasReads()) ++tally.withReads;
    if (judged.isFew()) ++tally.few;
    const Reached reached = reachedOf(findings.data, gap);
    if (reached.front + reached.behind >= 1) ++tally.covered;
    tally.exact += findings.data.count(gap, ReadKind::kExact);
    tally.estimates += findings.data.count(gap, ReadKind::kEstimate);
    ReasonCount& count = tally.reasons[static_cast<std::size_t>(judged.reason)];
    ++(judged.hasReads() ? count.few : count.none);
  }
  if (reads.empty()) return tally;
  const auto middle = reads.begin() + static_cast<std::ptrdiff_t>(reads.size() / 2);
  std::nth_element(reads.begin(), middle, reads.end());
  tally.medianReads = *middle;
  return tally;
}

}  // namespace velk::report
