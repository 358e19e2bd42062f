// What the characters of a read may be. Pure functions, any thread.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velk::reads {

/// What is wrong with a record. The message has the file's name and the record's number in front.
struct RecordFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Whether each character is one of first ... last.
template <char first, char last>
bool areWithin(std::string_view text) {
  unsigned char outside = 0;
  for (const char letter : text) {
    const auto distance = static_cast<unsigned char>(letter - first);
    outside |= static_cast<unsigned char>(distance > last - first ? 1 : 0);
  }
  return outside == 0;
}

/// Whether `quality` has only the characters of the Phred+33 scale.
inline bool areQualities(std::string_view quality) {
  return areWithin<'!', '~'>(quality);
}

/// Whether `bases` are in upper case without exception: letters alone.
inline bool areUpperCase(std::string_view bases) {
  return areWithin<'A', 'Z'>(bases);
}

/// Puts `bases` in upper case into `upper` (out); letters, '.', '-' and '*' may be there. Returns
/// whether any was in lower case. Throws RecordFault.
bool toUpperCase(std::string_view bases, std::string& upper);

/// Returns the name in a header behind its mark: up to the first blank. Throws RecordFault when it
/// is none that SAM could have.
std::string_view nameIn(std::string_view header);

/// Throws the RecordFault of qualities that are not as areQualities() has them.
[[noreturn]] void refuseQualities(std::string_view quality);

/// Returns how a character is shown in a message: 'x', or the byte 0x1f.
std::string shown(char letter);

}  // namespace velk::reads
