// The search: hands the reads of all inputs, batch by batch, to workers that place them at the
// gaps.
//
// The calling thread reads batches, in the order of the inputs, and each goes to whichever worker
// is free. A worker gives the receiver what it found, with where it came from, so the order of the
// work is seen nowhere. With one thread the calling thread does all. The bases of an input are what
// the assembly's index is asked for; nothing here prints or ends the process.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "kmer/seedIndex.h"
#include "placement/edgeCheck.h"
#include "reads/readInput.h"
#include "run/assembly.h"
#include "run/evidence.h"
#include "run/found.h"
#include "run/library.h"
#include "run/spans.h"

namespace velk::run {

/// The values of a run that depend on the user or on all libraries together, fixed before the
/// first read is searched.
struct SearchValues {
  int kmer = 31;           // bases
  int readLength = 100;    // bases that a paired read is expected to have
  int bigGapLength = 0;    // bases; longer inserts are used at gaps of at least so many bases only
  double mapCut = 0.98;    // least share of equal bases in an overlap
  double overRatio = 0.3;  // least share of a read that overlaps a contig
  int threads = 1;
};

/// An input, and the library that it belongs to.
struct SearchInput {
  reads::ReadInput* reads;
  uint32_t library;
};

/// Takes what is found. Workers call it at the same time, each with its own number.
class FoundReceiver {
 public:
  virtual ~FoundReceiver() = default;

  /// `entry` and its texts are valid during the call. Throws what ends the run.
  virtual void take(int worker, const FoundEntry& entry) = 0;

  /// A pair that spans a gap, whether any of it was found or not.
  virtual void takeSpan(const Span& span, uint32_t library) = 0;

  /// Alignment records that were made of what it has taken so far.
  virtual uint64_t records() const = 0;

  /// Where it is noted what becomes of reads near gaps.
  virtual Evidence& evidence() = 0;
};

/// What the search tells of the reads of a library: how many bases they have, on how much of them
/// the contigs agree, and which of them are searched nowhere, or not as they should be.
struct ReadCounts {
  uint64_t bases = 0;
  uint64_t placed = 0;    // reads, or pairs, that lie on a contig, at least in part
  uint64_t withN = 0;     // reads, or pairs, that have an N: not searched
  uint64_t tooShort = 0;  // reads, or pairs, shorter than a k-mer: not searched
  uint64_t longer = 0;    // reads of pairs longer than the run's read length

  ReadCounts& operator+=(const ReadCounts& other);
};

/// What has been searched, for one who waits.
struct Progress {
  uint64_t reads;  // single reads, and both reads of pairs
  uint64_t bytes;  // of the inputs as they are stored
};

class Search {
 public:
  /// All of these outlive the search. REQUIRES: the index is one of the assembly's model.
  Search(const Assembly& assembly, const SeedIndex& index, const std::vector<Library>& libraries,
         const SearchValues& values)
      : assembly_(assembly), index_(index), libraries_(libraries), values_(values) {}

  /// Searches the inputs, and returns the counts of each library. onProgress(Progress) is called
  /// now and then, by the calling thread. Throws what a source or the receiver throws, after all
  /// workers have ended.
  std::vector<ReadCounts> run(const std::vector<SearchInput>& inputs, FoundReceiver& receiver,
                              const std::function<void(const Progress&)>& onProgress) const;

 private:
  ReadCounts countReads(const reads::ReadBatch& batch) const;
  uint64_t searchBatch(reads::ReadBatch& batch, uint32_t library, int worker,
                       FoundReceiver& receiver) const;

  const Assembly& assembly_;
  const SeedIndex& index_;
  const std::vector<Library>& libraries_;
  SearchValues values_;
};

}  // namespace velk::run
