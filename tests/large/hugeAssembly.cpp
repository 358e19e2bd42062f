// Makes an assembly of billions of bases, with reads at some of its gaps and the truth about them,
// in the working folder: whole.fa, part.fa (its last scaffolds alone), reads_1.fq, reads_2.fq and
// truth.tsv. Usage: hugeAssembly BASES PART_SCAFFOLDS PAIRS
//
// A scaffold has 40 Mb. A fifth of it is copies of earlier stretches of 10 kb, some bases changed.
// The part's copies come from the part, so that its k-mers occur as often in it as in the whole.
// Reads have 150 bases, fragments 500; each fragment overlaps a gap. truth.tsv: a line per pair:
// both reads, number of the gap in the whole, position of each in the gap, position in the text.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr uint64_t kScaffold = 40'000'000;
constexpr uint64_t kCopy = 10'000;
constexpr uint64_t kRead = 150;
constexpr uint64_t kFragment = 500;
constexpr uint64_t kText = uint64_t{1} << 32;  // a contig lies across this base of all contigs

// xorshift64*, by Marsaglia and Vigna.
class Random {
 public:
  uint64_t next() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return state_ * 0x2545F4914F6CDD1DU;
  }
  uint64_t below(uint64_t end) { return (next() >> 11) % end; }
  char base() { return "ACGT"[next() >> 62]; }

 private:
  uint64_t state_ = 0x9E3779B97F4A7C15U;
};

struct Gap {
  uint64_t start;  // in the scaffold
  uint64_t length;
};

char complement(char base) {
  switch (base) {
    case 'A':
      return 'T';
    case 'C':
      return 'G';
    case 'G':
      return 'C';
    default:
      return 'A';
  }
}

std::string reverseComplement(const std::string& bases) {
  std::string other;
  for (auto base = bases.rbegin(); base != bases.rend(); ++base) other += complement(*base);
  return other;
}

// The bases of a scaffold: random ones and copies of what `source` has, which they join.
std::string makeScaffold(Random& random, std::string& source) {
  std::string bases;
  bases.reserve(kScaffold);
  while (bases.size() < kScaffold) {
    if (random.below(5) == 0 && source.size() > kCopy) {
      std::string copy = source.substr(random.below(source.size() - kCopy), kCopy);
      for (uint64_t n = random.below(200); n > 0; --n) copy[random.below(kCopy)] = random.base();
      bases += random.below(2) == 0 ? copy : reverseComplement(copy);
    } else {
      for (uint64_t n = 0; n < kCopy; ++n) bases += random.base();
    }
  }
  bases.resize(kScaffold);
  if (source.size() < kScaffold) source += bases.substr(0, kScaffold / 4);
  return bases;
}

// Gaps every 20 to 380 kb, none near base kText of all contigs' bases, of which `before` are
// before.
std::vector<Gap> makeGaps(Random& random, uint64_t before) {
  std::vector<Gap> gaps;
  uint64_t inGaps = 0;
  for (uint64_t at = 100'000; at + 100'000 < kScaffold; at += 20'000 + random.below(360'000)) {
    const Gap gap{at, 200 + random.below(2800)};
    const uint64_t text = before + at - inGaps;
    if (text + 2'000'000 > kText && text < kText + 2'000'000) continue;
    gaps.push_back(gap);
    inGaps += gap.length;
  }
  return gaps;
}

void writeScaffold(std::ostream& out, uint64_t number, const std::string& bases,
                   const std::vector<Gap>& gaps) {
  std::string masked = bases;
  for (const Gap& gap : gaps) masked.replace(gap.start, gap.length, gap.length, 'N');
  out << ">scaffold" << number << '\n' << masked << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 1;
  const uint64_t scaffolds = std::strtoull(argv[1], nullptr, 10) / kScaffold;
  const uint64_t part = std::strtoull(argv[2], nullptr, 10);
  const uint64_t pairs = std::strtoull(argv[3], nullptr, 10);
  std::ofstream whole("whole.fa");
  std::ofstream alone("part.fa");
  std::ofstream first("reads_1.fq");
  std::ofstream second("reads_2.fq");
  std::ofstream truth("truth.tsv");
  Random random;
  std::string source;
  uint64_t gapNumber = 0;
  uint64_t text = 0;
  for (uint64_t s = 0; s < scaffolds; ++s) {
    if (s + part == scaffolds) source.clear();
    const std::string bases = makeScaffold(random, source);
    const std::vector<Gap> gaps = makeGaps(random, text);
    writeScaffold(whole, s, bases, gaps);
    if (s + part >= scaffolds) writeScaffold(alone, s, bases, gaps);
    uint64_t inGaps = 0;
    for (uint64_t n = 0; n < pairs / scaffolds; ++n) {
      const std::size_t g = random.below(gaps.size());
      inGaps = 0;
      for (std::size_t i = 0; i < g; ++i) inGaps += gaps[i].length;
      const Gap& gap = gaps[g];
      const uint64_t start = gap.start - kFragment + random.below(gap.length + kFragment);
      std::string a = bases.substr(start, kRead);
      std::string b = reverseComplement(bases.substr(start + kFragment - kRead, kRead));
      if (random.below(3) == 0) a[random.below(kRead)] = random.base();
      if (random.below(3) == 0) b[random.below(kRead)] = random.base();
      const auto position = static_cast<int64_t>(start) - static_cast<int64_t>(gap.start);
      truth << a << '\t' << b << '\t' << gapNumber + g << '\t' << position << '\t'
            << position + static_cast<int64_t>(kFragment - kRead) << '\t' << text + start - inGaps
            << '\n';
      if (random.below(2) == 0) std::swap(a, b);
      first << '@' << s << '_' << n << '\n' << a << "\n+\n" << std::string(kRead, 'I') << '\n';
      second << '@' << s << '_' << n << '\n' << b << "\n+\n" << std::string(kRead, 'I') << '\n';
    }
    gapNumber += gaps.size();
    uint64_t gapBases = 0;
    for (const Gap& gap : gaps) gapBases += gap.length;
    text += kScaffold - gapBases;
  }
  std::cout << scaffolds << " scaffolds, " << text << " bases of contigs, " << gapNumber
            << " gaps\n";
  return 0;
}
