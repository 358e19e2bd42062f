// The check of estimates, compared with a plain model that looks at every place letter by letter.
#include "run/placeCheck.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "run/likeStart.h"
#include "tests/run/world.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

constexpr double kMapCut = 0.95;

class PlaceCheck : public RunWorld {
 protected:
  int64_t random(int64_t from, int64_t to) {
    return std::uniform_int_distribution<int64_t>(from, to)(generator_);
  }

  unsigned seed() { return static_cast<unsigned>(random(1, 1 << 30)); }

  // A scaffold with short contigs and long ones, two of which end alike.
  void makeScaffold() {
    const std::string repeat = randomBases(60, seed());
    std::vector<TestContig> contigs;
    for (int n = 0; n < 4; ++n) {
      std::string bases = randomBases(static_cast<std::size_t>(random(30, 200)), seed());
      if (n % 2 == 0 && random(0, 1) == 0) bases += repeat + repeat.substr(0, 20);
      if (random(0, 2) == 0) bases[bases.size() / 2] = 'R';
      contigs.push_back({bases, n == 0 ? 0 : random(1, 80)});
    }
    makeAssembly({{"made", contigs}});
    scaffold_.assign(assembly().scaffolds()[0].length, 'N');
    for (std::size_t c = 0; c < contigs.size(); ++c) {
      const run::ContigPlace& place = assembly().scaffolds()[0].contigs[c];
      scaffold_.replace(place.start, place.end - place.start, contigs[c].bases);
    }
  }

  // Bases from about a place of the scaffold, those of gaps made up, some of them wrong.
  std::string readFrom(int64_t start, int64_t length) {
    std::string read = randomBases(static_cast<std::size_t>(length), seed());
    for (int64_t i = 0; i < length; ++i) {
      const int64_t at = start + i;
      const bool isThere = at >= 0 && at < static_cast<int64_t>(scaffold_.size());
      const char base = isThere ? scaffold_[static_cast<std::size_t>(at)] : 'N';
      if (base != 'N' && random(0, 39) != 0) read[static_cast<std::size_t>(i)] = base;
    }
    return read;
  }

  // Equal bases of a read at `start` and a contig, and how many are compared.
  struct Shared {
    int64_t same = 0;
    int64_t compared = 0;

    bool agrees() const {
      return static_cast<double>(same) / static_cast<double>(compared) >= kMapCut;
    }
  };
  Shared sharedAt(const std::string& read, int64_t start, uint64_t contig) const {
    const run::ContigPlace& place = assembly().scaffolds()[0].contigs[contig];
    Shared shared;
    for (std::size_t i = 0; i < read.size(); ++i) {
      const int64_t at = start + static_cast<int64_t>(i);
      if (at < static_cast<int64_t>(place.start) || at >= static_cast<int64_t>(place.end)) continue;
      ++shared.compared;
      shared.same += scaffold_[static_cast<std::size_t>(at)] == read[i] ? 1 : 0;
    }
    return shared;
  }

  // The place of the only overlap of 16 bases or more with a contig from which the read hangs over
  // on one side, if there is one.
  std::optional<std::pair<int64_t, int64_t>> onlyOverlap(const run::Expected& expected,
                                                         uint64_t contig, bool isOverEnd) const {
    const run::ContigPlace& place = assembly().scaffolds()[0].contigs[contig];
    const auto length = static_cast<int64_t>(expected.bases.size());
    std::vector<std::pair<int64_t, int64_t>> found;
    for (int64_t start = expected.start - expected.spread;
         start <= expected.start + expected.spread; ++start) {
      const bool hangsOver = isOverEnd ? start + length > static_cast<int64_t>(place.end)
                                       : start < static_cast<int64_t>(place.start);
      const Shared shared = sharedAt(std::string(expected.bases), start, contig);
      if (!hangsOver || shared.compared < run::kLeastOverlap || !shared.agrees()) continue;
      found.emplace_back(start, shared.compared);
    }
    return found.size() == 1 ? std::optional(found.front()) : std::nullopt;
  }

