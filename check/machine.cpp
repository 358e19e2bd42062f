#include "check/machine.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>

namespace velk::check {
namespace {

constexpr uint64_t kNoLimit = std::numeric_limits<uint64_t>::max();

// The number that stands alone in a file, kNoLimit without one.
uint64_t numberIn(const char* file) {
  std::ifstream input(file);
  uint64_t number = 0;
  return (input >> number) ? number : kNoLimit;
}

uint64_t availableMemory() {
  std::ifstream input("/proc/meminfo");
  std::string name;
  uint64_t kilobytes = 0;
  std::string unit;
  while (input >> name >> kilobytes) {
    if (name == "MemAvailable:") return kilobytes * 1024;
    std::getline(input, unit);
  }
  return kNoLimit;
}

}  // namespace

uint64_t freeMemory() {
  const uint64_t limit = numberIn("/sys/fs/cgroup/memory.max");
  const uint64_t used = numberIn("/sys/fs/cgroup/memory.current");
  const uint64_t ofGroup =
      limit == kNoLimit || used == kNoLimit ? kNoLimit : limit - std::min(limit, used);
  return std::min(availableMemory(), ofGroup);
}

Disk diskOf(const std::string& file) {
  const std::filesystem::path parent = std::filesystem::path(file).parent_path();
  const std::string folder = parent.empty() ? "." : parent.string();
  struct stat status {};
  struct statvfs system {};
  if (stat(folder.c_str(), &status) != 0 || statvfs(folder.c_str(), &system) != 0) {
    return {0, kNoLimit};
  }
  return {status.st_dev, uint64_t{system.f_bavail} * system.f_frsize};
}

}  // namespace velk::check
