#include "tests/kmer/kmerModel.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <sstream>
#include <string_view>

#include "driver/velk.h"
#include "tests/kmer/kmerModel.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

constexpr int kWordBases = 32;

// The key of a window: every letter in its own two bits, one that is no base one bit above them.
uint64_t keyOf(std::string_view letters) {
  constexpr std::string_view kBases = "AaCcGgTt";
  uint64_t key = 0;
  for (const char letter : letters) {
    const std::size_t at = kBases.find(letter);
    key = key << 2 | (at == std::string_view::npos ? 4 : at / 2);
  }
  return key;
}

std::string inWords(const KmerPlace& place, bool isUnique) {
  std::ostringstream words;
  words << place.scaffold << ' ' << place.contig << ' ' << place.start
        << (isUnique ? " once" : " repeated");
  return words.str();
}

}  // namespace

KmerModel::KmerModel(const Assembly& assembly, Content content) {
  for (const auto& sequences : assembly) {
    auto& infos = contigs_.emplace_back();
    for (const std::string& letters : sequences) infos.push_back({letters, nullptr, 0, 0});
  }
  for (auto& infos : contigs_) {
    scaffolds_.push_back({"", static_cast<uint32_t>(infos.size()), infos.data()});
  }
  if (content == kWithKmers) addKmers(assembly);
}

void KmerModel::addKmers(const Assembly& assembly) {
  const auto length = static_cast<std::size_t>(Kmer);
  for (std::size_t i = 0; i < assembly.size(); ++i) {
    for (std::size_t j = 0; j < assembly[i].size(); ++j) {
      const std::string_view letters = assembly[i][j];
      if (letters.size() < static_cast<std::size_t>(CONTIGLEN)) continue;
      for (std::size_t start = 0; start + length <= letters.size(); ++start) {
        const uint64_t key = keyOf(letters.substr(start, length));
        ++kmers_.try_emplace(key, Known{{i, j, start}, 0}).first->second.times;
        ++windows_;
      }
    }
  }
}

bool KmerModel::build(SeedIndex& index, int threads, uint64_t placeBase,
                      uint64_t leastWindows) const {
  return index.build(scaffolds(), size(), Kmer, threads, placeBase, leastWindows);
}

std::string KmerModel::wrongAnswer(const SeedIndex& index, uint64_t key) const {
  const std::optional<KmerAnswer> answer = index.placeOf(key);
  const auto known = kmers_.find(key);
  const std::string got = answer ? inWords(answer->first, answer->isUnique) : "absent";
  const std::string expected =
      known == kmers_.end() ? "absent" : inWords(known->second.first, known->second.times == 1);
  if (got == expected) return "";
  std::ostringstream words;
  words << "k " << Kmer << ", key " << std::hex << key << ": " << got << ", not " << expected;
  return words.str();
}

std::string KmerModel::firstWrongAnswer(const SeedIndex& index) const {
  const int bases = std::min(Kmer, kWordBases);
  uint64_t turn = 0;  // changes another base of every key
  for (const auto& [key, known] : kmers_) {
    std::vector<uint64_t> asked = {key, key ^ 1U};
    if (bases > 0) {
      const uint64_t at = 2 * (turn % static_cast<uint64_t>(bases));
      const uint64_t changed = key ^ (1 + turn % 3) << at;
      const uint64_t reversed = modelOfReversing(key, bases);
      asked.insert(asked.end(), {changed, reversed, modelOfReversing(changed, bases)});
    }
    if (bases < kWordBases) asked.push_back(key ^ uint64_t{1} << 2 * bases);
    for (const uint64_t asking : asked) {
      if (std::string wrong = wrongAnswer(index, asking); !wrong.empty()) return wrong;
    }
    ++turn;
  }
  return "";
}

uint64_t bytesOf(const SeedIndex& index) {
  uint64_t bytes = sizeof index;
  const auto add = [&](const auto& array) { bytes += array.size() * sizeof(array[0]); };
  SeedIndex::forEachKept(index, add);
  index.text().forEachLaid(add);
  return bytes;
}

uint64_t modelOfReversing(uint64_t key, int count) {
  uint64_t reversed = 0;
  for (int i = 0; i < count; ++i) reversed = reversed << 2 | (3 - (key >> 2 * i & 3U));
  return reversed;
}

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
