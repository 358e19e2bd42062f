// The plots of the page. Each is the SVG of one picture.
#pragma once

#include <string>
#include <vector>

#include "report/judgement.h"
#include "report/runData.h"

namespace velk::report {

/// A run, and what is said of its gaps.
struct Findings {
  const RunData& data;
  const Judge& judge;
  const std::vector<Judgement>& gaps;
};

/// How long the fragments of a library of pairs are.
std::string plotInserts(const LibraryData& library, std::size_t number);

/// Reads of each gap against its length, and what depth and reach predict.
std::string plotReads(const Findings& findings);

/// The length that pairs imply against the one that is written; `gaps` (out): how many have one.
std::string plotLengths(const Findings& findings, std::size_t& gaps);

/// How deep reads lie in the flanks, as multiples of the median.
std::string plotFlanks(const Findings& findings);

/// The share of each gap that exact reads cover from either side, gaps in the order of it.
std::string plotReach(const Findings& findings);

/// Bases of a gap that exact reads cover from the front and from behind, as shares.
struct Reached {
  double front = 0;
  double behind = 0;
};
Reached reachedOf(const RunData& data, std::size_t gap);

}  // namespace velk::report
