// The fast engine of placement: it looks only those windows up that can be hits.
//
// Groups of reads are prepared together, step by step (placement/readPreparer.h), and the windows
// that are left are walked over (placement/candidateWindows.h). A read with other letters than
// bases is not prepared: all its windows are looked up. Each step can be left out
// (FastSteps); then more windows are looked up.
#pragma once

#include <span>

#include "kmer/seedIndex.h"
#include "placement/candidateWindows.h"
#include "placement/kmerWalk.h"
#include "placement/readPreparer.h"

#ifndef VELK_FAST_STEPS
#define VELK_FAST_STEPS \
  {}  // a benchmark may build velk with others
#endif

namespace velk {

/// See placement/plainEngine.h.
class FastEngine {
 public:
  using Prepared = PreparedRead;

  /// `index` outlives the engine.
  FastEngine(const SeedIndex& index, int kmer, const FastSteps& steps = VELK_FAST_STEPS)
      : preparer_(index, steps), kmer_(kmer) {}

  std::size_t group() const { return preparer_.steps().groups ? 16 : 1; }

  void prepare(std::span<Prepared> leads, std::span<Prepared> others, bool isReversedFirst) {
    preparer_.prepareGroup(leads, others, isReversedFirst);
  }

  template <class Strand, class Visit>
  int64_t visitHits(Strand& strand, Visit visit) {
    if (!strand.prepared().isPacked()) {
      AllWindows windows(preparer_.index(), strand.bases(), kmer_);
      return visitUniqueHits(windows, visit);
    }
    CandidateWindows windows(preparer_, kmer_, strand.prepared(), strand.origin().isReversed);
    return visitUniqueHits(windows, visit);
  }

 private:
  ReadPreparer preparer_;
  int kmer_;
};

}  // namespace velk
