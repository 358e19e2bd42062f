#include "run/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "run/commandLine.h"
#include "run/failure.h"
#include "run/samplesheet.h"

namespace velk::run {
namespace {

constexpr const char* kAbout =
    "Finds the reads that belong in the gaps of an assembly, and says where each lies.";
constexpr const char* kAboutPlan =
    "Measures the libraries, fixes all values of a run, and writes them with a task for each "
    "input.";
constexpr const char* kExamples =
    "\nExamples:\n"
    "  velk-run assembly.fa reads_1.fq.gz reads_2.fq.gz -o found\n"
    "  velk-run assembly.fa --pairs a_1.fq.gz a_2.fq.gz --mate-pairs b_1.fq.gz b_2.fq.gz -o found\n"
    "  velk-run assembly.fa --samplesheet libraries.tsv --sample Ecoli -t 8 -o found\n"
    "  velk-run extract found 17 20-24 --flanks 500   the reads of gaps; extract --help\n"
    "On several machines, each with a --help of its own:\n"
    "  velk-run plan ASSEMBLY ... -o plan.json        a plan, with a task for each input\n"
    "  velk-run task plan.json 0 -o share.0           what one task finds\n"
    "  velk-run gather plan.json share.* -o found     the results of all tasks\n"
    "  velk-run --plan plan.json -o found             the same in one go\n";

// What is read of the command line before libraries are made of it.
struct Files {
  std::vector<std::string> bare;
  std::vector<std::pair<std::string, std::string>> pairs;
  std::vector<std::pair<std::string, std::string>> matePairs;
  std::vector<std::string> interleaved;
  std::vector<std::vector<std::string>> single;
  std::string sheet;
  std::string library;
};

void addInputs(CLI::App& app, Arguments& arguments, Files& files) {
  app.add_option("assembly", arguments.assembly, "FASTA file of scaffolds; may be compressed")
      ->required()
      ->type_name("ASSEMBLY");
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
  app.add_option("--placeholder", arguments.placeholders,
                 "gaps of exactly so many N have an unknown length")
      ->type_name("N[,N...]")
      ->delimiter(',');
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
  app.add_flag("--force", arguments.force, "go on where a look at the inputs says not to");
  app.add_flag("--quiet", arguments.quiet, "say nothing but warnings and errors");
}

void addPlacement(CLI::App& app, Arguments& arguments) {
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
  app.add_option("-M,--min-identity", arguments.mapCut, "least share of equal bases in an overlap")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  app.add_option("-O,--min-overlap", arguments.overRatio,
                 "least share of a read that overlaps a contig")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  app.add_option("-r,--read-length", arguments.readLength,
                 "longest paired read, bases; 0: as the reads' first records have it")
      ->check(isCount)
      ->capture_default_str();
}

class LibraryMaker {
 public:
  LibraryMaker(const Files& files, std::string more) : files_(files), more_(std::move(more)) {}

  std::vector<Library> make() {
    if (files_.bare.size() == 2) addPairs(files_.bare[0], files_.bare[1], LibraryKind::kPairs);
    if (files_.bare.size() == 1 || files_.bare.size() > 2) {
      throw Failure(Status::kUsage, "two files of mates may stand behind the assembly, not " +
                                        std::to_string(files_.bare.size()) + more_);
    }
    for (const auto& [one, other] : files_.pairs) addPairs(one, other, LibraryKind::kPairs);
    for (const std::string& file : files_.interleaved) {
      add(LibraryKind::kPairs, {{file, "", true}});
    }
    for (const auto& [one, other] : files_.matePairs) addPairs(one, other, LibraryKind::kMatePairs);
    for (const auto& singles : files_.single) {
      std::vector<reads::InputFiles> inputs;
      inputs.reserve(singles.size());
      for (const std::string& file : singles) inputs.push_back({file});
      add(LibraryKind::kSingle, inputs);
    }
    if (!files_.sheet.empty()) append(readSampleSheet(files_.sheet));
    if (!files_.library.empty()) append(readLibraryFile(files_.library));
    return std::move(libraries_);
  }

 private:
  void addPairs(const std::string& one, const std::string& other, LibraryKind kind) {
    add(kind, {{one, other, false}});
  }

  void add(LibraryKind kind, std::vector<reads::InputFiles> inputs) {
    Library library;
    library.name = "lib" + std::to_string(libraries_.size() + 1);
    library.kind = kind;
    library.inputs = std::move(inputs);
    libraries_.push_back(std::move(library));
  }

  void append(const std::vector<Library>& more) {
    libraries_.insert(libraries_.end(), more.begin(), more.end());
  }

  const Files& files_;
  std::string more_;  // behind messages
  std::vector<Library> libraries_;
};

// A word for the header of a SAM file.
void checkWord(const std::string& what, const std::string& word) {
  const auto isBad = [](char c) { return c < '!' || c > '~'; };
  if (!word.empty() && std::none_of(word.begin(), word.end(), isBad)) return;
  throw Failure(Status::kUsage, what + " must be a word of printable characters without blanks");
}

void checkLibraries(const std::vector<Library>& libraries, const std::string& more) {
  if (libraries.empty()) throw Failure(Status::kUsage, "no reads are given" + more);
  std::set<std::string> names;
  for (const Library& library : libraries) {
    checkWord("the name of a library", library.name);
    if (!names.insert(library.name).second) {
      throw Failure(Status::kUsage, "two libraries have the name " + library.name);
    }
  }
}

// Adds what a run and a plan have in common, and parses the command line.
void parseRun(CLI::App& app, Arguments& arguments, const OutputKind& output, int argc,
              const char* const* argv) {
  Files files;
  addInputs(app, arguments, files);
  addOutputs(app, arguments, output);
  addPlacement(app, arguments);
  parseLine(app, argc, argv);
  const std::string more = moreInHelp(app);
  arguments.libraries = LibraryMaker(files, more).make();
  checkLibraries(arguments.libraries, more);
  checkWord("the name of the sample (--sample)", arguments.sample);
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
