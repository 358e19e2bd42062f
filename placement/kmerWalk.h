// The rule by which a read finds the places where it may lie: its windows are looked at in order,
// and each k-mer that occurs at exactly one place in the contigs is a hit.
//
// What may be skipped, and how a k-mer is looked up, is the matter of the windows that the walk is
// given: all of them (placement/allWindows.h), or those that can be hits.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "kmer/contigWindows.h"

namespace velk {

/// Where a read lies by one of its k-mers: a diagonal of the read and a contig.
struct Hit {
  uint64_t scaffold;
  uint64_t contig;
  int64_t offset;  // contig position of the read's first base; negative in front of the contig

  auto operator<=>(const Hit&) const = default;  // NOLINT(modernize-use-nullptr): it means the 0
};

/// What the visitor of a hit says: look at the next hit, or end the walk.
enum class Walk { kGoOn, kStop };

/// Calls visit(hit) for the k-mers of a read that lie at exactly one place, in the order of the
/// read, until it answers Walk::kStop. Returns the window at which it was stopped; the number of
/// the read's windows when it was not. REQUIRES: visit answers alike for equal hits.
///
/// Windows are numbered by the position of their first base in the read:
///   count()           the number of windows of the read
///   first(), after(w) the first window to look at, and the next one behind w
///   uniquePlaceOf(w)  the place of the k-mer at w, if it occurs once
///   noteRefused(hit)  the visitor went on: another hit that is equal may be left out
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

}  // namespace velk
