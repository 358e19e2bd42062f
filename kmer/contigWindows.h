// Which windows of the scaffold model are indexed: all k-mers, forward strand only, of every contig
// of at least CONTIGLEN bases.
#pragma once

#include <cstdint>

#include "contig/contig.h"

namespace velk {

/// The number of k-mers of a contig that are indexed, counted in 32 bits; 0 for a contig shorter
/// than CONTIGLEN or Kmer.
uint32_t windowsOf(const ContigInfo& contig);

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
