#include "check/readFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

namespace velk::check {
namespace {

using namespace std::string_view_literals;

struct Magic {
  std::string_view bytes;
  const char* method;
};

constexpr std::array kMagics = {
    Magic{"BZh"sv, "bzip2"},
    Magic{"\xFD"
          "7zXZ\0"sv,
          "xz"},
    Magic{"\x28\xB5\x2F\xFD"sv, "zstd"},
    Magic{"PK\x03\x04"sv, "zip"},
    Magic{"\x04\x22\x4D\x18"sv, "lz4"},
    Magic{"7z\xBC\xAF"sv, "7z"},
    Magic{"\x1F\x9D"sv, "compress"},
};

void readMagic(int descriptor, FileFacts& facts) {
  std::array<char, 8> start{};
  const ssize_t got = read(descriptor, start.data(), start.size());
  const std::string_view seen(start.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
  if (seen.starts_with("\x1F\x8B"sv)) facts.packing = Packing::kGzip;
  for (const Magic& magic : kMagics) {
    if (!seen.starts_with(magic.bytes)) continue;
    facts.packing = Packing::kOther;
    facts.method = magic.method;
  }
}

}  // namespace

FileFacts factsOf(const std::string& file) {
  FileFacts facts;
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    facts.reason = std::strerror(errno);
    return facts;
  }
  facts.canOpen = true;
  struct stat status {};
  if (fstat(descriptor, &status) == 0) {
    facts.isRegular = S_ISREG(status.st_mode);
    facts.size = static_cast<uint64_t>(status.st_size);
    if (facts.isRegular) readMagic(descriptor, facts);
  }
  close(descriptor);
  return facts;
}

double compressedShare(const std::string& file) {
  constexpr unsigned kEnough = 4U << 20;  // inflated bytes
  std::vector<char> bytes(kEnough);
  const gzFile input = gzopen(file.c_str(), "rb");
  if (input == nullptr) return 1;
  const int got = gzread(input, bytes.data(), kEnough);
  const auto taken = static_cast<double>(gzoffset(input));
  const bool isPlain = gzdirect(input) != 0;
  gzclose(input);
  return got <= 0 || isPlain ? 1 : taken / got;
}

bool isSameFile(const std::string& one, const std::string& other) {
  struct stat oneStatus {};
  struct stat otherStatus {};
  return stat(one.c_str(), &oneStatus) == 0 && stat(other.c_str(), &otherStatus) == 0 &&
         oneStatus.st_dev == otherStatus.st_dev && oneStatus.st_ino == otherStatus.st_ino;
}

}  // namespace velk::check
