// The windows of a read that can be hits, one strand of it, for the walk (placement/kmerWalk.h).
//
// It skips windows that are known
//   1. to lie on the diagonal of a refused hit and to agree with the contig there: each is the
//      contig's own k-mer, so it lies at this very place, or is repeated;
//   2. to be repeated: by the mark of the contig's window that they agree with;
//   3. to be absent because they are reverse complements of the contig's windows, by these marks;
//   4. to be absent because of their seeds (placement/prepareReads.h).
// All other windows are tried. One that agrees with the contig needs no look-up: the contig's mark
// answers. Another reason to skip goes into skipKnown(); one that is learned during the walk into
// noteRefused() or uniquePlaceOf().
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "kmer/Sequence.h"
#include "kmer/seedIndex.h"
#include "placement/fastSteps.h"
#include "placement/kmerWalk.h"
#include "placement/prepareReads.h"
#include "placement/preparedRead.h"

namespace velk {

template <FastSteps kSteps>
class BasicWindows {
 public:
  /// Room for the windows of one walk after the other.
  struct Buffers {
    WindowSet skipped;
    Alignment other;  // with the contig of the last repeat or refused hit
  };

  /// The windows of `bases`: the prepared read or, if isReversed, its reverse complement.
  /// REQUIRES: bases.size() >= kmer; one object at a time uses the buffers.
  BasicWindows(const SeedIndex& index, int kmer, PreparedRead& read, const std::string& bases,
               bool isReversed, Buffers& buffers);

  std::size_t count() const { return count_; }
  std::size_t first();
  std::size_t after(std::size_t window);
  std::optional<KmerPlace> uniquePlaceOf(std::size_t window);
  void noteRefused(const Hit& hit);

 private:
  std::size_t next(std::size_t from) const;
  std::size_t onRead(std::size_t window) const;
  bool isAlignedAt(std::size_t readWindow) const;
  void prepare();
  void skipKnown();
  Occurrence lookUp(std::size_t window) const;
  void alignThrough(uint64_t position, std::size_t readWindow);

  const SeedIndex& index_;
  PreparedRead& read_;
  const std::string& bases_;
  bool isReversed_;
  std::size_t kmer_;
  std::size_t count_;
  std::size_t before_;  // bases of a k-mer before those that are in its key
  WindowSet& skipped_;  // windows of the packed read
  Alignment& other_;

