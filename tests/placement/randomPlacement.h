// Random small assemblies, parameters and reads for the comparison of velk with its plain model.
//
// Sized so that rules meet: short contigs with repeats, gaps of the order of the inserts (negative
// ones too), reads mostly from the contigs' ends, and pairs that span what the insert says.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/placement/plainPlacement.h"

namespace velk::test {

struct RandomPlacement {
  std::vector<TestScaffold> assembly;
  PlainSettings settings;
  int workers;
  std::vector<std::string> reads;  // a single-end batch
  std::vector<std::string> first;  // a batch of pairs
  std::vector<std::string> second;
};

/// The same for the same seed.
RandomPlacement randomPlacement(uint32_t seed);

}  // namespace velk::test
