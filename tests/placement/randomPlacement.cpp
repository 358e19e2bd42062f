#include "tests/placement/randomPlacement.h"

#include <algorithm>
#include <limits>
#include <random>

namespace velk::test {
namespace {

constexpr std::size_t kMostBases = 650;  // of an assembly; its index then does not grow
// Reads, and pairs; four workers have more each than they prepare at a time.
constexpr int kMostEntries = 70;
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

class Maker {
 public:
  explicit Maker(uint32_t seed) : random_(seed) {}

  RandomPlacement make() {
    made_.settings = settings();
    made_.workers = number(1, 4);
    const int scaffolds = number(1, 2);
    for (int s = 0; s < scaffolds; ++s) addScaffold();
    tieParameters();
    for (int entries = number(1, kMostEntries); entries > 0; --entries) {
      made_.reads.push_back(read());
      if (chance(6)) blemish(made_.reads.back());
      addPair();
    }
    return made_;
  }

 private:
  // ---- dice -------------------------------------------------------------------------------------

  int number(int least, int most) {
    return least + static_cast<int>(random_() % static_cast<uint32_t>(most - least + 1));
  }
  bool chance(int percent) { return number(1, 100) <= percent; }
  template <class T>
  T oneOf(const std::vector<T>& values) {
    return values[random_() % values.size()];
  }
  char base() { return oneOf<char>({'A', 'C', 'G', 'T'}); }
  std::string bases(int length) {
    std::string made;
    for (int i = 0; i < length; ++i) made += base();
    return made;
  }

  // ---- parameters -------------------------------------------------------------------------------

  PlainSettings settings() {
    PlainSettings made;
    made.kmer = chance(4) ? number(0, 2) : chance(60) ? number(6, 20) : number(3, 40);
    if (chance(4)) made.kmer = number(41, 70);
    if (chance(25)) {
      made.overRatio =
          oneOf<double>({0, 0.05, 0.25, 0.5, 0.5, 0.75, 1, 2.5, -1, kNoNumber, 1e300, 1e9});
    }
    if (chance(45)) made.mapCut = oneOf<double>({0.9, 0.8, 0.6, 0.4, 0.1, 0, 1});
    if (chance(5)) made.mapCut = oneOf<double>({1.01, -1, kNoNumber, 1e300});
    made.readLength = chance(70) ? number(20, 45) : number(0, 60);
    made.shortestContig = chance(5) ? -1 : number(0, 40);
    made.bigGap = number(20, 900);
    made.insert = chance(80)   ? number(20, 400)
                  : chance(50) ? number(-60, 60)
                  : chance(50) ? number(999, 1002)
                               : number(990, 1500);
    return made;
  }

  // ---- the assembly -----------------------------------------------------------------------------

  int64_t gap() {
    const int kind = number(1, 100);
    if (kind <= 15) return number(-80, -1);
    if (kind <= 22) return 0;
    return kind <= 60 ? number(1, 80) : number(81, kind <= 90 ? 400 : 1200);
  }

  // A stretch of an earlier contig, as it stands or reversed.
  std::string repeat() {
    const std::string from = oneOf(contigs_);
    if (from.empty()) return from;
    const int start = number(0, static_cast<int>(from.size()) - 1);
    const std::string stretch =
        from.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(number(1, 50)));
    return chance(70) ? stretch : plainReverseComplement(stretch);
  }

  void blemish(std::string& sequence) {
    if (sequence.empty()) return;
    for (int n = number(1, 3); n > 0; --n) {
      char& letter = sequence[random_() % sequence.size()];
      letter = chance(40) ? static_cast<char>(std::tolower(letter))
                          : oneOf<char>({'N', 'n', 'R', 'a', '\xC8'});
    }
  }

  std::string contig(int length) {
    std::string made = bases(length);
    if (!contigs_.empty() && chance(25)) {
      const std::string copied = repeat();
      made.insert(random_() % (made.size() + 1), copied);
    }
    if (chance(6)) made += made;
    if (chance(6)) made += plainReverseComplement(made);
    if (chance(6)) made.insert(made.size() / 2, std::string(12, base()));
    if (chance(10)) blemish(made);
    return made;
  }

