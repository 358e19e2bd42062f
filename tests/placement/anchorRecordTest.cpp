// The anchor itself, recorded where it runs into a gap.
//
// The inserts are so long that the mate misses every gap, unless a test says otherwise.
#include "tests/placement/pairedTest.h"

namespace velk::test {
namespace {

constexpr int kFarAway = 3000;  // insert of a mate that lies nowhere near

// Contigs of a scaffold p 60 q 400 r 90 s; `w` is one between two that a read spans.
const std::string& contigP() {
  static const std::string bases = randomBases(300, 51);
  return bases;
}
const std::string& contigQ() {
  static const std::string bases = randomBases(300, 52);
  return bases;
}
const std::string& contigR() {
  static const std::string bases = randomBases(300, 53);
  return bases;
}
const std::string& contigS() {
  static const std::string bases = randomBases(300, 54);
  return bases;
}
const std::string& contigW() {
  static const std::string bases = randomBases(80, 55);
  return bases;
}

const TestScaffold& fourContigs() {
  static const TestScaffold scaffold{
      {contigP()}, {contigQ(), 60}, {contigR(), 400}, {contigS(), 90}};
  return scaffold;
}

const TestScaffold& shortBetween() {
  static const TestScaffold scaffold{
      {contigP()}, {contigW(), 60}, {contigQ(), 70}, {contigR(), 80}};
  return scaffold;
}

class ForwardAnchor : public CheckForwardRead {
 protected:
  ForwardAnchor() {
    BIGGAPLEN = 5000;
    assembleScaffold(fourContigs());
  }

  // The records of a pair whose anchor of 100 bases lies at `offset` of `contig`.
  Records found(const std::string& contig, int64_t offset) const {
    return check(readAt(contig, offset, 100), mate, kFarAway).records;
  }
};

class ReverseAnchor : public CheckReverseRead {
 protected:
  ReverseAnchor() {
    BIGGAPLEN = 5000;
    assembleScaffold(fourContigs());
  }

