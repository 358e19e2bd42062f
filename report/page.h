// The page of a run, report.html: one file that fetches nothing.
#pragma once

#include <string>

#include "report/figures.h"
#include "report/gapReads.h"

namespace velk::report {

/// Most bytes of a page.
constexpr std::size_t kMostBytes = 3'000'000;

/// `reads`: where the reads of gaps are drawn from; null: nothing is drawn.
std::string makePage(const Findings& findings, GapReadSource* reads);

}  // namespace velk::report
