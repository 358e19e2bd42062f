// The steps by which reads are prepared (placement/fastEngine.h), each for a group at a time.
#pragma once

#include <span>

#include "placement/fastSteps.h"
#include "placement/preparedRead.h"

namespace velk {

/// Packs the reads to which `bases` points, and forgets what was known of those before.
void packReads(const SeedIndex& index, std::span<PreparedRead*> reads);

/// Aligns those that are packed.
void alignReads(const SeedIndex& index, std::span<PreparedRead*> reads);

/// Finds out which windows are absent, of those that are packed; aligns a read that is not aligned
/// where a seed tells how. REQUIRES: alignReads.
void siftReads(const SeedIndex& index, std::span<PreparedRead*> reads);

/// As these, for an engine that does without some of its steps.
template <FastSteps kSteps>
void alignReads(const SeedIndex& index, std::span<PreparedRead*> reads) {
  if constexpr (kSteps.align) {
    alignReads(index, reads);
  } else {
    for (PreparedRead* read : reads) read->isAligned = true;
  }
}
template <FastSteps kSteps>
void siftReads(const SeedIndex& index, std::span<PreparedRead*> reads) {
  if constexpr (kSteps.sift) {
    siftReads(index, reads);
  } else {
    for (PreparedRead* read : reads) {
      read->isSifted = true;
      read->absent.reset(read->windows);
    }
  }
}

}  // namespace velk
