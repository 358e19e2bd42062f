#include "run/alignmentRecords.h"

#include <gtest/gtest.h>

#include "tests/run/world.h"

namespace velk::test {
namespace {

using run::Certainty;
using run::FoundAnchor;
using run::FoundEntry;
using run::FoundPlace;
using run::Library;
using run::Orientation;
using run::OutRecord;

constexpr double kMapCut = 0.98;

// A scaffold whose truth is known: contig 0 is its bases 0 to 300, contig 1 400 to 700, contig 2
// 760 to 1000; so gap 0 has 100 bases, and gap 1 has 60.
class AlignmentRecords : public RunWorld {
 protected:
  AlignmentRecords() : truth_(randomBases(1000, 1)) { makeScaffold(); }

  void makeScaffold(const std::vector<uint64_t>& placeholders = {}) {
    makeAssembly(
        {{"chr1",
          {{truth_.substr(0, 300)}, {truth_.substr(400, 300), 100}, {truth_.substr(760), 60}}}},
        placeholders);
  }

  std::string truth(std::size_t start, std::size_t length) const {
    return truth_.substr(start, length);
  }

  // An entry of a single read; `bases` as they read on the scaffold.
  FoundEntry single(const std::string& bases, bool isReversed, uint64_t hitContig,
                    int64_t hitOffset, uint64_t contigBehind, int64_t position) {
    FoundEntry entry{};
    entry.reads = 1;
    entry.record = 7;
    entry.texts[0] = read("r7", isReversed ? reverseComplement(bases) : bases);
    entry.places.push_back({0, isReversed, RecordKind::kEdge, 0, contigBehind, position, position,
                            hitContig, hitOffset});
    return entry;
  }

  // A pair, inward: the first read forward at `anchor`, its mate reversed, with `mate` as it reads
  // on the scaffold. Nothing is found yet.
  FoundEntry pair(const std::string& anchor, const std::string& mate, uint64_t contig,
                  int64_t offset) {
    FoundEntry entry{};
    entry.reads = 2;
    entry.record = 3;
    entry.texts[0] = read("p3", anchor);
    entry.texts[1] = read("p3", reverseComplement(mate));
    entry.anchor = FoundAnchor{0, false, 0, contig, offset};
    return entry;
  }

  // The same, with the mate found in the gap behind contig 0 or 1, `unmoved` bases from its start.
  FoundEntry pairAt(const std::string& anchor, const std::string& mate, uint64_t contig,
                    int64_t offset, int64_t unmoved) {
    FoundEntry entry = pair(anchor, mate, contig, offset);
    entry.places.push_back(
        {1, true, RecordKind::kMate, 0, contig + 1, unmoved, unmoved, contig, offset});
    return entry;
  }

  std::vector<OutRecord> recordsOf(const FoundEntry& entry, const Library& library) {
    return run::alignmentRecords(entry, library, assembly(), kMapCut);
  }

  OutRecord recordOfSingle(const FoundEntry& entry) {
    const auto records = recordsOf(entry, singles("s"));
    EXPECT_EQ(records.size(), 1U);
    return records.at(0);
  }

