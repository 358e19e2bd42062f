// velk's own code at work inside velk-check: its messages are kept, its early ends become
// exceptions.
//
// The linker puts a function of refusal.cpp in the place of velk's endRun() (check/CMakeLists.txt).
#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace velk::check {

/// velk's code would have ended the run with this message (without its last newline).
struct Refusal {
  int status;
  std::string message;
};

/// Keeps standard error quiet, and its text for refusals, as long as it lives. One at a time.
class Quiet {
 public:
  Quiet();
  ~Quiet();
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

  /// The last line that was written.
  std::string lastLine() const;

 private:
  std::ostringstream text_;
  std::streambuf* before_;
};

}  // namespace velk::check
