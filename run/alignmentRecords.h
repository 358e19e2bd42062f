// The alignment records that a found read gets, with how sure its places are (doc/places.md).
// Pure functions; any thread may call them. run/bam.h writes the records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/found.h"
#include "run/library.h"
#include "run/placeCheck.h"

namespace velk::run {

/// An alignment record, its texts as they are to be written.
struct OutRecord {
  uint32_t library;
  uint32_t input;
  uint64_t record;
  int mate;  // 0, or 1 of a pair
  std::string name;
  uint16_t flag;
  int64_t scaffold;  // -1: none
  int64_t position;  // from 0; of the first base that is not clipped; -1: none
  int mapq;
  std::vector<uint32_t> cigar;  // as BAM has it: length << 4 | operation
  int differences;              // aligned bases that are not the scaffold's
  int64_t mateScaffold;
  int64_t matePosition;
  int64_t templateLength;
  std::string bases;    // on the scaffold's strand if it is mapped, else as sequenced
  std::string quality;  // the same way round, Phred+33; empty: none
  int64_t gap;          // number, from 0: in which it was found, or else the other read of its pair
  int64_t gapPosition;  // of a record that was found: as velk writes it
  char kind;            // 'E'dge, 'M'ate, 'A'nchor
  bool isFound;         // false: it is there because the other read of its pair was found
  Certainty certainty;
};

/// The records of an entry: of a pair at least one for each read. The first reads' come first, and
/// of each read the primary one. `mapCut`: the least share of equal bases in an overlap.
std::vector<OutRecord> alignmentRecords(const FoundEntry& entry, const Library& library,
                                        const Assembly& assembly, double mapCut);

/// A read at a gap: found there, or with the other read of its pair.
struct GapRead {
  int64_t gap;
  int mate;
  bool isFound;
  Certainty certainty;
};

/// Which reads of an entry belong to which gaps, each once a gap, ordered by gap and read: those
/// found, and beside each the other read of its pair.
std::vector<GapRead> readsOfGaps(const std::vector<OutRecord>& records);

}  // namespace velk::run
