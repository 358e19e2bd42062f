// The k-mer walk: the one way in which placement looks reads up in the index.
//
// All three placement routines stand on it, and whatever makes look-ups faster belongs in here or
// in the hash set: callers see nothing but a read's unique hits in order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kmer/Sequence.h"
#include "kmer/fetchKmers.h"
#include "kmer/hashSet.h"

namespace velk {

/// What the visitor of a hit says: look at the next hit, or end the walk.
enum class Walk { kGoOn, kStop };

/// A unique k-mer of the read in the index.
struct Hit {
  uint64_t scaffold;  // index in scaffoldInfo
  uint64_t contig;    // index in the scaffold
  int64_t offset;     // contig position of the read's first base, may be negative
};

/// Calls visit(hit) for every k-mer of `read` that lies at exactly one place in `index`, in the
/// order of the read, until it answers Walk::kStop. i (out): position in the read of the k-mer that
/// was stopped at; the number of the read's k-mers when none was.
/// REQUIRES: read.size() >= kmer >= 0; `index` is the run's own.
template <class Visit>
void walkUniqueHits(const HashSet& index, const std::string& read, int kmer, int64_t& i,
                    Visit visit) {
  const auto length = static_cast<std::size_t>(kmer);
  const auto windows = static_cast<int64_t>(read.size() - length + 1);
  const std::string_view bases = read;
  Entity probe{};
  for (i = 0; i < windows; ++i) {
    probe.bitSeq = 0;
    Seq2Kmer(probe.bitSeq, bases.substr(static_cast<std::size_t>(i), length));
    // A miss answers with the sentinel slot, which reads as not unique.
    const Entity& found = index.array[get_hashset(&index, probe)];
    if (found.unique == 0) continue;
    const KmerPlace place = placeOf(found);
    const Hit hit{place.scaffold, place.contig, static_cast<int64_t>(place.start) - i};
    if (visit(hit) == Walk::kStop) return;
  }
}

}  // namespace velk
