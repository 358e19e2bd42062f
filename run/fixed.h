// The values that are fixed before the first read is searched.
#pragma once

#include <cstdint>
#include <vector>

#include "run/library.h"

namespace velk::run {

/// Values that depend on all libraries together.
struct FixedValues {
  std::vector<Library> libraries;  // with insert sizes, orientations and spreads
  int readLength = 100;            // bases that a paired read is expected to have
  int bigGapLength = 0;            // bases; longer inserts are used at gaps of at least so many
  uint64_t placeholderLength = 0;  // bases that a gap of unknown length is taken for at least
};

}  // namespace velk::run
