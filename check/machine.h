// What the machine has free.
#pragma once

#include <cstdint>
#include <string>

namespace velk::check {

/// Bytes of memory that a program may take now, within the limit of its control group.
uint64_t freeMemory();

struct Disk {
  uint64_t device;  // tells file systems apart
  uint64_t free;    // bytes
};

/// The file system on which `file` lies, or would lie.
Disk diskOf(const std::string& file);

}  // namespace velk::check
