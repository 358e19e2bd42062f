#include "run/checksum.h"

#include <fcntl.h>
#include <htslib/hts.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

#include "run/diskFile.h"
#include "run/failure.h"
#include "run/terminal.h"

namespace velk::run {

Md5::Md5() : context_(hts_md5_init()) {
  if (context_ == nullptr) throw std::bad_alloc();
}

Md5::~Md5() {
  hts_md5_destroy(context_);
}

void Md5::add(std::string_view bytes) {
  hts_md5_update(context_, bytes.data(), bytes.size());
}

std::string Md5::sum() {
  std::array<unsigned char, 16> digest{};
  std::array<char, 33> hex{};
  hts_md5_final(digest.data(), context_);
  hts_md5_hex(hex.data(), digest.data());
  return hex.data();
}

std::string md5OfText(std::string_view text) {
  Md5 md5;
  md5.add(text);
  return md5.sum();
}

namespace {

constexpr uint64_t kEndBytes = uint64_t{1} << 20;

// The sum of the first and the last bytes; of a short file, of all of it.
std::string md5OfEnds(const std::string& file, uint64_t bytes) {
  const Descriptor input(file, O_RDONLY);
  Md5 md5;
  std::string part(kEndBytes, '\0');
  const auto add = [&](uint64_t from, uint64_t to) {
    while (from < to) {
      const ssize_t got =
          pread(input.get(), part.data(), std::min(kEndBytes, to - from), static_cast<off_t>(from));
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) failFile(file, "read");
      if (got == 0) return;  // shorter than it was: another sum
      md5.add({part.data(), static_cast<std::size_t>(got)});
      from += static_cast<uint64_t>(got);
    }
  };
  const uint64_t start = std::min(bytes, kEndBytes);
  add(0, start);
  add(std::max(start, bytes - std::min(bytes, kEndBytes)), bytes);
  return md5.sum();
}

}  // namespace

FileIdentity identityOf(const std::string& file, Summed summed) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) failFile(file, "read");
  if (!S_ISREG(status.st_mode)) {
    throw Failure(Status::kFailed,
                  file + " is no regular file; the files of a plan are read more than once");
  }
  FileIdentity identity{static_cast<uint64_t>(status.st_size), ""};
  identity.md5 =
      summed == Summed::kAll ? md5OfFile(file, identity.bytes) : md5OfEnds(file, identity.bytes);
  return identity;
}

void requireIdentity(const std::string& file, Summed summed, const FileIdentity& planned) {
  const FileIdentity now = identityOf(file, summed);
  if (now == planned) return;
  std::string what = summed == Summed::kAll ? "its checksum differs"
                                            : "the checksum of its first and last bytes differs";
  if (now.bytes != planned.bytes) {
    what =
        "it has " + countText(now.bytes) + " bytes, and the plan says " + countText(planned.bytes);
  }
  throw Failure(Status::kFailed, file + " is not the file that the plan was made with: " + what);
}

}  // namespace velk::run
