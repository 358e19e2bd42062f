#include "placement/kmerWalk.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "kmer/Sequence.h"
#include "placement/Read2Scaf.h"

namespace velk {
namespace {

// Of this thread. A pointer, because the C library ends a process that has no memory to note that
// a thread has something to destroy.
thread_local WalkBuffers* threadBuffers = nullptr;

// The first i in [from, to) with one[i] != other[i]; `to` when there is none.
std::size_t firstDifference(const char* one, const char* other, std::size_t from, std::size_t to) {
  std::size_t i = from;
  for (; i + 8 <= to; i += 8) {
    uint64_t a = 0;
    uint64_t b = 0;
    std::memcpy(&a, one + i, 8);
    std::memcpy(&b, other + i, 8);
    if (a != b) return i + static_cast<std::size_t>(std::countr_zero(a ^ b)) / 8;
  }
  while (i < to && one[i] == other[i]) ++i;
  return i;
}

// Calls onRun(from, to) for every maximal run of windows of `read` whose bases are those of
// `contig` when the read's first base lies at contig position `offset`.
template <class OnRun>
void forEachDiagonalRun(const std::string& contig, std::string_view read, int64_t offset,
                        std::size_t kmer, OnRun onRun) {
  const auto first = static_cast<std::size_t>(std::max<int64_t>(-offset, 0));
  const auto contigFirst = static_cast<std::size_t>(std::max<int64_t>(offset, 0));
  const std::string_view onRead = read.substr(first);
  const std::string_view onContig = std::string_view(contig).substr(contigFirst);
  const std::size_t length = std::min(onRead.size(), onContig.size());
  for (std::size_t start = 0; start + kmer <= length;) {
    const std::size_t end = firstDifference(onRead.data(), onContig.data(), start, length);
    if (end >= start + kmer) onRun(first + start, first + end - kmer + 1);
    start = end + 1;
  }
}

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

WalkBuffers& KmerWalk::buffersOfThread() {
  if (threadBuffers == nullptr) threadBuffers = new WalkBuffers;
  return *threadBuffers;
}

void KmerWalk::releaseBuffers() {
  delete threadBuffers;
  threadBuffers = nullptr;
}

void KmerWalk::fetchAhead(const HashSet& index, int kmer, std::string_view read) {
  const auto length = static_cast<std::size_t>(kmer);
  if (!hasMinimizers(kmer) || read.size() < length) return;
  for (const std::size_t window : {std::size_t{0}, read.size() - length}) {
    uint64_t key = 0;
    Seq2Kmer(key, read.substr(window, length));
    startProbe(index, key);
    startProbe(index, reversedKey(key, kmer));
  }
}

// Passes over the windows that lie where the refused `hit` lies.
void KmerWalk::passDiagonal(const std::string& read, const Hit& hit) {
  const std::string& contig = scaffoldInfo[hit.scaffold].contigsInfo[hit.contig].contigSeq;
  forEachDiagonalRun(
      contig, read, hit.offset, static_cast<std::size_t>(kmer_),
      [&](std::size_t from, std::size_t to) { buffers_.passed.insertRange(from, to); });
}

// Passes over those of the windows [from, to) that the filter does not know.
void KmerWalk::passAbsent(std::string_view read, std::size_t from, std::size_t to) {
  if (!sideIndex.isMade()) return;
  const std::size_t length = to - from + static_cast<std::size_t>(kmer_) - 1;
  if (!buffers_.batch.fill(read.substr(from, length), to - from, kmer_)) return;
  const KmerFilter& filter = sideIndex.filter();
  for (std::size_t w = 0; w < to - from; ++w) filter.prefetch(buffers_.batch.minimizer(w));
  for (std::size_t w = 0; w < to - from; ++w) {
    if (!filter.mayHold(buffers_.batch.key(w), buffers_.batch.minimizer(w)))
      buffers_.passed.insert(from + w);
  }
}

// Looks the read's reverse complement up at its ends and its middle, until it knows a contig along
// which it runs, and passes over what follows for the read. The reverse complement of a letter that
// is no base is an A, which tells nothing of the read's own k-mers: reads of bases alone are asked.
void KmerWalk::askOtherStrand(const std::string& read) {
  constexpr uint8_t kLastBase = 3;
  const bool hasBasesAlone =
      std::all_of(read.begin(), read.end(), [](char base) { return baseCode(base) <= kLastBase; });
  if (!sideIndex.isMade() || !hasBasesAlone) return;
  const std::size_t last = windowsOf(read) - 1;
  std::string& other = buffers_.reversed;
  other.resize(read.size());
  ReverseComplementSeq(other, read);
  for (const std::size_t window : {last, std::size_t{0}, last / 2}) {
    if (passReverse(other, window)) return;
  }
}

// Passes over the windows of the read whose reverse complements lie on the contig on which `other`,
// the read's reverse complement, has its k-mer at `window`. Returns false when that is nowhere.
bool KmerWalk::passReverse(std::string_view other, std::size_t window) {
  uint64_t key = 0;
  Seq2Kmer(key, other.substr(window, static_cast<std::size_t>(kmer_)));
  const Entity& found = index_.array[findBegun(index_, {key, homeSlot(index_, key)})];
  if (found.unique == 0) return false;
  const KmerPlace place = placeOf(found);
  const std::string& contig = scaffoldInfo[place.scaffold].contigsInfo[place.contig].contigSeq;
  const auto offset = static_cast<int64_t>(place.start) - static_cast<int64_t>(window);
  const auto mayHold = [&](uint64_t from, uint64_t to) {
    return sideIndex.mayHoldReverse(place.scaffold, place.contig, from, to);
  };
  const std::size_t windows = windowsOf(other);
  forEachDiagonalRun(contig, other, offset, static_cast<std::size_t>(kmer_),
                     [&](std::size_t from, std::size_t to) {
                       const uint64_t start = from + static_cast<uint64_t>(offset);
                       if (!mayHold(start, start + (to - from))) {
                         buffers_.passed.insertRange(windows - to, windows - from);
                         return;
                       }
                       for (std::size_t w = from; w < to; ++w) {
                         const uint64_t onContig = w + static_cast<uint64_t>(offset);
                         if (!mayHold(onContig, onContig + 1)) {
                           buffers_.passed.insert(windows - 1 - w);
                         }
                       }
                     });
  return true;
}

}  // namespace velk
