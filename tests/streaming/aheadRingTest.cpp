// A helper that fills blocks ahead: their order, how far ahead, what it throws, how it is left.
#include "streaming/aheadRing.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <future>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velk::test {
namespace {

constexpr int kBlocks = 8;  // of a ring

void rest() {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

// Fills blocks with 1, 2 and so on up to `last`.
auto countTo(int last) {
  return [n = 0, last](int& block) mutable {
    if (n == last) return false;
    block = ++n;
    return true;
  };
}

// What a ring that has started hands out, with a rest before each of the first `rests` blocks.
std::vector<int> allOf(AheadRing<int>& ring, int rests) {
  std::vector<int> all;
  for (;;) {
    if (rests-- > 0) rest();
    const int* const block = ring.next();
    if (block == nullptr) return all;
    all.push_back(*block);
  }
}

TEST(AheadRing, BlocksComeInTheirOrder) {
  for (const int last : {0, 1, kBlocks - 1, kBlocks, kBlocks + 1, 1000}) {
    for (const int rests : {0, 3}) {
      AheadRing<int> ring(countTo(last), HelperAtEnd::kIsAwaited);
      ASSERT_TRUE(ring.start("test"));
      const std::vector<int> all = allOf(ring, rests);
      ASSERT_EQ(all.size(), static_cast<std::size_t>(last));
      for (int i = 0; i < last; ++i) ASSERT_EQ(all[static_cast<std::size_t>(i)], i + 1);
      EXPECT_EQ(ring.next(), nullptr) << "it was at its end";
    }
  }
}

TEST(AheadRing, NoMoreBlocksAreFilledThanTheRingHas) {
  std::atomic<int> filled = 0;
  AheadRing<int> ring([&](int& block) { return (block = ++filled) > 0; }, HelperAtEnd::kIsAwaited);
  ASSERT_TRUE(ring.start("test"));
  while (filled < kBlocks) rest();
  rest();
  EXPECT_EQ(filled, kBlocks);
  const int* const first = ring.next();
  rest();
  EXPECT_EQ(filled, kBlocks) << "the first block is in use";
  EXPECT_EQ(*first, 1);
  EXPECT_EQ(*ring.next(), 2);
  while (filled < kBlocks + 1) rest();
  rest();
  EXPECT_EQ(filled, kBlocks + 1);
}

// The processor time of the helper, from its start until it was asked to stop.
TEST(AheadRing, HelperThatHasNothingToDoSleeps) {
  std::promise<clockid_t> clock;
  AheadRing<int> ring(
      [&, isFirst = true](int& /*block*/) mutable {
        if (std::exchange(isFirst, false)) {
          clockid_t own{};
          pthread_getcpuclockid(pthread_self(), &own);
          clock.set_value(own);
        }
        return true;
      },
      HelperAtEnd::kIsAwaited);
  ASSERT_TRUE(ring.start("test"));
  const clockid_t helper = clock.get_future().get();
  rest();
  timespec before{};
  ASSERT_EQ(clock_gettime(helper, &before), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  timespec after{};
  ASSERT_EQ(clock_gettime(helper, &after), 0);
  const auto nanoseconds =
      (after.tv_sec - before.tv_sec) * 1'000'000'000L + after.tv_nsec - before.tv_nsec;
  EXPECT_LT(nanoseconds, 1'000'000);
}

TEST(AheadRing, WhatTheHelperMeetsIsThrownBehindTheBlocksBefore) {
  for (const int before : {0, 3, 2 * kBlocks}) {
    AheadRing<int> ring(
        [fill = countTo(before)](int& block) mutable {
          if (!fill(block)) throw std::runtime_error("met at " + std::to_string(block));
          return true;
        },
        HelperAtEnd::kIsAwaited);
    ASSERT_TRUE(ring.start("test"));
    for (int i = 1; i <= before; ++i) ASSERT_EQ(*ring.next(), i);
    EXPECT_THROW(ring.next(), std::runtime_error);
    EXPECT_THROW(ring.next(), std::runtime_error) << "and again";
  }
}

TEST(AheadRing, MemoryThatRunsOut) {
  AheadRing<int> ring([](int& /*block*/) -> bool { throw std::bad_alloc(); },
                      HelperAtEnd::kIsAwaited);
  ASSERT_TRUE(ring.start("test"));
  EXPECT_THROW(ring.next(), std::bad_alloc);
}

TEST(AheadRing, HelperIsAwaitedWhereverItIsLeft) {
  for (const int taken : {0, 1, kBlocks + 2}) {
    for (const bool rests : {false, true}) {
      const auto owned = std::make_shared<int>();
      const std::weak_ptr<int> watched = owned;
      {
        AheadRing<int> ring([owned](int& block) { return (block = ++*owned) > 0; },
                            HelperAtEnd::kIsAwaited);
        ASSERT_TRUE(ring.start("test"));
        for (int i = 1; i <= taken; ++i) ASSERT_EQ(*ring.next(), i);
        if (rests) rest();
      }
      EXPECT_EQ(watched.use_count(), 1);
    }
  }
}

// As at a pipe that does not go on: the ring is gone at once, and the helper once it does.
TEST(AheadRing, HelperThatIsLeftEndsByItself) {
  auto owned = std::make_shared<int>();
  const std::weak_ptr<int> watched = owned;
  std::promise<void> goesOn;
  std::promise<void> waits;
  {
    AheadRing<int> ring(
        [owned, &waits, came = goesOn.get_future().share(), fill = countTo(2)](int& block) mutable {
          if (fill(block)) return true;
          waits.set_value();
          came.wait();
          return false;
        },
        HelperAtEnd::kIsLeft);
    owned.reset();
    ASSERT_TRUE(ring.start("test"));
    EXPECT_EQ(*ring.next(), 1);
    waits.get_future().wait();
  }
  EXPECT_FALSE(watched.expired());
  goesOn.set_value();
  while (!watched.expired()) rest();
}

}  // namespace
}  // namespace velk::test
