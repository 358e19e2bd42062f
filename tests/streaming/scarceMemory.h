// Makes large allocations of the test program fail on demand; linking it replaces operator new.
#pragma once

#include <cstddef>

namespace velk::test {

/// From now on `new` fails on every thread when it asks for `bytes` or more, but for the first
/// `spared` times. For use in a statement that is expected to exit.
void failAllocationsFrom(std::size_t bytes, int spared);

}  // namespace velk::test
