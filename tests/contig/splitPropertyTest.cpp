// Splitting against a naive model on random sequences and parameters.
#include <rapidcheck.h>

#include "tests/contig/contigFixture.h"
#include "tests/contig/splitModel.h"

namespace velk::test {
namespace {

// Runs of bases and gaps of random lengths, short ones and single last bases among them.
std::string anySequence() {
  const auto anyBases =
      rc::gen::container<std::string>(rc::gen::elementOf(std::string("ACGTacg>\r")));
  const auto anyGap = rc::gen::container<std::string>(rc::gen::elementOf(std::string("NNNn")));
  std::string sequence;
  const int runs = *rc::gen::inRange(0, 9);
  for (int i = 0; i < runs; ++i) {
    sequence += *rc::gen::resize(*rc::gen::element(1, 4, 20), anyGap);
    sequence += *rc::gen::resize(*rc::gen::element(1, 4, 20, 60), anyBases);
  }
  if (*rc::gen::arbitrary<bool>()) sequence += *rc::gen::resize(3, anyGap);
  if (*rc::gen::inRange(0, 4) == 0) sequence += "NA";
  return sequence;
}

SplitRules anyRules() {
  return {*rc::gen::inRange(-1, 25), *rc::gen::element(0, 0, 1, 2, 5), *rc::gen::inRange(0, 8)};
}

void useRules(const SplitRules& rules) {
  CONTIGLEN = rules.contigLen;
  CuttEdge = rules.cuttEdge;
  readLen = rules.readLen;
}

TEST_F(SplitScaffold, AgreesWithTheModel) {
  EXPECT_TRUE(rc::check("one scaffold after the other, one gap counter", [&] {
    const SplitRules rules = anyRules();
    useRules(rules);
    gaps_ = *rc::gen::inRange<uint64_t>(0, 100);
    for (int i = 0; i < 3; ++i) {
      const std::string sequence = anySequence();
      const SplitModel model = modelOfSplit(sequence, "7", rules, gaps_);
      RC_ASSERT(split(sequence) == model.contigs);
      RC_ASSERT(positions_ == model.positions);
      RC_ASSERT(gaps_ == model.gaps);
    }
  }));
}

TEST_F(SplitScaffold, AgreesWithTheModelOnAllShortSequences) {
  // every sequence of up to 9 letters out of a base and a gap letter
  for (const SplitRules rules : {SplitRules{2, 0, 0}, SplitRules{3, 1, 0}, SplitRules{1, 1, 1}}) {
    useRules(rules);
    for (unsigned length = 0; length <= 9; ++length) {
      for (unsigned pattern = 0; pattern < 1U << length; ++pattern) {
        std::string sequence;
        for (unsigned i = 0; i < length; ++i) sequence += (pattern >> i & 1U) != 0 ? 'N' : 'A';
        gaps_ = 11;
        const SplitModel model = modelOfSplit(sequence, "7", rules, gaps_);
        ASSERT_EQ(split(sequence), model.contigs) << sequence;
        ASSERT_EQ(positions_, model.positions) << sequence;
        ASSERT_EQ(gaps_, model.gaps) << sequence;
      }
    }
  }
}

}  // namespace
}  // namespace velk::test