  Records found(const std::string& contig, int64_t offset) const {
    return check(readAt(contig, offset, 100), mate, kFarAway).records;
  }
};

// ---- over the right edge ------------------------------------------------------------------------

TEST_F(ForwardAnchor, OverTheRightEdge) {
  EXPECT_EQ((Records{inGap(0, 60, readAt(contigP(), 250, 100), -50)}), found(contigP(), 250));
  EXPECT_EQ((Records{inGap(1, 400, readAt(contigQ(), 250, 100), -50)}), found(contigQ(), 250));
  EXPECT_EQ((Records{inGap(2, 90, readAt(contigR(), 250, 100), -50)}), found(contigR(), 250));
  EXPECT_EQ(Records{}, found(contigS(), 250));
}

TEST_F(ForwardAnchor, TouchingTheRightEdgeIsNotEnough) {
  EXPECT_EQ(Records{}, found(contigQ(), 200));
  EXPECT_EQ((Records{inGap(1, 400, readAt(contigQ(), 201, 100), -99)}), found(contigQ(), 201));
}

// The gap's length is that of the gap behind the contig, not of the one in front that holds mates.
TEST_F(ReverseAnchor, OverTheRightEdge) {
  EXPECT_EQ((Records{inGap(1, 400, readAt(contigQ(), 250, 100), -50)}), found(contigQ(), 250));
}

TEST_F(ReverseAnchor, TouchingTheRightEdgeIsNotEnough) {
  EXPECT_EQ(Records{}, found(contigQ(), 200));
  EXPECT_EQ((Records{inGap(1, 400, readAt(contigQ(), 201, 100), -99)}), found(contigQ(), 201));
}

TEST_F(CheckReverseRead, AnchorOverTheRightEdgeOfTheLastButOneContig) {
  BIGGAPLEN = 5000;
  assembleScaffold(fourContigs());
  // A gap lies behind contig r, but the hit is accepted without a record.
  const Outcome outcome = check(readAt(contigR(), 250, 100), mate, kFarAway);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
}

TEST_F(CheckReverseRead, AnchorOverTheRightEdgeOfTheLastContig) {
  BIGGAPLEN = 5000;
  assembleScaffold(fourContigs());
  Outcome outcome = check(readAt(contigS(), 250, 100), mate, kFarAway);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  assembleScaffold({{contigP()}, {contigQ(), 60}});
  outcome = check(readAt(contigQ(), 250, 100), mate, kFarAway);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
}

// ---- over the left edge -------------------------------------------------------------------------

TEST_F(ForwardAnchor, OverTheLeftEdge) {
  EXPECT_EQ((Records{inGap(0, 60, readAt(contigQ(), -40, 100), 20)}), found(contigQ(), -40));
  EXPECT_EQ((Records{inGap(1, 400, readAt(contigR(), -40, 100), 360)}), found(contigR(), -40));
  EXPECT_EQ((Records{inGap(1, 400, readAt(contigR(), -1, 100), 399)}), found(contigR(), -1));
}

TEST_F(ReverseAnchor, OverTheLeftEdge) {
  EXPECT_EQ((Records{inGap(0, 60, readAt(contigQ(), -40, 100), 20)}), found(contigQ(), -40));
  EXPECT_EQ((Records{inGap(1, 400, readAt(contigR(), -40, 100), 360)}), found(contigR(), -40));
  EXPECT_EQ((Records{inGap(2, 90, readAt(contigS(), -1, 100), 89)}), found(contigS(), -1));
}

TEST_F(ForwardAnchor, NoGapInFrontOfTheFirstContig) {
  const Outcome outcome = check(readAt(contigP(), -40, 100), mate, kFarAway);
  EXPECT_EQ(40, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
}

TEST_F(ForwardAnchor, OffsetZeroRunsIntoNoGap) {
  EXPECT_EQ(Records{}, found(contigQ(), 0));
  assembleScaffold(shortBetween());
  EXPECT_EQ(Records{}, found(contigW(), 0));  // 20 bases hang over the right end
}

TEST_F(ReverseAnchor, OffsetZeroRunsIntoNoGap) {
  EXPECT_EQ(Records{}, found(contigQ(), 0));
  assembleScaffold(shortBetween());
  EXPECT_EQ(Records{}, found(contigW(), 0));
}

TEST_F(ForwardAnchor, AnAnchorOverBothEdgesIsRecordedAtTheLeftOne) {
  assembleScaffold(shortBetween());
  EXPECT_EQ((Records{inGap(0, 60, readAt(contigW(), -10, 100), 50)}), found(contigW(), -10));
}

TEST_F(ReverseAnchor, AnAnchorOverBothEdgesIsRecordedAtTheLeftOne) {
  assembleScaffold(shortBetween());
  EXPECT_EQ((Records{inGap(0, 60, readAt(contigW(), -10, 100), 50)}), found(contigW(), -10));
}

// One base of the anchor on the contig is enough: a k-mer of one base, G, found there alone.
TEST_F(ForwardAnchor, OneBaseBehindTheLeftEdge) {
  Kmer = 1;
  OverRatio = 0.01;
  const std::string tail(99, 'C');
  assemble({{{std::string(90, 'C')}, {"G" + tail, 200}, {std::string(90, 'T'), 300}}});
  const std::string anchor = std::string(99, 'A') + "G";
  const Outcome outcome = check(anchor, mate, kFarAway);
  EXPECT_EQ(99, outcome.stop);
  EXPECT_EQ((Records{{anchor, 0, 0, 101, 0, 200}}), outcome.records);
}

TEST_F(ReverseAnchor, OneBaseBehindTheLeftEdge) {
  Kmer = 1;
  OverRatio = 0.01;
  const std::string tail(99, 'C');
  assemble({{{std::string(90, 'C')}, {"G" + tail, 200}}});
  const std::string anchor = std::string(99, 'A') + "G";
  const Outcome outcome = check(anchor, mate, kFarAway);
  EXPECT_EQ(99, outcome.stop);
  EXPECT_EQ((Records{{anchor, 0, 0, 101, 0, 200}}), outcome.records);
}

TEST_F(ForwardAnchor, NegativeGaps) {
  assembleScaffold({{contigP()}, {contigQ(), -15}, {contigR(), -25}});
  EXPECT_EQ((Records{inGap(0, -15, readAt(contigQ(), -40, 100), -55)}), found(contigQ(), -40));
  EXPECT_EQ((Records{inGap(1, -25, readAt(contigQ(), 250, 100), -50)}), found(contigQ(), 250));
}

TEST_F(ReverseAnchor, NegativeGaps) {
  assembleScaffold({{contigP()}, {contigQ(), -15}, {contigR(), -25}, {contigS(), 5}});
  EXPECT_EQ((Records{inGap(0, -15, readAt(contigQ(), -40, 100), -55)}), found(contigQ(), -40));
  EXPECT_EQ((Records{inGap(1, -25, readAt(contigQ(), 250, 100), -50)}), found(contigQ(), 250));
}

// ---- with its mate ------------------------------------------------------------------------------

// At offset 250 of 300 and an insert of 580, the mate starts 430 behind the start of a gap of 400,
// and 90 in front of the far gap behind 120 more bases.
TEST_F(CheckForwardRead, MateInBothGapsThenAnchor) {
  const std::string between = randomBases(120, 56);
  assembleScaffold({{contigP()}, {between, 400}, {contigQ(), 500}});
  const std::string anchor = readAt(contigP(), 250, 100);
  EXPECT_EQ(
      (Records{inGap(0, 400, mate, 400), inGap(1, 500, mate, -90), inGap(0, 400, anchor, -50)}),
      check(anchor, mate, 580).records);
}

// The mirror image: 130 in front of the near gap's start, 490 behind the far gap's.
TEST_F(CheckReverseRead, MateInBothGapsThenAnchor) {
  const std::string between = randomBases(120, 56);
  assembleScaffold({{contigQ()}, {between, 500}, {contigP(), 400}});
  const std::string anchor = readAt(contigP(), -50, 100);
  EXPECT_EQ(
      (Records{inGap(1, 400, mate, -100), inGap(0, 500, mate, 490), inGap(1, 400, anchor, 350)}),
      check(anchor, mate, 580).records);
}

TEST_F(ForwardAnchor, TheMateLiesBehindAnAnchorOverTheLeftEdge) {
  const std::string anchor = readAt(contigQ(), -40, 100);
  EXPECT_EQ((Records{inGap(1, 400, mate, 60), inGap(0, 60, anchor, 20)}),
            check(anchor, mate, 500).records);
}

TEST_F(ReverseAnchor, TheMateLiesInFrontOfAnAnchorOverTheRightEdge) {
  const std::string anchor = readAt(contigQ(), 250, 100);
  EXPECT_EQ((Records{inGap(0, 60, mate, 10), inGap(1, 400, anchor, -50)}),
            check(anchor, mate, 400).records);
}

}  // namespace
}  // namespace velk::test
