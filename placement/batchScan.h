// Placement of a batch: which reads are tried, on which strands, and in which order.
//
// The engine prepares the reads in small groups; then they are tried one after the other. A scan
// runs on one thread, which owns its share of the batch.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "placement/place.h"

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
  bool areOutward() const { return arePairs() && options.areOutward; }
};

template <class Engine, class Sink>
class BatchScan {
 public:
  BatchScan(Engine& engine, const Batch& batch, Sink& sink)
      : engine_(engine), batch_(batch), sink_(sink), a_(engine.group()), b_(engine.group()) {}

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

  // Prepares a group of entries from `first` on. Returns their number.
  std::size_t prepareFrom(int64_t first) {
    std::size_t count = 0;
    for (; count < a_.size() && first < batch_.entries; ++count, first += batch_.shares) {
      a_[count].bases = &batch_.a[first];
      if (batch_.arePairs()) b_[count].bases = &batch_.b[first];
    }
    const std::span<Prepared> a(a_.data(), count);
    const std::span<Prepared> b(b_.data(), batch_.arePairs() ? count : 0);
    const bool areOutward = batch_.areOutward();
    engine_.prepare(areOutward ? b : a, areOutward ? a : b, areOutward);
    return count;
  }

  static bool containsN(const std::string& bases) { return bases.find('N') != std::string::npos; }

  bool isShort(const std::string& bases) const {
    return bases.size() < static_cast<std::size_t>(batch_.options.kmer);
  }

  // Try a strand. Return whether the read or the pair is finished.
  bool trySingle(Strand read) {
    return isDone(read, placeSingle(read, batch_.scaffolds, batch_.options, sink_));
  }
  bool tryPair(Direction direction, Strand& anchor, Strand& mate) {
    return isDone(anchor,
                  placePair(direction, anchor, mate, batch_.scaffolds, batch_.options, sink_));
  }
  bool isDone(const Strand& read, int64_t stop) const {
    return stop <= static_cast<int64_t>(read.size()) - batch_.options.kmer;
  }

  void scanSingle(int64_t entry, Prepared& read) {
    const std::string& bases = batch_.a[entry];
    if (containsN(bases) || isShort(bases)) return;
    if (trySingle({engine_, read, bases, {entry, 0, false}})) return;
    trySingle({engine_, read, bases, {entry, 0, true}, &buffers_[0]});
  }

  // In the batch, an inward pair replaces an outward one: the reads swap and are
  // reverse-complemented. Their prepared data keeps the order as sequenced.
  void scanPair(int64_t entry, Prepared& a, Prepared& b) {
    std::string& first = batch_.a[entry];
    std::string& second = batch_.b[entry];
    if (containsN(first) || containsN(second)) return;
    const bool isOutward = batch_.areOutward();
    if (isOutward) LongReverseComplement(first, second);
    if (isShort(first) || isShort(second)) return;

    const int mate = isOutward ? 1 : 0;
    Prepared& firstRead = isOutward ? b : a;
    Prepared& secondRead = isOutward ? a : b;
    Strand forwardA(engine_, firstRead, first, {entry, mate, isOutward});
    Strand reversedA(engine_, firstRead, first, {entry, mate, !isOutward}, &buffers_[0]);
    Strand forwardB(engine_, secondRead, second, {entry, 1 - mate, isOutward});
    Strand reversedB(engine_, secondRead, second, {entry, 1 - mate, !isOutward}, &buffers_[1]);

    // Tries 1 and 2: the first read on the contig strand, the second one opposite. Tries 3 and 4:
    // the other way round. The first try whose walk is stopped is the last.
    if (tryPair(Direction::kForward, forwardA, reversedB)) return;
    if (tryPair(Direction::kReverse, reversedB, forwardA)) return;
    if (tryPair(Direction::kReverse, reversedA, forwardB)) return;
    tryPair(Direction::kForward, forwardB, reversedA);
  }

  Engine& engine_;
  const Batch& batch_;
  Sink& sink_;
  std::vector<Prepared> a_;  // the reads of the group, and their mates
  std::vector<Prepared> b_;
  std::array<std::string, 2> buffers_;  // for the reverse complements of an entry
};

/// Scans the share of the batch, and reports the results to `sink`, entry by entry.
template <class Engine, class Sink>
void scanBatch(Engine& engine, const Batch& batch, Sink& sink) {
  BatchScan<Engine, Sink>(engine, batch, sink).scan();
}

}  // namespace velk
