#include "tests/placement/randomPlacement.h"

#include <algorithm>
#include <cctype>
#include <random>

namespace velk::test {
namespace {

class Maker {
 public:
  Maker(Hard input, int kmer, uint32_t seed)
      : random_(1000 * seed + 100 * static_cast<uint32_t>(input) + static_cast<uint32_t>(kmer)),
        input_(input) {
    made_.settings.kmer = kmer;
  }

  RandomPlacement make() {
    PlainSettings& settings = made_.settings;
    settings.mapCut = chance(50) ? 0.9 : 0.5;
    settings.shortestContig = chance(70) ? 0 : number(20, 60);
    settings.insert = chance(65) ? number(60, 400) : number(1001, 1100);
    settings.readLength = number(20, 50);
    settings.bigGap = chance(50) ? 900 : 1200;
    made_.workers = number(1, 3);
    for (int scaffolds = number(1, 3); scaffolds > 0; --scaffolds) addScaffold();
    for (int entries = number(1, 45); entries > 0; --entries) addEntry();
    return made_;
  }

 private:
  // ---- dice -------------------------------------------------------------------------------------

  int number(int least, int most) {
    return least + static_cast<int>(random_() % static_cast<uint32_t>(most - least + 1));
  }
  bool chance(int percent) { return number(1, 100) <= percent; }
  std::size_t below(std::size_t limit) { return random_() % limit; }
  char base() { return "ACGT"[below(4)]; }
  std::string bases(int length) {
    std::string made;
    for (int i = 0; i < length; ++i) made += base();
    return made;
  }
  int kmer() const { return made_.settings.kmer; }

  // ---- the assembly -----------------------------------------------------------------------------

  void addScaffold() {
    TestScaffold scaffold;
    const int contigs = input_ == Hard::kShortContigs ? number(10, 40) : number(1, 4);
    for (int c = 0; c < contigs; ++c) {
      std::string letters = contig();
      if (input_ != Hard::kOddLetters && chance(10)) spoil(letters);
      pool_.push_back(letters);
      scaffold.push_back({letters, number(-40, 500)});
    }
    made_.assembly.push_back(scaffold);
  }

  std::string contig() {
    switch (input_) {
      case Hard::kOneLetter:
        return changed(std::string(below(250), 'A'), chance(50) ? 0 : number(1, 2));
      case Hard::kTandem:
        return bases(number(0, 40)) + tandem(number(1, 6), number(0, 200)) + bases(number(0, 40));
      case Hard::kLongTandem:
        return bases(number(0, 30)) + tandem(number(10, 60), number(60, 350));
      case Hard::kManyCopies:
        return manyCopies();
      case Hard::kReversedCopies:
        return reversedCopies();
      case Hard::kPalindromes:
        return palindromes();
      case Hard::kOddLetters:
        return oddLetters();
      case Hard::kShortContigs:
        return piece(std::max(0, kmer() + number(-3, 6)));
      case Hard::kLong:
        return bases(number(800, 2500));
    }
    return {};
  }

  std::string changed(std::string letters, int times) {
    for (; times > 0 && !letters.empty(); --times) letters[below(letters.size())] = base();
    return letters;
  }

  // Copies of a unit that differ by a base now and then.
  std::string tandem(int unitLength, int length) {
    const std::string unit = bases(unitLength);
    std::string made;
    const bool isExact = chance(50);
    while (static_cast<int>(made.size()) < length) {
      made += isExact || chance(80) ? unit : changed(unit, 1);
    }
    return made;
  }

  // The same stretch in all contigs, each time between other bases.
  std::string manyCopies() {
    if (shared_.empty()) shared_ = bases(std::max(12, kmer() / 2 + number(0, 20)));
    std::string made;
    for (int copies = number(3, 10); copies > 0; --copies) {
      made += (chance(75) ? shared_ : plainReverseComplement(shared_)) + bases(number(0, 25));
    }
    return made;
  }

  std::string reversedCopies() {
    std::string made = bases(number(0, 60));
    for (int pieces = number(1, 4); pieces > 0; --pieces) {
      const std::string copied = piece(number(20, 120));
      made += chance(60) ? plainReverseComplement(copied) : changed(copied, number(0, 1));
    }
    return made;
  }

  std::string palindromes() {
    std::string made = bases(number(0, 40));
    for (int pieces = number(1, 3); pieces > 0; --pieces) {
      const std::string half = chance(50) ? bases(number(3, 50)) : piece(number(3, 50));
      made += half + plainReverseComplement(half);
    }
    return made;
  }

  std::string oddLetters() {
    std::string made = chance(50) ? bases(number(0, 250)) : bases(60) + piece(number(0, 150));
    if (chance(30)) {
      for (std::size_t at = 60; at < made.size(); at += 61) made[at] = '\r';
    }
    if (chance(30)) {
      for (char& letter : made) letter = static_cast<char>(std::tolower(letter));
    }
    if (chance(20)) made.insert(made.size() / 2, static_cast<std::size_t>(number(1, 50)), 'N');
    if (chance(60)) spoil(made);
    return made;
  }

  // A stretch of an earlier contig, filled up with other bases.
  std::string piece(int length) {
    std::string made;
    if (!pool_.empty() && chance(80)) {
      const std::string& from = pool_[below(pool_.size())];
      made = from.substr(below(from.size() + 1), static_cast<std::size_t>(length));
    }
    return made + bases(length - static_cast<int>(made.size()));
  }

  void spoil(std::string& letters) {
    for (int times = number(1, 4); times > 0 && !letters.empty(); --times) {
      char& letter = letters[below(letters.size())];
      letter = chance(30) ? static_cast<char>(std::tolower(letter)) : "NnRYkx\r.-\xC8"[below(10)];
    }
  }

  // ---- reads ------------------------------------------------------------------------------------

  int readLength() {
    if (chance(6)) return number(std::max(0, kmer() - 3), kmer() + 2);
    if (input_ == Hard::kLong && chance(30)) return number(500, 3000);
    return std::max(0, kmer() + number(0, chance(50) ? 30 : 120));
  }

  std::string withIndel(std::string read) {
    const std::size_t at = below(read.size() + 1);
    if (chance(50)) return read.insert(at, bases(number(1, 3)));
    return read.erase(at, static_cast<std::size_t>(number(1, 3)));
  }

  std::string read() {
    const std::string& on = pool_[below(pool_.size())];
    const int length = readLength();
    const auto start = static_cast<int>(below(on.size() + static_cast<std::size_t>(length) + 1));
    const std::string around = bases(length) + on + bases(length);
    std::string made =
        around.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
    if (chance(15)) made = made.substr(0, made.size() / 2) + piece(length / 2);
    if (chance(40)) made = changed(made, number(1, 4));
    if (chance(20)) made = withIndel(made);
    if (chance(8)) spoil(made);
    return chance(50) ? made : plainReverseComplement(made);
  }

  void addEntry() {
    made_.reads.push_back(read());
    made_.first.push_back(chance(10) ? made_.reads.back() : read());
    made_.second.push_back(chance(10) ? plainReverseComplement(made_.first.back()) : read());
  }

  std::mt19937 random_;
  Hard input_;
  RandomPlacement made_{};
  std::vector<std::string> pool_;  // contigs made so far
  std::string shared_;             // the stretch of kManyCopies
};

}  // namespace

RandomPlacement hardPlacement(Hard input, int kmer, uint32_t seed) {
  return Maker(input, kmer, seed).make();
}

}  // namespace velk::test
