// Placement of one read or one pair on one strand: judges each unique hit, and reports the result
// to a sink (placement/verdict.h).
//
// Read is one strand of a read:
//   std::size_t size() const;      its number of bases
//   const std::string& bases();    its bases, made at the first call
//   const Origin& origin() const;  where it comes from
//   int64_t visitHits(visit);      visitUniqueHits of its windows (placement/kmerWalk.h)
#pragma once

#include <cassert>
#include <cstddef>
#include <set>
#include <string>

#include "placement/edgeCheck.h"
#include "placement/verdict.h"

namespace velk {

/// The Read that placeSingle and placePair take.
template <class Engine>
class ReadStrand {
 public:
  using Prepared = typename Engine::Prepared;

  /// The given bases or, with a buffer, their reverse complement, which is made in the buffer.
  /// origin.isReversed: whether the strand is the reverse complement of the prepared read.
  ReadStrand(Engine& engine, Prepared& read, const std::string& bases, const Origin& origin,
             std::string* buffer = nullptr)
      : engine_(engine), read_(read), given_(bases), origin_(origin), buffer_(buffer) {}

  Prepared& prepared() { return read_; }
  const Origin& origin() const { return origin_; }
  std::size_t size() const { return given_.size(); }

  const std::string& bases() {
    if (buffer_ == nullptr) return given_;
    if (!isMade_) {
      buffer_->resize(size());
      ReverseComplementSeq(*buffer_, given_);
      isMade_ = true;
    }
    return *buffer_;
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
  std::string* buffer_;
  bool isMade_ = false;
};

/// Visits the hits of `read` until one is accepted or ends the walk. judge(hit) returns the
/// verdict; accept(hit, verdict) is called for an accepted hit. Returns the window at which the
/// walk stopped.
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

/// Places one read over a contig's end next to a gap: at most one record. Returns the window of the
/// accepted hit; the number of windows if there is none. REQUIRES: read.size() >= options.kmer.
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

/// Walks over the anchor's hits. An accepted hit gives up to three records: the mate, the mate in
/// the gap beyond, the anchor. Returns the window at which the walk stopped; the number of the
/// anchor's windows if it did not. REQUIRES: anchor.size() >= options.kmer; both reads are on the
/// strand on which they are expected.
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
