// Where a k-mer lies in the scaffold model.
#pragma once

#include <cstdint>

namespace velk {

/// Scaffold and contig index, offset of the k-mer's first base in contigSeq.
struct KmerPlace {
  uint64_t scaffold;
  uint64_t contig;
  uint64_t start;
};

}  // namespace velk
