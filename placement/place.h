// Placement of one read or of one pair, on one strand: walks over the read's unique hits, has each
// judged and gives a sink what came of it.
//
// Read is one strand of a read:
//   std::size_t size() const;      its number of bases
//   const std::string& bases();    made when it is asked for
//   const Origin& origin() const;  where it comes from
//   int64_t visitHits(visit);      visitUniqueHits of its windows (placement/kmerWalk.h)
#pragma once

#include <cassert>
#include <cstddef>
#include <set>
#include <string>

#include "placement/Read2Scaf.h"
#include "placement/verdict.h"

namespace velk {

/// A Read as placement/place.h takes it.
template <class Engine>
class ReadStrand {
 public:
  using Prepared = typename Engine::Prepared;

  /// `bases` as they stand, or their reverse complement, to be made in `room`. origin.isReversed:
  /// whether that is the reverse complement of what was prepared.
  ReadStrand(Engine& engine, Prepared& read, const std::string& bases, const Origin& origin,
             std::string* room = nullptr)
      : engine_(engine), read_(read), given_(bases), origin_(origin), room_(room) {}

  Prepared& prepared() { return read_; }
  const Origin& origin() const { return origin_; }
  std::size_t size() const { return given_.size(); }

  const std::string& bases() {
    if (room_ == nullptr) return given_;
    if (!isMade_) {
      room_->resize(size());
      ReverseComplementSeq(*room_, given_);
      isMade_ = true;
    }
    return *room_;
  }

  template <class Visit>
  int64_t visitHits(Visit visit) {
    return engine_.visitHits(*this, visit);
  }

 private:
  Engine& engine_;
  Prepared& read_;
  const std::string& given_;
  Origin origin_;
  std::string* room_;
  bool isMade_ = false;
};

/// Visits the hits of `read` until one is accepted or ends the walk. judge(hit) is the verdict;
/// accept(hit, verdict) takes one that is no refusal. Returns where the walk stopped.
template <class Read, class Sink, class Judge, class Accept>
int64_t walkHits(Read& read, Sink& sink, Judge judge, Accept accept) {
  std::set<Hit> refused;  // hits already reported to the sink
  return read.visitHits([&](const Hit& hit) {
    const Verdict verdict = judge(hit);
    if (verdict.refusal == Refusal::kNone) {
      accept(hit, verdict);
      return Walk::kStop;
    }
    if constexpr (Sink::kTakesRefusals) {
      if (refused.insert(hit).second) {
        sink.refused(
            Refused{read.origin(), hit, verdict.refusal, verdict.gap, verdict.matePosition});
      }
    }
    // KEPT: a large insert at a small gap gives up the whole pair
    // (CheckForwardRead.LargeInsertAtASmallGapStopsTheWalk)
    return verdict.refusal == Refusal::kSmallGap ? Walk::kStop : Walk::kGoOn;
  });
}

/// Places one read across a contig's end next to a gap: at most one record. Returns the window that
/// placed it; the number of its windows when none did. REQUIRES: read.size() >= options.kmer.
template <class Read, class Sink>
int64_t placeSingle(Read& read, const ScaffoldInfo* scaffolds, const PlacementOptions& options,
                    Sink& sink) {
  assert(read.size() >= static_cast<std::size_t>(options.kmer));
  return walkHits(
      read, sink,
      [&](const Hit& hit) {
        return judgeSingle(hit, read.bases(), scaffolds[hit.scaffold], options);
      },
      [&](const Hit& hit, const Verdict& verdict) {
        sink.found(Found{read.origin(), hit, verdict.places[0]}, read.bases());
      });
}

/// Walks over the anchor's hits. An accepted hit records the mate in the next gap and in the gap
/// beyond, and the anchor, as far as each lies in one. Returns the window of that hit;
/// the number of the anchor's windows when none did. REQUIRES: anchor.size() >= options.kmer; both
/// on the strand on which they are expected.
template <class Read, class Sink>
int64_t placePair(Direction direction, Read& anchor, Read& mate, const ScaffoldInfo* scaffolds,
                  const PlacementOptions& options, Sink& sink) {
  assert(anchor.size() >= static_cast<std::size_t>(options.kmer));
  const auto mateLength = static_cast<int64_t>(mate.size());
  return walkHits(
      anchor, sink,
      [&](const Hit& hit) {
        return judgePair(direction, hit, anchor.bases(), mateLength, scaffolds[hit.scaffold],
                         options);
      },
      [&](const Hit& hit, const Verdict& verdict) {
        sink.anchored(Anchored{anchor.origin(), hit, verdict.gap, verdict.matePosition});
        for (std::size_t r = 0; r < verdict.count; ++r) {
          const GapPlace& place = verdict.places[r];
          Read& read = place.kind == RecordKind::kAnchor ? anchor : mate;
          sink.found(Found{read.origin(), hit, place}, read.bases());
        }
      });
}

}  // namespace velk
