// The reads of single gaps, as they are drawn.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "report/runData.h"

namespace velk::report {

/// A read at a gap.
struct GapRead {
  uint64_t fragment;  // the same of both reads of a pair
  int64_t start;      // on the scaffold, from 0: of what is aligned
  int64_t end;
  uint32_t library;
  ReadKind kind;  // kAnchor: not found here itself
};

/// The reads of a gap that have a place.
struct GapReads {
  std::vector<GapRead> reads;
  uint64_t withoutPlace = 0;
};

/// Where they come from.
class GapReadSource {
 public:
  GapReadSource() = default;
  virtual ~GapReadSource() = default;
  GapReadSource(const GapReadSource&) = delete;
  GapReadSource& operator=(const GapReadSource&) = delete;

  /// Throws Failure.
  virtual GapReads readsOf(std::size_t gap) = 0;
};

/// The alignment records of a folder of results. Throws Failure.
std::unique_ptr<GapReadSource> openRecords(const std::string& folder, const RunData& data);

}  // namespace velk::report
