#include "run/arguments.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdlib>

#include "run/commandLine.h"
#include "run/failure.h"
#include "run/givenLibraries.h"

namespace velk::run {
namespace {

constexpr const char* kAbout =
    "Finds the reads that belong in the gaps of an assembly, and says where each lies.";
constexpr const char* kAboutPlan =
    "Measures the libraries, fixes all values of a run, and writes them with a task for each "
    "input.";
constexpr const char* kAboutIndex =
    "Saves the index of an assembly, for runs and tasks with --index.";
constexpr const char* kExamples =
    "\nExamples:\n"
    "  velk-run assembly.fa reads_1.fq.gz reads_2.fq.gz -o found\n"
    "  velk-run assembly.fa --pairs a_1.fq.gz a_2.fq.gz --mate-pairs b_1.fq.gz b_2.fq.gz -o found\n"
    "  velk-run assembly.fa --samplesheet libraries.tsv --sample Ecoli -t 8 -o found\n"
    "  velk-run extract found 17 20-24 --flanks 500   the reads of gaps; extract --help\n"
    "  velk-run index assembly.fa -o assembly.vix     an index for many runs; index --help\n"
    "On several machines, each with a --help of its own:\n"
    "  velk-run plan ASSEMBLY ... -o plan.json        a plan, with a task for each input\n"
    "  velk-run task plan.json 0 -o share.0           what one task finds\n"
    "  velk-run gather plan.json share.* -o found     the results of all tasks\n"
    "  velk-run --plan plan.json -o found             the same in one go\n";

constexpr int kLongestRead = 1000000000;  // bases; leaves room for an insert size in the sum

// What CLI::Range lets pass.
std::string refuseNan(const std::string& text) {
  return std::isnan(std::strtod(text.c_str(), nullptr)) ? "Value " + text + " not in range" : "";
}

CLI::Option* addAssembly(CLI::App& app, Arguments& arguments) {
  return app
      .add_option("assembly", arguments.assembly, "FASTA file of scaffolds; may be compressed")
      ->type_name("ASSEMBLY");
}

void addInputs(CLI::App& app, Arguments& arguments, GivenReads& files) {
  addAssembly(app, arguments)->required();
  app.add_option("reads", files.bare, "two files of mates, as with --pairs")->type_name("[R1 R2]");
  app.add_option("--pairs", files.pairs, "pairs of short fragments: first and second mates")
      ->type_name("R1 R2");
  app.add_option("--mate-pairs", files.matePairs, "pairs of long fragments")->type_name("R1 R2");
  app.add_option("--interleaved", files.interleaved, "pairs, both mates in one file")
      ->type_name("FILE")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_option("--single", files.single, "single reads")->type_name("FILE...");
  app.add_option("--samplesheet", files.sheet,
                 "table of libraries: library, R1, R2, kind, insert, orientation")
      ->type_name("FILE");
  app.add_option("--library", files.library, "library file of velk")->type_name("FILE");
  app.add_option("--index", arguments.index, "saved index of the assembly (velk-run index)")
      ->type_name("FILE");
}

void addPlaceholders(CLI::App& app, Arguments& arguments) {
  app.add_option("--placeholder", arguments.placeholders,
                 "gaps of exactly so many N have an unknown length")
      ->type_name("N[,N...]")
      ->delimiter(',')
      ->allow_extra_args(false);
  app.add_option("--agp", arguments.agp, "AGP file; its gaps of type U have an unknown length")
      ->type_name("FILE");
}

// What -o names, for the help.
struct OutputKind {
  const char* about;
  const char* type;
};

void addOutputs(CLI::App& app, Arguments& arguments, const OutputKind& output) {
  app.add_option("-o,--output", arguments.folder, output.about)->required()->type_name(output.type);
  app.add_option("--sample", arguments.sample, "name of the sample")->capture_default_str();
  app.add_flag("--no-anchors", arguments.noAnchors, "leave anchors out of the FASTQ files");
  app.add_flag("--no-report", arguments.noReport, "make no report.html");
  app.add_flag("--native", arguments.native, "write velk's own files, too, to DIR/native");
}

void addManner(CLI::App& app, Arguments& arguments) {
  app.add_flag("--force", arguments.force, "go on where a look at the inputs says not to");
  app.add_flag("--quiet", arguments.quiet, "say nothing but warnings and errors");
}

// What an index depends on, and how fast it is made.
void addIndexing(CLI::App& app, Arguments& arguments) {
  const auto isCount = CLI::Range(0, 0x7FFFFFFF);
  app.add_option("-t,--threads", arguments.threads, "worker threads; 0: all allowed processors")
      ->check(CLI::Range(0, 4096))
      ->capture_default_str();
  app.add_option("-k,--kmer", arguments.kmer, "bases in a k-mer")
      ->check(CLI::Range(1, 0x7FFFFFFF))
      ->capture_default_str();
  app.add_option("-L,--min-contig", arguments.shortestContig, "shortest contig, bases")
      ->check(isCount)
      ->capture_default_str();
  app.add_option("-C,--cut", arguments.cut, "bases cut from both ends of a contig")
      ->check(isCount)
      ->capture_default_str();
}

void addPlacement(CLI::App& app, Arguments& arguments) {
  app.add_option("-M,--min-identity", arguments.mapCut, "least share of equal bases in an overlap")
      ->check(CLI::Range(0.0, 1.0))
      ->check(refuseNan)
      ->capture_default_str();
  app.add_option("-O,--min-overlap", arguments.overRatio,
                 "least share of a read that overlaps a contig")
      ->check(CLI::Range(0.0, 1.0))
      ->check(refuseNan)
      ->capture_default_str();
  app.add_option("-r,--read-length", arguments.readLength,
                 "longest paired read, bases; 0: as the reads' first records have it")
      ->check(CLI::Range(0, kLongestRead))
      ->capture_default_str();
}

// Adds what a run and a plan have in common, and parses the command line.
void parseRun(CLI::App& app, Arguments& arguments, const OutputKind& output, int argc,
              const char* const* argv) {
  GivenReads files;
  addInputs(app, arguments, files);
  addPlaceholders(app, arguments);
  addOutputs(app, arguments, output);
  addManner(app, arguments);
  addIndexing(app, arguments);
  addPlacement(app, arguments);
  parseLine(app, argc, argv);
  requireValues(app);
  arguments.libraries = librariesOf(files, moreInHelp(app));
  for (const std::string& list : {files.sheet, files.library}) {
    if (!list.empty()) arguments.lists.push_back(list);
  }
  requireWord("the name of the sample (--sample)", arguments.sample);
}

}  // namespace

Arguments parseArguments(int argc, const char* const* argv) {
  Arguments arguments;
  CLI::App app(kAbout, "velk-run");
  app.footer(kExamples);
  app.set_version_flag("--version", "velk-run " VELK_VERSION);
  std::string plan;  // for the help: such a command line is parsed by parseRunPlan()
  app.add_option("--plan", plan, "run this plan, which has all inputs; velk-run --plan FILE --help")
      ->type_name("FILE");
  parseRun(app, arguments, {"folder of the results", "DIR"}, argc, argv);
  return arguments;
}

IndexArguments parseIndex(int argc, const char* const* argv) {
  IndexArguments index;
  Arguments& arguments = index.arguments;
  CLI::App app(kAboutIndex, "velk-run index");
  addAssembly(app, arguments);
  app.add_option("-o,--output", arguments.folder, "file of the index")->type_name("FILE");
  app.add_option("--plan", index.plan, "take assembly and options of this plan")->type_name("FILE");
  app.add_option("--inputs-root", index.root, "folder that the names of the plan count from")
      ->type_name("DIR")
      ->capture_default_str();
  app.add_option("--check", index.toCheck, "make none; check all of this one")->type_name("FILE");
  addPlaceholders(app, arguments);
  addManner(app, arguments);
  addIndexing(app, arguments);
  app.add_option("-r,--read-length", arguments.readLength,
                 "with -C: longest paired read of the runs, bases")
      ->check(CLI::Range(0, kLongestRead));
  parseLine(app, argc - 1, argv + 1);
  if (!index.toCheck.empty()) return index;
  if (arguments.assembly.empty() == index.plan.empty() || arguments.folder.empty()) {
    throw Failure(Status::kUsage,
                  "an assembly or a plan (--plan), and the file of the index (-o), must be given" +
                      moreInHelp(app));
  }
  for (const char* option : {"-k", "-L", "-C", "-r", "--placeholder", "--agp"}) {
    if (!index.plan.empty() && app.count(option) > 0) refuseWithPlan(app, option);
  }
  if (arguments.cut != 0 && arguments.readLength == 0) {
    throw Failure(Status::kUsage,
                  "with -C the read length of the runs (-r) must be given: contigs "
                  "are cut by it");
  }
  return index;
}

PlanArguments parsePlan(int argc, const char* const* argv) {
  PlanArguments plan;
  CLI::App app(kAboutPlan, "velk-run plan");
  app.add_option("--inputs-root", plan.root, "folder that the names of the files count from")
      ->type_name("DIR")
      ->capture_default_str();
  parseRun(app, plan.arguments, {"file of the plan", "FILE"}, argc - 1, argv + 1);
  return plan;
}

}  // namespace velk::run