  std::string truth_;
};

TEST_F(AlignmentRecords, ASingleReadOverTheEndOfAContig) {
  const OutRecord record = recordOfSingle(single(truth(270, 50), false, 0, 270, 1, -30));
  EXPECT_EQ(record.name, "r7");
  EXPECT_EQ(record.flag, 0);
  EXPECT_EQ(record.scaffold, 0);
  EXPECT_EQ(record.position, 270);
  EXPECT_EQ(record.mapq, 60);
  EXPECT_EQ(cigarText(record.cigar), "50M");
  EXPECT_EQ(record.differences, 20);  // those over the gap
  EXPECT_EQ(record.mateScaffold, -1);
  EXPECT_EQ(record.templateLength, 0);
  EXPECT_EQ(record.gap, 0);
  EXPECT_EQ(record.gapPosition, -30);
  EXPECT_EQ(record.kind, 'E');
  EXPECT_TRUE(record.isFound);
  EXPECT_EQ(record.certainty, Certainty::kExact);
  EXPECT_EQ(record.bases, truth(270, 50));
  EXPECT_EQ(record.quality.front(), '#');
}

TEST_F(AlignmentRecords, ASingleReadOverTheStartOfAContigReversed) {
  const OutRecord record = recordOfSingle(single(truth(380, 50), true, 1, -20, 1, 80));
  EXPECT_EQ(record.flag, 0x10);
  EXPECT_EQ(record.position, 380);
  EXPECT_EQ(record.bases, truth(380, 50));
  EXPECT_EQ(record.quality.back(), '#');
  EXPECT_EQ(record.gap, 0);
}

TEST_F(AlignmentRecords, TheFarEdgeIsAlignedIfItAgrees) {
  const OutRecord record = recordOfSingle(single(truth(690, 100), false, 1, 290, 2, -10));
  EXPECT_EQ(cigarText(record.cigar), "100M");
  EXPECT_EQ(record.gap, 1);
}

TEST_F(AlignmentRecords, TheFarEdgeIsClippedIfItDoesNotAgree) {
  const std::string bases = truth(690, 70) + randomBases(30, 2);
  const OutRecord record = recordOfSingle(single(bases, false, 1, 290, 2, -10));
  EXPECT_EQ(cigarText(record.cigar), "70M30S");
  EXPECT_EQ(record.position, 690);
  EXPECT_EQ(record.certainty, Certainty::kExact);
}

TEST_F(AlignmentRecords, TheFarEdgeInFrontIsClippedIfItDoesNotAgree) {
  const std::string bases = randomBases(30, 2) + truth(700, 70);
  const OutRecord record = recordOfSingle(single(bases, false, 2, -90, 2, -30));
  EXPECT_EQ(cigarText(record.cigar), "30S70M");
  EXPECT_EQ(record.position, 700);
}

TEST_F(AlignmentRecords, AnEstimateInTheGapAndItsAnchor) {
  const auto records =
      recordsOf(pairAt(truth(150, 50), randomBases(50, 3), 0, 150, 0), pairs("l", 200, 5));
  ASSERT_EQ(records.size(), 2U);
  const OutRecord& anchor = records[0];
  EXPECT_EQ(anchor.flag, 0x1 | 0x20 | 0x40);
  EXPECT_EQ(anchor.position, 150);
  EXPECT_EQ(anchor.mapq, 60);
  EXPECT_EQ(cigarText(anchor.cigar), "50M");
  EXPECT_EQ(anchor.differences, 0);
  EXPECT_EQ(anchor.kind, 'A');
  EXPECT_FALSE(anchor.isFound);
  EXPECT_EQ(anchor.gap, 0);
  EXPECT_EQ(anchor.certainty, Certainty::kExact);
  EXPECT_EQ(anchor.matePosition, 300);
  EXPECT_EQ(anchor.templateLength, 0);
  const OutRecord& mate = records[1];
  EXPECT_EQ(mate.flag, 0x1 | 0x10 | 0x80);
  EXPECT_EQ(mate.position, 300);
  EXPECT_EQ(mate.mapq, 0);
  EXPECT_EQ(cigarText(mate.cigar), "50M");
  EXPECT_EQ(mate.bases, randomBases(50, 3));
  EXPECT_EQ(mate.kind, 'M');
  EXPECT_TRUE(mate.isFound);
  EXPECT_EQ(mate.certainty, Certainty::kEstimate);
  EXPECT_EQ(mate.mateScaffold, 0);
  EXPECT_EQ(mate.matePosition, 150);
}

TEST_F(AlignmentRecords, AnEstimateIsClippedAtTheGap) {
  for (const auto& [unmoved, position, cigar] :
       {std::tuple{-30, 300, "30S20M"}, {80, 380, "20M30S"}, {-49, 300, "49S1M"}}) {
    const auto records = recordsOf(pairAt(truth(150, 50), randomBases(50, 3), 0, 150, unmoved),
                                   pairs("l", 200 + unmoved, 5));
    EXPECT_EQ(records.at(1).position, position);
    EXPECT_EQ(cigarText(records.at(1).cigar), cigar);
  }
}

TEST_F(AlignmentRecords, AnEstimateOutsideTheGapStandsWithItsAnchor) {
  for (const int64_t unmoved : {-60, 100, 120}) {
    FoundEntry entry = pairAt(truth(150, 50), randomBases(50, 3), 0, 150, unmoved);
    entry.places[0].position = unmoved < 0 ? -50 : 100;
    const auto records = recordsOf(entry, pairs("l", 200, 5));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].flag, 0x1 | 0x8 | 0x40);
    EXPECT_EQ(records[0].matePosition, 150);
    const OutRecord& mate = records[1];
    EXPECT_EQ(mate.flag, 0x1 | 0x4 | 0x80);
    EXPECT_EQ(mate.position, 150);
    EXPECT_EQ(mate.mapq, 0);
    EXPECT_TRUE(mate.cigar.empty());
    EXPECT_EQ(mate.bases, reverseComplement(randomBases(50, 3)));  // as sequenced
    EXPECT_EQ(mate.gapPosition, entry.places[0].position);
  }
}

