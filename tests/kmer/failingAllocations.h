// Makes malloc, calloc and realloc of the test program fail on demand.
#pragma once

namespace velk::test {

/// From now on the allocation after the next `n` ones fails. For use in a statement that is
/// expected to exit, whose process ends before anything else could miss the memory.
void failAllocationAfter(int n);

}  // namespace velk::test
