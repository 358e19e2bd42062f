#include "run/spillSorter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <queue>
#include <utility>

#include "run/diskFile.h"

namespace velk::run {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
constexpr std::size_t kWriteBytes = std::size_t{1} << 20;
constexpr std::size_t kMostReadBytes = std::size_t{1} << 20;
constexpr std::size_t kLeastReadBytes = std::size_t{1} << 14;
constexpr std::size_t kFetchedAhead = 6;  // items
constexpr uint32_t kFetchedBytes = 384;   // of each: those of short reads
constexpr uint32_t kLineBytes = 64;       // of the processor's cache

// In the file each item has its key and its payload's length in front.
struct ItemHead {
  SortKey key;
  uint64_t length;
};

void addItem(std::string& buffer, const SortKey& key, std::string_view payload) {
  const ItemHead head{key, payload.size()};
  buffer.append(reinterpret_cast<const char*>(&head), sizeof head);
  buffer.append(payload);
}

}  // namespace

// Hands out the items of one sorted stretch of a file.
class SpillSorter::Reader {
 public:
  Reader(const SpillSorter& sorter, const Run& run, std::size_t bufferBytes)
      : file_(run.saved.empty() ? sorter.file_ : run.saved), run_(run), buffer_(bufferBytes) {
    if (!run.saved.empty()) saved_.emplace(run.saved, O_RDONLY);
    descriptor_ = saved_ ? saved_->get() : sorter.descriptor_;
  }

  // Goes to the next item. Returns false at the end.
  bool next() {
    begin_ += taken_;
    taken_ = 0;
    if (begin_ == end_ && run_.start == run_.end) return false;
    need(sizeof head_);
    std::memcpy(&head_, buffer_.data() + begin_, sizeof head_);
    need(sizeof head_ + head_.length);
    taken_ = sizeof head_ + head_.length;
    return true;
  }

  const SortKey& key() const { return head_.key; }
  std::string_view payload() const {
    return {buffer_.data() + begin_ + sizeof head_, static_cast<std::size_t>(head_.length)};
  }

 private:
  // Has so many bytes in the buffer from begin_ on.
  void need(std::size_t bytes) {
    if (end_ - begin_ >= bytes) return;
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= begin_;
    begin_ = 0;
    const bool isThere = bytes - end_ <= run_.end - run_.start;
    if (isThere && buffer_.size() < bytes) buffer_.resize(bytes);
    while (end_ < bytes) {
      const auto most =
          isThere ? std::min<uint64_t>(buffer_.size() - end_, run_.end - run_.start) : 0;
      const ssize_t got = most == 0 ? 0
                                    : pread(descriptor_, buffer_.data() + end_, most,
                                            static_cast<off_t>(run_.start));
      if (got < 0 && errno == EINTR) continue;
      if (got == 0) errno = EIO;
      if (got <= 0) failFile(file_, "read");
      end_ += static_cast<std::size_t>(got);
      run_.start += static_cast<uint64_t>(got);
    }
  }

  std::string file_;
  std::optional<Descriptor> saved_;
  int descriptor_ = -1;
  Run run_;  // what has not been read
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // of the item, in the buffer
  std::size_t end_ = 0;    // of what was read
  std::size_t taken_ = 0;  // bytes of the item
  ItemHead head_{};
};

SpillSorter::SpillSorter(std::string file, uint64_t memory)
    : file_(std::move(file)), memory_(memory) {}

SpillSorter::~SpillSorter() {
  if (descriptor_ >= 0) close(descriptor_);
}

void SpillSorter::add(const SortKey& key, std::string_view payload) {
  const std::lock_guard lock(mutex_);
  if (heldBytes_ + payload.size() > memory_ && !held_.empty()) spill();
  char* const place = room(payload.size());
  std::copy(payload.begin(), payload.end(), place);
  held_.push_back({key, place, static_cast<uint32_t>(payload.size())});
  // A growing vector holds each item twice for a moment.
  heldBytes_ += 2 * sizeof(Item);
  ++items_;
}

