// Reads along two contigs, on either strand, with wrong bases at chosen places or without; and
// reads from elsewhere.
#pragma once

#include "tests/placement/randomPlacement.h"

namespace velk::test {

/// For k-mers of so many bases, from 1 on.
RandomPlacement mismatchPlacement(int kmer);

}  // namespace velk::test
