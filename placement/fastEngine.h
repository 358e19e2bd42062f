// The fast engine of placement: it looks only those windows up that can be hits.
//
// Groups of reads are prepared together, step by step, so that the memory which a step prefetches
// for one read arrives while the others take theirs:
//   1. pack: the letters become packed bases, if they are bases alone.
//   2. align: the first window of the read, else the last one, is looked up on both strands; where
//   it
//      is, the read is compared with the text along that diagonal.
//   3. sift: the seeds of all windows that do not agree with the text are looked up. A seed that is
//      not in the index rules all its windows out, on both strands; for one that is, the bases
//      around its places tell.
// What has not been prepared, the windows prepare when they need it. Each step can be left out
// (placement/fastSteps.h); then more windows are looked up.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>

#include "kmer/seedIndex.h"
#include "placement/candidateWindows.h"
#include "placement/fastSteps.h"
#include "placement/prepareReads.h"
#include "placement/preparedRead.h"
#include "placement/reverseComplement.h"

namespace velk {

template <FastSteps kSteps>
class BasicFastEngine {
 public:
  using Prepared = PreparedRead;
  using Windows = BasicWindows<kSteps>;
  static constexpr std::size_t kGroup = kSteps.groups ? 16 : 1;

  /// `index` outlives the engine.
  BasicFastEngine(const SeedIndex& index, int kmer) : index_(index), kmer_(kmer) {}

  /// See placement/plainEngine.h. If the lead's first window is a known hit, the mate is only
  /// packed. The pair is mostly settled then.
  void prepare(std::span<Prepared*> leads, std::span<Prepared*> others, bool isReversedFirst);

  static bool hasBasesAlone(const Prepared& read) { return read.isPacked; }

  static const std::string& reverseComplement(Prepared& read);

  Windows windows(Prepared& read, const std::string& bases, bool isReversed) {
    return {index_, kmer_, read, bases, isReversed, buffers_};
  }

 private:
  bool isHitFirst(const Prepared& read, bool isReversedFirst) const;

  const SeedIndex& index_;
  int kmer_;
  typename Windows::Buffers buffers_;
};

using FastEngine = BasicFastEngine<VELK_FAST_STEPS>;

// Whether the first window that is walked over is known to be a hit.
template <FastSteps kSteps>
bool BasicFastEngine<kSteps>::isHitFirst(const Prepared& read, bool isReversedFirst) const {
  if (!read.alignment.isThere()) return false;
  const Diagonal& diagonal = read.alignment.diagonal();
  const std::size_t window = isReversedFirst ? read.windows - 1 : 0;
  return diagonal.isReversed == isReversedFirst && read.alignment.matches().contains(window) &&
         !index_.text().isMarkedRepeated(diagonal.positionOf(window));
}

template <FastSteps kSteps>
void BasicFastEngine<kSteps>::prepare(std::span<Prepared*> leads, std::span<Prepared*> others,
                                      bool isReversedFirst) {
  packReads(index_, leads);
  packReads(index_, others);
  alignReads<kSteps>(index_, leads);
  if (others.empty()) {
    siftReads<kSteps>(index_, leads);
    return;
  }
  std::array<Prepared*, 2 * kGroup> open;
  std::size_t count = 0;
  for (std::size_t n = 0; n < leads.size(); ++n) {
    if (!kSteps.leads || !isHitFirst(*leads[n], isReversedFirst)) open[count++] = others[n];
  }
  alignReads<kSteps>(index_, std::span(open).first(count));
  for (Prepared* lead : leads) {
    if (!kSteps.leads || !isHitFirst(*lead, isReversedFirst)) open[count++] = lead;
  }
  siftReads<kSteps>(index_, std::span(open).first(count));
}

template <FastSteps kSteps>
const std::string& BasicFastEngine<kSteps>::reverseComplement(Prepared& read) {
  if (!read.hasReversed) {
    read.reversed.resize(read.bases->size());
    velk::reverseComplement(read.reversed.data(), read.bases->data(), read.bases->size());
    read.hasReversed = true;
  }
  return read.reversed;
}

}  // namespace velk
