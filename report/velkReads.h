// The reads that velk has found, as its output has them, each with its place and how sure that is.
#pragma once

#include <string>
#include <vector>

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

}  // namespace velk::report
