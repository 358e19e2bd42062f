// The windows of a read that can be hits, one strand of it, for the walk (placement/kmerWalk.h).
//
// It skips windows that are known
//   1. to be absent because of their seeds, or because they are reverse complements of windows of
//      the contig that the read is aligned to: the preparing of reads finds them (readPreparer.h);
//   2. to be repeated: once one is, all that agree with the contig there and are marked so;
//   3. to lie on the diagonal of a refused hit and to agree with the contig there: each is the
//      contig's own k-mer, so it lies at this very place, or is repeated.
// All other windows are tried. One that agrees with the contig needs no look-up: the contig's mark
// answers. Another reason to skip goes into ReadPreparer::sift(); one that is learned during the
// walk into noteRefused() or uniquePlaceOf().
#pragma once

#include <optional>

#include "kmer/seedIndex.h"
#include "placement/kmerWalk.h"
#include "placement/readPreparer.h"

namespace velk {

class CandidateWindows {
 public:
  /// The windows of the prepared read or, if isReversed, of its reverse complement. Each strand of
  /// a read can be walked over once. REQUIRES: the read is packed and has `kmer` bases at least.
  CandidateWindows(ReadPreparer& preparer, int kmer, PreparedRead& read, bool isReversed);

  std::size_t count() const { return read_.windows - before_; }
  std::size_t first();
  std::size_t after(std::size_t window) { return next(window + 1); }
  std::optional<KmerPlace> uniquePlaceOf(std::size_t window);
  void noteRefused(const Hit& hit);

 private:
  std::size_t next(std::size_t from);
  std::size_t onRead(std::size_t window) const;
  Occurrence occurrenceOf(std::size_t readWindow);

  ReadPreparer& preparer_;
  const SeedIndex& index_;
  PreparedRead& read_;
  bool isReversed_;
  std::size_t before_;  // bases of a k-mer before those that are in its key
  WindowSet& skipped_;
};

}  // namespace velk
