// The run's index, as the driver knows it: made, filled from the contigs, released.
//
// The driver calls newKmerHash first, FetchKmers1 once, after the scaffold model is loaded and
// before any worker exists, and freeKmerHash at the end. One of two engines implements it, chosen
// when velk is built: fetchKmersFast.cpp, or fetchKmersPlain.cpp with the macro VELK_PLAIN_ENGINE.
// Both give the same messages, `count` and `size`.
#pragma once

#include <cstdint>

#include "contig/contig.h"
#include "kmer/hashSet.h"

namespace velk {

extern HashSet* kmerHash;  // null: the set of the run, written by the driver

/// Returns the run's set, made by init_hashset; with the fast engine only its numbers, without an
/// array. Exits with status 1 after init_hashset's out-of-memory message when there is no memory
/// for it, or when no table may have so many slots.
HashSet* newKmerHash(uint64_t initSize, float loadFactor);

/// Indexes every k-mer of every contig of at least CONTIGLEN bases, forward strand only, in the
/// order scaffold, contig, offset. A k-mer that occurs again keeps its first place and is not
/// unique any more. Sets `count`, `size` and `max`, and writes two lines for each growth. Contigs
/// must stay as they are until freeKmerHash. Exits with status 1 after enlarge_hashset's
/// out-of-memory message when there is no memory, or when the table would grow beyond kMaxSlots.
void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum);

/// Of the fast engine: sets the numbers of a new set to their values after adding `keys` distinct
/// keys, and writes the lines that add_hashset writes as it grows. Exits like enlarge_hashset
/// without memory when the set would grow beyond kMaxSlots.
void growToHold(HashSet* set, uint64_t keys);

/// Releases the set, and what FetchKmers1 made for it.
void freeKmerHash(HashSet* kmerHash);

}  // namespace velk
