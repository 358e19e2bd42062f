// What the command lines of velk-run, of each of its verbs and of velk-report have in common.
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

/// Behind messages of usage: which help tells more.
std::string moreInHelp(const CLI::App& app);

/// Parses a command line. Throws TextWanted, or Failure with Status::kUsage, which names an option
/// that is like one that is not known.
void parseLine(CLI::App& app, int argc, const char* const* argv);

/// Throws Failure where an option was given in place of a file that another option takes. Called
/// by parseLine() where that fails.
void requireValues(const CLI::App& app);

/// Throws Failure where the command line begins with a word that is like a verb, and no file has
/// that name.
void requireNoVerbLike(int argc, const char* const* argv);

/// The same of a call with a plan, beside which neither files nor options of its run are given.
void parseWithPlan(CLI::App& app, int argc, const char* const* argv);

/// Throws Failure: `given` can't be given with a plan.
[[noreturn]] void refuseWithPlan(const CLI::App& app, const std::string& given);

/// Whether the command line begins with this verb.
bool asksFor(std::string_view verb, int argc, const char* const* argv);

}  // namespace velk::run
