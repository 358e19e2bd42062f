// A second, naive account of how k-mers are packed, for comparison with the real one.
#pragma once

#include <cstdint>
#include <string>

namespace velk::test {

/// The word of `sequence`, at most 250 characters: the low 64 bits of one long row of bits in which
/// every letter sets its own bits, and one that is no base sets the low bit of the letter before.
uint64_t modelOfPacking(const std::string& sequence);

}  // namespace velk::test