TEST_F(AlignmentRecords, AMateOverTheEdgeOfTheContigInFrontIsExact) {
  const auto records =
      recordsOf(pairAt(truth(150, 50), truth(280, 50), 0, 150, 0), pairs("l", 200, 10));
  const OutRecord& mate = records.at(1);
  EXPECT_EQ(mate.certainty, Certainty::kExact);
  EXPECT_EQ(mate.position, 280);
  EXPECT_EQ(mate.mapq, 60);
  EXPECT_EQ(cigarText(mate.cigar), "50M");
  EXPECT_EQ(mate.flag, 0x1 | 0x2 | 0x10 | 0x80);
  EXPECT_EQ(mate.templateLength, -180);
  EXPECT_EQ(records[0].flag, 0x1 | 0x2 | 0x20 | 0x40);
  EXPECT_EQ(records[0].templateLength, 180);
}

TEST_F(AlignmentRecords, AMateOverTheEdgeOfTheContigBehindIsExact) {
  const auto records =
      recordsOf(pairAt(truth(200, 50), truth(370, 50), 0, 200, 50), pairs("l", 200, 10));
  EXPECT_EQ(records.at(1).certainty, Certainty::kExact);
  EXPECT_EQ(records[1].position, 370);
  EXPECT_EQ(records[1].differences, 30);
  EXPECT_EQ(records[1].templateLength, -220);
}

TEST_F(AlignmentRecords, FewerThanSixteenBasesOnAContigSayNothing) {
  const auto at = [&](std::size_t start) {
    return recordsOf(pairAt(truth(150, 50), truth(start, 50), 0, 150, 0), pairs("l", 200, 10))
        .at(1)
        .certainty;
  };
  EXPECT_EQ(at(284), Certainty::kExact);
  EXPECT_EQ(at(285), Certainty::kEstimate);
}

TEST_F(AlignmentRecords, AMateInAContigIsContained) {
  const auto records =
      recordsOf(pairAt(truth(150, 50), truth(245, 50), 0, 150, 0), pairs("l", 200, 20));
  const OutRecord& mate = records.at(1);
  EXPECT_EQ(mate.certainty, Certainty::kContained);
  EXPECT_EQ(mate.position, 245);
  EXPECT_EQ(mate.mapq, 60);
  EXPECT_EQ(mate.differences, 0);
  EXPECT_EQ(mate.flag, 0x1 | 0x10 | 0x80);  // not proper, since it is not where it was found
  EXPECT_EQ(mate.templateLength, -145);
}

