// The peak memory of a velk run, from what it will hold at once.
#pragma once

#include <cstdint>

#include "check/survey.h"

namespace velk::check {

struct MemoryEstimate {
  uint64_t table = 0;     // look-up table and its bitmaps, bytes in use
  uint64_t asked = 0;     // the same as far as it is asked of the system
  uint64_t assembly = 0;  // contigs, gaps and names
  uint64_t side = 0;      // filter in front of the table
  uint64_t batch = 0;     // a batch of reads, and what is found in it
  uint64_t peak = 0;      // all of it at its highest
};

/// The estimate for the run of `survey` with these values of -m and -f.
/// REQUIRES: the assembly is loaded and its k-mers are counted.
MemoryEstimate estimateMemory(const Survey& survey, uint64_t initSlots, float loadFactor);

}  // namespace velk::check
