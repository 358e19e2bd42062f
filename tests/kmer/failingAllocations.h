// Makes malloc, calloc and realloc of the test program fail on demand.
#pragma once

#include <cstddef>

namespace velk::test {

/// From now on the allocation after the next `n` ones fails. Where that does not end the process,
/// failNoAllocation() comes before anything else could miss the memory.
void failAllocationAfter(int n);

/// From now on no allocation fails.
void failNoAllocation();

/// Bytes that the failed allocation asked for, since failAllocationAfter(); 0 before it.
std::size_t deniedBytes();

}  // namespace velk::test
