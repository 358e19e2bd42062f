// The k-mer walk: the one way in which placement looks reads up in the index.
//
// All three placement routines stand on it, and whatever makes look-ups faster belongs in here or
// in the hash set: callers see nothing but a read's unique hits in order. What saves look-ups:
//   1. After a refused hit the k-mers that run along the same diagonal of that contig are passed
//      over: each is the contig's own k-mer, so it is either at this very place, where the answer
//      would be the same, or not unique.
//   2. When the reverse complement of a read of bases alone runs along a contig, the read's k-mers
//      there are reverse complements of contig k-mers; those that the index does not hold are
//      passed over.
//   3. The others are looked up in groups whose memory is fetched together.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "contig/contig.h"
#include "kmer/fetchKmers.h"
#include "kmer/hashSet.h"
#include "kmer/rollingKey.h"
#include "kmer/windowBatch.h"

namespace velk {

/// What the visitor of a hit says: look at the next hit, or end the walk.
enum class Walk { kGoOn, kStop };

/// A unique k-mer of the read in the index.
struct Hit {
  uint64_t scaffold;  // index in scaffoldInfo
  uint64_t contig;    // index in the scaffold
  int64_t offset;     // contig position of the read's first base, may be negative
};

/// A set of the windows (k-mer offsets) of one read.
class WindowSet {
 public:
  /// Makes it the empty set of `windows` windows.
  void reset(std::size_t windows) {
    windows_ = windows;
    words_.assign(windows / 64 + 1, 0);
  }

  void insert(std::size_t window) { words_[window / 64] |= uint64_t{1} << (window % 64); }

  /// Inserts the windows [from, to).
  void insertRange(std::size_t from, std::size_t to);

  bool contains(std::size_t window) const {
    return (words_[window / 64] >> (window % 64) & 1U) != 0;
  }

  /// The first window from `from` on that is not in the set; the number of windows without one.
  std::size_t firstMissing(std::size_t from) const;

  /// The first window of [from, to) that is in the set; `to` without one.
  std::size_t firstContained(std::size_t from, std::size_t to) const;

 private:
  std::size_t windows_ = 0;
  std::vector<uint64_t> words_;
};

/// What a walk needs room for; every thread has one, reused from read to read until it calls
/// KmerWalk::releaseBuffers().
struct WalkBuffers {
  static constexpr std::size_t kLargestGroup = 16;  // look-ups in flight

  struct Pending {
    std::size_t window;
    SlotProbe probe;
  };

  WindowSet passed;      // windows that need no look-up
  WindowBatch batch;     // windows that the filter is asked for
  std::string reversed;  // the read's reverse complement
  std::array<Pending, kLargestGroup> pending;
};

/// Walks reads against the run's index.
class KmerWalk {
 public:
  KmerWalk(const HashSet& index, int kmer) : index_(index), kmer_(kmer) {}

  /// Calls visit(hit) for every k-mer of `read` that lies at exactly one place in the index, in
  /// the order of the read, until it answers Walk::kStop; hits that can only be refused as an
  /// earlier one was are left out. i (out): position in the read of the k-mer that was stopped at;
  /// the number of the read's k-mers when none was.
  /// REQUIRES: read.size() >= kmer; visit answers alike for equal hits.
  template <class Visit>
  void uniqueHits(const std::string& read, int64_t& i, Visit visit);

  /// Has the memory fetched that a later walk of this read, or of its reverse complement, asks for
  /// first.
  static void fetchAhead(const HashSet& index, int kmer, std::string_view read);

  /// Releases what the walks of this thread have allocated. REQUIRES: no walk of it is alive.
  static void releaseBuffers();

 private:
  enum class Outcome { kNoHit, kRefused, kStopped };

  static WalkBuffers& buffersOfThread();

  template <class Visit>
  Outcome visitHits(const std::string& read, RollingKey& keys, std::size_t from, std::size_t to,
                    int64_t& i, Visit& visit);
  void passAbsent(std::string_view read, std::size_t from, std::size_t to);
  void passDiagonal(const std::string& read, const Hit& hit);
  void askOtherStrand(const std::string& read);
  bool passReverse(std::string_view other, std::size_t window);

  std::size_t windowsOf(std::string_view read) const {
    return read.size() - static_cast<std::size_t>(kmer_) + 1;
  }

  const HashSet& index_;
  int kmer_;
  WalkBuffers& buffers_ = buffersOfThread();
};

template <class Visit>
void KmerWalk::uniqueHits(const std::string& read, int64_t& i, Visit visit) {
  const std::size_t windows = windowsOf(read);
  buffers_.passed.reset(windows);
  RollingKey keys(read, kmer_);
  // 1. The first k-mer alone: it settles many a read, and without a hit the other strand may.
  const Outcome first = visitHits(read, keys, 0, 1, i, visit);
  if (first == Outcome::kStopped) return;
  if (first == Outcome::kNoHit) askOtherStrand(read);
  // 2. What is left, stretch by stretch.
  for (std::size_t from = buffers_.passed.firstMissing(1); from < windows;) {
    const std::size_t most = std::min(windows, from + WindowBatch::kMost);
    const std::size_t to = buffers_.passed.firstContained(from, most);
    passAbsent(read, from, to);
    if (visitHits(read, keys, from, to, i, visit) == Outcome::kStopped) return;
    from = buffers_.passed.firstMissing(to);
  }
  i = static_cast<int64_t>(windows);
}

// Looks the windows [from, to) up and shows their hits, but for those that are passed over.
template <class Visit>
KmerWalk::Outcome KmerWalk::visitHits(const std::string& read, RollingKey& keys, std::size_t from,
                                      std::size_t to, int64_t& i, Visit& visit) {
  Outcome outcome = Outcome::kNoHit;
  for (std::size_t at = buffers_.passed.firstMissing(from); at < to;) {
    std::size_t count = 0;
    for (; count < WalkBuffers::kLargestGroup && at < to;
         at = buffers_.passed.firstMissing(at + 1)) {
      keys.moveTo(at);
      buffers_.pending[count++] = {at, startProbe(index_, keys.key())};
    }
    for (std::size_t p = 0; p < count; ++p) {
      const auto& [window, probe] = buffers_.pending[p];
      if (buffers_.passed.contains(window)) continue;
      // A miss answers with the sentinel slot, which reads as not unique.
      const Entity& found = index_.array[findBegun(index_, probe)];
      if (found.unique == 0) continue;
      const KmerPlace place = placeOf(found);
      i = static_cast<int64_t>(window);
      const Hit hit{place.scaffold, place.contig, static_cast<int64_t>(place.start) - i};
      if (visit(hit) == Walk::kStop) return Outcome::kStopped;
      passDiagonal(read, hit);
      outcome = Outcome::kRefused;
    }
  }
  return outcome;
}

}  // namespace velk
