// The fast engine of placement: it looks only those windows up that can be hits.
//
// Groups of reads are prepared together, step by step (placement/prepareReads.h), and the windows
// that are left are walked over (placement/candidateWindows.h). A read with other letters than
// bases is not prepared: all its windows are looked up. Each step can be left out
// (FastSteps); then more windows are looked up.
#pragma once

#include <span>

#include "kmer/seedIndex.h"
#include "placement/allWindows.h"
#include "placement/candidateWindows.h"
#include "placement/prepareReads.h"

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
      : index_(index), kmer_(kmer), steps_(steps) {}

  std::size_t group() const { return steps_.groups ? 16 : 1; }

  void prepare(std::span<Prepared> leads, std::span<Prepared> others, bool isReversedFirst) {
    prepareGroup(index_, steps_, leads, others, isReversedFirst);
  }

  template <class Strand, class Visit>
  int64_t visitHits(Strand& strand, Visit visit) const {
    if (!strand.prepared().isPacked()) {
      AllWindows windows(index_, strand.bases(), kmer_);
      return visitUniqueHits(windows, visit);
    }
    CandidateWindows windows(index_, kmer_, strand.prepared(), strand.origin().isReversed, steps_);
    return visitUniqueHits(windows, visit);
  }

 private:
  const SeedIndex& index_;
  int kmer_;
  FastSteps steps_;
};

}  // namespace velk
