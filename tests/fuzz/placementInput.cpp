#include "tests/fuzz/placementInput.h"

#include <algorithm>
#include <array>
#include <limits>

#include "tests/placement/placementTest.h"

namespace velk::fuzz {
namespace {

constexpr std::size_t kMostBases = 450;  // of an assembly
constexpr std::size_t kMostReads = 5;
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::array<double, 12> kOverRatios = {0.3, 0,   0.05, 0.25, 0.5,   0.75,
                                                1,   2.5, -1,   1e9,  1e300, kNoNumber};
constexpr std::array<double, 12> kMapCuts = {0.98, 0.9, 0.8,  0.6, 0.4,   0.1,
                                             0,    1,   1.01, -1,  1e300, kNoNumber};

template <class Values>
double oneOf(const Values& values, int number) {
  return values[static_cast<std::size_t>(number) % values.size()];
}

class Maker {
 public:
  explicit Maker(Input input) : input_(input) {}

  PlacementInput make() {
    test::PlainSettings& settings = made_.settings;
    settings.kmer = std::min(input_.next(), 40);
    settings.overRatio = oneOf(kOverRatios, input_.next());
    settings.mapCut = oneOf(kMapCuts, input_.next());
    settings.readLength = input_.next();
    settings.shortestContig = input_.next() - 1;
    settings.bigGap = 1 + 15 * input_.next();
    settings.insert = insert(input_.next());
    made_.workers = 1 + input_.next() % 4;
    for (const std::string& line : linesOf(input_.rest())) addLine(line);
    return made_;
  }

 private:
  // -40 to 370, and some on both sides of where pairs point outwards.
  static int insert(int number) { return number < 42 ? 10 * number - 40 : 980 + number; }

  void addLine(const std::string& line) {
    if (line.empty()) return;
    line_ = Input(reinterpret_cast<const uint8_t*>(line.data()) + 1, line.size() - 1);
    if (line[0] == '>') made_.assembly.emplace_back();
    if (line[0] == '=' || line[0] == '+') addContig(line[0] == '=');
    if (line[0] == '*') addRepeat();
    if (contigs_.empty() || made_.reads.size() >= kMostReads) return;
    if (line[0] == 'r') addRead();
    if (line[0] == 'p') addPair();
    if (line[0] == 'R') addLiteral();
  }

  void addContig(bool isLiteral) {
    const int gap = 8 * line_.next() - 60;
    std::string bases(line_.rest());
    if (!isLiteral) {
      const auto length = static_cast<std::size_t>(2 * line_.next());
      bases = test::randomBases(length, static_cast<unsigned>(line_.next()));
    }
    if (basesSoFar_ + bases.size() > kMostBases) return;
    basesSoFar_ += bases.size();
    if (made_.assembly.empty()) made_.assembly.emplace_back();
    made_.assembly.back().push_back({bases, gap});
    contigs_.push_back(bases);
  }

  // The contig that a byte names; REQUIRES that there is one.
  const std::string& contig() {
    return contigs_[static_cast<std::size_t>(line_.next()) % contigs_.size()];
  }

  void addRepeat() {
    if (made_.assembly.empty() || made_.assembly.back().empty()) return;
    const std::string& from = contig();
    const auto start = static_cast<std::size_t>(2 * line_.next());
    const auto length = static_cast<std::size_t>(line_.next());
    if (start >= from.size() || basesSoFar_ + length > kMostBases) return;
    std::string stretch = from.substr(start, length);
    if (length % 2 == 1) stretch = test::reverseComplement(stretch);
    basesSoFar_ += stretch.size();
    made_.assembly.back().back().bases += stretch;
    contigs_.back() += stretch;
  }

  std::string flawed(std::string read, int flaw, int turn) {
    if (!read.empty() && flaw != 0) {
      char& letter = read[static_cast<std::size_t>(2 * flaw) % read.size()];
      letter = (turn & 2) != 0 ? "NnRa\xC8"[flaw % 5] : letter == 'A' ? 'C' : 'A';
    }
    if ((turn & 4) != 0 && !made_.reads.empty()) {
      read = read.substr(0, read.size() / 2) + made_.reads.back();
      read.resize(std::min<std::size_t>(read.size(), 150));
    }
    return (turn & 1) != 0 ? test::reverseComplement(read) : read;
  }

  void addRead() {
    const std::string& on = contig();
    const int offset = 3 * line_.next() - 60;
    const int length = 2 * line_.next();
    const int flaw = line_.next();
    made_.reads.push_back(flawed(test::readAt(on, offset, length), flaw, line_.next()));
  }

  void addPair() {
    const std::string& on = contig();
    const int offset = 3 * line_.next() - 60;
    const int length = 2 * line_.next();
    const int flaw = line_.next();
    const int turn = line_.next();
    const int mateLength = 2 * line_.next();
    const int fragment = made_.settings.insert + 2 * line_.next() - 64;
    std::string a = flawed(test::readAt(on, offset, length), flaw, turn & ~1);
    std::string b =
        test::reverseComplement(test::readAt(on, offset + fragment - mateLength, mateLength));
    if ((turn & 1) != 0) a.swap(b);
    if (made_.settings.insert > 1000) {
      a = test::reverseComplement(a);
      b = test::reverseComplement(b);
      a.swap(b);
    }
    made_.reads.push_back(a);
    made_.first.push_back(a);
    made_.second.push_back(b);
  }

  void addLiteral() {
    const std::string read(line_.rest().substr(0, 150));
    made_.first.push_back(read);
    made_.second.push_back(made_.reads.empty() ? read : made_.reads.back());
    made_.reads.push_back(read);
  }

  Input input_;
  Input line_{nullptr, 0};
  PlacementInput made_;
  std::vector<std::string> contigs_;
  std::size_t basesSoFar_ = 0;
};

}  // namespace

PlacementInput placementInput(Input input) {
  return Maker(input).make();
}

}  // namespace velk::fuzz
