// What is seen of gaps from their flanks, for the run's evidence: how far exact reads reach into a
// gap from either side, and how many k-mers of the flanks cannot place a read.
#pragma once

#include <cstdint>
#include <vector>

#include "kmer/contigText.h"
#include "run/alignment.h"
#include "run/assembly.h"
#include "run/describe.h"
#include "run/evidence.h"

namespace velk::run {

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

}  // namespace velk::run