TEST_F(AlignmentRecords, WhatLiesBeyondTheSpreadSaysNothing) {
  const auto certainty = [&](double spread) {
    return recordsOf(pairAt(truth(150, 50), truth(270, 50), 0, 150, 0), pairs("l", 200, spread))
        .at(1)
        .certainty;
  };
  EXPECT_EQ(certainty(10), Certainty::kExact);
  EXPECT_EQ(certainty(9.8), Certainty::kEstimate);
}

TEST_F(AlignmentRecords, MoreDifferencesThanAllowedSayNothing) {
  std::string mate = truth(280, 50);
  mate[3] = mate[3] == 'A' ? 'C' : 'A';  // one of twenty
  const auto records = recordsOf(pairAt(truth(150, 50), mate, 0, 150, 0), pairs("l", 200, 10));
  EXPECT_EQ(records.at(1).certainty, Certainty::kEstimate);
}

TEST_F(AlignmentRecords, TheMateOfAnAnchorInAGapIsWritten) {
  FoundEntry entry = pair(truth(280, 50), truth(600, 50), 0, 280);
  entry.places.push_back({0, false, RecordKind::kAnchor, 0, 1, -20, -20, 0, 280});
  const auto records = recordsOf(entry, pairs("l", 370, 10));
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].kind, 'A');
  EXPECT_EQ(records[0].flag, 0x1 | 0x2 | 0x20 | 0x40);
  EXPECT_TRUE(records[0].isFound);
  EXPECT_EQ(records[0].gapPosition, -20);
  EXPECT_EQ(records[1].kind, 'M');
  EXPECT_FALSE(records[1].isFound);
  EXPECT_EQ(records[1].position, 600);
  EXPECT_EQ(records[1].gap, 0);
}

TEST_F(AlignmentRecords, TheMateOfAnAnchorInAGapMayBeNowhere) {
  FoundEntry entry = pair(truth(280, 50), randomBases(50, 5), 0, 280);
  entry.places.push_back({0, false, RecordKind::kAnchor, 0, 1, -20, -20, 0, 280});
  const auto records = recordsOf(entry, pairs("l", 370, 10));
  EXPECT_EQ(records.at(1).flag, 0x1 | 0x4 | 0x80);
  EXPECT_EQ(records[1].position, 280);
  EXPECT_EQ(records[1].certainty, Certainty::kEstimate);
}

TEST_F(AlignmentRecords, AnAnchorOverTheScaffoldsStartIsClipped) {
  const std::string anchor = randomBases(5, 8) + truth(0, 45);
  const auto records = recordsOf(pairAt(anchor, randomBases(50, 3), 0, -5, 10), pairs("l", 365, 5));
  EXPECT_EQ(records.at(0).position, 0);
  EXPECT_EQ(cigarText(records[0].cigar), "5S45M");
}

TEST_F(AlignmentRecords, TheSecondReadAsAnchorOfAMateInFront) {
  FoundEntry entry{};
  entry.reads = 2;
  entry.texts[0] = read("p", truth(330, 50));
  entry.texts[1] = read("p", reverseComplement(truth(480, 50)));
  entry.anchor = FoundAnchor{1, true, 0, 1, 80};
  entry.places.push_back({0, false, RecordKind::kMate, 0, 1, 30, 30, 1, 80});
  const auto records = recordsOf(entry, pairs("l", 200, 5));
  EXPECT_EQ(records.at(0).flag, 0x1 | 0x20 | 0x40);
  EXPECT_EQ(records[0].position, 330);
  EXPECT_EQ(records[0].certainty, Certainty::kEstimate);
  EXPECT_EQ(records[1].flag, 0x1 | 0x10 | 0x80);
  EXPECT_EQ(records[1].position, 480);
  EXPECT_EQ(records[1].kind, 'A');
}

