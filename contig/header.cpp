#include "contig/header.h"

#include <cstdint>
#include <limits>

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

}  // namespace velk
