// The place of a hit, in assemblies that fit an entity's fields and in those that outgrow them.
#include "tests/kmer/hashSetFixture.h"
#include "tests/kmer/packingModel.h"
#include "tests/support/assembly.h"

#include "kmer/fetchKmers.h"

namespace velk::test {
namespace {

constexpr uint32_t kScaffolds = 1U << 20;
constexpr uint32_t kContigs = 1U << 19;
constexpr uint32_t kOffsets = 1U << 24;

class PlaceOf : public AssemblyTest {
 protected:
  // Makes a model of `scaffolds` scaffolds without contigs.
  void makeScaffolds(uint32_t scaffolds) {
    scaffoldInfo = new ScaffoldInfo[scaffolds]();
    scaffoldSum = scaffolds;
  }

  // Gives scaffold `i` as many empty contigs.
  static void makeContigs(uint32_t i, uint32_t contigs) {
    scaffoldInfo[i].contigsInfo = new ContigInfo[contigs]();
    scaffoldInfo[i].contigsSum = contigs;
  }

  static std::string& sequence(uint32_t i, uint32_t j) {
    return scaffoldInfo[i].contigsInfo[j].contigSeq;
  }

  static void index() {
    kmerHash = init_hashset(1024, 0.75F);
    messagesOf([&] { FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum); });
  }

  static const Entity& hit(const std::string& kmer) {
    const uint64_t slot = get_hashset(kmerHash, entityOf(modelOfPacking(kmer)));
    EXPECT_LT(slot, kmerHash->size);
    EXPECT_EQ(kmerHash->array[slot].unique, 1U);
    return kmerHash->array[slot];
  }

  // Whether the k-mer is indexed at this place, and found there again.
  static void expectPlace(const std::string& kmer, uint64_t i, uint64_t j, uint64_t start) {
    const Entity& entity = hit(kmer);
    EXPECT_EQ(entity.scaffoldNum, i % kScaffolds);
    EXPECT_EQ(entity.contigNum, j % kContigs);
    EXPECT_EQ(entity.startPos, start % kOffsets);
    const KmerPlace place = placeOf(entity);
    EXPECT_EQ(place.scaffold, i);
    EXPECT_EQ(place.contig, j);
    EXPECT_EQ(place.start, start);
  }
};

TEST_F(PlaceOf, FieldsTellThePlaceOfAnAssemblyThatFits) {
  const std::string first = randomBases(100, 1);
  const std::string second = randomBases(100, 2);
  load({{{first}}, {{randomBases(80, 3)}, {second, 4}}});
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

// Its marks are found by an entity's fields, which do not tell the place.
TEST_F(PlaceOf, NoSideIndexWhereIndexesOutgrowTheFields) {
  CONTIGLEN = 50;
  for (const uint32_t contigs : {kContigs, kContigs + 1}) {
    makeScaffolds(1);
    makeContigs(0, contigs);
    sequence(0, contigs - 1) = randomBases(60, 1);
    index();
    EXPECT_EQ(sideIndex.isMade(), contigs == kContigs) << contigs;
    releaseAssembly();
  }
  for (const uint32_t scaffolds : {kScaffolds, kScaffolds + 1}) {
    makeScaffolds(scaffolds);
    makeContigs(0, 1);
    sequence(0, 0) = randomBases(60, 1);
    index();
    EXPECT_EQ(sideIndex.isMade(), scaffolds == kScaffolds) << scaffolds;
    releaseAssembly();
  }
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
  const Entity& repeated = kmerHash->array[get_hashset(kmerHash, entityOf(0))];
  EXPECT_EQ(repeated.unique, 0U);
  EXPECT_EQ(repeated.startPos, 0U);
}

}  // namespace
}  // namespace velk::test
