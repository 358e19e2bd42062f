#include "check/tableAdvice.h"

#include <algorithm>
#include <cmath>

#include "kmer/hashSet.h"

namespace velk::check {

uint64_t slotsToAskFor(uint64_t kmers, float loadFactor) {
  const float factor = clampedLoadFactor(loadFactor);
  auto asked =
      static_cast<uint64_t>(std::ceil(static_cast<double>(kmers) / static_cast<double>(factor)));
  for (;;) {
    const uint64_t slots = slotsFor(asked);
    const uint64_t most = mostEntities(slots, factor);
    if (most >= kmers || slots > kMaxSlots) return asked;
    // A float cannot tell large neighbouring numbers apart, so one step may not be enough.
    asked = slots + std::max<uint64_t>((kmers - most) / 2, 1);
  }
}

uint64_t finalSlots(uint64_t initSize, uint64_t kmers, float loadFactor) {
  const float factor = clampedLoadFactor(loadFactor);
  uint64_t slots = slotsFor(initSize);
  uint64_t most = slots > kMaxSlots ? kmers : mostEntities(slots, factor);
  while (most < kmers && slots <= kMaxSlots) {
    slots = grownSize(slots, most + 1, factor);
    // As enlarge_hashset sets the limit of a grown table.
    const double exact = static_cast<double>(static_cast<float>(slots) * factor) + 0.5;
    most = std::min(static_cast<uint64_t>(exact), slots - 1);
  }
  return slots;
}

}  // namespace velk::check
