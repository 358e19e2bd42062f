// Text files of any size, read line by line, and tables with tabs between their columns.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "run/diskFile.h"
#include "run/failure.h"

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

/// Reads a table line by line, and fails in the name of its file.
class TsvReader {
 public:
  TsvReader(std::string file, std::string_view text) : file_(std::move(file)), rest_(text) {}

  /// The next line's fields; false at the end. They stay valid as long as the text.
  bool next(std::vector<std::string_view>& fields) {
    if (rest_.empty()) return false;
    ++line_;
    std::string_view line = rest_.substr(0, rest_.find('\n'));
    rest_.remove_prefix(std::min(rest_.size(), line.size() + 1));
    fields.clear();
    for (;;) {
      const std::size_t tab = line.find('\t');
      fields.push_back(line.substr(0, tab));
      if (tab == std::string_view::npos) return true;
      line.remove_prefix(tab + 1);
    }
  }

  template <class Number>
  Number number(std::string_view field) const {
    Number value{};
    const char* const end = field.data() + field.size();
    const auto result = std::from_chars(field.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) fail();
    return value;
  }

  [[noreturn]] void fail() const {
    throw run::Failure(run::Status::kFailed, file_ + ", line " + std::to_string(line_) +
                                                 ": not a line that velk-run has written");
  }

 private:
  std::string file_;
  std::string_view rest_;
  uint64_t line_ = 0;
};

}  // namespace velk::report