  // The last unique k-mer, unless the alignment told it: its place in the text and in the read.
  bool wasLookedUp_ = false;
  uint64_t hitPosition_ = 0;
  std::size_t hitWindow_ = 0;
};

using CandidateWindows = BasicWindows<FastSteps{}>;

template <FastSteps kSteps>
BasicWindows<kSteps>::BasicWindows(const SeedIndex& index, int kmer, PreparedRead& read,
                                   const std::string& bases, bool isReversed, Buffers& buffers)
    : index_(index),
      read_(read),
      bases_(bases),
      isReversed_(isReversed),
      kmer_(static_cast<std::size_t>(kmer)),
      count_(bases.size() - kmer_ + 1),
      before_(kmer_ - static_cast<std::size_t>(index.text().windowLength())),
      skipped_(buffers.skipped),
      other_(buffers.other) {
  if (!read_.isPacked) return;
  skipped_.reset(read_.windows);
  if (read_.isSifted) skipKnown();
}

// The window of the packed read that holds the key of a window of this strand.
template <FastSteps kSteps>
std::size_t BasicWindows<kSteps>::onRead(std::size_t window) const {
  return isReversed_ ? read_.windows - 1 - before_ - window : before_ + window;
}

// Whether a window of the packed read, on this strand, agrees with the contig that it is aligned
// to.
template <FastSteps kSteps>
bool BasicWindows<kSteps>::isAlignedAt(std::size_t readWindow) const {
  const Alignment& alignment = read_.alignment;
  return alignment.isThere() && alignment.diagonal().isReversed == isReversed_ &&
         alignment.matches().contains(readWindow);
}

// Finds out about the read what has not been found out.
template <FastSteps kSteps>
void BasicWindows<kSteps>::prepare() {
  PreparedRead* read = &read_;
  if (!read_.isAligned) alignReads<kSteps>(index_, {&read, 1});
  siftReads<kSteps>(index_, {&read, 1});
  skipKnown();
}

// Skips what is known of the read.
template <FastSteps kSteps>
void BasicWindows<kSteps>::skipKnown() {
  skipped_.insertAll(read_.absent);
  if (!read_.alignment.isThere()) return;
  if (read_.alignment.diagonal().isReversed == isReversed_) {
    if constexpr (kSteps.repeats) read_.alignment.addRepeated(index_.text(), skipped_);
  } else {
    if constexpr (kSteps.reversed) read_.alignment.addNotReversed(index_.text(), skipped_);
  }
}

// A hit of the first window mostly ends the walk, so no more is found out before it is visited.
template <FastSteps kSteps>
std::size_t BasicWindows<kSteps>::first() {
  const bool isKnown = !read_.isPacked || read_.isSifted;
  if (!isKnown && !(read_.isAligned && isAlignedAt(onRead(0)))) prepare();
  return next(0);
}

template <FastSteps kSteps>
std::size_t BasicWindows<kSteps>::after(std::size_t window) {
  if (read_.isPacked && !read_.isSifted) prepare();
  return next(window + 1);
}

// The first window from `from` on that is not skipped; count() without one.
template <FastSteps kSteps>
std::size_t BasicWindows<kSteps>::next(std::size_t from) const {
  if (!read_.isPacked || from >= count_) return from;
  if (!isReversed_) return std::min(skipped_.firstMissing(onRead(from)) - before_, count_);
  const std::size_t window = skipped_.lastMissing(onRead(from));
  return window == skipped_.size() ? count_ : read_.windows - 1 - before_ - window;
}

template <FastSteps kSteps>
std::optional<KmerPlace> BasicWindows<kSteps>::uniquePlaceOf(std::size_t window) {
  if (!index_.hasText()) {
    const auto answer = index_.placeOf(packedKmer(std::string_view(bases_).substr(window, kmer_)));
    return answer && answer->isUnique ? std::optional(answer->first) : std::nullopt;
  }
  const ContigText& text = index_.text();
  const std::size_t readWindow = onRead(window);
  wasLookedUp_ = !read_.isPacked || !isAlignedAt(readWindow);
  if (!wasLookedUp_) {
    if (text.isMarkedRepeated(read_.alignment.diagonal().positionOf(readWindow)))
      return std::nullopt;
    return read_.alignment.placeOf(text, readWindow);
  }
  const Occurrence found = lookUp(window);
  if (!found.isThere()) return std::nullopt;
  if (!found.isUnique) {
    if (kSteps.repeats && read_.isPacked) {
      alignThrough(found.position, readWindow);
      other_.addRepeated(text, skipped_);
    }
    return std::nullopt;
  }
  hitPosition_ = found.position;
  hitWindow_ = readWindow;
  return text.placeOf(found.position);
}

template <FastSteps kSteps>
Occurrence BasicWindows<kSteps>::lookUp(std::size_t window) const {
  if (!read_.isPacked) {
    return index_.find(packedKmer(std::string_view(bases_).substr(window, kmer_)));
  }
  const int length = index_.text().windowLength();
  const uint64_t key = read_.packed.at(onRead(window), length);
  return index_.find(isReversed_ ? reversedKey(key, length) : key);
}

template <FastSteps kSteps>
void BasicWindows<kSteps>::alignThrough(uint64_t position, std::size_t readWindow) {
  other_.align(index_.text(), read_.packed, read_.length,
               Diagonal::through(position, readWindow, isReversed_), readWindow);
}

// Every other window that agrees with the contig on the diagonal of a refused hit is refused, too.
template <FastSteps kSteps>
void BasicWindows<kSteps>::noteRefused(const Hit&) {
  if (!kSteps.diagonals || !read_.isPacked) return;
  if (wasLookedUp_) alignThrough(hitPosition_, hitWindow_);
  skipped_.insertAll(wasLookedUp_ ? other_.matches() : read_.alignment.matches());
}

}  // namespace velk
