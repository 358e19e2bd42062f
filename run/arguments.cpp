#include "run/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "run/failure.h"
#include "run/samplesheet.h"

namespace velk::run {
namespace {

constexpr const char* kAbout =
    "Finds the reads that belong in the gaps of an assembly, and says where each lies.";
constexpr const char* kMore = " (velk-run --help tells more)";
constexpr const char* kExamples =
    "\nExamples:\n"
    "  velk-run assembly.fa reads_1.fq.gz reads_2.fq.gz -o found\n"
    "  velk-run assembly.fa --pairs a_1.fq.gz a_2.fq.gz --mate-pairs b_1.fq.gz b_2.fq.gz -o found\n"
    "  velk-run assembly.fa --samplesheet libraries.tsv --sample Ecoli -t 8 -o found\n"
    "  velk-run extract found 17 18 --flanks 500      the reads of gaps; extract --help\n";

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

void addOutputs(CLI::App& app, Arguments& arguments) {
  app.add_option("-o,--output", arguments.folder, "folder of the results")
      ->required()
      ->type_name("DIR");
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
  explicit LibraryMaker(const Files& files) : files_(files) {}

  std::vector<Library> make() {
    if (files_.bare.size() == 2) addPairs(files_.bare[0], files_.bare[1], LibraryKind::kPairs);
    if (files_.bare.size() == 1 || files_.bare.size() > 2) {
      throw Failure(Status::kUsage, "two files of mates may stand behind the assembly, not " +
                                        std::to_string(files_.bare.size()) +
                                        " (velk-run --help tells more)");
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
  std::vector<Library> libraries_;
};

// A word for the header of a SAM file.
void checkWord(const std::string& what, const std::string& word) {
  const auto isBad = [](char c) { return c < '!' || c > '~'; };
  if (!word.empty() && std::none_of(word.begin(), word.end(), isBad)) return;
  throw Failure(Status::kUsage, what + " must be a word of printable characters without blanks");
}

void checkLibraries(const std::vector<Library>& libraries) {
  if (libraries.empty()) {
    throw Failure(Status::kUsage, std::string("no reads are given") + kMore);
  }
  std::set<std::string> names;
  for (const Library& library : libraries) {
    checkWord("the name of a library", library.name);
    if (!names.insert(library.name).second) {
      throw Failure(Status::kUsage, "two libraries have the name " + library.name);
    }
  }
}

// Throws TextWanted or Failure.
void parse(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    throw TextWanted{app.help()};
  } catch (const CLI::CallForVersion&) {
    throw TextWanted{app.version() + "\n"};
  } catch (const CLI::Error& error) {
    throw Failure(Status::kUsage, error.what() + std::string(kMore));
  }
}

}  // namespace

Arguments parseArguments(int argc, const char* const* argv) {
  Arguments arguments;
  Files files;
  CLI::App app(kAbout, "velk-run");
  app.footer(kExamples);
  app.set_version_flag("--version", "velk-run " VELK_VERSION);
  addInputs(app, arguments, files);
  addOutputs(app, arguments);
  addPlacement(app, arguments);
  parse(app, argc, argv);
  arguments.libraries = LibraryMaker(files).make();
  checkLibraries(arguments.libraries);
  checkWord("the name of the sample (--sample)", arguments.sample);
  return arguments;
}

bool asksForExtract(int argc, const char* const* argv) {
  return argc > 1 && std::string_view(argv[1]) == "extract";
}

ExtractArguments parseExtract(int argc, const char* const* argv) {
  ExtractArguments arguments;
  bool asFasta = false;
  bool asBam = false;
  CLI::App app("Writes the reads of some gaps from the results of a run.", "velk-run extract");
  app.add_option("folder", arguments.request.folder, "folder of results")
      ->required()
      ->type_name("DIR");
  app.add_option("gaps", arguments.request.gaps, "numbers of gaps, as in gaps.tsv")
      ->required()
      ->type_name("GAP...");
  CLI::Option* const fasta = app.add_flag("--fasta", asFasta, "FASTA instead of FASTQ");
  CLI::Option* const bam = app.add_flag("--bam", asBam, "BAM instead of FASTQ")->excludes(fasta);
  app.add_option("--flanks", arguments.request.flankBases,
                 "also so many bases of both flanks of each gap")
      ->type_name("N")
      ->excludes(bam);
  app.add_option("-o,--output", arguments.output, "file to write; -: standard output")
      ->type_name("FILE")
      ->capture_default_str();
  parse(app, argc - 1, argv + 1);
  if (asFasta) arguments.request.form = ExtractForm::kFasta;
  if (asBam) arguments.request.form = ExtractForm::kBam;
  return arguments;
}

}  // namespace velk::run
