// All that is found, on its way to files: takes what the search finds, or what the shares of a plan
// hold, and then writes the files of a result, or those of a share. Also velk's own files, as
// `velk -t 1` writes them for the same data in its own forms: scaffolds in upper case, named 1, 2,
// ..., placeholders as long as the search takes them.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/found.h"
#include "run/library.h"
#include "run/outputs.h"
#include "run/resultFolder.h"
#include "run/search.h"
#include "run/share.h"
#include "run/spillSorter.h"

namespace velk::run {

/// The records of an entry, as found.fa has them.
std::string nativeRecords(const FoundEntry& entry, const Library& library,
                          const Assembly& assembly);

/// Writes scaffolds.fa.contig, scaffolds.fa.contigPos and scaffolds.fa.gapsinfo into `folder`.
/// found: the records of each gap, by its number in the assembly. Throws Failure.
void writeNativeTables(const std::string& folder, const Assembly& assembly,
                       const std::vector<uint64_t>& found);

class FoundStore : public FoundReceiver {
 public:
  /// All of these outlive it. `isNative`: whether velk's own files are kept, too.
  FoundStore(const ResultFolder& folder, const Assembly& assembly,
             const std::vector<Library>& libraries, const OutputOptions& options, bool isNative);

  void take(int worker, const FoundEntry& entry) override;
  void takeSpan(const Span& span, uint32_t library) override { outputs_.takeSpan(span, library); }

  Evidence& evidence() override { return outputs_.evidence(); }

  /// Adds what a share holds. Throws Failure.
  void addShare(const std::string& folder, const Share& share);

  /// Writes the files of a result. Once, when nothing is taken any more. Throws Failure.
  void writeResults();

  /// Writes the files of a share instead, and sets its counts (inout). Throws Failure.
  void writeShare(Share& share);

  const GapCounts& counts() const { return outputs_.counts(); }

  /// Distinct reads that were found, of a library and of all.
  uint64_t foundReads(std::size_t library) const { return foundReads_[library]; }
  uint64_t foundReads() const;

  /// As those of Outputs.
  uint64_t records() const override { return outputs_.records(); }
  uint64_t nameClashes() const { return outputs_.nameClashes(); }
  uint64_t spilledBytes() const { return outputs_.spilledBytes(); }

 private:
  void writeNative();

  const ResultFolder& folder_;
  const Assembly& assembly_;
  const std::vector<Library>& libraries_;
  Outputs outputs_;
  std::unique_ptr<SpillSorter> native_;                  // null: not asked for
  std::unique_ptr<std::atomic<uint64_t>[]> foundReads_;  // by library
};

}  // namespace velk::run
