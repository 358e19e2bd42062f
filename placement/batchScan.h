// Placement of a batch: which reads are tried, on which strands, and in which order.
//
// Reads are prepared by the engine in small groups and then tried one after the other. Everything
// runs on one thread; the batch's share is its own.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "contig/contig.h"
#include "placement/Read2Scaf.h"
#include "placement/place.h"
#include "placement/readStrand.h"

namespace velk {

/// A batch, and the share of it that is scanned: entries share, share + shares, ...
struct Batch {
  std::string* a;  // the reads, or the first reads of pairs
  std::string* b;  // the second reads of pairs, or null
  int64_t entries;
  int64_t share;
  int64_t shares;
  const ScaffoldInfo* scaffolds;
  PlacementOptions options;

  bool arePairs() const { return b != nullptr; }
  bool areTurned() const { return arePairs() && options.insert > kLongestShortInsert; }
};

template <class Engine, class Sink>
class BatchScan {
 public:
  BatchScan(Engine& engine, const Batch& batch, Sink& sink)
      : engine_(engine), batch_(batch), sink_(sink) {}

  /// Scans the share, entry by entry.
  void scan() {
    for (int64_t entry = batch_.share; entry < batch_.entries;) {
      const std::size_t count = prepareFrom(entry);
      for (std::size_t e = 0; e < count; ++e, entry += batch_.shares) {
        batch_.arePairs() ? scanPair(entry, a_[e], b_[e]) : scanSingle(entry, a_[e]);
      }
    }
  }

 private:
  using Prepared = typename Engine::Prepared;
  using Strand = ReadStrand<Engine>;
  using Group = std::array<Prepared, Engine::kGroup>;

  // Has a group of entries prepared, from this one on. Returns how many it has.
  std::size_t prepareFrom(int64_t first) {
    std::array<Prepared*, Engine::kGroup> a;
    std::array<Prepared*, Engine::kGroup> b;
    std::size_t count = 0;
    for (; count < Engine::kGroup && first < batch_.entries; ++count, first += batch_.shares) {
      a_[count].bases = &batch_.a[first];
      a[count] = &a_[count];
      if (!batch_.arePairs()) continue;
      b_[count].bases = &batch_.b[first];
      b[count] = &b_[count];
    }
    const std::span<Prepared*> allOfA(a.data(), count);
    const std::span<Prepared*> allOfB(b.data(), batch_.arePairs() ? count : 0);
    if (batch_.areTurned()) {
      engine_.prepare(allOfB, allOfA, true);
    } else {
      engine_.prepare(allOfA, allOfB, false);
    }
    return count;
  }

  bool containsN(const Prepared& read) const {
    return !engine_.hasBasesAlone(read) && read.bases->find('N') != std::string::npos;
  }

  std::size_t kmer() const { return static_cast<std::size_t>(batch_.options.kmer); }

  int64_t windowsOf(const Strand& read) const {
    return static_cast<int64_t>(read.size() - kmer() + 1);
  }

  // Each tries a strand and returns whether that settled the read, or the pair.
  bool trySingle(Strand& read) {
    return placeSingle(read, batch_.scaffolds, batch_.options, sink_) != windowsOf(read);
  }
  bool tryPair(Direction direction, Strand& anchor, Strand& mate) {
    return placePair(direction, anchor, mate, batch_.scaffolds, batch_.options, sink_) !=
           windowsOf(anchor);
  }

  void scanSingle(int64_t entry, Prepared& read) {
    if (containsN(read) || read.bases->size() < kmer()) return;
    Strand forward(engine_, read, *read.bases, {entry, 0, false});
    if (trySingle(forward)) return;
    Strand reversed(engine_, read, {entry, 0, true});
    trySingle(reversed);
  }

  void scanPair(int64_t entry, Prepared& a, Prepared& b) {
    if (containsN(a) || containsN(b)) return;
    if (batch_.areTurned()) {
      scanTurned(entry, a, b);
      return;
    }
    if (a.bases->size() < kmer() || b.bases->size() < kmer()) return;
    Strand forwardA(engine_, a, *a.bases, {entry, 0, false});
    Strand reversedA(engine_, a, {entry, 0, true});
    Strand forwardB(engine_, b, *b.bases, {entry, 1, false});
    Strand reversedB(engine_, b, {entry, 1, true});
    tryStrands(forwardA, reversedA, forwardB, reversedB);
  }

  // Each read takes the other's place in the buffer, as its reverse complement.
  void scanTurned(int64_t entry, Prepared& a, Prepared& b) {
    std::string& first = *a.bases;
    std::string& second = *b.bases;
    LongReverseComplement(first, second);
    if (first.size() < kmer() || second.size() < kmer()) return;
    Strand forwardFirst(engine_, b, first, {entry, 1, true});
    Strand reversedFirst(engine_, b, first, turnedBack_[0], {entry, 1, false});
    Strand forwardSecond(engine_, a, second, {entry, 0, true});
    Strand reversedSecond(engine_, a, second, turnedBack_[1], {entry, 0, false});
    tryStrands(forwardFirst, reversedFirst, forwardSecond, reversedSecond);
  }

  // Tries 1 and 2 read the fragment as a on the contig strand and b opposite, 3 and 4 the other way
  // round. The first try that settles the pair ends it.
  void tryStrands(Strand& a, Strand& reversedA, Strand& b, Strand& reversedB) {
    if (tryPair(Direction::kForward, a, reversedB)) return;
    if (tryPair(Direction::kReverse, reversedB, a)) return;
    if (tryPair(Direction::kReverse, reversedA, b)) return;
    tryPair(Direction::kForward, b, reversedA);
  }

  Engine& engine_;
  const Batch& batch_;
  Sink& sink_;
  Group a_{};
  Group b_{};
  std::array<std::string, 2> turnedBack_;  // reverse complements of a turned pair
};

/// Scans the batch's share and tells `sink` what came of it, entry by entry.
template <class Engine, class Sink>
void scanBatch(Engine& engine, const Batch& batch, Sink& sink) {
  BatchScan<Engine, Sink>(engine, batch, sink).scan();
}

}  // namespace velk
