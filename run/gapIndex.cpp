#include "run/gapIndex.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstring>

#include "run/failure.h"

namespace velk::run {
namespace {

static_assert(std::endian::native == std::endian::little, "gaps.idx has its numbers so");

constexpr std::string_view kMark = "VELKGAP\x01";  // with the version

// Behind the mark.
struct Head {
  uint64_t gaps;
  uint64_t reach;
};
constexpr std::size_t kEntries = kMark.size() + sizeof(Head);  // where they begin

}  // namespace

std::string gapIndexText(const std::vector<GapEntry>& entries, uint64_t reach) {
  std::string text(kMark);
  const Head head{entries.size() - 1, reach};
  text.append(reinterpret_cast<const char*>(&head), sizeof head);
  text.append(reinterpret_cast<const char*>(entries.data()), entries.size() * sizeof(GapEntry));
  return text;
}

GapIndex::GapIndex(const std::string& file) : file_(file), descriptor_(file, O_RDONLY) {
  std::array<char, kMark.size()> mark{};
  Head head{};
  struct stat status {};
  const auto size =
      fstat(descriptor_.get(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
  if (size >= kEntries) {
    read(mark.data(), mark.size(), 0);
    read(&head, sizeof head, mark.size());
  }
  if (std::string_view(mark.data(), mark.size()) != kMark ||
      (size - kEntries) / sizeof(GapEntry) != head.gaps + 1) {
    throw Failure(Status::kFailed, file_ + " is no index of gaps, or is damaged");
  }
  gaps_ = head.gaps;
  reach_ = head.reach;
}

void GapIndex::read(void* bytes, std::size_t count, uint64_t from) const {
  const ssize_t got = pread(descriptor_.get(), bytes, count, static_cast<off_t>(from));
  if (got == static_cast<ssize_t>(count)) return;
  if (got >= 0) errno = EIO;
  failFile(file_, "read");
}

std::array<GapEntry, 2> GapIndex::entriesOf(uint64_t gap) const {
  std::array<GapEntry, 2> entries{};
  read(entries.data(), sizeof entries, kEntries + gap * sizeof(GapEntry));
  return entries;
}

}  // namespace velk::run
