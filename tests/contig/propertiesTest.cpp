// Random sequences and assemblies: splitting against a naive model; scaffold files, written out as
// contig files and read back.
#include <rapidcheck.h>

#include <algorithm>
#include <map>

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

// Scaffold files, written out as contig files and read back, on random assemblies.

struct PlainScaffold {
  std::string id;
  std::string sequence;
};

// Distinct ids without the letters that would cut them, and sequences with at least one letter.
std::vector<PlainScaffold> anyAssembly() {
  const auto anyId =
      rc::gen::container<std::string>(rc::gen::elementOf(std::string("0129abcXYZ.-|")));
  const auto anySequence = rc::gen::nonEmpty(
      rc::gen::container<std::string>(rc::gen::elementOf(std::string("ACGTacgtNNnN"))));
  const auto ids = *rc::gen::unique<std::vector<std::string>>(rc::gen::resize(5, anyId));
  std::vector<PlainScaffold> assembly;
  for (const std::string& id : ids) assembly.push_back({id, *rc::gen::scale(3.0, anySequence)});
  return assembly;
}

// The assembly as a scaffold FASTA with lines of `width` bases.
std::string fastaOf(const std::vector<PlainScaffold>& assembly, std::size_t width) {
  std::string text;
  for (const PlainScaffold& scaffold : assembly) {
    text += ">scaffold" + scaffold.id + " some remark\n";
    for (std::size_t i = 0; i < scaffold.sequence.size(); i += width) {
      text += scaffold.sequence.substr(i, width) + "\n";
    }
  }
  return text;
}

// What reading back must give: scaffolds without contigs are gone, the others sorted by id, and
// the gaps numbered anew in file order.
std::map<std::string, PlainContigs> readBackModel(
    const std::vector<std::pair<std::string, PlainContigs>>& split) {
  std::map<std::string, PlainContigs> model;
  uint64_t gaps = 0;
  for (auto [id, contigs] : split) {
    if (contigs.empty()) continue;
    for (PlainContig& contig : contigs) contig.gapNum = &contig == contigs.data() ? kNoGap : gaps++;
    model[id] = contigs;
  }
  return model;
}

class RoundTrip : public ContigTest {
 protected:
  // Loads the assembly as a scaffold file and checks the model and both side files. Returns the
  // name of the scaffold file.
  std::string checkLoading(const std::vector<PlainScaffold>& assembly, SplitRules rules,
                           std::vector<std::pair<std::string, PlainContigs>>& split) {
    gaps_ = 0;
    const std::string file =
        loadScaffoldFile(fastaOf(assembly, *rc::gen::inRange<std::size_t>(1, 30)));
    RC_ASSERT(scaffoldSum == assembly.size());
    std::string positions;
    std::string contigFile;
    uint64_t gaps = 0;
    for (uint32_t i = 0; i < scaffoldSum; ++i) {
      const std::string& id = assembly[i].id;
      const SplitModel model = modelOfSplit(assembly[i].sequence, id, rules, gaps);
      RC_ASSERT(scaffoldInfo[i].scaffoldId == id);
      RC_ASSERT(contigsOf(i) == model.contigs);
      for (std::size_t k = 0; k < model.contigs.size(); ++k) {
        contigFile += ">scaffold" + id + "_" + std::to_string(k) + "\t" +
                      std::to_string(model.contigs[k].gapSize) + "\n" + model.contigs[k].bases +
                      "\n";
      }
      positions += model.positions;
      gaps = model.gaps;
      split.emplace_back(id, model.contigs);
    }
    RC_ASSERT(gaps_ == gaps);
    RC_ASSERT(contentOf(file + ".contigPos") == positions);
    RC_ASSERT(contentOf(file + ".contig") == contigFile);
    return file;
  }
};

TEST_F(RoundTrip, ContigFileReadsBackIntoTheSameContigs) {
  EXPECT_TRUE(rc::check("scaffold file to model, side files and back", [&] {
    const SplitRules rules{*rc::gen::inRange(1, 8), *rc::gen::element(0, 1, 2), 1};
    CONTIGLEN = rules.contigLen;
    CuttEdge = rules.cuttEdge;
    readLen = rules.readLen;
    const std::vector<PlainScaffold> assembly = anyAssembly();
    RC_PRE(!assembly.empty());
    std::vector<std::pair<std::string, PlainContigs>> split;
    const std::string file = checkLoading(assembly, rules, split);

    gaps_ = 0;
    loadContigFile(contentOf(file + ".contig"));
    const auto model = readBackModel(split);
    RC_ASSERT(scaffoldSum == model.size());
    uint32_t i = 0;
    uint64_t gaps = 0;
    for (const auto& [id, contigs] : model) {
      RC_ASSERT(scaffoldInfo[i].scaffoldId == id);
      RC_ASSERT(contigsOf(i) == contigs);
      gaps += contigs.size() - 1;
      ++i;
    }
    RC_ASSERT(gaps_ == gaps);
  }));
}

TEST_F(RoundTrip, IdsWithUnderscoreAreCutWhenReadBack) {
  CONTIGLEN = 1;
  const std::string file = loadScaffoldFile(">scaffolda_b\nACNGT\n>scaffolda_c\nAA\n");
  loadContigFile(contentOf(file + ".contig"));
  EXPECT_EQ(ids(), (std::vector<std::string>{"a"}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"AC", kNoGap, 0}, {"GT", 0, 1}, {"AA", 1, 0}}));
}

TEST_F(RoundTrip, FirstContigsHaveNoGapNumberOnlyInContigInput) {
  CONTIGLEN = 1;
  const std::string file = loadScaffoldFile(">C1\nACNNGT\n>C2\nAANCC\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"AC", 0, 0}, {"GT", 0, 2}}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"AA", 0, 0}, {"CC", 1, 1}}));
  loadContigFile(contentOf(file + ".contig"));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"AC", kNoGap, 0}, {"GT", 0, 2}}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"AA", kNoGap, 0}, {"CC", 1, 1}}));
}

}  // namespace

}  // namespace velk::test
