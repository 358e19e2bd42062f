#include "report/lineReader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "run/failure.h"

namespace velk::report {

LineReader::LineReader(const std::string& file) : file_(file), input_(file, O_RDONLY) {}

bool LineReader::next(std::string_view& line) {
  std::size_t end = buffer_.find('\n', at_);
  while (end == std::string::npos && refill()) end = buffer_.find('\n', at_);
  if (at_ == buffer_.size()) return false;
  ++line_;
  // A last line without its end is one that was cut short.
  if (end == std::string::npos) fail();
  line = std::string_view(buffer_).substr(at_, end - at_);
  at_ = end + 1;
  return true;
}

// Adds to what is left of the buffer.
bool LineReader::refill() {
  constexpr std::size_t kBytes = std::size_t{1} << 18;
  if (isAtEnd_) return false;
  buffer_.erase(0, at_);
  at_ = 0;
  const std::size_t kept = buffer_.size();
  buffer_.resize(kept + std::max(kBytes, kept));
  ssize_t got = 0;
  do {
    got = read(input_.get(), buffer_.data() + kept, buffer_.size() - kept);
  } while (got < 0 && errno == EINTR);
  if (got < 0) run::failFile(file_, "read");
  buffer_.resize(kept + static_cast<std::size_t>(got));
  isAtEnd_ = got == 0;
  return !isAtEnd_;
}

void LineReader::fail() const {
  throw run::Failure(run::Status::kFailed,
                     file_ + ", line " + std::to_string(line_) + ": not a line that velk writes");
}

}  // namespace velk::report
