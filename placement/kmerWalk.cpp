#include "placement/kmerWalk.h"

#include <algorithm>
#include <bit>

#include "contig/contig.h"
#include "kmer/Sequence.h"
#include "placement/diagonal.h"

namespace velk {
namespace {

// Of this thread. A pointer, because the C library ends a process that has no memory to note that
// a thread has something to destroy.
thread_local WalkBuffers* threadBuffers = nullptr;

}  // namespace

void WindowSet::insertRange(std::size_t from, std::size_t to) {
  while (from < to) {
    const std::size_t inWord = from % 64;
    const std::size_t taken = std::min<std::size_t>(64 - inWord, to - from);
    const uint64_t mask = taken == 64 ? ~uint64_t{0} : (uint64_t{1} << taken) - 1;
    words_[from / 64] |= mask << inWord;
    from += taken;
  }
}

std::size_t WindowSet::firstMissing(std::size_t from) const {
  if (from >= windows_) return windows_;
  std::size_t word = from / 64;
  uint64_t missing = ~words_[word] & (~uint64_t{0} << (from % 64));
  while (missing == 0) {
    if (++word == words_.size()) return windows_;
    missing = ~words_[word];
  }
  return std::min(windows_, word * 64 + static_cast<std::size_t>(std::countr_zero(missing)));
}

std::size_t WindowSet::firstContained(std::size_t from, std::size_t to) const {
  to = std::min(to, windows_);
  for (std::size_t at = from; at < to; at = (at / 64 + 1) * 64) {
    const uint64_t contained = words_[at / 64] >> (at % 64);
    if (contained != 0)
      return std::min(to, at + static_cast<std::size_t>(std::countr_zero(contained)));
  }
  return to;
}

std::size_t WindowSet::lastContained(std::size_t from, std::size_t to) const {
  for (std::size_t end = to; end > from; end = (end - 1) / 64 * 64) {
    const uint64_t contained = words_[(end - 1) / 64] << (63 - (end - 1) % 64);
    if (contained == 0) continue;
    const std::size_t at = end - 1 - static_cast<std::size_t>(std::countl_zero(contained));
    return at >= from ? at : to;
  }
  return to;
}

WalkBuffers& KmerWalk::buffersOfThread() {
  if (threadBuffers == nullptr) threadBuffers = new WalkBuffers;
  return *threadBuffers;
}

void KmerWalk::releaseBuffers() {
  delete threadBuffers;
  threadBuffers = nullptr;
}

void KmerWalk::takeStrands(const std::array<Strand, 4>& strands) {
  buffersOfThread().strands = strands;
}

// Makes `read` the one in hand, and passes over what is known of its windows. Returns its strand;
// null when nothing is known.
const Strand* KmerWalk::takeUp(const std::string& read) {
  const std::size_t windows = windowsOf(read);
  buffers_.passed.reset(windows);
  buffers_.expected.reset(windows);
  buffers_.askedFirst.reset(read.size());
  const auto* const strand =
      std::find_if(buffers_.strands.begin(), buffers_.strands.end(),
                   [&](const Strand& known) { return known.bases == &read; });
  if (strand == buffers_.strands.end()) {
    packed_ = buffers_.packed.fill(read) ? &buffers_.packed : nullptr;
    turnedLength_ = 0;
    knowsSpoiled_ = false;
    return nullptr;
  }
  packed_ = &strand->scouted->packed;
  turnedLength_ = strand->isTurned ? read.size() : 0;
  knowsSpoiled_ = strand->scouted->hasRun;
  if (knowsSpoiled_) takeUpRun(read.size(), strand->scouted->run, strand->isTurned);
  return strand;
}

// Takes up where the read in hand, of this length, or its reverse complement runs.
void KmerWalk::takeUpRun(std::size_t length, const Run& run, bool isTurned) {
  const auto kmer = static_cast<std::size_t>(kmer_);
  const std::size_t windows = length - kmer + 1;
  if (run.isReversed == isTurned) {
    expectRun(length, run);
    run.forEachSpoiled(length, kmer, [&](std::size_t from, std::size_t to) { askFirst(from, to); });
  } else {
    passReverse(length, run);
    run.forEachSpoiled(length, kmer, [&](std::size_t from, std::size_t to) {
      askFirst(windows - to, windows - from);
    });
  }
}

// Has those grams asked for first whose absence rules all of the windows [from, to) out, as the
// scout has them fetched.
void KmerWalk::askFirst(std::size_t from, std::size_t to) {
  const std::size_t foreseen = std::min(to, from + kMostForeseen);
  const Strides strides(from, foreseen, sideIndex.filter().gramsOfKmer());
  for (std::size_t n = 0; n < strides.size(); ++n) buffers_.askedFirst.insert(strides[n]);
}

// Passes over the windows that lie where the refused `hit` lies. Where nothing was known of the
// read, the first hit tells which of its windows are spoiled.
void KmerWalk::passDiagonal(const std::string& read, const Hit& hit) {
  const std::string& contig = scaffoldInfo[hit.scaffold].contigsInfo[hit.contig].contigSeq;
  const bool tellsSpoiled = asksFilter() && !knowsSpoiled_;
  if (tellsSpoiled) buffers_.askedFirst.reset(read.size());
  std::size_t settled = 0;
  forEachStretch(contig, read, hit.offset, static_cast<std::size_t>(kmer_),
                 [&](std::size_t from, std::size_t to) {
                   buffers_.passed.insertRange(from, to);
                   if (tellsSpoiled && settled < from) askFirst(settled, from);
                   settled = to;
                 });
  if (tellsSpoiled && settled < windowsOf(read)) askFirst(settled, windowsOf(read));
  knowsSpoiled_ = true;
}

// Passes over the windows that lie on the diagonal of a k-mer which occurs more than once, found
// for the read's `window`, and do so themselves. Returns false when it cannot be told which do.
bool KmerWalk::passRepeats(std::string_view read, const Entity& found, std::size_t window) {
  if (!sideIndex.isMade()) return false;
  const int64_t offset = static_cast<int64_t>(found.startPos) - static_cast<int64_t>(window);
  const std::string& contig =
      scaffoldInfo[found.scaffoldNum].contigsInfo[found.contigNum].contigSeq;
  forEachStretch(contig, read, offset, static_cast<std::size_t>(kmer_),
                 [&](std::size_t from, std::size_t to) {
                   for (std::size_t w = from; w < to; ++w) {
                     const uint64_t onContig = w + static_cast<uint64_t>(offset);
                     if (sideIndex.isRepeated(found.scaffoldNum, found.contigNum, onContig)) {
                       buffers_.passed.insert(w);
                     }
                   }
                 });
  return true;
}

uint64_t KmerWalk::keyAt(std::string_view read, std::size_t window) const {
  if (turnedLength_ != 0) {
    const std::size_t onRead = turnedLength_ - static_cast<std::size_t>(kmer_) - window;
    return reversedKey(packed_->at(onRead, kmer_), kmer_);
  }
  if (packed_ != nullptr) return packed_->key(window, kmer_);
  return packedKmer(read.substr(window, static_cast<std::size_t>(kmer_)));
}

bool KmerWalk::mayHoldGram(std::size_t gram) const {
  const GramFilter& filter = sideIndex.filter();
  const int length = filter.gramLength();
  const auto gramAt = [&](std::size_t at) { return Gram(packed_->at(at, length), length); };
  if (turnedLength_ == 0) return filter.mayHold(gramAt(gram));
  return filter.mayHold(gramAt(turnedLength_ - static_cast<std::size_t>(length) - gram).turned());
}

// Passes over those of the windows [from, to) that have a gram which the filter does not hold,
// until `most` are left. Returns the end of the windows settled.
std::size_t KmerWalk::passAbsent(std::size_t from, std::size_t to, std::size_t most) {
  if (!asksFilter()) return std::min(to, from + most);
  std::size_t at = from;
  while (at < to && most > 0) {
    const std::size_t end = at + sideIndex.filter().gramsOfKmer();
    const std::size_t absent = absentGram(at, end);
    if (absent == end) {
      ++at;
      --most;
      continue;
    }
    const std::size_t settled = std::min(absent + 1, to);
    buffers_.passed.insertRange(at, settled);
    at = settled;
  }
  return at;
}

// A gram of [from, end), those of a window, that the filter does not hold; `end` when the window is
// to be looked up. A gram settles as many windows from this one on as it is in, so the last are
// asked first, but for one that is asked before all others, and then one at half the distance from
// the first. The last gram and the first have all bases of the window between them.
std::size_t KmerWalk::absentGram(std::size_t from, std::size_t end) const {
  const std::size_t telling = buffers_.askedFirst.lastContained(from, end);
  if (telling + 1 < end && !mayHoldGram(telling)) return telling;
  std::size_t gram = end - 1;
  for (; mayHoldGram(gram); gram = from + (gram - from) / 2) {
    if (gram == from) return end;
  }
  return gram;
}

// Expects the windows of a read of this length that are the contig's in its run.
void KmerWalk::expectRun(std::size_t length, const Run& run) {
  run.forEachStretch(
      length, static_cast<std::size_t>(kmer_),
      [&](std::size_t from, std::size_t to) { buffers_.expected.insertRange(from, to); });
}

// Passes over those windows of a read of this length whose reverse complements are the contig's in
// the run of its reverse complement, and are not in the index.
void KmerWalk::passReverse(std::size_t length, const Run& run) {
  const std::size_t windows = length - static_cast<std::size_t>(kmer_) + 1;
  const Hit& along = run.hit;
  const auto mayHold = [&](std::size_t from, std::size_t to) {
    const auto shift = static_cast<uint64_t>(along.offset);
    return sideIndex.mayHoldReverse(along.scaffold, along.contig, from + shift, to + shift);
  };
  run.forEachStretch(length, static_cast<std::size_t>(kmer_),
                     [&](std::size_t from, std::size_t to) {
                       if (!mayHold(from, to)) {
                         buffers_.passed.insertRange(windows - to, windows - from);
                         return;
                       }
                       for (std::size_t w = from; w < to; ++w) {
                         if (!mayHold(w, w + 1)) buffers_.passed.insert(windows - 1 - w);
                       }
                     });
}

}  // namespace velk
