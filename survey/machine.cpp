#include "survey/machine.h"

#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <thread>
#include <vector>

namespace velk::survey {
namespace {

// The number with which a file begins, kNoLimit without one.
uint64_t numberIn(const std::string& file) {
  std::ifstream input(file);
  uint64_t number = 0;
  return (input >> number) ? number : kNoLimit;
}

// The number behind `name` in a file of names and numbers, `otherwise` without it.
uint64_t numberBehind(const std::string& name, const std::string& file, uint64_t otherwise) {
  std::ifstream input(file);
  for (std::string line; std::getline(input, line);) {
    std::istringstream words(line);
    std::string word;
    uint64_t number = 0;
    if (words >> word >> number && word == name) return number;
  }
  return otherwise;
}

// The folders of the control groups which this process is in and which `controller`
// looks after: from its own up to the root. Version 2 has one hierarchy for all controllers.
std::vector<std::string> controlGroups(const std::string& root, const std::string& controller) {
  const std::string mount = root + "sys/fs/cgroup";
  std::vector<std::string> folders = {mount};
  std::ifstream input(root + "proc/self/cgroup");
  for (std::string line; std::getline(input, line);) {  // NUMBER:CONTROLLERS:PATH
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const std::string names = "," + line.substr(first + 1, second - first - 1) + ",";
    if (names != ",," && names.find("," + controller + ",") == std::string::npos) continue;
    const std::string base = names == ",," ? mount : mount + "/" + controller;
    std::filesystem::path path = line.substr(second + 1);
    for (; path.has_relative_path(); path = path.parent_path()) {
      folders.push_back(base + path.string());
    }
    folders.push_back(base);
  }
  return folders;
}

uint64_t freeOfGroup(const std::string& folder, const char* limitName, const char* usedName,
                     const char* cacheName) {
  const uint64_t limit = numberIn(folder + limitName);
  const uint64_t used = numberIn(folder + usedName);
  if (limit == kNoLimit || used == kNoLimit) return kNoLimit;
  const uint64_t cache = numberBehind(cacheName, folder + "/memory.stat", 0);
  return limit - std::min(limit, used - std::min(used, cache));
}

// Processors for a share of time in a period of time, both as they stand in a file.
uint64_t processorsOf(uint64_t quota, uint64_t period) {
  if (quota == kNoLimit || period == kNoLimit || period == 0) return kNoLimit;
  return (quota + period - 1) / period;
}

uint64_t quotaOfGroup(const std::string& folder) {
  uint64_t quota = kNoLimit;
  uint64_t period = kNoLimit;
  std::ifstream input(folder + "/cpu.max");  // of version 2: "QUOTA PERIOD" or "max PERIOD"
  if (!(input >> quota >> period)) {
    quota = numberIn(folder + "/cpu.cfs_quota_us");  // "-1" is no number here
    period = numberIn(folder + "/cpu.cfs_period_us");
  }
  return processorsOf(quota, period);
}

uint64_t processorsOfAffinity() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (sched_getaffinity(0, sizeof set, &set) == 0) return static_cast<uint64_t>(CPU_COUNT(&set));
  return std::thread::hardware_concurrency();  // more than the set has room for
}

uint64_t processorsOfSlurm() {
  const char* const text = std::getenv("SLURM_CPUS_PER_TASK");
  if (text == nullptr) return kNoLimit;
  const std::string_view digits(text);
  uint64_t number = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number);
  return error == std::errc() && end == digits.end() && number > 0 ? number : kNoLimit;
}

}  // namespace

uint64_t freeMemory(const std::string& root) {
  constexpr uint64_t kKilobyte = 1024;
  const uint64_t available = numberBehind("MemAvailable:", root + "proc/meminfo", kNoLimit);
  uint64_t free = available == kNoLimit ? kNoLimit : available * kKilobyte;
  for (const std::string& folder : controlGroups(root, "memory")) {
    free = std::min({free, freeOfGroup(folder, "/memory.max", "/memory.current", "inactive_file"),
                     freeOfGroup(folder, "/memory.limit_in_bytes", "/memory.usage_in_bytes",
                                 "total_inactive_file")});
  }
  return free;
}

int allowedProcessors(const std::string& root) {
  constexpr uint64_t kMost = std::numeric_limits<int>::max();
  uint64_t allowed = std::min({processorsOfAffinity(), processorsOfSlurm(), kMost});
  for (const std::string& folder : controlGroups(root, "cpu")) {
    allowed = std::min(allowed, quotaOfGroup(folder));
  }
  return static_cast<int>(std::max<uint64_t>(allowed, 1));
}

uint64_t fileHandles() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kNoLimit;
  return limit.rlim_cur;
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

}  // namespace velk::survey
