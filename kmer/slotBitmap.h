// What the hash set and its growth share below the named operations: steps over slots, bitmaps.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

namespace velk {

/// The slot behind `slot` in a table of `size` slots, wrapping at the end.
inline uint64_t nextSlot(uint64_t slot, uint64_t size) {
  return slot + 1 == size ? 0 : slot + 1;
}

/// Returns a bitmap of `size` clear bits, to be released with free(); null without memory.
inline uint8_t* newBitmap(uint64_t size) {
  return static_cast<uint8_t*>(std::calloc(size / 8 + 1, 1));
}

/// Asks for huge pages under the whole pages of an allocation; it works without them, too.
inline void adviseHugePages(void* start, uint64_t bytes) {
  constexpr uintptr_t kPage = 4096;
  const auto first = (reinterpret_cast<uintptr_t>(start) + kPage - 1) / kPage * kPage;
  const auto end = (reinterpret_cast<uintptr_t>(start) + bytes) / kPage * kPage;
  if (first < end) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}

}  // namespace velk
