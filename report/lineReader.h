// Text files of any size, read line by line.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

#include "run/diskFile.h"

namespace velk::report {

class LineReader {
 public:
  /// Throws Failure.
  explicit LineReader(const std::string& file);

  /// The next line, without its end; false behind the last one. It stays valid until the next call.
  /// Throws Failure.
  bool next(std::string_view& line);

  /// Part of the line as a number. Throws Failure where it is none.
  template <class Number>
  Number number(std::string_view text) const {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) fail();
    return value;
  }

  /// Throws Failure: the line is none that velk writes.
  [[noreturn]] void fail() const;

 private:
  bool refill();

  std::string file_;
  run::Descriptor input_;
  std::string buffer_;
  std::size_t at_ = 0;  // of the next line, in the buffer
  bool isAtEnd_ = false;
  uint64_t line_ = 0;
};

}  // namespace velk::report
