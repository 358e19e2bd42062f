// What the machine gives to this process: memory, processors, space on disks, file handles.
//
// `root` is the folder whose proc/ and sys/ describe the system; tests give another.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace velk::survey {

/// Stands for a limit that there is not, or that is not known.
inline constexpr uint64_t kNoLimit = std::numeric_limits<uint64_t>::max();

/// Bytes of memory that a program may take now, within the limits of its control groups. What these
/// keep of files and can drop counts as free.
uint64_t freeMemory(const std::string& root = "/");

/// The processors that this process may use, at least 1: those of its affinity, no more than its
/// control groups' quotas come to, rounded up, nor than the variable SLURM_CPUS_PER_TASK says.
int allowedProcessors(const std::string& root = "/");

/// The files that this process may have open at a time.
uint64_t fileHandles();

struct Disk {
  uint64_t device;  // a different number for each file system
  uint64_t free;    // bytes
};

/// The file system on which `file` lies, or would lie.
Disk diskOf(const std::string& file);

}  // namespace velk::survey
