// The command line of velk-run, and the files that describe libraries.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "run/library.h"

namespace velk::run {

struct Arguments {
  std::string assembly;
  std::string index;                   // --index: a saved one; empty: it is made
  std::string folder;                  // -o: of the results
  std::vector<Library> libraries;      // in the order in which their reads are searched
  std::vector<std::string> lists;      // files that describe them: --samplesheet, --library
  std::string sample = "sample";       // --sample
  int threads = 0;                     // -t; 0: the processors that the process may use
  int kmer = 31;                       // -k, bases
  int readLength = 0;                  // -r, bases; 0: the longest paired read of the samples
  int shortestContig = 70;             // -L, bases
  int cut = 0;                         // -C, bases
  double mapCut = 0.98;                // -M, share
  double overRatio = 0.3;              // -O, share
  std::vector<uint64_t> placeholders;  // --placeholder: lengths of gaps, bases
  std::string agp;                     // --agp: file with gaps of unknown length; empty: none
  bool native = false;                 // --native
  bool force = false;                  // --force
  bool quiet = false;                  // --quiet
  bool noAnchors = false;              // --no-anchors
  bool noReport = false;               // --no-report
};

/// Parses the command line of a run. Throws TextWanted for --help and --version; Failure with
/// Status::kUsage on what cannot be used, and on files of libraries that cannot be read.
Arguments parseArguments(int argc, const char* const* argv);

/// The command line of `velk-run index`.
struct IndexArguments {
  Arguments arguments;     // its folder is the file of the index
  std::string plan;        // --plan: its assembly and options are taken; empty: those given
  std::string root = ".";  // --inputs-root
  std::string toCheck;     // --check: an index; empty: one is made
};

/// Parses such a command line; throws as parseArguments does.
IndexArguments parseIndex(int argc, const char* const* argv);

/// The command line of `velk-run plan`.
struct PlanArguments {
  Arguments arguments;     // its folder is the file of the plan
  std::string root = ".";  // --inputs-root
};

/// Parses such a command line; throws as parseArguments does.
PlanArguments parsePlan(int argc, const char* const* argv);

}  // namespace velk::run
