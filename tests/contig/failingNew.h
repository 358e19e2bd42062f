// Makes large array allocations of the test program fail on demand.
#pragma once

#include <cstddef>

namespace velk::test {

/// From now on `new T[n]` fails when it asks for more than `bytes`. For use in a statement that is
/// expected to exit, whose process ends before anything else could miss the memory.
void failArraysAbove(std::size_t bytes);

}  // namespace velk::test
