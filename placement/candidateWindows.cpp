#include "placement/candidateWindows.h"

#include <cassert>

namespace velk {

CandidateWindows::CandidateWindows(ReadPreparer& preparer, int kmer, PreparedRead& read,
                                   bool isReversed)
    : preparer_(preparer),
      index_(preparer.index()),
      read_(read),
      isReversed_(isReversed),
      before_(static_cast<std::size_t>(kmer - index_.text().windowLength())),
      skipped_(read.skipped[isReversed ? 1 : 0]) {
  assert(read.isPacked() && read.windows > before_);
}

// The window of the packed read that holds the key of a window of this strand, and the other way
// round.
std::size_t CandidateWindows::onRead(std::size_t window) const {
  return isReversed_ ? count() - 1 - window : before_ + window;
}

// A hit of the first window mostly ends the walk, so no more is found out before it is visited.
std::size_t CandidateWindows::first() {
  return read_.alignment.agreesAt(onRead(0), isReversed_) ? 0 : next(0);
}

// The first window from `from` on that is not skipped; count() without one.
std::size_t CandidateWindows::next(std::size_t from) {
  if (!read_.isSifted) preparer_.complete(read_);
  if (!isReversed_) return skipped_.firstMissing(onRead(from)) - before_;
  return onRead(skipped_.lastMissing(count() - from));
}

// What the index knows of a window's k-mer. Where it is there, the read is aligned through it.
Occurrence CandidateWindows::occurrenceOf(std::size_t readWindow) {
  const ContigText& text = index_.text();
  Alignment& alignment = read_.alignment;
  if (alignment.agreesAt(readWindow, isReversed_)) {
    const uint64_t position = alignment.diagonal().positionOf(readWindow);
    return {position, !text.isMarkedRepeated(position)};
  }
  const int length = text.windowLength();
  const uint64_t key = read_.packed.at(readWindow, length);
  const Occurrence found = index_.find(isReversed_ ? reversedKey(key, length) : key);
  if (found.isThere()) {
    alignment.align(text, read_.packed, Diagonal::through(found.position, readWindow, isReversed_),
                    readWindow);
  }
  return found;
}

std::optional<KmerPlace> CandidateWindows::uniquePlaceOf(std::size_t window) {
  const Occurrence found = occurrenceOf(onRead(window));
  if (!found.isThere()) return std::nullopt;
  if (found.isUnique) return index_.text().placeOf(found.position);
  if (preparer_.steps().repeats) read_.alignment.addRepeated(index_.text(), skipped_);
  return std::nullopt;
}

// Every other window that agrees with the contig on the diagonal of a refused hit is refused, too.
void CandidateWindows::noteRefused(const Hit&) {
  if (preparer_.steps().diagonals) skipped_.insertAll(read_.alignment.matches());
}

}  // namespace velk
