#include "run/verbs.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <string_view>

#include "run/commandLine.h"
#include "run/failure.h"
#include "run/flanks.h"

namespace velk::run {
namespace {

// What all verbs of a plan take.
void addCommon(CLI::App& app, PlannedRequest& request, const char* output) {
  app.add_option("-o,--output", request.output, output)->required()->type_name("DIR");
  app.add_option("--inputs-root", request.root, "folder that the names of the plan count from")
      ->type_name("DIR")
      ->capture_default_str();
  app.add_option("--index", request.index, "saved index, in place of the assembly")
      ->type_name("FILE");
  app.add_option("-t,--threads", request.threads, "worker threads; 0: all allowed processors")
      ->check(CLI::Range(0, 4096))
      ->capture_default_str();
  app.add_flag("--quiet", request.isQuiet, "say nothing but warnings and errors");
}

void addPlan(CLI::App& app, PlannedRequest& request) {
  app.add_option("plan", request.plan, "file of velk-run plan")->required()->type_name("PLAN");
}

void addForce(CLI::App& app, PlannedRequest& request) {
  app.add_flag("--force", request.isForced, "go on where there seems to be too little memory");
}

// A gap, "17", or a range of gaps, "3-7".
GapRange rangeOf(const std::string& text, const std::string& more) {
  GapRange range(0);
  const char* const end = text.data() + text.size();
  std::from_chars_result read = std::from_chars(text.data(), end, range.first);
  range.last = range.first;
  if (read.ec == std::errc() && read.ptr != end && *read.ptr == '-') {
    read = std::from_chars(read.ptr + 1, end, range.last);
  }
  if (read.ec == std::errc() && read.ptr == end && range.first <= range.last) return range;
  throw Failure(Status::kUsage,
                "\"" + text + "\" is neither the number of a gap nor a range, as 3-7" + more);
}

}  // namespace

bool hasPlan(int argc, const char* const* argv) {
  return std::any_of(argv + std::min(argc, 1), argv + argc, [](std::string_view argument) {
    return argument == "--plan" || argument.starts_with("--plan=");
  });
}

ExtractArguments parseExtract(int argc, const char* const* argv) {
  ExtractArguments arguments;
  std::vector<std::string> gaps;
  bool asFasta = false;
  bool asBam = false;
  bool onlyPairs = false;
  bool onlySingles = false;
  CLI::App app("Writes the reads of some gaps from the results of a run.", "velk-run extract");
  app.add_option("folder", arguments.request.folder, "folder of results")
      ->required()
      ->type_name("DIR");
  app.add_option("gaps", gaps, "numbers of gaps, as in gaps.tsv; ranges, as 3-7")
      ->required()
      ->type_name("GAP...");
  CLI::Option* const fasta = app.add_flag("--fasta", asFasta, "FASTA instead of FASTQ");
  CLI::Option* const bam = app.add_flag("--bam", asBam, "BAM instead of FASTQ")->excludes(fasta);
  app.add_option("--flanks", arguments.request.flankBases,
                 "also so many bases of both flanks of each gap, 500 at most")
      ->type_name("N")
      ->excludes(bam);
  CLI::Option* const pairs =
      app.add_flag("--pairs-only", onlyPairs, "no single reads")->excludes(bam);
  app.add_flag("--singles-only", onlySingles, "no pairs")->excludes(bam)->excludes(pairs);
  app.add_option("-o,--output", arguments.output, "file to write; -: standard output")
      ->type_name("FILE")
      ->capture_default_str();
  parseLine(app, argc - 1, argv + 1);
  for (const std::string& text : gaps) {
    arguments.request.gaps.push_back(rangeOf(text, moreInHelp(app)));
  }
  if (arguments.request.flankBases > kLongestFlank) {
    throw Failure(Status::kUsage, "--flanks: of each flank " + std::to_string(kLongestFlank) +
                                      " bases are kept, not " +
                                      std::to_string(arguments.request.flankBases) +
                                      moreInHelp(app));
  }
  if (onlyPairs) arguments.request.part = ExtractPart::kPairs;
  if (onlySingles) arguments.request.part = ExtractPart::kSingles;
  if (asFasta) arguments.request.form = ExtractForm::kFasta;
  if (asBam) arguments.request.form = ExtractForm::kBam;
  return arguments;
}

PlannedArguments parseRunPlan(int argc, const char* const* argv) {
  PlannedArguments arguments;
  CLI::App app("Runs a plan in one go.", "velk-run");
  app.add_option("--plan", arguments.request.plan, "file of velk-run plan")
      ->required()
      ->type_name("FILE");
  addCommon(app, arguments.request, "folder of the results");
  addForce(app, arguments.request);
  parseWithPlan(app, argc, argv);
  return arguments;
}

PlannedArguments parseTask(int argc, const char* const* argv) {
  PlannedArguments arguments;
  CLI::App app("Runs one task of a plan, and writes what it finds to a folder of its own.",
               "velk-run task");
  addPlan(app, arguments.request);
  app.add_option("task", arguments.task, "number of the task, from 0")
      ->required()
      ->type_name("TASK");
  addCommon(app, arguments.request, "folder of the share");
  addForce(app, arguments.request);
  parseWithPlan(app, argc - 1, argv + 1);
  return arguments;
}

PlannedArguments parseGather(int argc, const char* const* argv) {
  PlannedArguments arguments;
  CLI::App app("Makes the results of a plan from the shares of all its tasks.", "velk-run gather");
  addPlan(app, arguments.request);
  app.add_option("shares", arguments.shares, "folders of velk-run task, in any order")
      ->required()
      ->type_name("SHARE...");
  addCommon(app, arguments.request, "folder of the results");
  parseWithPlan(app, argc - 1, argv + 1);
  return arguments;
}

}  // namespace velk::run
