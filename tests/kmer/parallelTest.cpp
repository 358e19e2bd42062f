// Work that several threads share: each part is done once, and failures come through.
#include "kmer/machine.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <vector>

namespace velk::test {
namespace {

TEST(ForEachInParallel, CallsForEachNumberOnce) {
  for (const std::size_t threads : {0UL, 1UL, 2UL, 8UL}) {
    for (const std::size_t count : {0UL, 1UL, 2UL, 7UL, 1000UL}) {
      std::vector<std::atomic<int>> calls(count);
      forEachInParallel(threads, count, [&](std::size_t n) { ++calls[n]; });
      for (std::size_t n = 0; n < count; ++n) {
        ASSERT_EQ(calls[n], 1) << threads << " threads, " << n << " of " << count;
      }
    }
  }
}

TEST(ForEachInParallel, OneThreadIsTheCallingOne) {
  const std::thread::id caller = std::this_thread::get_id();
  forEachInParallel(1, 10, [&](std::size_t) { EXPECT_EQ(std::this_thread::get_id(), caller); });
  forEachInParallel(8, 1, [&](std::size_t) { EXPECT_EQ(std::this_thread::get_id(), caller); });
}

TEST(ForEachInParallel, NoMoreThreadsThanAskedFor) {
  std::mutex mutex;
  std::set<std::thread::id> ids;
  forEachInParallel(3, 1000, [&](std::size_t) {
    const std::lock_guard lock(mutex);
    ids.insert(std::this_thread::get_id());
  });
  EXPECT_GE(ids.size(), 1U);
  EXPECT_LE(ids.size(), 3U);
}

TEST(ForEachInParallel, TwoThreadsWorkAtTheSameTime) {
  // Each waits for the other; alone it would wait for ever.
  std::atomic<int> there{0};
  forEachInParallel(2, 2, [&](std::size_t) {
    ++there;
    while (there < 2) std::this_thread::yield();
  });
  EXPECT_EQ(there, 2);
}

TEST(ForEachInParallel, WritesAreSeenAfterwards) {
  std::vector<std::size_t> squares(5000);
  forEachInParallel(4, squares.size(), [&](std::size_t n) { squares[n] = n * n; });
  for (std::size_t n = 0; n < squares.size(); ++n) ASSERT_EQ(squares[n], n * n);
}

TEST(ForEachInParallel, LackOfMemoryInAnyCallIsThrown) {
  for (const std::size_t threads : {1UL, 4UL}) {
    for (const std::size_t bad : {0UL, 5UL, 99UL}) {
      std::atomic<std::size_t> running{0};
      const auto work = [&](std::size_t n) {
        ++running;
        std::this_thread::yield();
        --running;
        if (n == bad) throw std::bad_alloc();
      };
      EXPECT_THROW(forEachInParallel(threads, 100, work), std::bad_alloc);
      EXPECT_EQ(running, 0U);
    }
  }
}

TEST(ForEachInParallel, NothingIsBegunAfterLackOfMemory) {
  std::size_t calls = 0;
  const auto work = [&](std::size_t n) {
    ++calls;
    if (n == 3) throw std::bad_alloc();
  };
  EXPECT_THROW(forEachInParallel(1, 100, work), std::bad_alloc);
  EXPECT_EQ(calls, 4U);
}

TEST(ForEachInParallel, AnyErrorOfACallIsThrown) {
  for (const std::size_t threads : {1UL, 4UL}) {
    const auto work = [](std::size_t n) {
      if (n == 7) throw std::runtime_error("seven");
    };
    EXPECT_THROW(forEachInParallel(threads, 100, work), std::runtime_error);
  }
}

}  // namespace
}  // namespace velk::test
