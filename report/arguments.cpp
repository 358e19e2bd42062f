#include "report/arguments.h"

#include <unistd.h>

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
    "  velk-report one other -o both.html       puts two runs side by side\n"
    "  velk-report --found found.fa scaffolds.fa -o found.html\n"
    "                                           what velk itself has found\n";

}  // namespace

Arguments parseArguments(int argc, const char* const* argv) {
  Arguments arguments;
  CLI::App app(kAbout, "velk-report");
  app.footer(kExamples);
  app.set_version_flag("--version", "velk-report " VELK_VERSION);
  app.add_option("folder", arguments.folders,
                 "folder of results; two to compare them; with --found velk's scaffold file")
      ->required()
      ->expected(1, 2)
      ->type_name("DIR [DIR]");
  app.add_option("--found", arguments.found,
                 "of velk itself: the reads found; .gapsinfo, .contigPos and .contig are taken "
                 "from beside the scaffold file")
      ->type_name("FILE");
  CLI::Option* const gap =
      app.add_option("--gap", arguments.gap, "draw this gap as SVG, by its number in gaps.tsv")
          ->type_name("N");
  CLI::Option* const text =
      app.add_flag("--text", arguments.asText, "a summary as text, on standard output")
          ->excludes(gap);
  app.add_option("-o,--output", arguments.output,
                 "file for a drawing, a comparison or velk's page; -: standard output")
      ->type_name("FILE")
      ->excludes(text);
  run::parseLine(app, argc, argv);
  const std::string more = run::moreInHelp(app);
  const bool areTwo = arguments.folders.size() == 2;
  const auto refuse = [&](const char* what) { throw Failure(Status::kUsage, what + more); };
  if (areTwo && arguments.gap) refuse("--gap takes one folder");
  if (areTwo && !arguments.found.empty()) refuse("--found takes one scaffold file");
  const bool isInFolder = !areTwo && !arguments.gap && arguments.found.empty();
  if (isInFolder && !arguments.output.empty()) {
    refuse(
        "--output takes --gap, --found or two folders; report.html stands in the folder of the "
        "results");
  }
  const bool isPage = !arguments.asText && !arguments.gap && !isInFolder;
  if (isPage && arguments.output.empty() && isatty(STDOUT_FILENO) != 0) {
    refuse("a page is no text for the terminal: give --output FILE, or --text");
  }
  return arguments;
}

}  // namespace velk::report
