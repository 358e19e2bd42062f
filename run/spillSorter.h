// Sorts items by key in bounded memory.
//
// Any thread may add items. What goes beyond the memory is sorted and appended to a file, which has
// no name from the start, so that nothing of it is ever left behind. Then one thread has all items
// handed out in order, or saved to a file that another sorter takes its items from. The order
// depends on the keys alone: equal ones should not be added, or have equal payloads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace velk::run {

struct SortKey {
  uint64_t first;
  uint64_t second;
  uint64_t third;

  bool operator==(const SortKey&) const = default;
  bool operator<(const SortKey& other) const {
    return std::tie(first, second, third) < std::tie(other.first, other.second, other.third);
  }
};

class SpillSorter {
 public:
  /// `file`: where to spill to, made when it is needed. `memory`: bytes for items, roughly.
  SpillSorter(std::string file, uint64_t memory);
  ~SpillSorter();
  SpillSorter(const SpillSorter&) = delete;
  SpillSorter& operator=(const SpillSorter&) = delete;

  /// Adds an item. Throws Failure when the file cannot be written.
  void add(const SortKey& key, std::string_view payload);

  /// Adds the items that another sorter has saved to `file`, which stays as it is meanwhile.
  void addSaved(const std::string& file, uint64_t items);

  /// Calls take(key, payload) for every item, in the order of keys. No item is added any more.
  /// Throws Failure when the file cannot be read, and what `take` throws.
  void forEach(const std::function<void(const SortKey&, std::string_view)>& take);

  /// Writes all items, in order, to a file. Called in place of forEach(). Throws Failure.
  void save(const std::string& file);

  uint64_t items() const {
    const std::lock_guard lock(mutex_);
    return items_;
  }
  uint64_t spilledBytes() const { return fileSize_; }

 private:
  struct Item {
    SortKey key;
    const char* payload;  // in blocks_
    uint32_t length;
  };
  struct Run {  // a sorted stretch of a file
    uint64_t start;
    uint64_t end;
    std::string saved{};  // the file that it was saved to; empty: it is in this sorter's own
  };
  class Reader;

  char* room(std::size_t bytes);
  void sortItems();
  static void prefetch(const Item& item);
  void spill();
  void openFile();
  void append(std::string_view bytes);
  void merge(const std::function<void(const SortKey&, std::string_view)>& take) const;

  std::string file_;
  uint64_t memory_;
  int descriptor_ = -1;
  std::vector<Run> runs_;
  uint64_t fileSize_ = 0;
  uint64_t items_ = 0;

  mutable std::mutex mutex_;  // guards everything while items are added
  std::vector<Item> held_;
  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t left_ = 0;    // bytes of the last block
  uint64_t heldBytes_ = 0;  // of blocks and items
};

}  // namespace velk::run
