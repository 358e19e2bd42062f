// The one way in which memory is fetched ahead of its use.
#pragma once

namespace velk {

/// Has the cache line of `address` fetched; any address will do.
/// The empty instruction counts as an effect: a function that does nothing else than fetch has none
/// for the compiler otherwise, and calls of it are left out.
inline void fetchLine(const void* address) {
  __builtin_prefetch(address);
  asm volatile("");
}

}  // namespace velk
