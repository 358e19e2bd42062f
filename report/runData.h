// What velk-report knows of a run: the files of its folder, read and checked.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/evidence.h"
#include "run/gapCounts.h"

namespace velk::report {

using run::ReadKind;

/// Pairs of a sample whose fragments are [from, to) bases long.
struct InsertBin {
  uint64_t from;
  uint64_t to;
  uint64_t pairs;
};

struct LibraryData {
  std::string name;
  std::string kind;
  bool arePairs = false;
  std::string orientation;  // of pairs, like what follows
  std::string orientationSource;
  double insert = 0;  // bases
  std::string insertSource;
  double spread = 0;                              // bases
  std::array<std::vector<InsertBin>, 3> inserts;  // FR, RF, same strand
  uint64_t readsSearched = 0;
  uint64_t readsFound = 0;
  uint64_t basesSearched = 0;
  uint64_t onContigs = 0;  // reads, or pairs
  uint64_t withN = 0;      // reads, or pairs
  uint64_t tooShort = 0;   // likewise

  /// Bases of a read, on average.
  double readLength() const {
    return readsSearched == 0
               ? 0
               : static_cast<double>(basesSearched) / static_cast<double>(readsSearched);
  }
};

struct GapData {
  uint32_t scaffold;  // index of its name
  uint64_t from;      // on the scaffold, from 0
  uint64_t to;
  uint64_t length;  // bases, as the search took it
  bool isPlaceholder;
  uint64_t basesBefore;  // of the contig in front
  uint64_t basesBehind;
  std::optional<int64_t> implied;  // length by the pairs that span it
  uint32_t impliedBy;              // pairs
  uint64_t number;                 // by which users know it
};

/// Bases of a gap that exact reads cover from either side.
struct Reach {
  uint32_t front = 0;
  uint32_t behind = 0;
};

struct Settings {
  int64_t kmer = 31;
  int64_t readLength = 0;
  int64_t bigGapLength = 0;
  int64_t minContig = 0;
  double minIdentity = 0;
  double minOverlap = 0;
};

struct AssemblyFacts {
  std::string name;
  uint64_t scaffolds = 0;
  uint64_t bases = 0;
  uint64_t contigs = 0;
};

struct RunData {
  bool isOfVelk = false;  // by velk itself: what was searched, and how, is not known
  std::string version;    // of the program that ran
  std::string sample;
  Settings settings;
  AssemblyFacts assembly;
  std::vector<std::string> warnings;
  uint64_t readsSearched = 0;
  uint64_t readsFound = 0;
  std::vector<LibraryData> libraries;
  std::vector<std::string> scaffolds;  // names of those that have gaps
  std::vector<GapData> gaps;
  std::vector<uint32_t> counts;           // by gap, library, kind
  std::vector<Reach> reach;               // by gap; nothing of runs that keep none
  std::optional<run::Evidence> evidence;  // nothing of runs that keep none

  uint32_t count(std::size_t gap, std::size_t library, ReadKind kind) const {
    return counts[(gap * libraries.size() + library) * run::kReadKinds +
                  static_cast<std::size_t>(kind)];
  }
  uint64_t count(std::size_t gap, ReadKind kind) const {
    uint64_t sum = 0;
    for (std::size_t l = 0; l < libraries.size(); ++l) sum += count(gap, l, kind);
    return sum;
  }

  /// Reads that belong in a gap: exact ones and estimates.
  uint64_t belonging(std::size_t gap) const {
    return count(gap, ReadKind::kExact) + count(gap, ReadKind::kEstimate);
  }

  const std::string& scaffoldOf(const GapData& gap) const { return scaffolds[gap.scaffold]; }
};

/// Reads the files of a run in `folder`; `summary` is the text of its summary. Throws Failure where
/// a file is missing or damaged.
RunData readRun(const std::string& folder, std::string_view summary);

/// The text of a file. Throws Failure.
std::string textOfFile(const std::string& file);

}  // namespace velk::report
