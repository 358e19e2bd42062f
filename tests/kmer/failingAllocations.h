// Makes malloc, calloc and realloc of the test program, or operator new, fail on demand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace velk::test {

/// From now on the allocation after the next `n` ones fails. Where that does not end the process,
/// failNoAllocation() comes before anything else could miss the memory.
void failAllocationAfter(int n);

/// From now on operator new throws std::bad_alloc where it is called after the next `n` times.
void failNewAfter(int n);

/// From now on no allocation fails.
void failNoAllocation();

/// Bytes that the failed allocation asked for, since it was asked for; 0 without one.
std::size_t deniedBytes();

/// The most bytes that the program held at once while it did the work, beyond those before.
uint64_t mostBytesOf(const std::function<void()>& work);

}  // namespace velk::test
