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
//      hold are passed over. Where the read itself is known to run, the filter is not asked.
//   4. A gram that the gram filter does not hold passes over every k-mer around it: none of them is
//      in the index. Where it is known which bases are wrong, grams with one are asked for first.
//   5. The others are looked up in groups whose memory is fetched together, and shown in the order
//      of the read.
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
#include "placement/scouted.h"

namespace velk {

/// What the visitor of a hit says: look at the next hit, or end the walk.
enum class Walk { kGoOn, kStop };

/// A set of the windows (k-mer offsets) of one read; or of its grams.
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

  /// The last window of [from, to) that is in the set; `to` without one. REQUIRES: to <= windows.
  std::size_t lastContained(std::size_t from, std::size_t to) const;

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
  WindowSet expected;    // windows that are in the index, as far as is known
  WindowSet askedFirst;  // grams that tell of windows which are not thought to be in the index
  PackedBases packed;    // a read of which nothing is known, if it has bases alone
  std::array<Pending, kLargestGroup> pending;
  std::array<Strand, 4> strands;  // that are known
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

  /// Makes these strands known to this thread's next walks, in place of those before; they and
  /// what is known of them stay as they are until then.
  static void takeStrands(const std::array<Strand, 4>& strands);

  /// Releases what the walks of this thread have allocated. REQUIRES: no walk of it is alive.
  static void releaseBuffers();

 private:
  enum class Outcome { kNothing, kOnContig, kStopped };

  // Windows that are looked at together: in a long read, whatever is left is not gone through anew
  // for each.
  static constexpr std::size_t kLongestStretch = 256;

  static WalkBuffers& buffersOfThread();

  template <class Visit>
  Outcome visitFirst(const std::string& read, const Strand* strand, int64_t& i, Visit& visit);
  template <class Visit>
  Outcome visitHits(const std::string& read, std::size_t from, std::size_t to, int64_t& i,
                    Visit& visit);
  template <class Visit>
  Outcome visitSlot(const std::string& read, std::size_t window, uint64_t slot, int64_t& i,
                    Visit& visit);
  const Strand* takeUp(const std::string& read);
  uint64_t keyAt(std::string_view read, std::size_t window) const;
  bool mayHoldGram(std::size_t gram) const;
  std::size_t absentGram(std::size_t from, std::size_t end) const;
  std::size_t passAbsent(std::size_t from, std::size_t to, std::size_t most);
  void passDiagonal(const std::string& read, const Hit& hit);
  bool passRepeats(std::string_view read, const Entity& found, std::size_t window);
  void askFirst(std::size_t from, std::size_t to);
  void takeUpRun(std::size_t length, const Run& run, bool isTurned);
  void expectRun(std::size_t length, const Run& run);
  void passReverse(std::size_t length, const Run& run);

  bool asksFilter() const { return sideIndex.isMade() && packed_ != nullptr; }

  std::size_t windowsOf(std::string_view read) const {
    return read.size() - static_cast<std::size_t>(kmer_) + 1;
  }

  const HashSet& index_;
  int kmer_;
  // The read in hand, if it has bases alone; or the one whose reverse complement that is.
  const PackedBases* packed_ = nullptr;
  std::size_t turnedLength_ = 0;  // of the read in hand, if it is turned round; else 0
  bool knowsSpoiled_ = false;     // whether it is known which of its windows wrong bases spoil
  WalkBuffers& buffers_ = buffersOfThread();
};

template <class Visit>
void KmerWalk::uniqueHits(const std::string& read, int64_t& i, Visit visit) {
  const std::size_t windows = windowsOf(read);
  const Strand* const strand = takeUp(read);
  if (visitFirst(read, strand, i, visit) == Outcome::kStopped) return;
  if (asksFilter() && !knowsSpoiled_) askFirst(0, windows);
  // A hit mostly settles all that follows it, so one k-mer is tried at a time, and more only where
  // there was none.
  std::size_t most = 1;
  for (std::size_t from = buffers_.passed.firstMissing(0); from < windows;) {
    std::size_t until = from + 1;
    if (!buffers_.expected.contains(from)) {
      const std::size_t end = std::min(windows, from + kLongestStretch);
      const std::size_t passed = buffers_.passed.firstContained(from, end);
      until = passAbsent(from, buffers_.expected.firstContained(from, passed), most);
    }
    const Outcome outcome = visitHits(read, from, until, i, visit);
    if (outcome == Outcome::kStopped) return;
    most = outcome == Outcome::kOnContig ? 1 : std::min(4 * most, WalkBuffers::kLargestGroup);
    from = buffers_.passed.firstMissing(until);
  }
  i = static_cast<int64_t>(windows);
}

// Shows the hit of the first k-mer without asking the filter, as it mostly hits: by the slot that
// the scout knows, or by a look-up where nothing is known of the read. Where the scout knows no
// slot the window is left to the filter, so that the grams that are asked for are mostly those
// that the scout has had fetched.
template <class Visit>
KmerWalk::Outcome KmerWalk::visitFirst(const std::string& read, const Strand* strand, int64_t& i,
                                       Visit& visit) {
  uint64_t slot = index_.size;
  if (strand == nullptr) {
    slot = findBegun(index_, startProbe(index_, keyAt(read, 0)));
  } else {
    if (!strand->isTurned) slot = strand->scouted->firstSlot;
    if (slot == index_.size) return Outcome::kNothing;
  }
  buffers_.passed.insert(0);
  return visitSlot(read, 0, slot, i, visit);
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
      const Outcome here = visitSlot(read, window, findBegun(index_, probe), i, visit);
      if (here == Outcome::kStopped) return here;
      if (here == Outcome::kOnContig) outcome = here;
    }
  }
  return outcome;
}

// Shows the hit of a window that has been looked up, if it is one.
template <class Visit>
KmerWalk::Outcome KmerWalk::visitSlot(const std::string& read, std::size_t window, uint64_t slot,
                                      int64_t& i, Visit& visit) {
  if (slot == index_.size) return Outcome::kNothing;
  const Entity& found = index_.array[slot];
  if (found.unique == 0) {
    return passRepeats(read, found, window) ? Outcome::kOnContig : Outcome::kNothing;
  }
  const KmerPlace place = placeOf(found);
  i = static_cast<int64_t>(window);
  const Hit hit{place.scaffold, place.contig, static_cast<int64_t>(place.start) - i};
  if (visit(hit) == Walk::kStop) return Outcome::kStopped;
  passDiagonal(read, hit);
  return Outcome::kOnContig;
}

}  // namespace velk
