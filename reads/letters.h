// What the characters of a read may be. Pure functions, any thread.
#pragma once

#include <array>
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
  // Block by block, which is what vector instructions do fast; the last may overlap the one before.
  constexpr std::size_t kBlock = 16;
  std::array<unsigned char, kBlock> isOutside{};
  const auto look = [&](const char* letters, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      isOutside[i] |= static_cast<unsigned char>(letters[i] - first) > last - first;
    }
  };
  if (text.size() < kBlock) {
    look(text.data(), text.size());
  } else {
    const char* const lastBlock = text.data() + (text.size() - kBlock);
    for (const char* block = text.data(); block < lastBlock; block += kBlock) look(block, kBlock);
    look(lastBlock, kBlock);
  }
  return isOutside == std::array<unsigned char, kBlock>{};
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
