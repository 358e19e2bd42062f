// Makes malloc, calloc and realloc of the test program fail on demand.
#pragma once

#include <cstddef>

namespace velk::test {

/// From now on the allocation after the next `n` ones fails. For use in a statement that is
/// expected to exit, whose process ends before anything else could miss the memory.
void failAllocationAfter(int n);

/// Bytes that the failed allocation asked for; 0 before it.
std::size_t deniedBytes();

}  // namespace velk::test
