#include "run/fastqWriter.h"

#include <htslib/bgzf.h>
#include <htslib/hts_log.h>

#include <cerrno>
#include <cstring>

#include "run/diskFile.h"
#include "run/failure.h"

namespace velk::run {
namespace {

constexpr int kBlocksOfThread = 64;  // that wait for a thread

}  // namespace

struct BgzipWriter::Handle {
  ~Handle() {
    if (file != nullptr) bgzf_close(file);
  }

  BGZF* file = nullptr;
};

BgzipWriter::BgzipWriter(const std::string& file, const std::string& blocksFile, int helpers)
    : file_(file), blocksFile_(blocksFile), handle_(std::make_unique<Handle>()) {
  hts_set_log_level(HTS_LOG_OFF);  // failures are reported here
  handle_->file = bgzf_open(file_.c_str(), "w1");
  if (handle_->file == nullptr) fail(file_);
  if (bgzf_index_build_init(handle_->file) != 0) fail(file_);
  if (helpers > 0 && bgzf_mt(handle_->file, helpers, kBlocksOfThread) != 0) fail(file_);
}

BgzipWriter::~BgzipWriter() = default;

void BgzipWriter::fail(const std::string& file) const {
  const char* const why = errno != 0 ? std::strerror(errno) : "no reason is known";
  throw Failure(Status::kFailed, file + " can't be written: " + why);
}

void BgzipWriter::write(std::string_view text) {
  errno = 0;  // what fails in a helper's thread leaves none here
  const ssize_t written = bgzf_write(handle_->file, text.data(), text.size());
  if (written < 0 || static_cast<std::size_t>(written) != text.size()) fail(file_);
  bytes_ += text.size();
}

void BgzipWriter::close() {
  errno = 0;
  // The index has all blocks only when the last of them is written.
  if (bgzf_flush(handle_->file) != 0) fail(file_);
  if (bytes_ == 0) {
    // The library would write a number below 0 here, and not always the same.
    writeFile(blocksFile_, std::string(sizeof(uint64_t), '\0'));
  } else if (bgzf_index_dump(handle_->file, blocksFile_.c_str(), nullptr) != 0) {
    fail(blocksFile_);
  }
  const int result = bgzf_close(handle_->file);
  handle_->file = nullptr;
  if (result != 0) fail(file_);
}

namespace {

// In front of the texts of an encoded entry.
struct EntryHead {
  uint32_t library;
  uint32_t reads;
};

// In front of each read's name, bases and qualities.
struct Lengths {
  uint32_t name;
  uint32_t bases;
};

template <class T>
void put(std::string& text, const T& value) {
  text.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <class T>
T take(std::string_view& text) {
  T value;
  std::memcpy(&value, text.data(), sizeof value);
  text.remove_prefix(sizeof value);
  return value;
}

std::string_view take(std::string_view& text, std::size_t bytes) {
  const std::string_view taken = text.substr(0, bytes);
  text.remove_prefix(bytes);
  return taken;
}

void putRead(std::string& text, const reads::RecordView& read) {
  put(text,
      Lengths{static_cast<uint32_t>(read.name.size()), static_cast<uint32_t>(read.bases.size())});
  text.append(read.name).append(read.bases);
  if (read.quality.empty()) {
    text.append(read.bases.size(), kUnknownQuality);
  } else {
    text.append(read.quality);
  }
}

}  // namespace

std::string encodeFastq(const FoundEntry& entry, Written written) {
  std::string text;
  put(text, EntryHead{entry.library, written == Written::kBoth ? 2U : 1U});
  if (written != Written::kSecond) putRead(text, entry.texts[0]);
  if (written != Written::kFirst) putRead(text, entry.texts[1]);
  return text;
}

void FastqWriter::write(uint64_t gap, std::string_view encoded) {
  beginGapsTo(gap + 1);
  const EntryHead head = take<EntryHead>(encoded);
  std::string text;
  for (uint32_t n = 0; n < head.reads; ++n) {
    const Lengths lengths = take<Lengths>(encoded);
    const std::string_view name = take(encoded, lengths.name);
    const std::string_view bases = take(encoded, lengths.bases);
    const std::string_view quality = take(encoded, lengths.bases);
    text.append("@").append(clashes_.prefixOf(head.library, name)).append(name);
    text.append("\tzg:i:").append(std::to_string(gap)).append("\n");
    text.append(bases).append("\n+\n").append(quality).append("\n");
  }
  (head.reads == 2 ? pairs_ : singles_).write(text);
}

void FastqWriter::beginGapsTo(uint64_t gap) {
  while (places_.size() < gap) places_.push_back({pairs_.bytes(), singles_.bytes()});
}

std::vector<TextPlace> FastqWriter::finish() {
  beginGapsTo(gaps_ + 1);
  return std::move(places_);
}

}  // namespace velk::run
