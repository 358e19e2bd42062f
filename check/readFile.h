// What can be said of a file from outside: whether it is there, what kind it is, how it is packed.
#pragma once

#include <cstdint>
#include <string>

namespace velk::check {

enum class Packing { kPlain, kGzip, kOther };

struct FileFacts {
  bool canOpen = false;
  std::string reason;  // why not
  bool isRegular = false;
  uint64_t size = 0;  // bytes
  Packing packing = Packing::kPlain;
  std::string method;  // of kOther
};

/// Looks at `file`, without blocking on pipes.
FileFacts factsOf(const std::string& file);

/// How many compressed bytes stand for one inflated byte at the start of a gzip file; 1 of others.
double compressedShare(const std::string& file);

/// Whether both names lead to one file that exists.
bool isSameFile(const std::string& one, const std::string& other);

}  // namespace velk::check
