// The figures of a run as a whole, counted once for page, text, summary and MultiQC.
#pragma once

#include <array>
#include <cstdint>

#include "report/figures.h"

namespace velk::report {

/// Gaps of which a reason is told.
struct ReasonCount {
  uint64_t none = 0;  // without reads
  uint64_t few = 0;   // with reads; of Reason::kEnough with enough of them
};

struct Tally {
  uint64_t withReads = 0;  // gaps
  uint64_t few = 0;        // gaps with reads, but few
  uint64_t covered = 0;    // gaps that exact reads cover whole
  uint64_t exact = 0;      // reads at gaps
  uint64_t estimates = 0;  // likewise
  uint64_t medianReads = 0;
  std::array<ReasonCount, kReasons> reasons;
};

Tally tallyOf(const Findings& findings);

}  // namespace velk::report