TEST_F(AlignmentRecords, OutwardPairsAsTheyWereSequenced) {
  FoundEntry entry{};
  entry.reads = 2;
  entry.texts[0] = read("p", reverseComplement(truth(150, 50)));
  entry.texts[1] = read("p", truth(280, 50));
  entry.anchor = FoundAnchor{0, true, 0, 0, 150};
  entry.places.push_back({1, false, RecordKind::kMate, 0, 1, 0, 0, 0, 150});
  Library library = pairs("l", 200, 10);
  library.orientation = Orientation::kOutward;
  const auto records = recordsOf(entry, library);
  EXPECT_EQ(records.at(0).flag, 0x1 | 0x2 | 0x10 | 0x40);
  EXPECT_EQ(records[1].flag, 0x1 | 0x2 | 0x20 | 0x80);
  EXPECT_EQ(records[1].position, 280);
  library.orientation = Orientation::kInward;
  EXPECT_EQ(recordsOf(entry, library).at(0).flag & 0x2, 0);
}

TEST_F(AlignmentRecords, FurtherGapsAreSecondary) {
  FoundEntry entry = pairAt(truth(150, 50), truth(280, 50), 0, 150, 0);
  entry.places.push_back({1, true, RecordKind::kGapBeyond, 0, 2, 20, 20, 0, 150});
  const auto records = recordsOf(entry, pairs("l", 200, 10));
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[1].flag & 0x100, 0);
  EXPECT_EQ(records[1].position, 280);
  const OutRecord& further = records[2];
  EXPECT_EQ(further.flag, 0x1 | 0x10 | 0x80 | 0x100);
  EXPECT_EQ(further.gap, 1);
  EXPECT_EQ(further.position, 720);
  EXPECT_EQ(cigarText(further.cigar), "40M10S");
  EXPECT_EQ(further.bases, truth(280, 50));
  EXPECT_EQ(further.quality.size(), 50U);
  EXPECT_EQ(further.matePosition, 150);
  EXPECT_EQ(further.templateLength, 0);
}

TEST_F(AlignmentRecords, TheFirstExactPlaceIsThePrimaryOne) {
  FoundEntry entry = pairAt(truth(150, 50), truth(740, 50), 0, 150, -60);
  entry.places.push_back({1, true, RecordKind::kGapBeyond, 0, 2, 42, 42, 0, 150});
  const auto records = recordsOf(entry, pairs("l", 200, 10));
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[1].gap, 1);
  EXPECT_EQ(records[1].position, 740);
  EXPECT_EQ(records[1].certainty, Certainty::kExact);
  // The other place is outside its gap, and a further record must be aligned.
  EXPECT_EQ(records[2].gap, 0);
  EXPECT_EQ(records[2].flag & 0x104, 0x100);
  EXPECT_EQ(records[2].position, 300);
  EXPECT_EQ(cigarText(records[2].cigar), "49S1M");
}

TEST_F(AlignmentRecords, AnEstimateNowhereIsPrimaryBesideAnother) {
  FoundEntry entry = pairAt(truth(150, 50), randomBases(50, 9), 0, 150, -60);
  entry.places.push_back({1, true, RecordKind::kGapBeyond, 0, 2, 5, 5, 0, 150});
  const auto records = recordsOf(entry, pairs("l", 200, 10));
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[1].flag, 0x1 | 0x4 | 0x80);
  EXPECT_EQ(records[2].flag, 0x1 | 0x10 | 0x80 | 0x100);
  EXPECT_EQ(records[2].position, 705);
}

TEST_F(AlignmentRecords, ReadsWithoutQualities) {
  FoundEntry entry = single(truth(270, 50), true, 0, 270, 1, -30);
  entry.texts[0].quality = {};
  EXPECT_TRUE(recordOfSingle(entry).quality.empty());
}

