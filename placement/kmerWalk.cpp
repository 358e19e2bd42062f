#include "placement/kmerWalk.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "contig/contig.h"
#include "kmer/Sequence.h"
#include "kmer/eightLetters.h"
#include "placement/Read2Scaf.h"
#include "placement/diagonal.h"

namespace velk {
namespace {

// Of this thread. A pointer, because the C library ends a process that has no memory to note that
// a thread has something to destroy.
thread_local WalkBuffers* threadBuffers = nullptr;

}  // namespace

uint64_t startOfOther(std::string_view read) {
  uint64_t letters = 0;
  std::memcpy(&letters, read.data() + read.size() - sizeof letters, sizeof letters);
  return __builtin_bswap64(EightLetters(letters).complements());
}

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

WalkBuffers& KmerWalk::buffersOfThread() {
  if (threadBuffers == nullptr) threadBuffers = new WalkBuffers;
  return *threadBuffers;
}

void KmerWalk::releaseBuffers() {
  delete threadBuffers;
  threadBuffers = nullptr;
}

void KmerWalk::takeHints(const RunHint& one, const RunHint& other) {
  buffersOfThread().hints = {one, other};
}

// Passes over the windows that lie where the refused `hit` lies.
void KmerWalk::passDiagonal(const std::string& read, const Hit& hit) {
  const std::string& contig = scaffoldInfo[hit.scaffold].contigsInfo[hit.contig].contigSeq;
  forEachRun(contig, read, hit.offset, static_cast<std::size_t>(kmer_),
             [&](std::size_t from, std::size_t to) { buffers_.passed.insertRange(from, to); });
}

// Passes over the windows that lie on the diagonal of a k-mer which occurs more than once, found
// for the read's `window`, and do so themselves. Returns false when it cannot be told which do.
bool KmerWalk::passRepeats(std::string_view read, const Entity& found, std::size_t window) {
  if (!sideIndex.isMade()) return false;
  const int64_t offset = static_cast<int64_t>(found.startPos) - static_cast<int64_t>(window);
  const std::string& contig =
      scaffoldInfo[found.scaffoldNum].contigsInfo[found.contigNum].contigSeq;
  forEachRun(contig, read, offset, static_cast<std::size_t>(kmer_),
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
  if (hasBasesAlone_) return buffers_.packed.key(window, kmer_);
  uint64_t key = 0;
  Seq2Kmer(key, read.substr(window, static_cast<std::size_t>(kmer_)));
  return key;
}

bool KmerWalk::mayHoldGram(std::size_t gram) const {
  return sideIndex.filter().mayHold(Gram(buffers_.packed.at(gram, gramLength(kmer_)), kmer_));
}

// Passes over those of the windows [from, to) that have a gram which the filter does not hold,
// until `most` are left. Returns the end of the windows settled. Asks in strides: the last gram of
// a window, if it is not held, settles as many windows as it is in.
std::size_t KmerWalk::passAbsent(std::size_t from, std::size_t to, std::size_t most) {
  if (!sideIndex.isMade() || !hasBasesAlone_) return std::min(to, from + most);
  const std::size_t grams = gramsOf(kmer_);
  const std::size_t last = to - 1;
  // As even as can be: over one wrong base, both strands ask for the same grams.
  const auto nextStride = [&](std::size_t at) {
    const auto left = static_cast<uint32_t>(to - at);
    const auto strides = (left + static_cast<uint32_t>(grams) - 1) / static_cast<uint32_t>(grams);
    return at - 1 + (left + strides - 1) / strides;
  };
  std::size_t held = from;  // the grams in [at, held) are held
  std::size_t at = from;
  while (at < to && most > 0) {
    const std::size_t stride = at == from ? std::min(at + grams - 1, last) : nextStride(at);
    const std::size_t end = at + grams;
    const std::size_t absent = absentGram(std::max(at, held), stride, end);
    if (absent == end) {
      held = end;
      ++at;
      --most;
      continue;
    }
    held = stride + 1;
    const std::size_t settled = std::min(absent, last) + 1;
    buffers_.passed.insertRange(at, settled);
    at = settled;
  }
  return at;
}

// A gram of [from, end) that the filter does not hold; `end` when it may hold all. `first` is asked
// first, then those below it, as the higher ones settle more, then those above.
std::size_t KmerWalk::absentGram(std::size_t from, std::size_t first, std::size_t end) const {
  for (std::size_t gram = first + 1; gram > from; --gram) {
    if (!mayHoldGram(gram - 1)) return gram - 1;
  }
  for (std::size_t gram = std::max(first + 1, from); gram < end; ++gram) {
    if (!mayHoldGram(gram)) return gram;
  }
  return end;
}

// Passes over the windows of which a hint says that their reverse complements lie on a contig. The
// reverse complement of a letter that is no base is an A, which tells nothing of the read's own
// k-mers: reads of bases alone are looked after.
void KmerWalk::followHint(const std::string& read) {
  if (!sideIndex.isMade() || !hasBasesAlone_) return;
  const uint64_t start = startOfOther(read);
  for (const RunHint& hint : buffers_.hints) {
    if (hint.length == read.size() && hint.start == start) passReverse(read, hint.hit);
  }
}

// Passes over the windows of the read whose reverse complements lie on a contig, when the reverse
// complement of the read is laid `along` it.
void KmerWalk::passReverse(const std::string& read, const Hit& along) {
  std::string& other = buffers_.reversed;
  other.resize(read.size());
  ReverseComplementSeq(other, read);
  const std::string& contig = scaffoldInfo[along.scaffold].contigsInfo[along.contig].contigSeq;
  const auto mayHold = [&](uint64_t from, uint64_t to) {
    return sideIndex.mayHoldReverse(along.scaffold, along.contig, from, to);
  };
  const std::size_t windows = windowsOf(other);
  forEachRun(contig, other, along.offset, static_cast<std::size_t>(kmer_),
             [&](std::size_t from, std::size_t to) {
               const uint64_t start = from + static_cast<uint64_t>(along.offset);
               if (!mayHold(start, start + (to - from))) {
                 buffers_.passed.insertRange(windows - to, windows - from);
                 return;
               }
               for (std::size_t w = from; w < to; ++w) {
                 const uint64_t onContig = w + static_cast<uint64_t>(along.offset);
                 if (!mayHold(onContig, onContig + 1)) {
                   buffers_.passed.insert(windows - 1 - w);
                 }
               }
             });
}

}  // namespace velk
