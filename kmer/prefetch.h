// The one way in which memory is fetched ahead of its use.
#pragma once

namespace velk {

/// Prefetches the cache line of `address`; any address will do.
/// The empty instruction counts as an effect: a function that does nothing but prefetch has none
/// for the compiler otherwise, and calls of it are left out.
inline void prefetchLine(const void* address) {
  __builtin_prefetch(address);
  asm volatile("");
}

}  // namespace velk