  // Compares what the check says with what the model finds.
  void compare(const run::Gap& gap, const run::Expected& expected) {
    const run::ScaffoldText text{assembly(), 0};
    const run::CheckedPlace checked = run::checkPlace(text, gap, expected, kMapCut);
    const auto length = static_cast<int64_t>(expected.bases.size());
    int64_t best = -1;
    int64_t nearest = 0;
    for (uint64_t c = 0; c < 4; ++c) {
      for (int64_t start = expected.start - expected.spread;
           start <= expected.start + expected.spread; ++start) {
        const Shared shared = sharedAt(std::string(expected.bases), start, c);
        if (shared.compared < length || !shared.agrees()) continue;
        const int64_t distance = std::abs(start - expected.start);
        if (shared.same < best || (shared.same == best && distance >= nearest)) continue;
        best = shared.same;
        nearest = distance;
      }
    }
    if (best >= 0) {
      ++met_["contained"];
      ASSERT_EQ(checked.certainty, run::Certainty::kContained);
      EXPECT_EQ(sharedAt(std::string(expected.bases), checked.start, checked.contig).same, best);
      EXPECT_EQ(std::abs(checked.start - expected.start), nearest);
      return;
    }
    const auto front = onlyOverlap(expected, gap.contigBehind - 1, true);
    const auto behind = onlyOverlap(expected, gap.contigBehind, false);
    if (!front && !behind) {
      ++met_["estimate"];
      EXPECT_EQ(checked.certainty, run::Certainty::kEstimate);
      EXPECT_EQ(checked.start, expected.start);
      return;
    }
    ++met_[front ? behind ? "exact at both" : "exact in front" : "exact behind"];
    const auto& longer = !behind || (front && front->second >= behind->second) ? front : behind;
    ASSERT_EQ(checked.certainty, run::Certainty::kExact);
    EXPECT_EQ(checked.start, longer->first);
  }

  std::map<std::string, int> met_;

 private:
  std::mt19937 generator_{7};
  std::string scaffold_;
};

TEST_F(PlaceCheck, AgreesWithTheModel) {
  for (int round = 0; round < 150; ++round) {
    makeScaffold();
    for (int n = 0; n < 40; ++n) {
      const auto& gaps = assembly().gaps();
      const run::Gap& gap = gaps[static_cast<std::size_t>(random(0, 2))];
      const int64_t start = static_cast<int64_t>(gap.start) + random(-120, 60);
      const std::string read = readFrom(start, random(20, 120));
      const run::Expected expected{read, start + random(-30, 30), random(0, 60), true};
      compare(gap, expected);
      if (HasFailure()) {
        FAIL() << "round " << round << ", read " << n;
      }
    }
  }
  for (const char* what :
       {"contained", "estimate", "exact in front", "exact behind", "exact at both"}) {
    EXPECT_GE(met_[what], 100) << what;
  }
}

// Places at which a read may begin: none that the letters themselves allow is left out.

int64_t unlike(std::string_view one, std::string_view other) {
  int64_t count = 0;
  for (std::size_t i = 0; i < run::LikeStart::kBases; ++i) count += one[i] != other[i] ? 1 : 0;
  return count;
}

std::set<int64_t> placesOf(const std::string& read, const std::string& text, int64_t most) {
  std::set<int64_t> places;
  const auto count = static_cast<int64_t>(text.size()) - run::LikeStart::kBases + 1;
  run::LikeStart(read, most).forEachPlace(text.data(), count, [&](int64_t i) {
    EXPECT_TRUE(places.empty() || *places.rbegin() < i);
    places.insert(i);
  });
  return places;
}

TEST(LikeStart, OfBasesItIsThePlacesWithSoFewUnlikeOnes) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    std::string text = randomBases(400, seed);
    const std::string read = randomBases(50, seed + 100);
    for (const int64_t wrong : {0, 1, 3, 4, 5}) {
      const std::size_t at = 10 + 60 * static_cast<std::size_t>(wrong);
      text.replace(at, read.size(), read);
      for (int64_t n = 0; n < wrong; ++n) {
        char& base = text[at + 7 * static_cast<std::size_t>(n)];
        base = base == 'A' ? 'C' : 'A';
      }
    }
    for (const int64_t most : {0, 3, 4, 20}) {
      std::set<int64_t> expected;
      for (std::size_t i = 0; i + run::LikeStart::kBases <= text.size(); ++i) {
        if (unlike(read, std::string_view(text).substr(i)) <= most) {
          expected.insert(static_cast<int64_t>(i));
        }
      }
      EXPECT_FALSE(expected.empty());
      EXPECT_EQ(placesOf(read, text, most), expected) << seed << ' ' << most;
    }
  }
}

TEST(LikeStart, NoPlaceIsLeftOutWhereOtherLettersAgree) {
  const std::string read = "ARYSWKMBDHVNacgtnXZ*.-?ACGTRYKMNAC";
  const std::string text = randomBases(33, 1) + read + randomBases(40, 2);
  EXPECT_TRUE(placesOf(read, text, 0).contains(33));
}

TEST(LikeStart, NothingIsVisitedWithoutPlaces) {
  const std::string read = randomBases(32, 3);
  run::LikeStart(read, 32).forEachPlace("", 0, [](int64_t i) { ADD_FAILURE() << i; });
  EXPECT_EQ(placesOf(read, read, 0), std::set<int64_t>{0});
}

}  // namespace

}  // namespace velk::test