  // Half of the scaffolds alternate between short and long contigs and gaps, as mates in the far
  // gap ask for.
  void addScaffold() {
    TestScaffold scaffold;
    std::string genome;
    const bool alternates = chance(50);
    bool isShort = chance(50);
    for (int contigs = chance(5) ? 0 : chance(20) ? 1 : number(2, 6); contigs > 0; --contigs) {
      TestContig made{contig(chance(15) ? number(0, 15) : number(16, 130)), gap()};
      if (alternates) made = {contig(isShort ? number(16, 45) : number(70, 130)), gap()};
      if (alternates && !isShort) made.gapBefore = number(60, 400);
      isShort = !isShort;
      basesSoFar_ += made.bases.size();
      if (basesSoFar_ > kMostBases) break;
      if (!scaffold.empty())
        genome += bases(static_cast<int>(std::max<int64_t>(made.gapBefore, 0)));
      places_.push_back(
          {genomes_.size(), static_cast<int>(genome.size()), static_cast<int>(made.bases.size())});
      genome += made.bases;
      contigs_.push_back(made.bases);
      scaffold.push_back(made);
    }
    made_.assembly.push_back(scaffold);
    genomes_.push_back(genome);
  }

  // Puts parameters on the limits of rules now and then: two reads, or a big gap, of exactly the
  // length of a contig or a gap.
  void tieParameters() {
    PlainSettings& settings = made_.settings;
    std::vector<int> lengths;
    for (const TestScaffold& scaffold : made_.assembly) {
      for (const TestContig& contig : scaffold) {
        lengths.push_back(static_cast<int>(contig.bases.size()));
        lengths.push_back(static_cast<int>(contig.gapBefore));
      }
    }
    if (lengths.empty()) return;
    if (chance(40)) settings.readLength = std::max(oneOf(lengths) / 2, 0);
    if (chance(30)) settings.bigGap = std::max(oneOf(lengths), 1);
    if (chance(10)) settings.bigGap = std::max(settings.insert - number(0, 1), 1);
  }

  // ---- reads ------------------------------------------------------------------------------------

  // A contig in its genome.
  struct Place {
    std::size_t genome;
    int start;
    int length;
  };

  // `length` bases of a genome from `start` on, filled up with random ones at both sides.
  std::string cut(std::size_t genome, int64_t start, int64_t length) {
    std::string made;
    for (int64_t i = start; i < start + length; ++i) {
      const bool inside = i >= 0 && i < static_cast<int64_t>(genomes_[genome].size());
      made += inside ? genomes_[genome][static_cast<std::size_t>(i)] : base();
    }
    return made;
  }

  int readLength() {
    const int kmer = made_.settings.kmer;
    return std::max(0, chance(8) ? number(kmer - 2, kmer + 1) : number(kmer, kmer + 60));
  }

  std::string withErrors(std::string read) {
    const int perMille = oneOf<int>({0, 0, 0, 10, 40});
    for (char& letter : read) {
      if (number(1, 1000) <= perMille) letter = base();
    }
    return read;
  }

  Place place() { return places_.empty() ? Place{0, 0, 0} : oneOf(places_); }

  // Where a read of `length` bases may begin so that it mostly lies on the contig.
  int startOn(const Place& on, int length) {
    return on.start + number(-2 * length / 3, std::max(on.length - length / 3, 0));
  }

  std::string read() {
    const int length = readLength();
    const Place on = place();
    std::string made = cut(on.genome, startOn(on, length), length);
    if (chance(12)) made = made.substr(0, made.size() / 2) + read();
    made = withErrors(made);
    return chance(50) ? made : plainReverseComplement(made);
  }

  void addPair() {
    std::string a = read();
    std::string b = read();
    if (chance(80)) {
      // One of the two lies on a contig, the other where the insert says, more or less.
      const int lengthA = readLength();
      const int lengthB = readLength();
      const int fragment = std::max(made_.settings.insert + number(-70, 70), lengthB);
      const Place on = place();
      const int start =
          chance(50) ? startOn(on, lengthA) : startOn(on, lengthB) + lengthB - fragment;
      a = withErrors(cut(on.genome, start, lengthA));
      b = withErrors(plainReverseComplement(cut(on.genome, start + fragment - lengthB, lengthB)));
    }
    if (made_.settings.insert > 1000) {
      a.swap(b);
      a = plainReverseComplement(a);
      b = plainReverseComplement(b);
    }
    if (chance(50)) a.swap(b);
    if (chance(6)) blemish(a);
    if (chance(6)) blemish(b);
    made_.first.push_back(a);
    made_.second.push_back(b);
  }

  std::mt19937 random_;
  RandomPlacement made_{};
  std::vector<std::string> contigs_;
  std::vector<std::string> genomes_;  // scaffolds with bases for their gaps
  std::vector<Place> places_;         // of contigs
  std::size_t basesSoFar_ = 0;
};

}  // namespace

RandomPlacement randomPlacement(uint32_t seed) {
  return Maker(seed).make();
}

}  // namespace velk::test
