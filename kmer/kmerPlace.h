// Where a k-mer lies in the scaffold model, and what an index answers about it.
#pragma once

#include <cstdint>

namespace velk {

/// Scaffold and contig index, offset of the k-mer's first base in contigSeq.
struct KmerPlace {
  uint64_t scaffold;
  uint64_t contig;
  uint64_t start;
};

/// What is known of a k-mer that the contigs hold.
struct KmerAnswer {
  KmerPlace first;  // its first occurrence, in the order scaffold, contig, offset
  bool isUnique;    // it has no other
};

}  // namespace velk
