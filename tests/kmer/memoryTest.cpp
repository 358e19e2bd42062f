// Arrays that own their memory, or view memory that stays where it is.
#include "kmer/machine.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <utility>
#include <vector>

namespace velk::test {
namespace {

struct alignas(64) Line {
  uint64_t words[8];
};

TEST(Array, IsMadeZeroedAndAligned) {
  for (const std::size_t size : {1UL, 3UL, 100000UL}) {
    Array<Line> lines;
    lines.make(size);
    ASSERT_EQ(lines.size(), size);
    for (const Line& line : lines) {
      ASSERT_EQ(reinterpret_cast<uintptr_t>(&line) % alignof(Line), 0U);
      for (const uint64_t word : line.words) ASSERT_EQ(word, 0U);
    }
  }
}

TEST(Array, KeepsWhatItIsShrunkTo) {
  Array<uint64_t> numbers;
  numbers.make(1000000);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = i;
  numbers.shrink(300001);
  ASSERT_EQ(numbers.size(), 300001U);
  for (std::size_t i = 0; i < numbers.size(); ++i) ASSERT_EQ(numbers[i], i);
  numbers.shrink(0);
  EXPECT_EQ(numbers.begin(), numbers.end());
}

uint64_t bytesInMemory() {
  uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;  // the second number
  return pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

TEST(Array, ReturnsWhatItIsShrunkBy) {
  constexpr std::size_t kNumbers = 4000000;
  Array<uint64_t> numbers;
  numbers.make(kNumbers);
  for (std::size_t i = 0; i < kNumbers; ++i) numbers[i] = i;
  const uint64_t before = bytesInMemory();
  numbers.shrink(1000);
  EXPECT_LT(bytesInMemory(), before - kNumbers * sizeof(uint64_t) * 3 / 4);
}

TEST(Array, ViewsMemoryThatOutlivesIt) {
  std::vector<int> values = {3, 1, 4};
  {
    const Array<int> view(values.data(), values.size());
    EXPECT_EQ(view.size(), 3U);
    EXPECT_EQ(&view[1], &values[1]);
  }
  EXPECT_EQ(values, (std::vector<int>{3, 1, 4}));
}

TEST(Array, MovesItsMemory) {
  Array<int> one;
  one.make(5);
  one[4] = 7;
  const Array<int> other = std::move(one);
  EXPECT_EQ(other.size(), 5U);
  EXPECT_EQ(other[4], 7);
}

}  // namespace
}  // namespace velk::test
