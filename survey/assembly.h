// The assembly as the survey looks at it: the scaffolds of a model, and what they hold.
//
// kmer/contigWindows.h says which k-mers are indexed. It reads the run parameters Kmer and
// CONTIGLEN; the survey reads no others.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "contig/contig.h"
#include "kmer/contigWindows.h"

namespace velk::survey {

/// The scaffolds of a model (contig/contig.h), which outlives whatever is made of them.
using Scaffolds = std::span<const ScaffoldInfo>;

/// Calls onContig(contig) for every contig, in order.
template <class OnContig>
void forEachContig(Scaffolds scaffolds, OnContig onContig) {
  for (const ScaffoldInfo& info : scaffolds) {
    for (uint32_t j = 0; j < info.contigsSum; ++j) onContig(info.contigsInfo[j]);
  }
}

/// The bases of all contigs.
uint64_t contigBases(Scaffolds scaffolds);

/// The k-mers that are indexed, counted as often as they occur.
uint64_t indexedKmers(Scaffolds scaffolds);

/// The bases of every contig that has k-mers in the index.
std::vector<uint64_t> indexedLengths(Scaffolds scaffolds);

}  // namespace velk::survey
