// The page of a run, report.html: one file that fetches nothing.
#pragma once

#include <string>
#include <string_view>

#include "report/figures.h"
#include "report/gapReads.h"

namespace velk::report {

/// Most bytes of a page.
constexpr std::size_t kMostBytes = 3'000'000;

/// `reads`: where the reads of gaps are drawn from; null: nothing is drawn.
std::string makePage(const Findings& findings, GapReadSource* reads);

// What all pages have.

/// The mark at the top.
extern const std::string_view kBrand;

/// All up to the body. `title` is plain text.
std::string pageHead(const std::string& title);

/// All from the end of <main> on.
std::string pageEnd();

}  // namespace velk::report
