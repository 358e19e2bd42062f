// Which k-mers of the scaffold model are indexed, and with which places.
#include "kmer/fetchKmers.h"

#include <rapidcheck.h>

#include <map>

#include "kmer/plainIndex.h"
#include "tests/kmer/hashSetFixture.h"
#include "tests/kmer/packingModel.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

// The index as a list: key to scaffold, contig, offset, unique.
struct PlainEntity {
  uint64_t scaffold;
  uint64_t contig;
  uint64_t start;
  bool unique;

  bool operator==(const PlainEntity&) const = default;
};

using Content = std::map<uint64_t, PlainEntity>;

using Assembly = std::vector<std::vector<std::string>>;  // the contigs of every scaffold

// An assembly as a scaffold model.
class Model {
 public:
  explicit Model(const Assembly& assembly) {
    for (const auto& sequences : assembly) {
      auto& infos = contigs_.emplace_back();
      for (const std::string& bases : sequences) infos.push_back({bases, nullptr, 0, 0});
      scaffolds_.push_back({"", static_cast<uint32_t>(infos.size()), infos.data()});
    }
  }

  const ScaffoldInfo* scaffolds() const { return scaffolds_.data(); }
  uint32_t count() const { return static_cast<uint32_t>(scaffolds_.size()); }

 private:
  std::vector<std::vector<ContigInfo>> contigs_;
  std::vector<ScaffoldInfo> scaffolds_;
};

class FetchKmers : public RunParametersTest {
 protected:
  // The indexed k-mers of an assembly, out of a set that has to grow.
  Content indexed(const Assembly& assembly) {
    const Model model(assembly);
    const OwnSet set = makeSet(3, 0.75F);
    messages_ = messagesOf([&] { addContigKmers(set.get(), model.scaffolds(), model.count()); });
    EXPECT_EQ(brokenInvariant(*set), "");
    return contentOf(*set);
  }

  std::string messages_;  // of the last indexing

 private:
  static Content contentOf(const velk::HashSet& set) {
    Content index;
    for (uint64_t slot = 0; slot < set.size; ++slot) {
      if (is_entity_null(set.nul_flag, slot)) continue;
      const Entity& entity = set.array[slot];
      index[entity.bitSeq] = {entity.scaffoldNum, entity.contigNum, entity.startPos,
                              entity.unique == 1};
    }
    EXPECT_EQ(index.size(), set.count);
    return index;
  }
};

// What the index must hold, window by window.
Content modelOfIndex(const Assembly& assembly, std::size_t kmer, std::size_t contigLen) {
  Content index;
  for (std::size_t i = 0; i < assembly.size(); ++i) {
    for (std::size_t j = 0; j < assembly[i].size(); ++j) {
      const std::string& bases = assembly[i][j];
      if (bases.size() < contigLen) continue;
      for (std::size_t start = 0; start + kmer <= bases.size(); ++start) {
        const uint64_t key = modelOfPacking(bases.substr(start, kmer));
        const auto [place, isNew] = index.try_emplace(key, PlainEntity{i, j, start, true});
        if (!isNew) place->second.unique = false;
      }
    }
  }
  return index;
}

TEST_F(FetchKmers, EveryWindowOfAContig) {
  const std::string contig = randomBases(70, 1);
  const Content index = indexed({{contig}});
  ASSERT_EQ(index.size(), 40U);
  for (std::size_t start = 0; start < 40; ++start) {
    const auto found = index.find(modelOfPacking(contig.substr(start, 31)));
    ASSERT_NE(found, index.end()) << start;
    EXPECT_EQ(found->second, (PlainEntity{0, 0, start, true})) << start;
  }
}

TEST_F(FetchKmers, OnlyGrowthIsTold) {
  indexed({{randomBases(34, 1) + randomBases(36, 2)}});
  EXPECT_EQ(messages_,
            "old set->size: 3\nnew set->size: 7\nold set->size: 7\nnew set->size: 15\n"
            "old set->size: 15\nnew set->size: 31\nold set->size: 31\nnew set->size: 67\n");
}

TEST_F(FetchKmers, ContigsBelowTheLeastLengthAreSkipped) {
  EXPECT_TRUE(indexed({{randomBases(69, 1)}, {randomBases(50, 2), ""}}).empty());
}

TEST_F(FetchKmers, SkippedContigsKeepTheirIndexes) {
  const std::string contig = randomBases(70, 1);
  const Content index = indexed({{}, {randomBases(20, 2), contig}});
  EXPECT_EQ(index.at(modelOfPacking(contig.substr(0, 31))), (PlainEntity{1, 1, 0, true}));
}

TEST_F(FetchKmers, LeastLengthIsComparedAsAnUnsignedNumber) {
  CONTIGLEN = -1;
  EXPECT_TRUE(indexed({{randomBases(100, 1)}}).empty());
}

TEST_F(FetchKmers, ContigOneBaseTooShortForAKmer) {
  CONTIGLEN = 30;
  EXPECT_TRUE(indexed({{randomBases(30, 1)}}).empty());
}

TEST_F(FetchKmers, ContigsMuchTooShortForAKmer) {
  CONTIGLEN = 0;
  EXPECT_TRUE(indexed({{"", "A", randomBases(29, 1)}}).empty());
}

TEST_F(FetchKmers, ContigOfOneKmer) {
  CONTIGLEN = 31;
  EXPECT_EQ(indexed({{randomBases(31, 1)}}).size(), 1U);
}

