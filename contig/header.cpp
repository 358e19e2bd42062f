#include "contig/header.h"

#include <cstdint>
#include <limits>
#include <string_view>

#include "driver/listener.h"

namespace velk {

std::string idAfter(const std::string& header, std::size_t dropped, const TextInput& input,
                    ExitStatus status) {
  if (header.size() < dropped) {
    fatal(status, "[ERROR]: " + input.place() + ": header too short to hold an id\n");
  }
  return header.substr(dropped);
}

std::string scaffoldPart(const std::string& contigId) {
  return contigId.substr(0, contigId.find('_'));
}

void requireContigLength(std::size_t length, const std::string& file, const std::string& id,
                         ExitStatus status) {
  constexpr auto kLongest = static_cast<std::size_t>(std::numeric_limits<int32_t>::max());
  if (length <= kLongest) return;
  fatal(status, "[ERROR]: " + file + ": a contig of scaffold " + id + " is longer than " +
                    std::to_string(kLongest) + " bases\n");
}

void failChanged(const std::string& file, ExitStatus status) {
  fatal(status, "[ERROR]: " + file + " changed while it was read\n");
}

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
