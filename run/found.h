// What the search hands on: the reads and pairs of which something was found.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "placement/verdict.h"
#include "reads/recordSource.h"

namespace velk::run {

/// A record of the search: a read in a gap. Numbers of scaffolds and contigs are the model's.
struct FoundPlace {
  int mate;         // which read of the entry
  bool isReversed;  // whether its reverse complement lies so on the scaffold
  RecordKind kind;
  uint64_t scaffold;
  uint64_t contigBehind;  // the gap: in front of this contig
  int64_t position;       // from the gap's first base to the read's, as velk writes it
  int64_t unmoved;        // the same before a mate was moved to the nearer end of the gap
  uint64_t hitContig;     // of the hit: of the read itself (kEdge, kAnchor), or of its anchor
  int64_t hitOffset;      // of the read that was hit, from the hit contig's first base
  std::string bases{};    // of the read, on the scaffold's strand
};

/// The anchor of a pair: the read that lies on a contig.
struct FoundAnchor {
  int mate;
  bool isReversed;
  uint64_t scaffold;
  uint64_t contig;
  int64_t offset;  // of its first base, from the contig's first base
};

/// A read, or a pair, with all that was found of it, in the order in which it was found.
struct FoundEntry {
  uint32_t library;
  uint32_t input;                          // of the run, from 0
  uint64_t record;                         // of the input, from 0; a pair is one
  int reads;                               // 1, or 2 of a pair
  std::array<reads::RecordView, 2> texts;  // as they were sequenced
  std::vector<FoundPlace> places;
  std::optional<FoundAnchor> anchor;  // of pairs
};

}  // namespace velk::run
