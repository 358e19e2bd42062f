#include "contig/otherKind.h"

#include <string_view>

#include "driver/listener.h"

namespace velk {
namespace {

struct Compression {
  std::string_view start;
  std::string_view name;
};

constexpr Compression kCompressions[] = {
    {"\x1F\x8B", "gzip"},
    {"BZh", "bzip2"},
    {"\xFD\x37zXZ", "xz"},
    {"\x28\xB5\x2F\xFD", "zstd"},
};

}  // namespace

bool warnOfOtherKind(const std::string& file, const std::string& line, bool isFirstLine) {
  for (const Compression& compression : kCompressions) {
    if (!isFirstLine || !line.starts_with(compression.start)) continue;
    say("[WARNING]: " + file + " is compressed (" + std::string(compression.name) +
        "), but scaffolds are read as plain text\n");
    return true;
  }
  if (line.find("[LIB]") == std::string::npos) return false;
  say("[WARNING]: " + file +
      " is a library file in the place of the scaffolds, -l and -s may be swapped\n");
  return true;
}

}  // namespace velk
