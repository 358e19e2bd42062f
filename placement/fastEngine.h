// The fast engine of placement. It looks up only windows that can be hits.
//
// Groups of reads are prepared together, step by step (placement/readPreparer.h). The walk visits
// the remaining windows (placement/kmerWalk.h).
// The rule of skipping: a window may be skipped only if its k-mer is absent from the index, is
// repeated, or would give a hit equal to a refused one. The walk skips windows of two kinds:
//   1. Absent ones: their seeds rule them out, or they lie on the strand opposite a window of the
//      contig whose reverse complement the index does not hold.
//   2. Those that agree with the contig along the diagonal of a refused hit. The k-mer of such a
//      window lies there, so it gives an equal hit or is repeated.
// Window 0 is visited although it may be skipped, if it agrees with the contig. A window that
// agrees with the contig needs no look-up: the contig's mark answers. Another reason to skip goes
// into ReadPreparer::filter(); one that is learned during the walk goes into noteRefused() or
// uniquePlaceOf(). Of a read with non-ACGT letters nothing is prepared: all its windows are looked
// up.
#pragma once

#include <cassert>
#include <optional>

#include "placement/kmerWalk.h"
#include "placement/readPreparer.h"

namespace velk {

/// The windows of one strand of a read that can be hits.
class CandidateWindows {
 public:
  /// The windows of the prepared read or, if isReversed, of its reverse complement. Each strand of
  /// a read can be walked over once. REQUIRES: the read is packed and has a k-mer.
  CandidateWindows(ReadPreparer& preparer, PreparedRead& read, bool isReversed)
      : preparer_(preparer),
        text_(preparer.index().text()),
        read_(read),
        isReversed_(isReversed),
        basesBeforeKey_(static_cast<std::size_t>(preparer.kmer() - text_.windowLength())),
        skipped_(read.skipped[isReversed ? 1 : 0]) {
    assert(read.isPacked() && read.windows > basesBeforeKey_);
  }

  std::size_t count() const { return read_.windows - basesBeforeKey_; }

  // The first window is visited whenever it agrees with the text, also if it is to be skipped. If
  // it is a hit, it usually ends the walk, and the rest of a deferred read is never prepared.
  std::size_t first() { return read_.alignment.agreesAt(onRead(0), isReversed_) ? 0 : next(0); }
  std::size_t after(std::size_t window) { return next(window + 1); }

  std::optional<KmerPlace> uniquePlaceOf(std::size_t window) {
    const Occurrence found = occurrenceOf(onRead(window));
    if (!found.isUnique) return std::nullopt;
    return text_.placeOf(found.position);
  }

  // All windows that agree with the contig along the diagonal of a refused hit would be refused.
  void noteRefused(const Hit&) {
    if (preparer_.steps().diagonals) skipped_.insertAll(read_.alignment.matches());
  }

 private:
  // Converts between a window of this strand and the window of the packed read that has its key.
  std::size_t onRead(std::size_t window) const {
    return isReversed_ ? count() - 1 - window : basesBeforeKey_ + window;
  }

  // The first window from `from` on that is not skipped; count() without one.
  std::size_t next(std::size_t from) {
    if (!read_.isFiltered) preparer_.complete(read_);
    if (!isReversed_) return skipped_.firstMissing(onRead(from)) - basesBeforeKey_;
    return onRead(skipped_.lastMissing(count() - from));
  }

  // What the index knows of a window's k-mer. If it is found, aligns the read along its diagonal.
  Occurrence occurrenceOf(std::size_t readWindow) {
    Alignment& alignment = read_.alignment;
    if (alignment.agreesAt(readWindow, isReversed_)) {
      const uint64_t position = alignment.diagonal().positionOf(readWindow);
      return {position, !text_.isMarkedRepeated(position)};
    }
    const int length = text_.windowLength();
    const uint64_t key = read_.packed.at(readWindow, length);
    const Occurrence found = preparer_.index().find(isReversed_ ? reversedKey(key, length) : key);
    if (found.isThere()) {
      alignment.align(text_, read_.packed,
                      Diagonal::through(found.position, readWindow, isReversed_), readWindow);
    }
    return found;
  }

  ReadPreparer& preparer_;
  const ContigText& text_;
  PreparedRead& read_;
  bool isReversed_;
  std::size_t basesBeforeKey_;  // of a k-mer: those in front of the ones in its key
  WindowSet& skipped_;
};

/// Implements the interface of an engine (placement/engine.h).
class FastEngine : public ReadPreparer {
 public:
  using Prepared = PreparedRead;
  using ReadPreparer::ReadPreparer;

  template <class Strand, class Visit>
  int64_t visitHits(Strand& strand, Visit visit) {
    if (!strand.prepared().isPacked()) {
      AllWindows windows(index(), strand.bases(), kmer());
      return visitUniqueHits(windows, visit);
    }
    CandidateWindows windows(*this, strand.prepared(), strand.origin().isReversed);
    return visitUniqueHits(windows, visit);
  }
};

}  // namespace velk
