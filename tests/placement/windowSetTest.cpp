// WindowSet against a row of flags.
#include "placement/alignment.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace velk::test {
namespace {

using Flags = std::vector<bool>;

std::size_t firstWith(const Flags& flags, std::size_t from, bool value) {
  for (; from < flags.size(); ++from) {
    if (flags[from] == value) return from;
  }
  return flags.size();
}

std::size_t lastMissing(const Flags& flags, std::size_t end) {
  for (; end > 0; --end) {
    if (!flags[end - 1]) return end - 1;
  }
  return WindowSet::kNone;
}

void compare(const WindowSet& set, const Flags& flags) {
  ASSERT_EQ(set.size(), flags.size());
  for (std::size_t window = 0; window < flags.size(); ++window) {
    ASSERT_EQ(set.contains(window), flags[window]) << window;
    ASSERT_EQ(set.firstMissing(window), firstWith(flags, window, false)) << window;
    ASSERT_EQ(set.firstContained(window), firstWith(flags, window, true)) << window;
    ASSERT_EQ(set.lastMissing(window), lastMissing(flags, window)) << window;
  }
  EXPECT_EQ(set.lastMissing(flags.size()), lastMissing(flags, flags.size()));
  EXPECT_EQ(set.firstMissing(flags.size()), flags.size());
  EXPECT_EQ(set.firstContained(flags.size()), flags.size());
}

class WindowSets : public testing::TestWithParam<std::size_t> {};

TEST_P(WindowSets, EmptyAfterReset) {
  WindowSet set;
  set.reset(300);
  set.insertRange(0, 300);
  set.reset(GetParam());
  compare(set, Flags(GetParam()));
}

TEST_P(WindowSets, EveryRange) {
  const std::size_t size = GetParam();
  const std::size_t step = size > 70 ? 7 : 1;
  for (std::size_t from = 0; from <= size; from += step) {
    for (std::size_t to = 0; to <= size; to += step) {
      WindowSet set;
      set.reset(size);
      set.insertRange(from, to);
      Flags flags(size);
      for (std::size_t window = from; window < to; ++window) flags[window] = true;
      compare(set, flags);
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(WindowSets, RandomChanges) {
  const std::size_t size = GetParam();
  if (size == 0) return;
  std::mt19937 random(static_cast<unsigned>(size));
  WindowSet set;
  WindowSet other;
  set.reset(size);
  Flags flags(size);
  for (int turn = 0; turn < 200 && !HasFatalFailure(); ++turn) {
    const std::size_t window = random() % size;
    switch (random() % 4) {
      case 0:
        set.insertMask(window, 1);
        flags[window] = true;
        break;
      case 1:
        set.erase(window);
        flags[window] = false;
        break;
      case 2: {
        other.reset(size);
        other.insertMask(window, 1);
        other.insertMask(size - 1, 1);
        set.insertAll(other);
        flags[window] = flags[size - 1] = true;
        break;
      }
      default:
        other.reset(size);
        other.insertRange(window, size);
        set.insertMarked(other,
                         [](std::size_t from) { return from == 0 ? 0x5555555555555555U : 6U; });
        for (std::size_t w = window; w < size; ++w) {
          if (w < 64 ? w % 2 == 0 : w % 64 == 1 || w % 64 == 2) flags[w] = true;
        }
    }
    compare(set, flags);
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, WindowSets,
                         testing::Values(0, 1, 2, 63, 64, 65, 127, 128, 129, 200));

}  // namespace
}  // namespace velk::test
