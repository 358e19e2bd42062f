// A second, naive account of how k-mers are packed, for comparison with the real one.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>

namespace velk::test {

/// The word of `sequence`, at most 250 characters: the low 64 bits of one long row of bits in which
/// every letter sets its own bits, and one that is no base sets the low bit of the letter before.
inline uint64_t modelOfPacking(const std::string& sequence) {
  std::bitset<512> row;
  for (std::size_t i = 0; i < sequence.size(); ++i) {
    const std::size_t lowBit = 2 * (sequence.size() - 1 - i);
    switch (sequence[i]) {
      case 'A':
      case 'a':
        break;
      case 'C':
      case 'c':
        row.set(lowBit);
        break;
      case 'G':
      case 'g':
        row.set(lowBit + 1);
        break;
      case 'T':
      case 't':
        row.set(lowBit);
        row.set(lowBit + 1);
        break;
      default:
        row.set(lowBit + 2);
        break;
    }
  }
  return (row & std::bitset<512>(~0ULL)).to_ullong();
}

}  // namespace velk::test
