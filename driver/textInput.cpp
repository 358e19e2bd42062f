#include "driver/textInput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "driver/fatal.h"

namespace velk {
namespace {

constexpr std::size_t kBlock = 1 << 16;  // bytes read at once

}  // namespace

// Not by a stream: that of clang's library takes a read that fails for the end of the file.
TextInput::TextInput(const std::string& file)
    : file_(file),
      block_(new char[kBlock]),
      descriptor_(open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}

TextInput::TextInput(TextInput&& other) noexcept
    : file_(std::move(other.file_)),
      block_(std::move(other.block_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      unread_(other.unread_),
      lineNumber_(other.lineNumber_) {}

TextInput::~TextInput() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool TextInput::readLine(std::string& line) {
  line.clear();
  bool isLine = false;
  for (bool isEnded = false; !isEnded && (!unread_.empty() || readBlock());) {
    const std::size_t newline = unread_.find('\n');
    line += unread_.substr(0, newline);
    isLine = true;
    isEnded = newline != std::string_view::npos;
    unread_.remove_prefix(isEnded ? newline + 1 : unread_.size());
  }
  if (isLine) ++lineNumber_;
  return isLine;
}

bool TextInput::readBlock() {
  ssize_t got = 0;
  do {
    got = read(descriptor_, block_.get(), kBlock);
  } while (got < 0 && errno == EINTR);
  if (got < 0) failReading(file_);
  unread_ = {block_.get(), static_cast<std::size_t>(got)};
  return got > 0;
}

std::string TextInput::place() const {
  return file_ + ", line " + std::to_string(lineNumber_);
}

void refusePipe(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode)) return;
  errno = ESPIPE;
  failReading(file);
}

}  // namespace velk
