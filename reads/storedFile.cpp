#include "reads/storedFile.h"

#include <fcntl.h>
#include <htslib/hts.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "reads/recordSource.h"
#include "streaming/gzipDecoder.h"

namespace velk::reads {
namespace {

constexpr std::size_t kBlock = GzipDecoder::kRawBlock;  // bytes
constexpr std::size_t kMostPeeked = 64 << 10;           // bytes; more than htslib ever holds

int openFile(const std::string& file) {
  int descriptor = -1;
  do {
    descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) throw InputError(file, 0, std::strerror(errno));
  return descriptor;
}

}  // namespace

StoredFile::StoredFile(const std::string& file) : name_(file), descriptor_(openFile(file)) {
  file_ = hdopen(descriptor_, "r");
  if (file_ == nullptr) {
    const std::string reason = std::strerror(errno);
    close(descriptor_);
    throw InputError(file, 0, reason);
  }
  struct stat facts {};
  if (fstat(descriptor_, &facts) == 0 && S_ISREG(facts.st_mode)) {
    bytes_ = static_cast<uint64_t>(facts.st_size);
  }
}

StoredFile::~StoredFile() {
  if (file_ != nullptr) hclose_abruptly(file_);
}

std::string_view StoredFile::start() {
  if (!start_) {
    start_.emplace(kMostPeeked);
    const ssize_t got = hpeek(file_, start_->data(), start_->size());
    if (got < 0) throw InputError(name_, 0, std::strerror(errno));
    start_->resize(static_cast<std::size_t>(got));
    startIsDue_ = got > 0;
  }
  return {start_->data(), start_->size()};
}

bool StoredFile::isBam() {
  htsFormat format{};
  return hts_detect_format(file_, &format) == 0 && format.format == bam;
}

hFILE* StoredFile::release() {
  hFILE* const file = file_;
  file_ = nullptr;
  return file;
}

// What htslib has read comes first, and is all that it ever reads here: it then holds nothing, and
// the rest is read without it, by what a pipe has at the time.
std::string_view StoredFile::next() {
  const std::string_view block = std::exchange(startIsDue_, false) ? start() : readOn();
  bytesRead_.fetch_add(block.size(), std::memory_order_relaxed);
  if (block.empty() && fault_.empty()) fault_ = sizeFault(bytes_, bytesRead());
  return block;
}

std::string_view StoredFile::readOn() {
  if (error_ != 0) return {};
  if (block_ == nullptr) block_.reset(new char[kBlock]);
  ssize_t got = 0;
  do {
    got = read(descriptor_, block_.get(), kBlock);
  } while (got < 0 && errno == EINTR);
  if (got < 0) {
    error_ = errno;
    fault_ = std::strerror(error_);
    return {};
  }
  return {block_.get(), static_cast<std::size_t>(got)};
}

std::string sizeFault(uint64_t known, uint64_t read) {
  return known == 0 || known == read ? "" : "its size changed while it was read";
}

namespace {

struct Mark {
  Packing packing;
  std::string_view name;
  std::string_view start;
};

constexpr Mark kMarks[] = {
    {Packing::kGzip, "gzip", "\x1f\x8b"},
    {Packing::kZstd, "zstd", "\x28\xb5\x2f\xfd"},
    {Packing::kXz, "xz", std::string_view("\xfd\x37zXZ\0", 6)},
    {Packing::kBzip2, "bzip2", "BZh"},
};

// A zstd file may begin with a frame to be skipped: sixteen marks, which differ in the first byte.
bool isSkippableFrame(std::string_view start) {
  return start.size() >= 4 && (start[0] & 0xf0) == 0x50 && start.substr(1, 3) == "\x2a\x4d\x18";
}

}  // namespace

Packing packingOf(std::string_view start) {
  for (const Mark& mark : kMarks) {
    if (start.starts_with(mark.start)) return mark.packing;
  }
  return isSkippableFrame(start) ? Packing::kZstd : Packing::kNone;
}

std::string_view nameOf(Packing packing) {
  for (const Mark& mark : kMarks) {
    if (mark.packing == packing) return mark.name;
  }
  return "plain";
}

}  // namespace velk::reads
