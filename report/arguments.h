// The command line of velk-report.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velk::report {

struct Arguments {
  std::vector<std::string> folders;  // one, or two to compare; with --found the scaffold file
  std::string found;                 // --found: velk's own reads found
  std::optional<uint64_t> gap;       // --gap: to draw
  bool asText = false;               // --text
  std::string output;                // -o: empty: as the task has it
};

/// Parses the command line. Throws run::TextWanted for --help and --version; run::Failure with
/// Status::kUsage on what cannot be used.
Arguments parseArguments(int argc, const char* const* argv);

}  // namespace velk::report
