// Places at which a read may begin: none that the letters themselves allow is left out.
#include "run/likeStart.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/assembly.h"

namespace velk::test {
namespace {

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
