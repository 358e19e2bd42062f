// The windows of the scaffold model that are indexed: all k-mers, forward strand only, of every
// contig of at least CONTIGLEN bases. And what an index answers about a k-mer.
#pragma once

#include <cstdint>

#include "contig/contig.h"
#include "driver/velk.h"

namespace velk {

/// Scaffold and contig index, offset of the k-mer's first base in the contig.
struct KmerPlace {
  uint64_t scaffold;
  uint64_t contig;
  uint64_t start;
};

/// What an index knows of a k-mer of the contigs.
struct KmerAnswer {
  KmerPlace first;  // its first occurrence, in the order scaffold, contig, offset
  bool isUnique;    // whether it has no other
};

/// The number of k-mers of a contig that are indexed, counted in 32 bits; 0 for a contig shorter
/// than CONTIGLEN or Kmer.
inline uint32_t windowsOf(const ContigInfo& contig) {
  const std::size_t length = contig.bases().size();
  if (length < static_cast<uint32_t>(CONTIGLEN) || static_cast<int64_t>(length) < Kmer) return 0;
  return static_cast<uint32_t>(length - static_cast<std::size_t>(Kmer) + 1);
}

/// Calls onContig(i, j, contig, windows) for every contig that has k-mers in the index, in order.
template <class OnContig>
void forEachIndexed(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, OnContig onContig) {
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      const ContigInfo& contig = scaffoldInfo[i].contigsInfo[j];
      if (const uint32_t windows = windowsOf(contig); windows != 0) onContig(i, j, contig, windows);
    }
  }
}

}  // namespace velk
