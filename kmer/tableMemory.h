// The memory of the hash set: its bitmaps, and the pages under its slots.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>

namespace velk {

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
