// The page of a run, report.html: one file that fetches nothing; and its parts, from top to bottom,
// as HTML.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "report/figures.h"
#include "report/gapReads.h"
#include "report/html.h"

namespace velk::report {

/// The sentence, the tiles and the warnings.
std::string topSection(const Findings& findings);

std::string librarySection(const Findings& findings);

/// What is said of all gaps together: the plots and the reasons.
std::string gapSection(const Findings& findings);

/// The table of the gaps, as far as it has room. `drawn`: gaps whose drawings it leads to.
std::string tableSection(const Findings& findings, const std::set<std::size_t>& drawn);

/// Drawings of some gaps, of at most `mostBytes`; `drawn` (out): which.
std::string drawingSection(const Findings& findings, GapReadSource& reads, std::size_t mostBytes,
                           std::set<std::size_t>& drawn);

/// A bar of parts with a key. `parts`: class, name and number; those of 0 are left out.
struct BarPart {
  std::string classes;
  std::string name;
  uint64_t number;
};
std::string stackedBar(const std::vector<BarPart>& parts);

/// Where a gap lies: "12,001-12,400", from 1 as people count.
std::string placeText(const GapData& gap);

/// A dot in a reason's colour, and its name.
std::string reasonChip(const Judgement& judged);

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
