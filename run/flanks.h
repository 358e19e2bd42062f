// The flanks of gaps. They are written to flanks.fa.gz, which an assembly of a gap's reads is set
// beside. And what is seen from them is noted as evidence: how far exact reads reach into a gap
// from either side, how many k-mers of the flanks cannot place a read, which reads lie in them, and
// which would belong to the gap but were refused there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kmer/contigText.h"
#include "placement/verdict.h"
#include "run/alignment.h"
#include "run/alignmentRecords.h"
#include "run/assembly.h"
#include "run/evidence.h"

namespace velk::run {

/// So many bases of each flank are kept at most.
constexpr uint64_t kLongestFlank = 500;

/// The two records of a gap, each with its sequence on one line: the end of the contig in front,
/// and the start of the one behind.
std::string flanksOf(const Assembly& assembly, uint64_t gap);

/// Bases of a gap that a read covers from either side.
struct Reached {
  int64_t front = 0;
  int64_t behind = 0;
};

/// How far an aligned read reaches into a gap. Both lie on one scaffold.
Reached reachInto(const Stretch& gap, const Stretch& read);

/// Notes how far the exact reads among these records reach into their gaps. Any thread may call it.
void noteReaches(const Assembly& assembly, const std::vector<OutRecord>& records,
                 Evidence& evidence);

/// How far into the contigs beside a gap its reads may lie, bases.
struct FlankReach {
  uint64_t bigGapLength;  // of a gap at which all libraries are used
  uint64_t atBigGaps;
  uint64_t atOthers;
};

/// Notes, of all gaps, the k-mers that begin within reach of the gap in either flank, and those of
/// them that are not unique. REQUIRES: `text` is that of the index of the assembly's model.
void noteRepeats(const ContigText& text, const Assembly& assembly, const FlankReach& reach,
                 Evidence& evidence);

/// Watches what becomes of reads near gaps. One object a batch, on one thread.
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
