#include "run/strand.h"

#include <algorithm>
#include <array>

namespace velk::run {
namespace {

constexpr std::string_view kLetters = "ACGTUMRWSYKVHDBN";
constexpr std::string_view kComplements = "TGCAAKYWSRMBDHVN";
static_assert(kLetters.size() == kComplements.size());

constexpr std::array<char, 256> makeComplements() {
  std::array<char, 256> table{};
  for (std::size_t letter = 0; letter < table.size(); ++letter) {
    table[letter] = static_cast<char>(letter);
  }
  for (std::size_t i = 0; i < kLetters.size(); ++i) {
    table[static_cast<unsigned char>(kLetters[i])] = kComplements[i];
  }
  return table;
}

constexpr std::array<char, 256> kComplementOf = makeComplements();

}  // namespace

std::string reverseComplementOf(std::string_view bases) {
  std::string reversed(bases.rbegin(), bases.rend());
  std::transform(reversed.begin(), reversed.end(), reversed.begin(),
                 [](char base) { return kComplementOf[static_cast<unsigned char>(base)]; });
  return reversed;
}

std::string reversedQuality(std::string_view quality) {
  return {quality.rbegin(), quality.rend()};
}

}  // namespace velk::run
