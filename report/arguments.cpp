#include "report/arguments.h"

#include <CLI/CLI.hpp>

#include "run/commandLine.h"
#include "run/failure.h"

namespace velk::report {
namespace {

using run::Failure;
using run::Status;

constexpr const char* kAbout =
    "Shows what a run of velk-run has found, and why gaps have few reads or none.";
constexpr const char* kExamples =
    "\nExamples:\n"
    "  velk-report found                        writes found/report.html\n"
    "  velk-report --text found                 the same in short, on the terminal\n"
    "  velk-report --gap 17 found >gap17.svg    draws a gap\n"
    "  velk-report one other -o both.html       puts two runs side by side\n";

}  // namespace

Arguments parseArguments(int argc, const char* const* argv) {
  Arguments arguments;
  CLI::App app(kAbout, "velk-report");
  app.footer(kExamples);
  app.set_version_flag("--version", "velk-report " VELK_VERSION);
  app.add_option("folder", arguments.folders, "folder of results; two to compare them")
      ->required()
      ->expected(1, 2)
      ->type_name("DIR [DIR]");
  CLI::Option* const gap =
      app.add_option("--gap", arguments.gap, "draw this gap as SVG, by its number in gaps.tsv")
          ->type_name("N");
  CLI::Option* const text =
      app.add_flag("--text", arguments.asText, "a summary as text, on standard output")
          ->excludes(gap);
  app.add_option("-o,--output", arguments.output,
                 "file for a drawing or a comparison; -: standard output")
      ->type_name("FILE")
      ->excludes(text);
  run::parseLine(app, argc, argv);
  const std::string more = run::moreInHelp(app);
  const bool areTwo = arguments.folders.size() == 2;
  if (areTwo && arguments.gap) {
    throw Failure(Status::kUsage, "--gap takes one folder" + more);
  }
  if (!areTwo && !arguments.gap && !arguments.output.empty()) {
    throw Failure(
        Status::kUsage,
        "--output takes --gap or two folders; report.html stands in the folder of the results" +
            more);
  }
  return arguments;
}

}  // namespace velk::report
