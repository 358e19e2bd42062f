// Files by which MultiQC shows runs side by side without a plug-in, a row a sample.
#pragma once

#include <string>

#include "report/figures.h"

namespace velk::report {

/// velk_mqc.json: a table of figures.
std::string multiqcTable(const Findings& findings);

/// velk_gaps_mqc.json: the gaps by what is said of them, as bars.
std::string multiqcGaps(const Findings& findings);

}  // namespace velk::report
