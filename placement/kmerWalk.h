// The k-mer walk: the one way in which placement looks reads up in the index.
//
// All three placement routines stand on it, and whatever makes look-ups faster belongs in here or
// in the hash set: callers see nothing but a read's unique hits in order. What saves look-ups:
//   1. After a refused hit the k-mers that run along the same diagonal of that contig are passed
//      over: each is the contig's own k-mer, so it is either at this very place, where the answer
//      would be the same, or not unique.
//   2. After a k-mer that occurs more than once, those of the k-mers along its diagonal are passed
//      over that do so, too: none of them is a unique hit.
//   3. Where the reverse complement of a read is known to run along a contig (placement/scout.h),
//      the read's k-mers are reverse complements of the contig's; those that the index does not
//      hold are passed over.
//   4. A gram that the gram filter does not hold passes over every k-mer around it.
//   5. The others are looked up in groups whose memory is fetched together.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kmer/fetchKmers.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"

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

  std::size_t size() const { return windows_; }

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

/// Where a read, or its reverse complement, seems to run along a contig of the index.
struct RunHint {
  std::size_t length;  // of the read; 0: no hint
  uint64_t start;      // the first eight letters of what runs
  bool isReversed;     // whether that is the reverse complement
  Hit hit;
};

/// The first eight letters, in upper case, of the reverse complement of a read of bases alone.
/// REQUIRES: read.size() >= 8.
uint64_t startOfOther(std::string_view read);

/// What a walk needs room for; every thread has one, reused from read to read until it calls
/// KmerWalk::releaseBuffers().
struct WalkBuffers {
  static constexpr std::size_t kLargestGroup = 16;  // look-ups in flight

  struct Pending {
    std::size_t window;
    SlotProbe probe;
  };

  WindowSet passed;      // windows that need no look-up
  PackedBases packed;    // the read, if it has bases alone
  std::string reversed;  // the read's reverse complement
  std::array<Pending, kLargestGroup> pending;
  std::array<RunHint, 2> hints{};  // of the reads in hand
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

  /// Leaves hints for this thread's next walks, of the reads hinted at and of their reverse
  /// complements; the hints before them are forgotten.
  static void takeHints(const RunHint& one, const RunHint& other);

  /// Releases what the walks of this thread have allocated. REQUIRES: no walk of it is alive.
  static void releaseBuffers();

 private:
  enum class Outcome { kNothing, kOnContig, kStopped };

  // Windows that are looked at together: in a long read, whatever is left is not gone through anew
  // for each.
  static constexpr std::size_t kLongestStretch = 256;

  static WalkBuffers& buffersOfThread();

  template <class Visit>
  Outcome visitHits(const std::string& read, std::size_t from, std::size_t to, int64_t& i,
                    Visit& visit);
  uint64_t keyAt(std::string_view read, std::size_t window) const;
  bool mayHoldGram(std::size_t gram) const;
  std::size_t absentGram(std::size_t from, std::size_t first, std::size_t end) const;
  std::size_t passAbsent(std::size_t from, std::size_t to, std::size_t most);
  void passDiagonal(const std::string& read, const Hit& hit);
  bool passRepeats(std::string_view read, const Entity& found, std::size_t window);
  void followHint(const std::string& read);
  void passReverse(const std::string& read, const Hit& along);

  std::size_t windowsOf(std::string_view read) const {
    return read.size() - static_cast<std::size_t>(kmer_) + 1;
  }

  const HashSet& index_;
  int kmer_;
  bool hasBasesAlone_ = false;  // of the read in hand
  WalkBuffers& buffers_ = buffersOfThread();
};

template <class Visit>
void KmerWalk::uniqueHits(const std::string& read, int64_t& i, Visit visit) {
  const std::size_t windows = windowsOf(read);
  buffers_.passed.reset(windows);
  hasBasesAlone_ = buffers_.packed.fill(read);
  followHint(read);
  // The first k-mer is not worth asking the filter: its slot has been fetched, and it mostly hits.
  if (visitHits(read, 0, 1, i, visit) == Outcome::kStopped) return;
  buffers_.passed.insert(0);
  // A hit mostly settles all that follows it, so one k-mer is tried at a time, and more only where
  // there was none.
  std::size_t most = 1;
  for (std::size_t from = buffers_.passed.firstMissing(0); from < windows;) {
    const std::size_t end = std::min(windows, from + kLongestStretch);
    const std::size_t to = buffers_.passed.firstContained(from, end);
    const std::size_t until = passAbsent(from, to, most);
    const Outcome outcome = visitHits(read, from, until, i, visit);
    if (outcome == Outcome::kStopped) return;
    most = outcome == Outcome::kOnContig ? 1 : std::min(4 * most, WalkBuffers::kLargestGroup);
    from = buffers_.passed.firstMissing(until);
  }
  i = static_cast<int64_t>(windows);
}

// Looks the windows [from, to) up and shows their hits, but for those that are passed over.
template <class Visit>
KmerWalk::Outcome KmerWalk::visitHits(const std::string& read, std::size_t from, std::size_t to,
                                      int64_t& i, Visit& visit) {
  Outcome outcome = Outcome::kNothing;
  for (std::size_t at = buffers_.passed.firstMissing(from); at < to;) {
    std::size_t count = 0;
    for (; count < WalkBuffers::kLargestGroup && at < to;
         at = buffers_.passed.firstMissing(at + 1)) {
      buffers_.pending[count++] = {at, startProbe(index_, keyAt(read, at))};
    }
    for (std::size_t p = 0; p < count; ++p) {
      const auto& [window, probe] = buffers_.pending[p];
      if (buffers_.passed.contains(window)) continue;
      const uint64_t slot = findBegun(index_, probe);
      if (slot == index_.size) continue;
      const Entity& found = index_.array[slot];
      if (found.unique == 0) {
        if (passRepeats(read, found, window)) outcome = Outcome::kOnContig;
        continue;
      }
      const KmerPlace place = placeOf(found);
      i = static_cast<int64_t>(window);
      const Hit hit{place.scaffold, place.contig, static_cast<int64_t>(place.start) - i};
      if (visit(hit) == Walk::kStop) return Outcome::kStopped;
      passDiagonal(read, hit);
      outcome = Outcome::kOnContig;
    }
  }
  return outcome;
}

}  // namespace velk