TEST_F(AlignmentRecords, APlaceInAGapOfUnknownLengthCountsFromItsAnchor) {
  makeScaffold({100});
  assembly().lengthenPlaceholders(500);
  const auto near =
      recordsOf(pairAt(truth(150, 50), randomBases(50, 3), 0, 150, 20), pairs("l", 220, 5));
  EXPECT_EQ(near.at(1).position, 320);
  const auto beyond =
      recordsOf(pairAt(truth(150, 50), randomBases(50, 3), 0, 150, 200), pairs("l", 400, 5));
  EXPECT_EQ(beyond.at(1).flag & 0x4, 0x4);

  FoundEntry entry{};
  entry.reads = 2;
  entry.texts[0] = read("p", randomBases(50, 4));
  entry.texts[1] = read("p", reverseComplement(truth(450, 50)));
  entry.anchor = FoundAnchor{1, true, 0, 1, 50};
  entry.places.push_back({0, false, RecordKind::kMate, 0, 1, 430, 430, 1, 50});
  EXPECT_EQ(recordsOf(entry, pairs("l", 170, 5)).at(0).position, 330);
}

TEST_F(AlignmentRecords, BeyondAGapOfUnknownLengthTheFlankMayBeAnywhere) {
  makeScaffold({100});
  assembly().lengthenPlaceholders(500);
  // 100 N stand for 40 bases: the mate, expected 130 bases behind the first contig, lies 90 bases
  // into the second; or it reaches over the second's start, where it is expected 30 bases in front.
  const auto inside =
      recordsOf(pairAt(truth(150, 50), truth(490, 50), 0, 150, 130), pairs("l", 330, 5));
  EXPECT_EQ(inside.at(1).certainty, Certainty::kContained);
  EXPECT_EQ(inside[1].position, 490);
  const auto over =
      recordsOf(pairAt(truth(150, 50), truth(370, 50), 0, 150, 300), pairs("l", 500, 5));
  EXPECT_EQ(over.at(1).certainty, Certainty::kExact);
  EXPECT_EQ(over[1].position, 370);
  EXPECT_EQ(over[1].flag & 0x2, 0);  // 270 bases apart, as the assembly has them
  EXPECT_EQ(over[1].templateLength, -270);
}

TEST_F(AlignmentRecords, ARepeatAtTheEdgeLeavesTheEstimate) {
  std::string repeats;
  while (repeats.size() < 60) repeats += "ACCGT";
  makeAssembly({{"r", {{truth(0, 240) + repeats}, {truth(400, 300), 100}}}});
  const std::string mate = repeats.substr(0, 30) + randomBases(20, 6);
  const auto records = recordsOf(pairAt(truth(150, 50), mate, 0, 150, 0), pairs("l", 200, 10));
  EXPECT_EQ(records.at(1).certainty, Certainty::kEstimate);
}

TEST_F(AlignmentRecords, EachReadOnceAGap) {
  FoundEntry entry = pairAt(truth(150, 50), truth(280, 50), 0, 150, 0);
  entry.places.push_back({1, true, RecordKind::kGapBeyond, 0, 2, 20, 20, 0, 150});
  const auto reads = run::readsOfGaps(recordsOf(entry, pairs("l", 200, 10)));
  ASSERT_EQ(reads.size(), 4U);
  const auto is = [&](std::size_t n, int64_t gap, int mate, bool isFound, Certainty certainty) {
    return reads[n].gap == gap && reads[n].mate == mate && reads[n].isFound == isFound &&
           reads[n].certainty == certainty;
  };
  EXPECT_TRUE(is(0, 0, 0, false, Certainty::kExact));
  EXPECT_TRUE(is(1, 0, 1, true, Certainty::kExact));
  EXPECT_TRUE(is(2, 1, 0, false, Certainty::kExact));
  EXPECT_TRUE(is(3, 1, 1, true, Certainty::kEstimate));
}

}  // namespace
}  // namespace velk::test
