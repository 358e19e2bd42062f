// What the plain index answers, in assemblies that fit an entity's fields and in those that outgrow
// them.
#include "kmer/plainIndex.h"

#include <optional>

#include "tests/kmer/hashSetFixture.h"
#include "tests/kmer/packingModel.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

class PlaceOf : public AssemblyTest {
 protected:
  // Makes a model of `scaffolds` scaffolds without contigs.
  static void makeScaffolds(uint32_t scaffolds) {
    scaffoldInfo = new ScaffoldInfo[scaffolds]();
    scaffoldSum = scaffolds;
  }

  // Gives scaffold `i` as many empty contigs.
  static void makeContigs(uint64_t i, uint64_t contigs) {
    scaffoldInfo[i].contigsInfo = new ContigInfo[contigs]();
    scaffoldInfo[i].contigsSum = static_cast<uint32_t>(contigs);
  }

  static std::string& sequence(uint64_t i, uint64_t j) {
    return scaffoldInfo[i].contigsInfo[j].contigSeq;
  }

  void index() {
    messagesOf([&] { addContigKmers(set_.get(), scaffoldInfo, scaffoldSum); });
    index_.emplace(*set_, scaffoldInfo, scaffoldSum);
  }

  std::optional<KmerAnswer> answerOf(const std::string& kmer) const {
    return index_->placeOf(modelOfPacking(kmer));
  }

  // Whether the first occurrence of the k-mer is said to be here.
  void expectPlace(const std::string& kmer, uint64_t i, uint64_t j, uint64_t start,
                   bool isUnique = true) const {
    const Entity& entity = find(set_, modelOfPacking(kmer));
    EXPECT_EQ(entity.scaffoldNum, i % kScaffolds);
    EXPECT_EQ(entity.contigNum, j % kContigs);
    EXPECT_EQ(entity.startPos, start % kOffsets);
    const std::optional<KmerAnswer> answer = answerOf(kmer);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->first.scaffold, i);
    EXPECT_EQ(answer->first.contig, j);
    EXPECT_EQ(answer->first.start, start);
    EXPECT_EQ(answer->isUnique, isUnique);
  }

 private:
  const OwnSet set_ = makeSet(1024, 0.75F);
  std::optional<PlainIndex> index_;
};

TEST_F(PlaceOf, FieldsTellThePlaceOfAnAssemblyThatFits) {
  const std::string first = randomBases(100, 1);
  const std::string second = randomBases(100, 2);
  load({{{first}}, {{randomBases(80, 3)}, {second, 4}}});
  index();
  expectPlace(first.substr(0, 31), 0, 0, 0);
  expectPlace(first.substr(69, 31), 0, 0, 69);
  expectPlace(second.substr(17, 31), 1, 1, 17);
}

TEST_F(PlaceOf, IndexesBeyondTheFieldsAreFoundAgain) {
  CONTIGLEN = 50;
  makeScaffolds(kScaffolds + 10);
  makeContigs(3, kContigs + 10);
  makeContigs(kScaffolds + 3, 10);
  makeContigs(kScaffolds + 9, 1);
  const std::string low = randomBases(60, 1);
  const std::string high = randomBases(60, 2);
  const std::string far = randomBases(60, 3);
  const std::string last = randomBases(60, 4);
  sequence(3, 5) = low;
  sequence(3, kContigs + 5) = high;
  sequence(kScaffolds + 3, 5) = far;
  sequence(kScaffolds + 9, 0) = last;
  index();
  for (const uint64_t start : {0U, 5U, 29U}) {
    expectPlace(low.substr(start, 31), 3, 5, start);
    expectPlace(high.substr(start, 31), 3, kContigs + 5, start);
    expectPlace(far.substr(start, 31), kScaffolds + 3, 5, start);
    expectPlace(last.substr(start, 31), kScaffolds + 9, 0, start);
  }
}

TEST_F(PlaceOf, FirstOfSeveralPlacesThatAgreeInTheirBits) {
  // the same contig at indexes that the fields cannot tell apart
  CONTIGLEN = 50;
  makeScaffolds(2);
  makeContigs(0, 6);
  makeContigs(1, kContigs + 6);
  const std::string contig = randomBases(60, 1);
  const std::string other = randomBases(60, 2);
  sequence(1, 5) = contig;
  sequence(1, kContigs + 3) = other;
  sequence(1, kContigs + 4) = other;
  sequence(1, kContigs + 5) = contig;
  index();
  expectPlace(contig.substr(7, 31), 1, 5, 7, false);
  expectPlace(other.substr(7, 31), 1, kContigs + 3, 7, false);
}

TEST_F(PlaceOf, RepeatedKmerIsAtItsFirstPlace) {
  const std::string twice = randomBases(100, 1);
  load({{{randomBases(80, 3)}, {twice, 4}}, {{twice}}});
  index();
  expectPlace(twice.substr(17, 31), 0, 1, 17, false);
}

TEST_F(PlaceOf, NoAnswerForAKmerThatNoContigHolds) {
  const std::string contig = randomBases(100, 1);
  load({{{contig}, {randomBases(60, 2), 4}}});
  index();
  EXPECT_FALSE(answerOf(reverseComplement(contig).substr(10, 31)));
  EXPECT_FALSE(answerOf(randomBases(60, 2).substr(0, 31)));  // of a contig below CONTIGLEN
}

TEST_F(PlaceOf, KmersLongerThanAWordBeginAtTheirFirstBase) {
  Kmer = 40;
  const std::string contig = randomBases(100, 1);
  load({{{contig}}});
  index();
  expectPlace(contig.substr(25, 40), 0, 0, 25);
  EXPECT_TRUE(answerOf(randomBases(8, 2) + contig.substr(33, 32)));  // the last 32 bases decide
}

TEST_F(PlaceOf, ShortContigsHoldNoPlace) {
  // contigs 5 and 2^19 + 5 agree in their low bits and hold the same k-mer, but one is not indexed
  CONTIGLEN = 50;
  makeScaffolds(1);
  makeContigs(0, kContigs + 6);
  const std::string contig = randomBases(60, 1);
  sequence(0, 5) = contig.substr(0, 45);
  sequence(0, kContigs + 5) = contig;
  index();
  expectPlace(contig.substr(3, 31), 0, kContigs + 5, 3);
}

TEST_F(PlaceOf, OffsetsBeyondTheFieldAreFoundAgain) {
  // most of the contig is one k-mer over and over, so that the index stays small
  Kmer = 12;
  makeScaffolds(1);
  makeContigs(0, 1);
  const std::string front = "CGTTGCAGTCCATGGA";
  const std::string back = "GTCGACCTTGGCATCC";
  std::string& contig = sequence(0, 0);
  contig.assign(kOffsets + 100, 'A');
  contig.replace(40, front.size(), front);
  contig.replace(kOffsets + 40, back.size(), back);
  index();
  expectPlace(front.substr(0, 12), 0, 0, 40);
  expectPlace(front.substr(4, 12), 0, 0, 44);
  expectPlace(back.substr(0, 12), 0, 0, kOffsets + 40);
  expectPlace(back.substr(4, 12), 0, 0, kOffsets + 44);
  expectPlace(std::string(12, 'A'), 0, 0, 0, false);
}

}  // namespace
}  // namespace velk::test
