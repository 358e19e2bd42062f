// Places in buckets, against a list of all that was added.
#include "kmer/buckets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace velk::test {
namespace {

constexpr BucketShape kTwelve{12, 4};
constexpr BucketShape kTen{10, 5};

// The places that a search for the hash comes by, all of them.
std::vector<uint64_t> placesOf(const BucketRange& range, uint64_t hash) {
  std::vector<uint64_t> places;
  const bool isEnded = range.anyHit(hash, [&](uint64_t place) {
    places.push_back(place);
    return false;
  });
  EXPECT_FALSE(isEnded);
  return places;
}

class BucketShapes : public ::testing::TestWithParam<BucketShape> {
 protected:
  // The least number that is too large for a place.
  static uint64_t placesEnd() { return uint64_t{1} << (8 * GetParam().width + 2); }
};

TEST_P(BucketShapes, HoldsThePlacesOfOneBucketInOrder) {
  std::vector<Bucket> memory(2);
  const BucketRange range{memory.data(), 1, GetParam()};
  std::vector<uint64_t> added = {
      0, 1, 255, 256, placesEnd() / 4 - 1, placesEnd() / 4, placesEnd() / 2, placesEnd() - 1};
  for (const uint64_t place : added) range.add(place, 21);
  EXPECT_EQ(placesOf(range, 21), added);
  EXPECT_EQ(placesOf(range, 22), std::vector<uint64_t>{});  // its tag is another
  EXPECT_EQ(memory[0].count(), added.size());
  EXPECT_EQ(memory[1].count(), 0U);  // nothing beyond the range
}

TEST_P(BucketShapes, IsFullWithAsManyAsHaveRoom) {
  Bucket bucket{};
  for (unsigned i = 0; i < GetParam().room; ++i) {
    EXPECT_FALSE(bucket.isFull(GetParam()));
    bucket.add(placesEnd() - 1 - i, i, GetParam());
  }
  EXPECT_TRUE(bucket.isFull(GetParam()));
  for (unsigned i = 0; i < GetParam().room; ++i) {
    EXPECT_EQ(bucket.place(i, GetParam()), placesEnd() - 1 - i);
    EXPECT_EQ(bucket.hits(i), 1U << i);
  }
}

TEST_P(BucketShapes, TagAndPlaceAreApart) {
  Bucket bucket{};
  bucket.add(placesEnd() - 1, 0, GetParam());
  bucket.add(0, 63, GetParam());
  EXPECT_EQ(bucket.hits(0), 1U);
  EXPECT_EQ(bucket.hits(63), 2U);
  EXPECT_EQ(bucket.place(0, GetParam()), placesEnd() - 1);
  EXPECT_EQ(bucket.place(1, GetParam()), 0U);
  EXPECT_EQ(bucket.hits(1), 0U);
}

TEST_P(BucketShapes, RunsOverTheEndToTheStart) {
  std::vector<Bucket> memory(4);
  const BucketRange range{memory.data(), 3, GetParam()};
  const uint64_t hash = ~uint64_t{0};  // the last bucket is its home
  ASSERT_EQ(range.home(hash), &memory[2]);
  ASSERT_EQ(range.home(0), &memory[0]);
  std::vector<uint64_t> added;
  for (uint64_t place = 0; place < 2 * GetParam().room + 3; ++place) {
    added.push_back(7 * place);
    range.add(7 * place, hash);
  }
  EXPECT_EQ(placesOf(range, hash), added);
  EXPECT_TRUE(memory[0].isFull(GetParam()));
  EXPECT_EQ(memory[1].count(), 3U);
  EXPECT_EQ(memory[3].count(), 0U);
}

TEST_P(BucketShapes, RandomPlacesComeInTheOrderOfTheirAdding) {
  std::mt19937_64 random(4);
  for (int turn = 0; turn < 50; ++turn) {
    const uint64_t buckets = 1 + random() % 40;
    std::vector<Bucket> memory(buckets);
    const BucketRange range{memory.data(), buckets, GetParam()};
    std::vector<uint64_t> hashes(10);
    for (uint64_t& hash : hashes) hash = random();
    std::vector<std::pair<uint64_t, uint64_t>> added;  // hash, place
    for (uint64_t n = random() % (buckets * GetParam().room); n > 0; --n) {
      added.emplace_back(random() % 3 == 0 ? random() : hashes[random() % 10],
                         random() % placesEnd());
      range.add(added.back().second, added.back().first);
    }
    for (const uint64_t hash : hashes) {
      std::vector<uint64_t> expected;
      for (const auto& [key, place] : added) {
        if (key == hash) expected.push_back(place);
      }
      // places of other hashes with the same tag may lie between
      const std::vector<uint64_t> places = placesOf(range, hash);
      auto next = expected.begin();
      for (const uint64_t place : places) {
        if (next != expected.end() && place == *next) ++next;
      }
      EXPECT_EQ(next, expected.end()) << "turn " << turn;
      EXPECT_LE(places.size(), added.size());
    }
  }
}

TEST_P(BucketShapes, SearchEndsWhereItIsTold) {
  std::vector<Bucket> memory(2);
  const BucketRange range{memory.data(), 2, GetParam()};
  for (uint64_t place = 0; place < 5; ++place) range.add(place, 9);
  std::vector<uint64_t> seen;
  EXPECT_TRUE(range.anyHit(9, [&](uint64_t place) {
    seen.push_back(place);
    return place == 2;
  }));
  EXPECT_EQ(seen, (std::vector<uint64_t>{0, 1, 2}));
}

TEST_P(BucketShapes, AnyBytesEndASearchWithinThem) {
  std::mt19937_64 random(5);
  std::vector<Bucket> memory(4);
  const BucketRange range{&memory[1], 2, GetParam()};
  const std::size_t most = 2 * GetParam().room;
  for (int count = 0; count < 256; ++count) {
    for (Bucket& bucket : memory) {
      auto* bytes = reinterpret_cast<unsigned char*>(&bucket);
      std::generate_n(bytes, sizeof bucket, [&] { return static_cast<unsigned char>(random()); });
      bytes[0] = static_cast<unsigned char>(count);  // of places
    }
    for (uint64_t tag = 0; tag < 64; ++tag) {
      const std::vector<uint64_t> places = placesOf(range, random() << 6 | tag);
      EXPECT_LE(places.size(), most);
      for (const uint64_t place : places) EXPECT_LT(place, placesEnd());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Both, BucketShapes, ::testing::Values(kTwelve, kTen),
                         [](const auto& shape) { return std::to_string(shape.param.room); });

TEST(BucketShape, TwelvePlacesAsLongAsTheyFit) {
  EXPECT_EQ(BucketShape::forPlacesBelow(1).room, 12U);
  EXPECT_EQ(BucketShape::forPlacesBelow(uint64_t{1} << 34).room, 12U);
  EXPECT_EQ(BucketShape::forPlacesBelow((uint64_t{1} << 34) + 1).room, 10U);
  EXPECT_EQ(BucketShape::forPlacesBelow(uint64_t{1} << 42).room, 10U);
}

}  // namespace
}  // namespace velk::test
