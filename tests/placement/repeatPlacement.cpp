#include "tests/placement/randomPlacement.h"

#include <cctype>
#include <numeric>
#include <random>

#include "tests/placement/placementTest.h"
#include "tests/placement/randomPlacement.h"

namespace velk::test {
namespace {

class Maker {
 public:
  explicit Maker(uint32_t seed) : random_(seed) {}

  RandomPlacement make() {
    PlainSettings& settings = made_.settings;
    settings.kmer = 16 + static_cast<int>(below(17));
    settings.mapCut = chance(50) ? 0.98 : 0.1 * static_cast<double>(below(10));
    settings.shortestContig = static_cast<int>(below(60));
    settings.insert = chance(80) ? 50 + static_cast<int>(below(350)) : 1001;
    settings.readLength = 20 + static_cast<int>(below(40));
    settings.bigGap = chance(50) ? 900 : 1100;
    made_.workers = 1 + static_cast<int>(below(3));
    made_.assembly = assembly();
    for (int k = 0; k < 60; ++k) {
      made_.reads.push_back(read());
      made_.first.push_back(read());
      made_.second.push_back(read());
    }
    return made_;
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }
  bool chance(unsigned percent) { return random_() % 100 < percent; }

  // Puts letters that are no bases, or lower-case ones, in place of some.
  void spoil(std::string& bases) {
    for (std::size_t count = 1 + below(3); count > 0 && !bases.empty(); --count) {
      char& letter = bases[below(bases.size())];
      letter = chance(30) ? static_cast<char>(std::tolower(letter)) : "Rn.YK"[below(5)];
    }
  }

  // A contig of new bases and of pieces of earlier ones, on either strand.
  std::string contig() {
    std::string bases = randomBases(below(120), static_cast<unsigned>(random_()));
    for (std::size_t pieces = below(5); pieces > 0 && !pool_.empty(); --pieces) {
      const std::string& source = pool_[below(pool_.size())];
      if (source.empty()) continue;
      std::string piece = source.substr(below(source.size()), 20 + below(100));
      if (chance(50)) piece = plainReverseComplement(piece);
      if (chance(40)) piece[below(piece.size())] = "ACGT"[below(4)];
      bases.insert(below(bases.size() + 1), piece);
    }
    if (chance(10)) bases += plainReverseComplement(bases);
    if (chance(25)) spoil(bases);
    pool_.push_back(bases);
    return bases;
  }

  std::vector<TestScaffold> assembly() {
    std::vector<TestScaffold> scaffolds(1 + below(4));
    for (TestScaffold& scaffold : scaffolds) {
      for (std::size_t contigs = 1 + below(6); contigs > 0; --contigs) {
        scaffold.push_back({contig(), static_cast<int64_t>(below(400)) - 50});
      }
    }
    return scaffolds;
  }

  // A read along one contig and often into another, on either strand, with some wrong letters.
  std::string read() {
    const std::string& source = pool_[below(pool_.size())];
    std::string bases = source.empty() ? "" : source.substr(below(source.size()), 20 + below(130));
    if (chance(30)) bases += pool_[below(pool_.size())].substr(0, 60);
    if (chance(50)) bases = plainReverseComplement(bases);
    if (chance(50) && !bases.empty()) bases[below(bases.size())] = "ACGT"[below(4)];
    if (chance(30)) spoil(bases);
    while (bases.size() < static_cast<std::size_t>(made_.settings.kmer)) bases += "ACGT"[below(4)];
    return bases;
  }

  std::mt19937 random_;
  RandomPlacement made_{};
  std::vector<std::string> pool_;  // contigs made so far
};

}  // namespace

RandomPlacement repeatPlacement(uint32_t seed) {
  return Maker(seed).make();
}

namespace {

// Places of wrong bases in a read of 150: at its ends, side by side, a k-mer apart, and many.
std::vector<std::vector<std::size_t>> wrongPlaces() {
  std::vector<std::vector<std::size_t>> places = {{},          {5},      {5, 90},   {31, 40, 90},
                                                  {2, 3, 148}, {60, 95}, {62, 115}, {40, 41},
                                                  {35, 60},    {20, 75}, {50}};
  for (std::size_t at = 0; at < 150; at += 11) places.push_back({at});
  for (std::size_t count = 10; count < 20; ++count) {
    places.emplace_back(count);
    std::iota(places.back().begin(), places.back().end(), 40);
  }
  return places;
}

}  // namespace

RandomPlacement mismatchPlacement(int kmer) {
  const auto length = static_cast<std::size_t>(kmer);
  const std::string x = randomBases(300, 71);
  const std::string y = randomBases(300, 72);
  RandomPlacement made{};
  made.assembly = {{{x}, {y, 400}}};
  made.settings.kmer = kmer;
  made.settings.insert = 500;
  made.workers = 1;
  for (const auto& wrong : wrongPlaces()) {
    for (const std::string* contig : {&x, &y}) {
      for (const int64_t offset : {-60, 20, 120, 220}) {
        made.reads.push_back(withMismatches(readAt(*contig, offset, 150), wrong));
      }
    }
  }
  // Too short to have a k-mer without the wrong base.
  for (std::size_t wrong = 0; wrong < length; ++wrong) {
    made.reads.push_back(withMismatches(readAt(x, 120, kmer + 5), {wrong}));
  }
  for (const std::size_t bases : {length, length + 5, std::size_t{100}, std::size_t{700}}) {
    made.reads.push_back(randomBases(bases, 73));
  }
  made.reads.push_back(readAt(y, -60, 420));
  const std::size_t forward = made.reads.size();
  for (std::size_t r = 0; r < forward; ++r) {
    made.reads.push_back(reverseComplement(made.reads[r]));
  }
  made.first = made.reads;
  for (std::size_t r = 0; r < made.reads.size(); ++r) {
    made.second.push_back(made.reads[(r * 7 + 3) % made.reads.size()]);
  }
  return made;
}

}  // namespace velk::test
