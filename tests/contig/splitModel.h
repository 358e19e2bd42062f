// A second, naive account of how a scaffold is cut, for comparison with the real one.
#pragma once

#include <cstdint>
#include <string>

#include "tests/contig/contigFixture.h"

namespace velk::test {

/// The parameters of splitting.
struct SplitRules {
  int contigLen;
  int cuttEdge;
  int readLen;
};

/// What splitting one scaffold should give.
struct SplitModel {
  PlainContigs contigs;
  std::string positions;  // .contigPos lines
  uint64_t gaps;          // number of the next gap
};

/// Splits `sequence`, named `id`; the next gap has the number `gaps`.
SplitModel modelOfSplit(const std::string& sequence, const std::string& id, SplitRules rules,
                        uint64_t gaps);

}  // namespace velk::test
