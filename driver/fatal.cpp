#include "driver/fatal.h"

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>

namespace velk {

std::ostream& failureMessage() {
  std::cerr.clear();
  return std::cerr;
}

void fatal(ExitStatus status, std::string_view message) {
  failureMessage() << message;
  endRun(status);
}

void failReading(const std::string& file) {
  const std::string reason = std::strerror(errno);
  fatal(kUserError, "[ERROR]: can't read " + file + ": " + reason + "\n");
}

void outOfMemory(const AllocationSite& site) {
  failureMessage() << "Out of memory! Line: " << site.line << site.separator << site.function
                   << site.end;
  endRun(site.status);
}

}  // namespace velk
