// The tables of a result: gaps.tsv and gaps.bed, each gap with what was found for it; inserts.tsv,
// how long the fragments of each library are in the samples that were measured; and gaps.idx, where
// the reads of each gap stand in pairs.fq.gz and singles.fq.gz, so that those of one gap are read
// without the others. doc/run.md has the layout of all.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/diskFile.h"
#include "run/gapCounts.h"
#include "run/library.h"

namespace velk::run {

/// The text of gaps.tsv: a line of names, then a line a gap.
std::string gapTable(const Assembly& assembly, const std::vector<Library>& libraries,
                     const GapCounts& counts);

/// The text of gaps.bed.
std::string gapBed(const Assembly& assembly, const GapCounts& counts);

/// The names of the orientations of pairs, in the order of Library::inserts.
inline constexpr std::array kOrientationNames{"FR", "RF", "same"};

/// The text of inserts.tsv: a line of names, then a line for each library, orientation and bin that
/// has pairs.
std::string insertTable(const std::vector<Library>& libraries);

/// Where the reads and flanks of a gap begin in the text of each file, bytes, and where it lies.
struct GapEntry {
  uint64_t pairs;
  uint64_t singles;
  uint64_t flanks;
  uint64_t start;     // in its scaffold, from 0
  uint64_t end;       // behind its last base
  uint64_t scaffold;  // number, from 0
};

/// The bytes of the index. `entries`: of each gap, and at last one where all ends. `reach`: bases
/// around a gap within which its reads lie.
std::string gapIndexText(const std::vector<GapEntry>& entries, uint64_t reach);

/// Looks gaps up in an index file; nothing but what is asked for is read.
class GapIndex {
 public:
  /// Throws Failure where the file cannot be read or is none.
  explicit GapIndex(const std::string& file);

  uint64_t gaps() const { return gaps_; }
  uint64_t reach() const { return reach_; }

  /// The entry of a gap, and of what follows it. REQUIRES: gap < gaps(). Throws Failure.
  std::array<GapEntry, 2> entriesOf(uint64_t gap) const;

 private:
  void read(void* bytes, std::size_t count, uint64_t from) const;

  std::string file_;
  Descriptor descriptor_;
  uint64_t gaps_ = 0;
  uint64_t reach_ = 0;
};

}  // namespace velk::run
