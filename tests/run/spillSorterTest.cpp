#include "run/spillSorter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <thread>

#include "run/failure.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

using run::SortKey;
using run::SpillSorter;
using Items = std::vector<std::pair<SortKey, std::string>>;

// Items with different keys and payloads of 0 to 300 bytes.
Items randomItems(std::size_t count, unsigned seed) {
  std::mt19937_64 random(seed);
  Items items;
  for (std::size_t n = 0; n < count; ++n) {
    // Small numbers, so that every part of the key decides somewhere.
    const SortKey key{random() % 20, random() % 20, (random() % 16) << 32 | n};
    items.emplace_back(key, std::string(random() % 301, static_cast<char>('a' + n % 26)));
  }
  return items;
}

Items sorted(Items items) {
  std::sort(items.begin(), items.end());
  return items;
}

Items takenFrom(SpillSorter& sorter) {
  Items taken;
  sorter.forEach([&](const SortKey& key, std::string_view payload) {
    taken.emplace_back(key, std::string(payload));
  });
  return taken;
}

class SpillSorterTest : public ::testing::Test {
 protected:
  std::string file() const { return folder_.path("spill"); }

  TemporaryFolder folder_;
};

TEST_F(SpillSorterTest, NothingAdded) {
  SpillSorter sorter(file(), 1000);
  EXPECT_TRUE(takenFrom(sorter).empty());
  EXPECT_EQ(sorter.items(), 0U);
}

TEST_F(SpillSorterTest, SortsAsTheLibraryDoesAtEveryLimit) {
  const Items items = randomItems(2000, 1);
  const Items expected = sorted(items);
  for (const uint64_t memory : {1U, 100U, 1000U, 10000U, 100000U, 10000000U}) {
    SpillSorter sorter(file(), memory);
    for (const auto& [key, payload] : items) sorter.add(key, payload);
    EXPECT_EQ(takenFrom(sorter), expected) << memory;
    EXPECT_EQ(sorter.items(), items.size());
    EXPECT_EQ(sorter.spilledBytes() > 0, memory < 10000000) << memory;
  }
}

TEST_F(SpillSorterTest, TheOrderOfAddingIsNotSeen) {
  Items items = randomItems(1000, 2);
  const Items expected = sorted(items);
  std::mt19937 random(3);
  for (int n = 0; n < 5; ++n) {
    std::shuffle(items.begin(), items.end(), random);
    SpillSorter sorter(file(), 20000);
    for (const auto& [key, payload] : items) sorter.add(key, payload);
    EXPECT_EQ(takenFrom(sorter), expected);
  }
}

TEST_F(SpillSorterTest, ManyThreadsAdd) {
  const Items items = randomItems(4000, 4);
  SpillSorter sorter(file(), 50000);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t n = t; n < items.size(); n += 4) {
        sorter.add(items[n].first, items[n].second);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(takenFrom(sorter), sorted(items));
}

TEST_F(SpillSorterTest, APayloadLargerThanTheMemory) {
  SpillSorter sorter(file(), 1000);
  sorter.add({2, 0, 0}, std::string(100000, 'x'));
  sorter.add({1, 0, 0}, std::string(50000, 'y'));
  const Items taken = takenFrom(sorter);
  ASSERT_EQ(taken.size(), 2U);
  EXPECT_EQ(taken[0].second, std::string(50000, 'y'));
  EXPECT_EQ(taken[1].second, std::string(100000, 'x'));
}

TEST_F(SpillSorterTest, NoFileIsLeftOrSeen) {
  SpillSorter sorter(file(), 1);
  for (const auto& [key, payload] : randomItems(10, 5)) sorter.add(key, payload);
  EXPECT_GT(sorter.spilledBytes(), 0U);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("")));
}

TEST_F(SpillSorterTest, SavedItemsOfSeveralMakeOneOrder) {
  const Items items = randomItems(3000, 6);
  for (const uint64_t memory : {500U, 10000000U}) {
    SpillSorter all(file(), memory);
    for (std::size_t part = 0; part < 4; ++part) {
      SpillSorter sorter(file(), memory);
      // The last part has none.
      for (std::size_t n = part; part < 3 && n < items.size(); n += 3) {
        sorter.add(items[n].first, items[n].second);
      }
      const std::string saved = folder_.path("saved" + std::to_string(part));
      sorter.save(saved);
      all.addSaved(saved, sorter.items());
    }
    EXPECT_EQ(all.items(), items.size());
    EXPECT_EQ(takenFrom(all), sorted(items));
    EXPECT_EQ(takenFrom(all), sorted(items)) << "what was saved stays";
    EXPECT_EQ(all.spilledBytes(), 0U);
  }
}

TEST_F(SpillSorterTest, SavedItemsThatAreCutEndTheRun) {
  const std::string saved = folder_.path("saved");
  SpillSorter sorter(file(), 100000);
  for (const auto& [key, payload] : randomItems(10, 7)) sorter.add(key, payload);
  sorter.save(saved);
  const auto size = std::filesystem::file_size(saved);
  for (const auto bytes : {size - 1, size / 2, std::uintmax_t{31}, std::uintmax_t{1}}) {
    std::filesystem::resize_file(saved, bytes);
    SpillSorter reader(file(), 100000);
    reader.addSaved(saved, 10);
    EXPECT_THROW(takenFrom(reader), run::Failure) << bytes;
  }
}

TEST_F(SpillSorterTest, AFileThatCannotBeMadeEndsTheRun) {
  SpillSorter sorter(folder_.path("missing/spill"), 1);
  sorter.add({1, 0, 0}, "one");
  try {
    sorter.add({2, 0, 0}, "two");
    FAIL() << "no failure";
  } catch (const run::Failure& failure) {
    EXPECT_EQ(failure.status, run::Status::kFailed);
    EXPECT_EQ(std::string(failure.what()),
              folder_.path("missing/spill") + " can't be opened: No such file or directory");
  }
}

}  // namespace
}  // namespace velk::test
