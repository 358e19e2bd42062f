#include "contig/header.h"

#include <limits>

namespace velk {

std::string idAfter(const std::string& header, std::size_t dropped, const LineOfFile& where,
                    ExitStatus status) {
  if (header.size() < dropped) {
    fatal(status, "[ERROR]: " + where.file + ", line " + std::to_string(where.number) +
                      ": header too short to hold an id\n");
  }
  return header.substr(dropped);
}

void requireContigLength(std::size_t length, const std::string& file, const std::string& id,
                         ExitStatus status) {
  constexpr auto kLongest = static_cast<std::size_t>(std::numeric_limits<int32_t>::max());
  if (length <= kLongest) return;
  fatal(status, "[ERROR]: " + file + ": a contig of scaffold " + id + " is longer than " +
                    std::to_string(kLongest) + " bases\n");
}

}  // namespace velk
