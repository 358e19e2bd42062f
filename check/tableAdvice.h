// The smallest -m with which the look-up table never grows, in velk's own arithmetic.
#pragma once

#include <cstdint>

namespace velk::check {

/// Returns an -m for `kmers` different k-mers at load factor `loadFactor` (as -f gives it). A table
/// that is made with it holds them all without growth, and has few slots more than it must.
uint64_t slotsToAskFor(uint64_t kmers, float loadFactor);

/// Returns the slots of the table at the end of a run that asks for `initSize` slots and meets
/// `kmers` different k-mers; above kMaxSlots when velk refuses.
uint64_t finalSlots(uint64_t initSize, uint64_t kmers, float loadFactor);

}  // namespace velk::check
