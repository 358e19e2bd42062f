#include "streaming/blockReader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace velk {

BlockReader::~BlockReader() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool BlockReader::open(const std::string& file) {
  do {
    descriptor_ = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  } while (descriptor_ < 0 && errno == EINTR);
  return descriptor_ >= 0;
}

std::string_view BlockReader::next() {
  if (descriptor_ < 0 || error_ != 0) return {};
  ssize_t got = 0;
  do {
    got = read(descriptor_, block_.get(), blockSize_);
  } while (got < 0 && errno == EINTR);
  if (got < 0) {
    error_ = errno;
    return {};
  }
  return {block_.get(), static_cast<std::size_t>(got)};
}

}  // namespace velk