TEST_F(FetchKmers, SharedKmerStaysAtTheEarlierContig) {
  const std::string shared = randomBases(31, 9);
  const std::string first = randomBases(50, 1) + shared + randomBases(50, 2);
  const std::string second = randomBases(20, 3) + shared + randomBases(60, 4);
  const uint64_t key = modelOfPacking(shared);
  EXPECT_EQ(indexed({{first, second}}).at(key), (PlainEntity{0, 0, 50, false}));
  EXPECT_EQ(indexed({{second}, {first}}).at(key), (PlainEntity{0, 0, 20, false}));
  EXPECT_EQ(indexed({{}, {second}, {first, second}}).at(key), (PlainEntity{1, 0, 20, false}));
}

TEST_F(FetchKmers, TandemRepeatIsNotUnique) {
  const std::string unit = randomBases(35, 9);
  const std::string contig = unit + unit + randomBases(20, 1);
  const Content index = indexed({{contig}});
  EXPECT_EQ(index.size(), contig.size() - 30 - 5);  // five windows of the second unit come again
  for (std::size_t start = 0; start < 5; ++start) {
    EXPECT_EQ(index.at(modelOfPacking(contig.substr(start, 31))),
              (PlainEntity{0, 0, start, false}));
  }
  EXPECT_TRUE(index.at(modelOfPacking(contig.substr(5, 31))).unique);
}

TEST_F(FetchKmers, OnlyTheForwardStrandIsIndexed) {
  const std::string contig = randomBases(70, 1);
  const Content index = indexed({{contig}});
  const std::string reversed = reverseComplement(contig);
  for (std::size_t start = 0; start < 40; ++start) {
    EXPECT_FALSE(index.contains(modelOfPacking(reversed.substr(start, 31)))) << start;
  }
}

TEST_F(FetchKmers, KmersWithOtherLettersAreIndexed) {
  Kmer = 4;
  CONTIGLEN = 6;
  EXPECT_EQ(indexed({{"ACNGTx"}}), (Content{{modelOfPacking("ACNG"), {0, 0, 0, true}},
                                            {modelOfPacking("CNGT"), {0, 0, 1, true}},
                                            {modelOfPacking("NGTx"), {0, 0, 2, true}}}));
}

TEST_F(FetchKmers, KmersOfNoBase) {
  Kmer = 0;
  CONTIGLEN = 3;
  // one more window than bases, all with the same empty key
  EXPECT_EQ(indexed({{"AC", "ACG"}}), (Content{{0, {0, 1, 0, false}}}));
}

TEST_F(FetchKmers, LongKmersMeetInTheirLast32Bases) {
  Kmer = 40;
  const std::string end = randomBases(32, 9);
  const Content index = indexed({{randomBases(60, 1) + end, randomBases(70, 2) + end}});
  EXPECT_EQ(index.size(), 53U + 63U - 1U);
  EXPECT_EQ(index.at(modelOfPacking(end)), (PlainEntity{0, 0, 52, false}));
}

// Assemblies of up to five scaffolds, full of repeats, with other letters or without.
rc::Gen<Assembly> smallAssembly() {
  return rc::gen::exec([] {
    const auto bases = rc::gen::container<std::string>(
        *rc::gen::inRange<std::size_t>(0, 120),
        rc::gen::elementOf(*rc::gen::element<std::string>("ACGT", "ACGTNacgtn", "AC", "AAAN")));
    return *rc::gen::resize(
        5, rc::gen::container<Assembly>(rc::gen::container<std::vector<std::string>>(bases)));
  });
}

void takeAnyLengths() {
  Kmer = *rc::gen::element(0, 1, 2, 5, 8, 16, 19, 23, 31, 32, 33, 40, 70);
  CONTIGLEN = *rc::gen::element(0, 1, 10, 40, 70);
}

TEST_F(FetchKmers, AgreesWithTheModel) {
  EXPECT_TRUE(rc::check("small assemblies", [&] {
    takeAnyLengths();
    const Assembly assembly = *smallAssembly();
    RC_ASSERT(indexed(assembly) == modelOfIndex(assembly, static_cast<std::size_t>(Kmer),
                                                static_cast<std::size_t>(CONTIGLEN)));
  }));
}

// Whatever engine the run has, it tells what the hash set tells that is filled one by one.
TEST_F(FetchKmers, RunTellsOfTheHashSet) {
  EXPECT_TRUE(rc::check("small assemblies", [&] {
    takeAnyLengths();
    const Assembly assembly = *smallAssembly();
    const Model model(assembly);
    const auto slots = *rc::gen::element<uint64_t>(0, 3, 10, 100, 1048576);
    const float loadFactor = *rc::gen::element(-1.0F, 0.02F, 0.5F, 0.75F, 0.9F, 2.0F);
    const OwnSet set = makeSet(slots, loadFactor);
    const std::string messages =
        messagesOf([&] { addContigKmers(set.get(), model.scaffolds(), model.count()); });
    velk::HashSet* const ofRun = newKmerHash(slots, loadFactor);
    RC_ASSERT(messagesOf([&] { FetchKmers1(ofRun, model.scaffolds(), model.count()); }) ==
              messages);
    RC_ASSERT(ofRun->count == set->count);
    RC_ASSERT(ofRun->size == set->size);
    RC_ASSERT(ofRun->max == set->max);
    RC_ASSERT(ofRun->e_size == set->e_size);
    RC_ASSERT(ofRun->load_factor == set->load_factor);
    freeKmerHash(ofRun);
  }));
}

}  // namespace
}  // namespace velk::test
