// The kernel of reverse complements.
#pragma once

#include <cstddef>

namespace velk {

/// Writes the reverse complement of the `length` characters at `source` to `target`: upper case, A
/// for whatever has no complement. The two stretches must not overlap.
void reverseComplement(char* __restrict target, const char* __restrict source, std::size_t length);

}  // namespace velk
