#include "driver/fatal.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "driver/listener.h"

namespace velk {

void fatal(ExitStatus status, std::string_view message) {
  listener->end(status, message);
  std::abort();  // the listener has broken its contract
}

void endOnOutput(ExitStatus status, std::string_view text) {
  listener->endOnOutput(status, text);
  std::abort();  // as above
}

void failReading(const std::string& file) {
  const std::string reason = std::strerror(errno);
  fatal(kUserError, "[ERROR]: can't read " + file + ": " + reason + "\n");
}

void outOfMemory(const AllocationSite& site) {
  // On the stack, as there may be no memory for a string.
  std::array<char, 256> text{};
  const auto size = [](std::string_view part) { return static_cast<int>(part.size()); };
  std::snprintf(text.data(), text.size(), "Out of memory! Line: %d%.*s%.*s%.*s", site.line,
                size(site.separator), site.separator.data(), size(site.function),
                site.function.data(), size(site.end), site.end.data());
  fatal(site.status, text.data());
}

}  // namespace velk
