// The scaffold model: every scaffold of the assembly, cut at its gaps into contigs.
//
// The driver calls one of the two overloads of InitialScaffold and then the matching loader:
//   scaffold FASTA:  InitialScaffold(info, file, sum), LoadScaffolds
//   contig FASTA:    CountscaftigNum, InitialScaffold(info, counts, gapSum), contigtoScafInfo
// The model is written by the main thread before any worker exists and is read-only afterwards, so
// workers read it without locks. A contig is addressed by (scaffold index, contig index).
// Parameters bear the names of the globals that the driver passes. What holds after loading:
//   1. contigsSum is 0 only for a scaffold that is empty or all N, or whose header was swallowed by
//      the one before; contigsInfo is null only for the latter.
//   2. frontGapNum of every contig but a scaffold's first is below the run's number of gaps.
//   3. No contig is longer than 2^31 - 1 bases.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <string_view>

#include "driver/textInput.h"

namespace velk {

/// A read kept packed, 2 bits a base. Declared for `readsInFrontGap`; no stage fills it.
struct ReadInfo {
  uint32_t* bitSeq;     // bases, code of kmer/Sequence.h
  uint32_t readLength;  // bases
};

struct ContigInfo {
  std::string contigSeq;      // bases as they stand in the input, trimmed by CuttEdge at both ends
  ReadInfo* readsInFrontGap;  // always null
  uint64_t frontGapNum;       // run-wide number of the gap in front, from 0; for a first contig 0
                              // (scaffold input) or all bits set (contig input)
  uint64_t frontGapSize;      // length of that gap, bases; holds a signed value in contig input

  // Bases that lie elsewhere and stay there, in place of contigSeq; without any it is null.
  std::string_view basesElsewhere{};

  std::string_view bases() const {
    return basesElsewhere.data() != nullptr ? basesElsewhere : std::string_view(contigSeq);
  }
};

struct ScaffoldInfo {
  std::string scaffoldId;   // name, as cut out of the header
  uint32_t contigsSum;      // entries of contigsInfo
  ContigInfo* contigsInfo;  // contigs in sequence order, null until the scaffold is split
};

extern ScaffoldInfo* scaffoldInfo;  // null: the model, written by InitialScaffold and the loaders
extern uint32_t scaffoldSum;        // 0: entries of scaffoldInfo

/// Contig counts, later scaffold indexes, by scaffold id in byte-wise order.
using ScaftigMap = std::map<std::string, int>;

/// Returns the number of lines of `file` that begin with '>'.
/// Exits with status 255 after "Fail to load file FILE" on standard output when it can't be opened.
uint32_t contignum(const std::string& file);

/// Sets `scaffoldSum` to contignum(scaffoldFile) and `scaffoldInfo` to a new array of that many
/// scaffolds without contigs. Exits with status 1 when there is no memory for it.
void InitialScaffold(ScaffoldInfo*& scaffoldInfo, const std::string& scaffoldFile,
                     uint32_t& scaffoldSum);

/// Sets `scaffoldInfo` to a new array with one scaffold per entry of `scaftigNum`, in key order,
/// each with as many empty contigs as the entry counts; replaces each count by the scaffold's index
/// and adds the number of gaps to `gapSum` (inout). Exits with status 1 when there is no memory.
void InitialScaffold(ScaffoldInfo*& scaffoldInfo, ScaftigMap& scaftigNum, uint64_t& gapSum);

/// Reads the scaffold FASTA `scaffoldFile` into the `scaffoldSum` scaffolds of `scaffoldInfo`, cuts
/// them at their gaps, advances `gapSum` (inout) by the gaps met, and writes the side files
/// `scaffoldFile` + ".contigPos" and ".contig" (doc/formats.md).
/// Exits with status 1 when a file can't be opened, read or written, with status 3 on a header that
/// gives no id, with status 2 when there is no memory for a scaffold's contigs.
void LoadScaffolds(ScaffoldInfo* scaffoldInfo, std::string scaffoldFile, uint32_t scaffoldSum,
                   uint64_t& gapSum);

/// The reading half of LoadScaffolds: reads `input` into the `scaffoldSum` scaffolds of
/// `scaffoldInfo`, advances `gapSum` (inout) and writes a line per contig to `positions`.
/// Exits with status 1, 2 or 3 like LoadScaffolds.
void readScaffolds(TextInput& input, ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum,
                   uint64_t& gapSum, std::ostream& positions);

/// Cuts `scaffoldSeq` at its runs of N or n into the contigs of scaffoldInfo[scaffoldNum], named
/// `scaffoldId`; `gapNum` (inout) is the number of the next gap. Writes one line per kept contig to
/// `contigPosOutfile`. Exits with status 2 when there is no memory for the contigs, with status 3
/// when a contig is too long.
void splitScaffold(ScaffoldInfo* scaffoldInfo, const std::string& scaffoldSeq,
                   const std::string& scaffoldId, uint32_t& scaffoldNum, uint64_t& gapNum,
                   std::ostream& contigPosOutfile);

/// Returns `str` up to its first blank or tab.
std::string delete_tail(const std::string& str);

/// Writes the contigs of the first `scaffoldNum` scaffolds to `scaffoldFile` + ".contig".
/// Exits with status 1 when the file can't be opened or written.
void printContigs(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldNum,
                  const std::string& scaffoldFile);

/// Adds to `scaftigNum` (inout) the number of contigs that the contig FASTA `file` holds of every
/// scaffold id. Exits with status 255 when the file can't be opened or a header has no id, with
/// status 1 when the file can't be read.
void CountscaftigNum(const std::string& file, ScaftigMap& scaftigNum);

/// Fills the contigs of `scaffoldInfo` from the contig FASTA `file`; `scaftigNum` gives the index
/// of every scaffold id. Exits with status 255 when the file can't be opened or has changed since
/// it was counted, a header gives no gap length, sequence stands before the first header or a
/// contig is too long; with status 1 when the file can't be read.
void contigtoScafInfo(const std::string& file, ScaffoldInfo* scaffoldInfo,
                      const ScaftigMap& scaftigNum);

/// Releases the model and leaves an empty one.
void releaseScaffolds();

/// The names of the files that are written beside a scaffold file.
inline std::string contigPositionsFileOf(const std::string& scaffoldFile) {
  return scaffoldFile + ".contigPos";
}

inline std::string contigFileOf(const std::string& scaffoldFile) {
  return scaffoldFile + ".contig";
}

}  // namespace velk
