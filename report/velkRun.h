// A run of velk itself, as velk-report shows it: what its four files say, and how sure the places
// of the reads are, by the check that velk-run makes (run/placeCheck.h).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "report/gapReads.h"
#include "report/runData.h"
#include "report/velkModel.h"

namespace velk::report {

constexpr double kUsualIdentity = 0.98;  // -M
constexpr double kUsualSpread = 0.1;     // of the insert size

/// A read at a gap.
struct PlacedRead {
  int64_t start;    // on the scaffold: of what is aligned
  uint32_t bases;   // aligned ones; 0: none
  uint32_t gap;     // index
  uint32_t insert;  // of its library; 0: single reads
  ReadKind kind;
};

struct PlacedReads {
  std::vector<PlacedRead> reads;  // by gap
  std::vector<Reach> reach;       // of the exact ones, by gap
};

/// Reads the file of the reads found. Throws Failure where it is damaged, or names a gap that the
/// model does not have.
PlacedReads placeReads(const std::string& found, const VelkModel& model);

/// The names of the files.
struct VelkFiles {
  std::string found;      // the reads found
  std::string scaffolds;  // what the three others are named after
};

struct VelkRun {
  RunData data;
  std::unique_ptr<GapReadSource> reads;
};

/// Throws Failure where a file is missing or damaged, or they are not of one run.
VelkRun readVelkRun(const VelkFiles& files);

}  // namespace velk::report
