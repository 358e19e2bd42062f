// A run in figures: what is said of its gaps; how many there are of each sort, counted once for
// page, text, summary and MultiQC; and the plots of the page, each the SVG of one picture, with the
// classes by which page.css and drawing.css give libraries, kinds of reads and reasons their
// colours.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "report/gapReasons.h"
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

/// Gaps that have a reason.
struct ReasonCount {
  uint64_t none = 0;  // without reads
  uint64_t few = 0;   // with reads; of Reason::kEnough with enough of them
};

struct Tally {
  uint64_t withReads = 0;    // gaps
  uint64_t few = 0;          // gaps with reads, but few
  uint64_t covered = 0;      // gaps that exact reads cover whole
  uint64_t exact = 0;        // reads at gaps
  uint64_t estimates = 0;    // likewise
  uint64_t medianReads = 0;  // of a gap, rounded down
  std::array<ReasonCount, kReasons> reasons;
};

Tally tallyOf(const Findings& findings);

/// The classes of a path of so many dots, fewer of which are larger; `more`: others of it.
std::string dotClasses(std::size_t dots, const std::string& more);

/// The classes by which page.css and drawing.css give colours.
constexpr std::size_t kLibraryColours = 8;

inline std::string libraryClass(std::size_t library) {
  return "lib" + std::to_string(library % kLibraryColours);
}

inline const char* kindClass(ReadKind kind) {
  switch (kind) {
    case ReadKind::kExact:
      return "exact";
    case ReadKind::kEstimate:
      return "estimate";
    case ReadKind::kContained:
      return "contained";
    case ReadKind::kAnchor:
      break;
  }
  return "anchor";
}

inline std::string reasonClass(Reason reason) {
  return "why" + std::to_string(static_cast<int>(reason));
}

}  // namespace velk::report
