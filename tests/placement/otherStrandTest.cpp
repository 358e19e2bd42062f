// What the walk takes from a read's other strand, against the plain model: repeats on both strands,
// letters that are no bases, and the k-mer lengths that have a filter.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <vector>

#include "kmer/fetchKmers.h"
#include "placement/kmerWalk.h"
#include "placement/scout.h"
#include "streaming/readBuffer.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/plainPlacement.h"

namespace velk::test {
namespace {

class OtherStrand : public PlacementTest {
 protected:
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
    pool_.clear();
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
    while (bases.size() < static_cast<std::size_t>(Kmer)) bases += "ACGT"[below(4)];
    return bases;
  }

  // Makes known what the scout finds of a read, or of its reverse complement; sometimes without
  // the last step, or nothing.
  Strand strandOf(Scouting& known, const std::string& read) {
    Scout scout(*kmerHash, Kmer);
    const bool isTurned = chance(50);
    const std::string bases = isTurned ? plainReverseComplement(read) : read;
    scout.look(known, bases);
    scout.ask(known, bases);
    scout.find(known, bases);
    scout.findAgain(known, bases);
    if (chance(90)) scout.compare(known, bases);
    // The reverse complement of a letter that is no base is one.
    const bool areBases = read.find_first_not_of("ACGTacgt") == std::string::npos;
    if (!areBases || !known.hasBasesAlone || chance(10)) return {};
    return {&read, &known, isTurned};
  }

  void makeKnown(const std::string& one, const std::string& other) {
    KmerWalk::takeStrands({strandOf(first_, one), strandOf(second_, other), {}, {}});
  }

  void reseed(unsigned seed) { random_.seed(seed); }

 private:
  std::mt19937 random_;
  Scouting first_;
  Scouting second_;
  std::vector<std::string> pool_;  // contigs made so far
};

// The read's R reads as A, and leaves the C in front of it as it is. Its reverse complement runs
// along the first contig with an A there, which says nothing of the read's own k-mers.
TEST_F(OtherStrand, AnotherLetterOfTheReadIsNoBaseOfItsReverseComplement) {
  std::string bases = randomBases(61, 77);
  bases[29] = 'C';
  const auto with = [&](char letter) {
    std::string read = bases;
    read[30] = letter;
    return read;
  };
  const std::string along =
      randomBases(100, 5) + reverseComplement(with('T')) + randomBases(100, 6);
  assemble({{{along}}, {{randomBases(200, 7)}, {with('A').substr(10) + randomBases(200, 8), 300}}});
  const Outcome outcome = single(with('R'));
  EXPECT_EQ(outcome.stop, 10);
  EXPECT_EQ(outcome.records, (std::vector<TestRecord>{{with('R'), 1, 0, 290, 0, 300}}));
}

TEST_F(OtherStrand, AgreesWithThePlainModel) {
  for (unsigned seed = 0; seed < 300 && !HasFailure(); ++seed) {
    reseed(seed);
    PlainSettings settings;
    settings.kmer = Kmer = 16 + static_cast<int>(below(17));
    settings.mapCut = mapCut = chance(50) ? 0.98 : 0.1 * static_cast<double>(below(10));
    settings.shortestContig = CONTIGLEN = static_cast<int>(below(60));
    settings.insert = insertLength = 50 + static_cast<int>(below(350));
    settings.readLength = readLen = 20 + static_cast<int>(below(40));
    settings.bigGap = BIGGAPLEN = 900;
    const std::vector<TestScaffold> scaffolds = assembly();
    assemble(scaffolds);
    if (seed % 8 == 0) {
      indexAsOneOf((uint64_t{1} << 27) + 1);
      EXPECT_EQ(sideIndex.filter().gramLength(), std::min(Kmer, 17));
    }
    PlainPlacement plain(scaffolds, settings);
    for (int k = 0; k < 60; ++k) {
      const std::string one = read();
      const std::string other = read();
      makeKnown(one, other);
      std::vector<TestRecord> records;
      Outcome outcome = single(one);
      EXPECT_EQ(outcome.stop, plain.single(one, records)) << seed << ' ' << one;
      EXPECT_EQ(outcome.records, records) << seed << ' ' << one;
      records.clear();
      outcome = forward(one, other);
      EXPECT_EQ(outcome.stop, plain.forward(one, other, records)) << seed << ' ' << one;
      EXPECT_EQ(outcome.records, records) << seed << ' ' << one;
      records.clear();
      outcome = reverse(one, other);
      EXPECT_EQ(outcome.stop, plain.reverse(one, other, records)) << seed << ' ' << one;
      EXPECT_EQ(outcome.records, records) << seed << ' ' << one;
      KmerWalk::takeStrands({});
    }
  }
}

}  // namespace
}  // namespace velk::test
