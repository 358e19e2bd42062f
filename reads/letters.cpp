#include "reads/letters.h"

#include <algorithm>
#include <array>

namespace velk::reads {
namespace {

constexpr std::size_t kLongestName = 254;  // characters, in SAM

// The base that a character stands for, in upper case; NUL where it stands for none.
constexpr auto kBases = [] {
  std::array<char, 256> bases{};
  for (const char letter : std::string_view(".-*ABCDEFGHIJKLMNOPQRSTUVWXYZ")) {
    bases[static_cast<unsigned char>(letter)] = letter;
  }
  for (std::size_t i = 'a'; i <= 'z'; ++i) bases[i] = static_cast<char>(i - 'a' + 'A');
  return bases;
}();

bool isVisible(char letter) {
  return letter >= '!' && letter <= '~';
}

}  // namespace

bool toUpperCase(std::string_view bases, std::string& upper) {
  upper.resize(bases.size());
  bool anyChanged = false;
  bool anyWrong = false;
  for (std::size_t i = 0; i < bases.size(); ++i) {
    upper[i] = kBases[static_cast<unsigned char>(bases[i])];
    anyChanged |= upper[i] != bases[i];
    anyWrong |= upper[i] == '\0';
  }
  if (anyWrong) throw RecordFault(shown(bases[upper.find('\0')]) + " in its sequence");
  return anyChanged;
}

std::string_view nameIn(std::string_view header) {
  const auto end = std::find_if_not(header.begin(), header.end(), isVisible);
  const std::string_view name(header.begin(), end);
  if (end != header.end() && *end != ' ' && *end != '\t') {
    throw RecordFault(shown(*end) + " in its name");
  }
  if (name.empty()) throw RecordFault("it has no name");
  if (name.front() == '@') throw RecordFault("its name begins with '@'");
  if (name.size() > kLongestName) {
    throw RecordFault("its name has " + std::to_string(name.size()) +
                      " characters, and 254 are most");
  }
  return name;
}

void refuseQualities(std::string_view quality) {
  const auto wrong = std::find_if_not(quality.begin(), quality.end(), isVisible);
  throw RecordFault(shown(*wrong) + " in its qualities, which are not Phred+33");
}

std::string shown(char letter) {
  if (letter >= ' ' && letter <= '~') return std::string("'") + letter + "'";
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(letter);
  return std::string("the byte 0x") + kDigits[byte / 16] + kDigits[byte % 16];
}

}  // namespace velk::reads
