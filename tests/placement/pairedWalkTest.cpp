// checkForwardRead and checkReverseRead: how they walk over the k-mers of an anchor, and the guard
// that gives up large inserts at small gaps.
#include "tests/placement/pairedTest.h"

namespace velk::test {
namespace {

const std::string& contigP() {
  static const std::string bases = randomBases(300, 61);
  return bases;
}
const std::string& contigQ() {
  static const std::string bases = randomBases(300, 62);
  return bases;
}
const std::string& contigR() {
  static const std::string bases = randomBases(300, 63);
  return bases;
}
const std::string& contigS() {
  static const std::string bases = randomBases(300, 64);
  return bases;
}

// ---- the guard ----------------------------------------------------------------------------------

// The anchor's k-mers hit the last contig, which is skipped, then a contig in front of a small
// gap, then one in front of a large gap that would record the pair.
TEST_F(CheckForwardRead, LargeInsertAtASmallGapStopsTheWalk) {
  mapCut = 0.1;
  const std::string anchor =
      contigS().substr(10, 31) + contigP().substr(100, 31) + contigQ().substr(0, 60);
  assembleScaffold({{contigP()}, {contigQ(), 500}, {contigR(), 5000}, {contigS(), 10}});
  Outcome outcome = check(anchor, mate, 2000);
  EXPECT_EQ(31, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  // Without contig p in the index the walk comes to contig q: -62 + 2000 - 100 - 300.
  assembleScaffold({{randomBases(300, 65)}, {contigQ(), 500}, {contigR(), 5000}, {contigS(), 10}});
  outcome = check(anchor, mate, 2000);
  EXPECT_EQ(62, outcome.stop);
  EXPECT_EQ((Records{inGap(1, 5000, mate, 1538), inGap(0, 500, anchor, 438)}), outcome.records);
}

TEST_F(CheckReverseRead, LargeInsertAtASmallGapStopsTheWalk) {
  mapCut = 0.1;
  const std::string anchor =
      contigP().substr(10, 31) + contigQ().substr(100, 31) + contigR().substr(0, 60);
  assembleScaffold({{contigP()}, {contigQ(), 500}, {contigR(), 5000}, {contigS(), 10}});
  Outcome outcome = check(anchor, mate, 2000);
  EXPECT_EQ(31, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  // Without contig q in the index the walk comes to contig r: 5000 - 62 + 122 - 2000.
  assembleScaffold({{contigP()}, {randomBases(300, 65), 500}, {contigR(), 5000}, {contigS(), 10}});
  outcome = check(anchor, mate, 2000);
  EXPECT_EQ(62, outcome.stop);
  EXPECT_EQ((Records{inGap(1, 5000, mate, 3060), inGap(1, 5000, anchor, 4938)}), outcome.records);
}

// The guard comes before the anchor is looked at base by base.
TEST_F(CheckForwardRead, TheGuardAsksForNoAgreement) {
  assembleScaffold({{contigP()}, {contigQ(), 500}});
  const Outcome outcome = check(readAt(contigP().substr(0, 140), 100, 100), mate, 2000);
  EXPECT_EQ(0, outcome.stop);
}

TEST_F(CheckReverseRead, TheGuardAsksForNoAgreement) {
  assembleScaffold({{contigP()}, {contigQ(), 500}});
  const Outcome outcome = check(readAt(contigQ().substr(0, 140), 100, 100), mate, 2000);
  EXPECT_EQ(0, outcome.stop);
}

TEST_F(CheckForwardRead, BothLimitsOfTheGuardAreStrict) {
  const std::string anchor = readAt(contigP(), 50, 100);
  assembleScaffold({{contigP()}, {contigQ(), 899}});
  EXPECT_EQ(Records{}, check(anchor, mate, 901).records);
  EXPECT_EQ((Records{inGap(0, 899, mate, 550)}), check(anchor, mate, 900).records);
  assembleScaffold({{contigP()}, {contigQ(), 900}});
  EXPECT_EQ((Records{inGap(0, 900, mate, 551)}), check(anchor, mate, 901).records);
  BIGGAPLEN = 901;
  EXPECT_EQ(Records{}, check(anchor, mate, 902).records);
  EXPECT_EQ((Records{inGap(0, 900, mate, 551)}), check(anchor, mate, 901).records);
}

TEST_F(CheckReverseRead, BothLimitsOfTheGuardAreStrict) {
  const std::string anchor = readAt(contigQ(), 150, 100);
  assembleScaffold({{contigP()}, {contigQ(), 899}});
  EXPECT_EQ(Records{}, check(anchor, mate, 901).records);
  EXPECT_EQ((Records{inGap(0, 899, mate, 249)}), check(anchor, mate, 900).records);
  assembleScaffold({{contigP()}, {contigQ(), 900}});
  EXPECT_EQ((Records{inGap(0, 900, mate, 249)}), check(anchor, mate, 901).records);
  BIGGAPLEN = 901;
  EXPECT_EQ(Records{}, check(anchor, mate, 902).records);
  EXPECT_EQ((Records{inGap(0, 900, mate, 249)}), check(anchor, mate, 901).records);
}

// Each direction asks the gap on its own side.
TEST_F(CheckForwardRead, TheGuardLooksAtTheGapBehind) {
  const std::string anchor = readAt(contigQ(), 50, 100);
  assembleScaffold({{contigP()}, {contigQ(), 10}, {contigR(), 5000}});
  EXPECT_EQ((Records{inGap(1, 5000, mate, 1650)}), check(anchor, mate, 2000).records);
  assembleScaffold({{contigP()}, {contigQ(), 5000}, {contigR(), 10}});
  EXPECT_EQ(0, check(anchor, mate, 2000).stop);
  EXPECT_EQ(Records{}, check(anchor, mate, 2000).records);
}

TEST_F(CheckReverseRead, TheGuardLooksAtTheGapInFront) {
  const std::string anchor = readAt(contigQ(), 150, 100);
  assembleScaffold({{contigP()}, {contigQ(), 5000}, {contigR(), 10}});
  EXPECT_EQ((Records{inGap(0, 5000, mate, 3250)}), check(anchor, mate, 2000).records);
  assembleScaffold({{contigP()}, {contigQ(), 10}, {contigR(), 5000}});
  EXPECT_EQ(0, check(anchor, mate, 2000).stop);
  EXPECT_EQ(Records{}, check(anchor, mate, 2000).records);
}

// A mate that lies in a negative gap at 900, and is given up at 901.
TEST_F(CheckForwardRead, ANegativeGapIsASmallGap) {
  const std::string anchor = readAt(contigP(), 250, 100);
  assembleScaffold({{contigP()}, {contigQ(), -20}});
  EXPECT_EQ((Records{inGap(0, -20, anchor, -50)}), check(anchor, mate, 900).records);
  EXPECT_EQ(Records{}, check(anchor, mate, 901).records);
}

// ---- the walk -----------------------------------------------------------------------------------

TEST_F(CheckForwardRead, AbsentAnchorLeavesTheWalkAtItsEnd) {
  assembleScaffold({{contigP()}, {contigQ(), 400}});
  EXPECT_EQ(70, check(randomBases(100, 66), mate, 500).stop);
  EXPECT_EQ(1, check(randomBases(31, 66), mate, 500).stop);
}

TEST_F(CheckReverseRead, AbsentAnchorLeavesTheWalkAtItsEnd) {
  assembleScaffold({{contigP()}, {contigQ(), 400}});
  EXPECT_EQ(70, check(randomBases(100, 66), mate, 500).stop);
  EXPECT_EQ(1, check(randomBases(31, 66), mate, 500).stop);
}

TEST_F(CheckForwardRead, HitsOnTheLastContigAreSkipped) {
  assembleScaffold({{contigP()}, {contigQ(), 400}, {contigR(), 50}});
  EXPECT_EQ(70, check(readAt(contigR(), 50, 100), mate, 500).stop);
  // 41 bases of the last contig, then the first bases of contig q: 400 - 41 for the anchor.
  const std::string anchor = contigR().substr(10, 41) + contigQ().substr(0, 59);
  const Outcome outcome = check(anchor, mate, 400);
  EXPECT_EQ(41, outcome.stop);
  EXPECT_EQ((Records{inGap(1, 50, mate, -41), inGap(0, 400, anchor, 359)}), outcome.records);
}

TEST_F(CheckReverseRead, HitsOnTheFirstContigAreSkipped) {
  assembleScaffold({{contigP()}, {contigQ(), 400}, {contigR(), 50}});
  EXPECT_EQ(70, check(readAt(contigP(), 50, 100), mate, 500).stop);
  const std::string anchor = contigP().substr(10, 41) + contigQ().substr(0, 59);
  const Outcome outcome = check(anchor, mate, 300);
  EXPECT_EQ(41, outcome.stop);
  EXPECT_EQ((Records{inGap(0, 400, mate, 159), inGap(0, 400, anchor, 359)}), outcome.records);
}

// Bases 100 to 130 of contig p are those of contig q but for one, which the anchor has as p has it:
// p is hit first and refused, q is hit behind the mismatch and agrees in 99 of 100 bases.
TEST_F(CheckForwardRead, ARefusedAnchorMovesTheWalkOn) {
  std::string similar = contigP();
  similar.replace(100, 31, withMismatches(contigQ().substr(100, 31), {15}));
  assembleScaffold({{similar}, {contigQ(), 60}, {contigR(), 400}});
  const Outcome outcome = check(withMismatches(readAt(contigQ(), 100, 100), {15}), mate, 500);
  EXPECT_EQ(16, outcome.stop);
  EXPECT_EQ((Records{inGap(1, 400, mate, 200)}), outcome.records);
}

TEST_F(CheckReverseRead, ARefusedAnchorMovesTheWalkOn) {
  std::string similar = contigR();
  similar.replace(100, 31, withMismatches(contigQ().substr(100, 31), {15}));
  assembleScaffold({{contigP()}, {contigQ(), 400}, {similar, 60}});
  const Outcome outcome = check(withMismatches(readAt(contigQ(), 100, 100), {15}), mate, 500);
  EXPECT_EQ(16, outcome.stop);
  EXPECT_EQ((Records{inGap(0, 400, mate, 100)}), outcome.records);
}

// The first hit is accepted without a record; a later one would record the mate.
TEST_F(CheckForwardRead, AConfirmedAnchorEndsTheWalkThoughNothingIsRecorded) {
  mapCut = 0.3;
  const std::string anchor = contigP().substr(50, 50) + contigQ().substr(250, 50);
  assembleScaffold({{contigP()}, {contigQ(), 10}, {contigR(), 400}});
  Outcome outcome = check(anchor, mate, 180);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  assembleScaffold({{randomBases(300, 65)}, {contigQ(), 10}, {contigR(), 400}});
  outcome = check(anchor, mate, 180);
  EXPECT_EQ(50, outcome.stop);
  EXPECT_EQ((Records{inGap(1, 400, mate, -20)}), outcome.records);
}

TEST_F(CheckReverseRead, AConfirmedAnchorEndsTheWalkThoughNothingIsRecorded) {
  mapCut = 0.3;
  const std::string anchor = contigR().substr(150, 50) + contigQ().substr(0, 50);
  assembleScaffold({{contigP()}, {contigQ(), 400}, {contigR(), 10}});
  Outcome outcome = check(anchor, mate, 180);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  assembleScaffold({{contigP()}, {contigQ(), 400}, {randomBases(300, 65), 10}});
  outcome = check(anchor, mate, 180);
  EXPECT_EQ(50, outcome.stop);
  EXPECT_EQ((Records{inGap(0, 400, mate, 270), inGap(0, 400, anchor, 350)}), outcome.records);
}

TEST_F(CheckForwardRead, RepeatedKmersAreSkipped) {
  // Contig r ends with the bases 50 to 89 of contig p: the k-mers 50 to 59 of p are repeated.
  assembleScaffold({{contigP()}, {contigQ(), 400}, {contigR() + contigP().substr(50, 40), 50}});
  const Outcome outcome = check(readAt(contigP(), 50, 100), mate, 500);
  EXPECT_EQ(10, outcome.stop);
  EXPECT_EQ((Records{inGap(0, 400, mate, 150)}), outcome.records);
}

TEST_F(CheckReverseRead, RepeatedKmersAreSkipped) {
  assembleScaffold({{contigP()}, {contigQ(), 400}, {contigR() + contigQ().substr(150, 40), 50}});
  const Outcome outcome = check(readAt(contigQ(), 150, 100), mate, 500);
  EXPECT_EQ(10, outcome.stop);
  EXPECT_EQ((Records{inGap(0, 400, mate, 150)}), outcome.records);
}

TEST_F(CheckForwardRead, KmersOfNoBasesAcceptNothing) {
  Kmer = 0;
  assembleScaffold({{contigP()}, {contigQ(), 400}});
  EXPECT_EQ(101, check(readAt(contigP(), 50, 100), mate, 500).stop);
  EXPECT_EQ(1, check("", "", 500).stop);
}

TEST_F(CheckReverseRead, KmersOfNoBasesAcceptNothing) {
  Kmer = 0;
  assembleScaffold({{contigP()}, {contigQ(), 400}});
  EXPECT_EQ(101, check(readAt(contigQ(), 150, 100), mate, 500).stop);
  EXPECT_EQ(1, check("", "", 500).stop);
}

}  // namespace
}  // namespace velk::test
