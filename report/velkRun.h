// A run of velk itself, as velk-report shows it: what its four files say, and how sure the places
// of the reads are, by the check that velk-run makes (run/placeCheck.h).
#pragma once

#include <memory>
#include <string>

#include "report/gapReads.h"
#include "report/runData.h"

namespace velk::report {

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
