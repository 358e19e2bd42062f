// Fills the hash set and the side index of a run with the threads of the run.
//
// Where the set will not grow each thread adds the k-mers of a share of its slots
// (kmer/tableShare.h); else one thread adds all of them. The side index is filled at the same time,
// by the last thread, and is settled at the end. Set, side index and messages are the same whatever
// the number of threads.
#pragma once

#include <cstdint>

#include "contig/contig.h"
#include "kmer/hashSet.h"

namespace velk {

/// The contigs whose k-mers are indexed.
struct IndexedModel {
  const ScaffoldInfo* scaffoldInfo;
  uint32_t scaffoldSum;
  uint64_t kmers;   // indexed k-mers
  bool fitsEntity;  // no place outgrows an entity's fields
};

/// Adds every indexed k-mer of `model` to `set`, and to `sideIndex` where that is made. Throws
/// std::bad_alloc without memory for the set; without it for the side index, that is released.
void fillIndex(HashSet* set, const IndexedModel& model);

}  // namespace velk
