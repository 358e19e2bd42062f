// The set of windows against a plain row of flags.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "placement/kmerWalk.h"

namespace velk::test {
namespace {

std::size_t firstWith(const std::vector<bool>& flags, bool value, std::size_t from,
                      std::size_t to) {
  while (from < to && flags[from] != value) ++from;
  return from;
}

std::size_t lastWith(const std::vector<bool>& flags, bool value, std::size_t from, std::size_t to) {
  for (std::size_t at = to; at > from; --at) {
    if (flags[at - 1] == value) return at - 1;
  }
  return to;
}

TEST(WindowSet, AgreesWithARowOfFlags) {
  std::mt19937 random(1);
  WindowSet set;
  for (const std::size_t windows : {1UL, 2UL, 63UL, 64UL, 65UL, 70UL, 127UL, 128UL, 129UL, 300UL}) {
    for (int round = 0; round < 200; ++round) {
      set.reset(windows);
      std::vector<bool> flags(windows, false);
      for (auto inserts = random() % 6; inserts > 0; --inserts) {
        const std::size_t from = random() % windows;
        const std::size_t to = from + random() % (windows - from + 1);
        set.insertRange(from, to);
        std::fill(flags.begin() + static_cast<int>(from), flags.begin() + static_cast<int>(to),
                  true);
        const std::size_t one = random() % windows;
        set.insert(one);
        flags[one] = true;
      }
      for (std::size_t at = 0; at < windows; ++at) {
        ASSERT_EQ(set.contains(at), flags[at]);
        ASSERT_EQ(set.firstMissing(at), firstWith(flags, false, at, windows));
        const std::size_t to = at + random() % (windows - at + 1);
        ASSERT_EQ(set.firstContained(at, to), firstWith(flags, true, at, to));
        ASSERT_EQ(set.lastContained(at, to), lastWith(flags, true, at, to));
      }
      ASSERT_EQ(set.firstMissing(windows), windows);
    }
  }
}

}  // namespace
}  // namespace velk::test
