#include "tests/kmer/kmerModel.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <string_view>

#include "driver/velk.h"

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

std::string told(const KmerPlace& place, bool isUnique) {
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
  const std::string got = answer ? told(answer->first, answer->isUnique) : "absent";
  const std::string expected =
      known == kmers_.end() ? "absent" : told(known->second.first, known->second.times == 1);
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

}  // namespace velk::test
