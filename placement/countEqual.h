// The kernel of all alignment checks: how many bases of two stretches are equal.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace velk {

/// Returns the number of i in [0, length) with one[i] == other[i], bytes compared as they stand.
/// Counted in bytes, and in stretches that a byte can count: gcc makes vector instructions of the
/// inner loop at -O3, without widening what is counted.
inline std::size_t countEqual(const char* one, const char* other, std::size_t length) {
  constexpr std::size_t kStretch = 240;
  std::size_t equal = 0;
  for (std::size_t at = 0; at < length; at += kStretch) {
    const std::size_t end = std::min(length, at + kStretch);
    uint8_t inStretch = 0;
    for (std::size_t i = at; i < end; ++i) {
      inStretch = static_cast<uint8_t>(inStretch + (one[i] == other[i] ? 1 : 0));
    }
    equal += inStretch;
  }
  return equal;
}

}  // namespace velk
