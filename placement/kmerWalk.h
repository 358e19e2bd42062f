// The rule by which placement finds where a read may lie: the walk visits the read's windows in
// order, and each k-mer that occurs at exactly one place in the contigs is a hit.
//
// The walk takes a class of windows. The class decides which windows are skipped and how a k-mer is
// looked up: AllWindows looks up all, CandidateWindows (placement/fastEngine.h) those that can be
// hits.
#pragma once

#include <cassert>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "kmer/Sequence.h"
#include "kmer/contigWindows.h"

namespace velk {

/// The place of a read that follows from one of its k-mers: a diagonal of the read and a contig.
struct Hit {
  uint64_t scaffold;
  uint64_t contig;
  int64_t offset;  // contig position of the read's first base; negative in front of the contig

  auto operator<=>(const Hit&) const = default;  // NOLINT(modernize-use-nullptr): it means the 0
};

/// The answer of the visitor of a hit: visit the next hit, or end the walk.
enum class Walk { kGoOn, kStop };

/// Calls visit(hit) for the k-mers of a read that lie at exactly one place, in the order of the
/// read, until it answers Walk::kStop. Returns the window at which it was stopped; the number of
/// the read's windows when it was not. REQUIRES: visit answers alike for equal hits.
///
/// Windows are numbered by the position of their first base in the read:
///   count()           the number of windows of the read
///   first(), after(w) the first window to visit, and the next one after w
///   uniquePlaceOf(w)  the place of the k-mer at w, if it occurs once
///   noteRefused(hit)  later hits equal to this one may be skipped: the visitor would go on
template <class Windows, class Visit>
int64_t visitUniqueHits(Windows& windows, Visit visit) {
  for (std::size_t w = windows.first(); w < windows.count(); w = windows.after(w)) {
    const std::optional<KmerPlace> place = windows.uniquePlaceOf(w);
    if (!place) continue;
    const Hit hit{place->scaffold, place->contig,
                  static_cast<int64_t>(place->start) - static_cast<int64_t>(w)};
    if (visit(hit) == Walk::kStop) return static_cast<int64_t>(w);
    windows.noteRefused(hit);
  }
  return static_cast<int64_t>(windows.count());
}

/// All windows of a read. Each is packed letter by letter and looked up. Index is a class with a
/// member placeOf(key), like PlainIndex (kmer/plainIndex.h).
template <class Index>
class AllWindows {
 public:
  /// REQUIRES: bases.size() >= kmer; the index and the bases outlive the windows.
  AllWindows(const Index& index, std::string_view bases, int kmer)
      : index_(index), bases_(bases), kmer_(static_cast<std::size_t>(kmer)) {
    assert(bases.size() >= kmer_);
  }

  std::size_t count() const { return bases_.size() - kmer_ + 1; }
  static std::size_t first() { return 0; }
  static std::size_t after(std::size_t window) { return window + 1; }

  std::optional<KmerPlace> uniquePlaceOf(std::size_t window) const {
    const auto answer = index_.placeOf(packedKmer(bases_.substr(window, kmer_)));
    if (!answer || !answer->isUnique) return std::nullopt;
    return answer->first;
  }

  static void noteRefused(const Hit&) {}

 private:
  const Index& index_;
  std::string_view bases_;
  std::size_t kmer_;
};

}  // namespace velk
