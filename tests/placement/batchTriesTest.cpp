// FindReads: the four tries over a pair, and that the first one with an accepted hit ends it.
//
// Numbered as they come: 1 forward with the first read as anchor, 2 reverse with the second read
// reversed, 3 reverse with the reverse complement of the first read, 4 forward with the second
// read. On x 400 y forward anchors lie on x and reverse anchors on y.
#include "tests/placement/batchTest.h"

namespace velk::test {
namespace {

class FindReadsTries : public FindReadsTest {
 protected:
  Records foundIn(const std::string& first, const std::string& second) {
    setBatch({first}, {second});
    return scan(0);
  }

  // A read that lies on x as it stands, with 50 bases in front of it, and on y reversed, with
  // 50 bases in front of it there.
  const std::string onBoth = reverseComplement(y.substr(0, 50)) + x.substr(0, 50);
};

TEST_F(FindReadsTries, FirstReadForward) {
  EXPECT_EQ((Records{inGap(reverseComplement(stray), 150)}), foundIn(onX, stray));
}

TEST_F(FindReadsTries, SecondReadReversedInReverse) {
  EXPECT_EQ((Records{inGap(stray, 150)}), foundIn(stray, reverseComplement(onY)));
}

TEST_F(FindReadsTries, FirstReadReversedInReverse) {
  EXPECT_EQ((Records{inGap(stray, 150)}), foundIn(reverseComplement(onY), stray));
}

TEST_F(FindReadsTries, SecondReadForward) {
  EXPECT_EQ((Records{inGap(reverseComplement(stray), 150)}), foundIn(stray, onX));
}

TEST_F(FindReadsTries, NoTry) {
  EXPECT_EQ(Records{}, foundIn(stray, randomBases(100, 75)));
  // On the strands that no try looks up: forward on y, reverse on x.
  EXPECT_EQ(Records{}, foundIn(onY, stray));
  EXPECT_EQ(Records{}, foundIn(stray, onY));
  EXPECT_EQ(Records{}, foundIn(reverseComplement(onX), stray));
  EXPECT_EQ(Records{}, foundIn(stray, reverseComplement(onX)));
}

TEST_F(FindReadsTries, FirstBeforeSecond) {
  const std::string second = reverseComplement(onY);
  EXPECT_EQ((Records{inGap(onY, 150)}), foundIn(onX, second));
}

// Anchored 50 bases in front of x the mate lies at 50 and the anchor is in front of all gaps.
TEST_F(FindReadsTries, FirstBeforeThird) {
  EXPECT_EQ((Records{inGap(reverseComplement(stray), 50)}), foundIn(onBoth, stray));
}

TEST_F(FindReadsTries, FirstBeforeFourth) {
  const std::string second = readAt(x, 80, 100);
  EXPECT_EQ((Records{inGap(reverseComplement(second), 150)}), foundIn(onX, second));
  EXPECT_EQ((Records{inGap(reverseComplement(onX), 180)}), foundIn(second, onX));
}

// On y at offset 150 the second read puts the first at 150; at 120 the first puts it at 120.
TEST_F(FindReadsTries, SecondBeforeThird) {
  const std::string first = reverseComplement(readAt(y, 120, 100));
  const std::string second = reverseComplement(onY);
  EXPECT_EQ((Records{inGap(first, 150)}), foundIn(first, second));
  EXPECT_EQ((Records{inGap(second, 120)}), foundIn(second, first));
}

// 50 bases in front of y the second read starts in the gap itself, at 350, and its mate at 50.
TEST_F(FindReadsTries, SecondBeforeFourth) {
  insertLength = 400;
  EXPECT_EQ((Records{inGap(stray, 50), inGap(reverseComplement(onBoth), 350)}),
            foundIn(stray, onBoth));
}

TEST_F(FindReadsTries, ThirdBeforeFourth) {
  EXPECT_EQ((Records{inGap(onX, 150)}), foundIn(reverseComplement(onY), onX));
}

// A try that accepts a hit without a record ends the pair as well: at an insert of 180 the mate
// misses the gap from x at offset 50, and from y at offset 150.
TEST_F(FindReadsTries, ATryThatAcceptsWithoutARecordEndsThePair) {
  insertLength = 180;
  const std::string nearY = reverseComplement(readAt(y, 0, 100));
  const std::string nearX = readAt(x, 200, 100);
  EXPECT_EQ((Records{inGap(stray, 320)}), foundIn(stray, nearY));
  EXPECT_EQ(Records{}, foundIn(onX, nearY));  // 1 accepts, 2 would record
  EXPECT_EQ((Records{inGap(stray, 320)}), foundIn(nearY, stray));
  EXPECT_EQ(Records{}, foundIn(nearY, reverseComplement(onY)));  // 2 accepts, 3 would record
  EXPECT_EQ((Records{inGap(reverseComplement(stray), -20)}), foundIn(stray, nearX));
  EXPECT_EQ(Records{}, foundIn(reverseComplement(onY), nearX));  // 3 accepts, 4 would record
  EXPECT_EQ(Records{}, foundIn(onX, nearX));                     // 1 accepts, 4 would record
}

// Gaps of 500 and 5000 bases; pairs of large inserts point outwards.
TEST_F(FindReadsTries, ATryEndedByTheGuardEndsThePair) {
  const std::string z = randomBases(300, 76);
  assemble({{{x}, {y, 500}, {z, 5000}}});
  insertLength = 2000;
  const std::string onZ = readAt(z, 150, 100);
  // After turning, the first read is `first` and the second `second`.
  const auto outwards = [&](const std::string& first, const std::string& second) {
    return foundIn(reverseComplement(second), reverseComplement(first));
  };
  // 5000 + 150 + 100 - 2000
  EXPECT_EQ((Records{{stray, 0, 1, 3250, 1, 5000}}), outwards(stray, reverseComplement(onZ)));
  EXPECT_EQ(Records{}, outwards(onX, reverseComplement(onZ)));                     // 1, not 2
  EXPECT_EQ(Records{}, outwards(reverseComplement(onZ), reverseComplement(onY)));  // 2, not 3
  // From y at offset 50: 50 + 2000 - 100 - 300.
  const std::string forwardOnY = readAt(y, 50, 100);
  EXPECT_EQ((Records{{reverseComplement(stray), 0, 1, 1650, 1, 5000}}),
            outwards(stray, forwardOnY));
  EXPECT_EQ(Records{}, outwards(onX, forwardOnY));                     // 1, not 4
  EXPECT_EQ(Records{}, outwards(reverseComplement(onY), forwardOnY));  // 3, not 4
}

// Whether a try accepted a hit is known from the walk of its own anchor: reads of unlike lengths.
TEST_F(FindReadsTries, ReadsOfUnlikeLengths) {
  const std::string shorter = stray.substr(0, 60);
  EXPECT_EQ((Records{inGap(shorter, 150)}), foundIn(shorter, reverseComplement(onY)));
  EXPECT_EQ((Records{inGap(shorter, 150)}), foundIn(reverseComplement(onY), shorter));
  EXPECT_EQ((Records{inGap(reverseComplement(shorter), 190)}), foundIn(shorter, onX));
  EXPECT_EQ((Records{inGap(stray, 110)}), foundIn(stray, reverseComplement(readAt(y, 150, 60))));
  EXPECT_EQ((Records{inGap(stray, 110)}), foundIn(reverseComplement(readAt(y, 150, 60)), stray));
  EXPECT_EQ((Records{inGap(reverseComplement(stray), 150)}), foundIn(stray, readAt(x, 50, 60)));
}

}  // namespace
}  // namespace velk::test
