// Random assemblies made of repeats, on both strands, and reads along them.
//
// What is met in them: k-mers whose reverse complement is in the index too, repeats that differ by
// a base, reads that change from one contig to another, and letters that are no bases.
#pragma once

#include <cstdint>

#include "tests/placement/randomPlacement.h"

namespace velk::test {

/// The same for the same seed. K-mers have 16 to 32 bases.
RandomPlacement repeatPlacement(uint32_t seed);

}  // namespace velk::test
