// The report as text for a terminal.
#pragma once

#include <cstddef>
#include <string>

#include "report/figures.h"

namespace velk::report {

/// Summary, reasons, and the gaps to look at first, in lines of at most `width` characters.
std::string summaryText(const Findings& findings, std::size_t width);

}  // namespace velk::report
