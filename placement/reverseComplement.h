// The kernel of reverse complements: as many bases at a time as the processor can.
#pragma once

#include <cstddef>
#include <string>

namespace velk {

/// Writes the reverse complement of the `length` characters at `source` to `target`: upper case, A
/// for whatever has no complement. The two stretches must not overlap.
void reverseComplement(char* target, const char* source, std::size_t length);

/// Puts the reverse complement of the `length` characters at `letters` in their place.
void reverseComplementInPlace(char* letters, std::size_t length);

/// The reverse complement of `bases`.
inline std::string reverseComplementOf(const std::string& bases) {
  std::string made(bases.size(), 'A');
  reverseComplement(made.data(), bases.data(), bases.size());
  return made;
}

/// As reverseComplement, without what only some processors have.
void reverseComplementPlainly(char* target, const char* source, std::size_t length);

}  // namespace velk
