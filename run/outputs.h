// The files of the result: what workers find goes in, whole files come out.
//
// take() makes the records of an entry and sorts away what is to be written of it; write() writes
// all files into the folder's partial place, in an order that no number of threads changes.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/bam.h"
#include "run/evidence.h"
#include "run/fastqWriter.h"
#include "run/found.h"
#include "run/gapCounts.h"
#include "run/library.h"
#include "run/nameClashes.h"
#include "run/resultFolder.h"
#include "run/spillSorter.h"

namespace velk::run {

struct OutputOptions {
  RunNames names;
  double mapCut = 0.98;           // least share of equal bases in an overlap
  bool areAnchorsWritten = true;  // whether the FASTQ files have those of reads in gaps
  int threads = 1;
  uint64_t memory = uint64_t{256} << 20;  // bytes that what was found may take
};

/// How many items the files of a share have.
struct ShareItems {
  uint64_t records = 0;   // of alignment
  uint64_t gapReads = 0;  // entries at gaps
  uint64_t names = 0;
};

class Outputs {
 public:
  /// All of these outlive it. `libraries` are fixed.
  Outputs(const ResultFolder& folder, const Assembly& assembly,
          const std::vector<Library>& libraries, const OutputOptions& options);

  /// Takes an entry of which something was found. Any thread may call it. Throws Failure.
  void take(const FoundEntry& entry);

  /// A pair of which a read lies in either flank of a gap. Any thread may call it.
  void takeSpan(const Span& span, uint32_t library) { counts_.addSpan(span, library); }

  /// A record of the search at a gap. Any thread may call it.
  void takeRecord(uint64_t gap) { counts_.addRecord(gap); }

  /// Adds what a share's folder holds, found in inputs of `library`. Throws Failure.
  void addShare(const std::string& share, uint64_t library, const ShareItems& items);

  /// Writes all files. Once, when nothing is taken any more. Throws Failure.
  void write();

  /// Writes the files of a share instead, with the counts of `library`. Throws Failure.
  ShareItems writeShare(uint64_t library);

  const GapCounts& counts() const { return counts_; }
  Evidence& evidence() { return evidence_; }

  /// Distinct reads that were found, and alignment records of BAM.
  uint64_t reads() const { return reads_; }
  uint64_t records() const { return records_.items(); }

  /// Bytes that had to be sorted on disk, and names that several libraries have.
  uint64_t spilledBytes() const;
  uint64_t nameClashes() const { return clashes_.clashes(); }

 private:
  void takeForGaps(const FoundEntry& entry, const std::vector<OutRecord>& records);
  void writeBam();
  std::vector<TextPlace> writeFastq();
  std::vector<uint64_t> writeFlanks();
  void writeIndex(const std::vector<TextPlace>& texts, const std::vector<uint64_t>& flanks);
  int helpers() const { return options_.threads > 1 ? options_.threads : 0; }

  const ResultFolder& folder_;
  const Assembly& assembly_;
  const std::vector<Library>& libraries_;
  OutputOptions options_;
  SpillSorter records_;   // by place
  SpillSorter gapReads_;  // by gap
  NameClashes clashes_;
  GapCounts counts_;
  Evidence evidence_;
  std::atomic<uint64_t> reads_ = 0;
};

}  // namespace velk::run