char* SpillSorter::room(std::size_t bytes) {
  if (bytes > left_ || blocks_.empty()) {
    const std::size_t size = std::max(bytes, std::min<uint64_t>(kBlockBytes, memory_));
    blocks_.push_back(std::unique_ptr<char[]>(new char[size]));
    left_ = size;
    heldBytes_ += size;
  }
  left_ -= bytes;
  // Blocks are filled from their end.
  return blocks_.back().get() + left_;
}

void SpillSorter::sortItems() {
  std::sort(held_.begin(), held_.end(),
            [](const Item& one, const Item& other) { return one.key < other.key; });
}

void SpillSorter::openFile() {
  descriptor_ = open(file_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (descriptor_ < 0) failFile(file_, "opened");
  if (unlink(file_.c_str()) != 0) failFile(file_, "removed");
}

void SpillSorter::append(std::string_view bytes) {
  writeDescriptor(descriptor_, file_, bytes);
  fileSize_ += bytes.size();
}

void SpillSorter::spill() {
  if (descriptor_ < 0) openFile();
  sortItems();
  const uint64_t start = fileSize_;
  std::string buffer;
  for (const Item& item : held_) {
    addItem(buffer, item.key, {item.payload, item.length});
    if (buffer.size() < kWriteBytes) continue;
    append(buffer);
    buffer.clear();
  }
  append(buffer);
  runs_.push_back({start, fileSize_, {}});
  held_.clear();
  blocks_.clear();
  left_ = 0;
  heldBytes_ = 0;
}

void SpillSorter::forEach(const std::function<void(const SortKey&, std::string_view)>& take) {
  if (!runs_.empty()) {
    if (!held_.empty()) spill();
    held_.shrink_to_fit();
    merge(take);
    return;
  }
  sortItems();
  for (std::size_t n = 0; n < held_.size(); ++n) {
    if (n + kFetchedAhead < held_.size()) prefetch(held_[n + kFetchedAhead]);
    take(held_[n].key, {held_[n].payload, held_[n].length});
  }
}

// Has the processor fetch a payload, which lies anywhere.
void SpillSorter::prefetch(const Item& item) {
  for (uint32_t byte = 0; byte < std::min(item.length, kFetchedBytes); byte += kLineBytes) {
    __builtin_prefetch(item.payload + byte);
  }
}

void SpillSorter::addSaved(const std::string& file, uint64_t items) {
  runs_.push_back({0, std::filesystem::file_size(file), file});
  items_ += items;
}

void SpillSorter::save(const std::string& file) {
  Descriptor output(file, O_WRONLY | O_CREAT | O_TRUNC);
  std::string buffer;
  forEach([&](const SortKey& key, std::string_view payload) {
    addItem(buffer, key, payload);
    if (buffer.size() < kWriteBytes) return;
    writeDescriptor(output.get(), file, buffer);
    buffer.clear();
  });
  writeDescriptor(output.get(), file, buffer);
  if (!output.close()) failFile(file, "written");
}

void SpillSorter::merge(const std::function<void(const SortKey&, std::string_view)>& take) const {
  const std::size_t bufferBytes =
      std::clamp<std::size_t>(memory_ / runs_.size(), kLeastReadBytes, kMostReadBytes);
  std::vector<std::unique_ptr<Reader>> readers;
  const auto isLater = [](const Reader* one, const Reader* other) {
    return other->key() < one->key();
  };
  std::priority_queue<Reader*, std::vector<Reader*>, decltype(isLater)> next(isLater);
  for (const Run& run : runs_) {
    readers.push_back(std::make_unique<Reader>(*this, run, bufferBytes));
    if (readers.back()->next()) next.push(readers.back().get());
  }
  while (!next.empty()) {
    Reader* const reader = next.top();
    next.pop();
    take(reader->key(), reader->payload());
    if (reader->next()) next.push(reader);
  }
}

}  // namespace velk::run
