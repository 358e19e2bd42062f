// summary.json: what a run was, and what came of it; and what the user sees of that at the end.
// doc/run.md has its schema; a change that a reader of an older one would stumble over raises
// kSummarySchema.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "run/assembly.h"
#include "run/gapCounts.h"
#include "run/library.h"
#include "run/resultFolder.h"
#include "run/search.h"

namespace velk::run {

constexpr int kSummarySchema = 1;

using OptionValue = std::variant<bool, int64_t, double, std::string, std::vector<std::string>>;

/// A file that was read.
struct InputFile {
  std::string name;               // as it was given
  std::optional<uint64_t> bytes;  // of a regular file
};

/// An input: one or two files of reads.
struct InputFacts {
  std::string library;
  std::vector<InputFile> files;
  bool arePairs = false;
  uint64_t records = 0;  // reads, or pairs
  reads::Fixes fixes;
};

/// What a library was taken for.
struct LibraryFacts {
  Library library;
  uint64_t reads = 0;  // searched: of pairs, both
  uint64_t found = 0;  // distinct reads
  ReadCounts counts;   // reads that were left out, and why
};

struct PhaseTime {
  std::string name;
  double seconds;
};

/// What the summary says of a run.
struct Summary {
  std::string version;  // of the program
  std::string sample;
  std::vector<std::pair<std::string, OptionValue>> options;  // as they were fixed
  InputFile assemblyFile;
  std::vector<InputFacts> inputs;
  std::vector<LibraryFacts> libraries;
  std::vector<std::string> warnings;
  uint64_t alignmentRecords = 0;
  uint64_t nameClashes = 0;
  uint64_t spilledBytes = 0;
  std::vector<PhaseTime> times;
  uint64_t machines = 1;    // that took part
  uint64_t peakMemory = 0;  // bytes
  std::vector<ResultFile> files;
  std::string report;  // what velk-report says: the text of a JSON object, or empty
};

/// The text of summary.json.
std::string summaryText(const Summary& summary, const Assembly& assembly, const GapCounts& counts);

/// `folder`: of the results. `seconds`: that the run took.
std::vector<std::string> closingLines(const Summary& summary, const Assembly& assembly,
                                      const GapCounts& counts, const std::string& folder,
                                      double seconds);

}  // namespace velk::run
