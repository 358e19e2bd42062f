// What the checks hand on to each other: the inputs of the run as velk sees them, and what was
// seen.
//
// main() calls the checks in this order: checkArguments, checkLibrary, checkOutputs, checkReads,
// checkAssembly, checkPlacement, advise. Run parameters are velk's own globals (driver/velk.h), and
// so is the scaffold model.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "check/arguments.h"
#include "check/finding.h"
#include "contig/contig.h"
#include "libinfo/libinfo.h"
#include "survey/boundedIndex.h"
#include "survey/insertSize.h"

namespace velk::check {

/// What was seen of the reads of a file, or of both files of a pair.
struct ReadStats {
  uint64_t reads = 0;
  uint64_t bases = 0;
  uint64_t longest = 0;          // bases
  uint64_t withN = 0;            // reads
  uint64_t withLower = 0;        // reads with a lower-case base
  uint64_t withReturn = 0;       // reads that end with a carriage return
  uint64_t shorterThanK = 0;     // reads
  uint64_t longerThanR = 0;      // reads
  uint64_t firstWithLower = 0;   // record number
  uint64_t firstWithReturn = 0;  // record number

  /// Bases of a read, on average.
  double meanLength() const {
    return reads == 0 ? 0 : static_cast<double>(bases) / static_cast<double>(reads);
  }

  double share(uint64_t count) const {
    return reads == 0 ? 0 : static_cast<double>(count) / static_cast<double>(reads);
  }
};

/// A read file, or a pair of mate files, as velk streams it.
struct ReadInput {
  int library = 0;     // section, from 0
  std::string fileA;   // reads, first mates, or both mates interleaved
  std::string fileB;   // second mates; empty without such a file
  uint64_t lineA = 0;  // line of the library file that names it
  uint64_t lineB = 0;
  bool isPaired = false;    // named as pairs, whatever avg_ins says
  bool isFasta = false;     // else FASTQ
  bool isReadable = false;  // its records could be looked at
  ReadStats stats;
  uint64_t records = 0;        // of the whole input, pairs counted once; an estimate unless deep
  std::vector<std::string> a;  // a sample of reads, or first mates
  std::vector<std::string> b;  // second mates of the same pairs
};

using survey::PairMeasure;

struct Survey {
  Survey() = default;
  ~Survey() { Libsclear(libs, libSum); }
  Survey(const Survey&) = delete;
  Survey& operator=(const Survey&) = delete;

  Arguments arguments;
  Findings findings;
  Lib* libs = nullptr;
  int libSum = 0;
  std::vector<ReadInput> inputs;
  std::vector<PairMeasure> measures;  // by library
  bool hasAssembly = false;           // the scaffold model is loaded
  uint64_t gapSum = 0;
  uint64_t longestScaffold = 0;                 // bases
  uint64_t kmers = 0;                           // indexed k-mers, counted as often as they occur
  uint64_t distinctKmers = 0;                   // of these, different ones
  bool isExact = false;                         // whether distinctKmers was counted
  std::unique_ptr<survey::BoundedIndex> index;  // of the assembly, or of its first part
  double secondsPerKmer = 0;                    // to index one
  double secondsPerRead = 0;                    // to search one, on one thread
  double foundPerRead = 0;                      // records found for a read of the sample
};

/// The assembly of the run.
inline survey::Scaffolds assemblyOfRun() {
  return {scaffoldInfo, scaffoldSum};
}

/// "3 of 10 (30.0 %)".
std::string shareText(uint64_t count, uint64_t of);

void checkArguments(Survey& survey);
void checkLibrary(Survey& survey);
void checkReads(Survey& survey);
void checkAssembly(Survey& survey);
void checkPlacement(Survey& survey);
void checkOutputs(Survey& survey);

}  // namespace velk::check
