// Fills the k-mer hash set from the contigs, and finds a hit's place again.
//
// The driver calls FetchKmers1 once, after the scaffold model is loaded and before any worker
// exists; workers call placeOf for every unique hit.
#pragma once

#include <cstdint>

#include "contig/contig.h"
#include "kmer/hashSet.h"
#include "kmer/kmerPlace.h"
#include "kmer/sideIndex.h"

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

/// Adds every k-mer of every contig of at least CONTIGLEN bases to `kmerHash`, forward strand only,
/// in the order scaffold, contig, offset. A k-mer that occurs again keeps its first place and loses
/// its `unique` bit. Also makes and fills `sideIndex`, and notes whether the model outgrows an
/// entity's fields. Uses the threads that the run has (kmer/fillIndex.h).
void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum);

extern SideIndex& sideIndex;  // empty: beside the run's hash set, built by FetchKmers1

/// Returns the place of `hit`, a filled slot of the run's hash set whose `unique` bit is set. In an
/// assembly whose indexes outgrow an entity's fields it is the one indexed place that agrees with
/// the fields' low bits and holds this k-mer; else the fields themselves, at no cost.
KmerPlace placeOf(const Entity& hit);

}  // namespace velk
