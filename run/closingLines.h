// What the user sees at the end of a run.
#pragma once

#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/gapCounts.h"
#include "run/summary.h"

namespace velk::run {

/// `folder`: of the results. `seconds`: that the run took.
std::vector<std::string> closingLines(const Summary& summary, const Assembly& assembly,
                                      const GapCounts& counts, const std::string& folder,
                                      double seconds);

}  // namespace velk::run
