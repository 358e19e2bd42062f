// The comparison kernel against a loop.
#include "placement/edgeCheck.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace velk::test {
namespace {

std::size_t naiveCount(const char* one, const char* other, std::size_t length) {
  std::size_t equal = 0;
  for (std::size_t i = 0; i < length; ++i) {
    if (one[i] == other[i]) equal = equal + 1;
  }
  return equal;
}

// Bytes of which about half agree between two texts, unlike at every alignment.
std::string halfEqual(std::size_t length, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(length, ' ');
  for (char& byte : bytes) byte = random() % 2 == 0 ? 'A' : 'C';
  return bytes;
}

TEST(CountEqual, LengthsUpTo130AtAllAlignments) {
  constexpr std::size_t kAlignments = 64;
  const std::string one = halfEqual(256, 1);
  const std::string other = halfEqual(256, 2);
  for (std::size_t i = 0; i < kAlignments; ++i) {
    for (std::size_t j = 0; j < kAlignments; ++j) {
      for (std::size_t length = 0; length <= 130; ++length) {
        ASSERT_EQ(naiveCount(one.data() + i, other.data() + j, length),
                  countEqual(one.data() + i, other.data() + j, length))
            << "length " << length << " from " << i << " and " << j;
      }
    }
  }
}

TEST(CountEqual, EqualBytesOutsideTheStretchesDoNotCount) {
  const std::string text(300, 'A');
  for (std::size_t length = 0; length <= 130; ++length) {
    EXPECT_EQ(length, countEqual(text.data() + 100, text.data() + 101, length));
  }
}

TEST(CountEqual, EveryPlaceCountsOnce) {
  const std::string one(130, 'A');
  for (std::size_t at = 0; at < one.size(); ++at) {
    std::string other(130, 'C');
    other[at] = 'A';
    EXPECT_EQ(1U, countEqual(one.data(), other.data(), one.size())) << at;
    EXPECT_EQ(0U, countEqual(one.data(), other.data(), at)) << at;
  }
}

TEST(CountEqual, LongStretches) {
  for (const std::size_t length : {255U, 256U, 257U, 4080U, 4096U, 65536U, 100003U}) {
    const std::string same(length, 'G');
    EXPECT_EQ(length, countEqual(same.data(), same.data(), length));
    const std::string one = halfEqual(length, 3);
    const std::string other = halfEqual(length, 4);
    EXPECT_EQ(naiveCount(one.data(), other.data(), length),
              countEqual(one.data(), other.data(), length));
  }
}

TEST(CountEqual, BytesAreComparedAsTheyStand) {
  std::string all(256, '\0');
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<char>(i);
  EXPECT_EQ(256U, countEqual(all.data(), all.data(), 256));
  for (std::size_t bit = 0; bit < 8; ++bit) {
    std::string flipped = all;
    for (char& byte : flipped) byte = static_cast<char>(byte ^ (1 << bit));
    EXPECT_EQ(0U, countEqual(all.data(), flipped.data(), 256)) << "bit " << bit;
  }
  EXPECT_EQ(0U, countEqual("acgt", "ACGT", 4));
}

// With AddressSanitizer a byte read behind either stretch is an error.
TEST(CountEqual, ReadsNothingOutsideTheStretches) {
  for (std::size_t length = 0; length <= 130; ++length) {
    const std::vector<char> one(length, 'A');
    const std::vector<char> other(length, 'A');
    EXPECT_EQ(length, countEqual(one.data(), other.data(), length));
  }
}

}  // namespace
}  // namespace velk::test
