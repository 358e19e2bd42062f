// The command line of velk-check: velk's own arguments, and a few long options of its own.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace velk::check {

struct Arguments {
  bool deep = false;              // --deep: all of every read file
  bool json = false;              // --json: the report as one JSON document
  bool listFindings = false;      // --list-findings
  uint64_t sample = 10000;        // --sample N: records looked at from the start of a read file
  std::vector<std::string> velk;  // velk's own arguments, as they stand
};

/// A command line that cannot be used; what() says why.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A text to print on standard output before a successful end: help, version.
struct TextWanted {
  std::string text;
};

/// Parses the command line. Where velk expects an option, one that begins with two dashes is
/// velk-check's own: velk itself has none. Throws UsageError, or TextWanted for --help and
/// --version.
Arguments parseArguments(int argc, char** argv);

}  // namespace velk::check
