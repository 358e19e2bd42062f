#include "run/commandLine.h"

#include <CLI/CLI.hpp>

#include "run/failure.h"

namespace velk::run {

void parseLine(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    throw TextWanted{app.help()};
  } catch (const CLI::CallForVersion&) {
    throw TextWanted{app.version() + "\n"};
  } catch (const CLI::Error& error) {
    throw Failure(Status::kUsage, error.what() + std::string(kMoreInHelp));
  }
}

bool asksFor(std::string_view verb, int argc, const char* const* argv) {
  return argc > 1 && argv[1] == verb;
}

}  // namespace velk::run
