#include "tests/kmer/hardTexts.h"

#include <algorithm>
#include <cctype>

#include "tests/support/assembly.h"

namespace velk::test {
namespace {

constexpr std::size_t kLine = 61;  // letters of a line, its end included

void endLines(std::string& letters) {
  for (std::size_t at = kLine - 1; at < letters.size(); at += kLine) letters[at] = '\r';
}

std::string repeated(const std::string& unit, std::size_t length) {
  std::string letters;
  while (letters.size() < length) letters += unit;
  letters.resize(length);
  return letters;
}

}  // namespace

std::string RandomAssemblies::bases(std::size_t length) {
  std::string letters;
  for (std::size_t i = 0; i < length; ++i) letters += "ACGT"[below(4)];
  return letters;
}

std::string RandomAssemblies::tandem(std::size_t length) {
  std::string letters = repeated(bases(1 + below(6)), length);
  for (std::size_t n = length / 40; n > 0; --n) letters[below(length)] = "ACGT"[below(4)];
  return letters;
}

void RandomAssemblies::change(std::string& letters) {
  for (uint64_t n = below(5); n > 0; --n) letters[below(letters.size())] = "ACGT"[below(4)];
}

std::string RandomAssemblies::piece(std::size_t longest) {
  if (pieces_.empty() || below(4) == 0) {
    const std::size_t length = 1 + below(longest);
    pieces_.push_back(below(3) == 0 ? tandem(length) : bases(length));
    return pieces_.back();
  }
  const std::string& old = pieces_[below(pieces_.size())];
  const std::size_t from = below(old.size());
  std::string part = old.substr(from, 1 + below(old.size() - from));
  if (below(2) == 0) part = reverseComplement(part);
  if (below(2) == 0) change(part);
  return part;
}

std::string RandomAssemblies::contig(std::size_t length) {
  std::string letters;
  while (letters.size() < length) letters += piece(length);
  letters.resize(length);
  if (letters.empty()) return letters;
  switch (below(12)) {
    case 0:
    case 1:
      for (uint64_t n = 1 + below(10); n > 0; --n) letters[below(length)] = "NnRYx\r\xFF"[below(7)];
      break;
    case 2:
      endLines(letters);
      break;
    case 3:
      for (char& letter : letters) letter = below(2) == 0 ? 'N' : letter;
      break;
    case 4:
    case 5:
      for (char& letter : letters) {
        if (below(2) == 0) letter = static_cast<char>(std::tolower(letter));
      }
      break;
    default:
      break;
  }
  return letters;
}

Assembly RandomAssemblies::next(std::size_t longest) {
  pieces_.clear();
  Assembly assembly(1 + below(5));
  for (auto& contigs : assembly) {
    for (uint64_t n = below(5); n > 0; --n) contigs.push_back(contig(below(longest)));
  }
  return assembly;
}

std::vector<HardText> hardTexts(std::size_t length) {
  RandomAssemblies random(16);
  const std::string unit = random.bases(171);  // about that of human alpha satellites
  std::string diverged = repeated(unit, length);
  for (char& letter : diverged) letter = random.below(50) == 0 ? "ACGT"[random.below(4)] : letter;
  std::string satellites;
  while (satellites.size() < length) {
    satellites += repeated(random.bases(1 + random.below(6)), 20 + random.below(200));
    satellites += random.bases(random.below(100));
  }
  std::string unknown = random.bases(length);
  std::string mixed = unknown;
  std::string lines = unknown;
  for (char& letter : unknown) letter = random.below(2) == 0 ? 'N' : letter;
  for (char& letter : mixed)
    letter = random.below(2) == 0 ? "RYKMSWBDHVN"[random.below(11)] : letter;
  endLines(lines);
  const std::string half = random.bases(length / 2);
  std::vector<std::string> shorts(length / 50);
  for (std::string& contig : shorts) contig = random.bases(50);
  return {{"all A", {{std::string(length, 'A')}}},
          {"tandem repeat", {{repeated(unit, length)}}},
          {"short tandem repeat", {{repeated("ACGTTGCAAC", length)}}},
          {"diverged tandem repeat", {{diverged}}},
          {"microsatellites", {{satellites}}},
          {"half N", {{unknown}}},
          {"half IUPAC", {{mixed}}},
          {"CR", {{lines}}},
          {"palindrome", {{half + reverseComplement(half)}}},
          {"short contigs", {shorts}},
          {"random", {{random.bases(length)}}}};
}

}  // namespace velk::test
