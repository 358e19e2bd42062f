// Watches what becomes of reads near gaps, and notes it as evidence: reads in the flanks of gaps,
// and reads that would belong to a gap but were refused there. One object a batch, on one thread.
#pragma once

#include <cstdint>
#include <vector>

#include "placement/sink.h"
#include "run/assembly.h"
#include "run/evidence.h"

namespace velk::run {

class GapWatch {
 public:
  GapWatch(const Assembly& assembly, uint32_t library, Evidence& evidence)
      : assembly_(assembly), library_(library), evidence_(evidence) {}

  /// A read of `length` bases, whose mate has `mateLength` (0: a single read), was refused.
  void refused(const Refused& refused, int64_t length, int64_t mateLength);

  /// A read of `length` bases is accepted as an anchor.
  void anchored(const Hit& hit, int64_t length);

  /// Nothing more comes of the entry. `isFound`: something of it was found.
  void endEntry(bool isFound);

  /// Entries of which a read lies on a contig, so far.
  uint64_t placedEntries() const { return placedEntries_; }

 private:
  struct AtGap {
    uint64_t gap;  // number
    Refusal why;
    bool operator==(const AtGap&) const = default;
  };

  void place(const Hit& hit, int64_t length);
  void note(uint64_t scaffold, uint64_t contigBehind, Refusal why);

  const Assembly& assembly_;
  uint32_t library_;
  Evidence& evidence_;
  std::vector<AtGap> refused_;  // of the entry, each once
  bool isPlaced_ = false;       // whether a read of the entry lies on a contig
  bool isAccepted_ = false;     // whether it was accepted there, so that all else is no loss
  uint64_t placedEntries_ = 0;
};

}  // namespace velk::run
