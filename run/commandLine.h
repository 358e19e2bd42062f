// What the command lines of all verbs of velk-run have in common.
#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace velk::run {

/// A text to print on standard output before a successful end: help, version.
struct TextWanted {
  std::string text;
};

/// Behind messages of usage.
inline constexpr const char* kMoreInHelp = " (velk-run --help tells more)";

/// Parses a command line. Throws TextWanted, or Failure with Status::kUsage.
void parseLine(CLI::App& app, int argc, const char* const* argv);

/// Whether the command line begins with this verb.
bool asksFor(std::string_view verb, int argc, const char* const* argv);

}  // namespace velk::run
