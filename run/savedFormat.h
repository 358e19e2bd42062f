// The file of a saved index: a header of one page, then parts that begin on pages, one behind the
// other, as memory holds them. doc/run.md describes it. run/saveIndex.cpp writes it,
// run/savedIndex.cpp reads it.
//
// A change of the parts, or of what the engine's index holds, raises kVersion.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "run/assembly.h"

namespace velk::run::saved {

constexpr std::array<char, 8> kMagic{'v', 'e', 'l', 'k', '-', 'i', 'x', '\n'};
constexpr uint32_t kByteOrder = 0x01020304;
constexpr uint32_t kVersion = 1;
constexpr uint64_t kPage = 4096;  // bytes

using Md5Digits = std::array<char, 32>;  // hexadecimal; all zero: there is no sum

/// From kText on those of SeedIndex::forEachKept, in its order.
enum class Part : uint8_t {
  kPlaceholders,     // lengths given, as numbers of 64 bits
  kNames,            // of scaffolds, each with a zero behind it
  kScaffolds,        // SavedScaffold
  kContigs,          // SavedContig, of all scaffolds
  kGapPlaceholders,  // of all gaps, lengths as numbers of 64 bits
  kBases,            // of all contigs, letters
  kText,
  kSeeds,
  kSeedRanges,
  kWindows,
  kWindowRanges,
};
constexpr std::size_t kParts = 11;

constexpr std::array<const char*, kParts> kPartNames{"list of placeholders",
                                                     "names",
                                                     "scaffolds",
                                                     "contigs",
                                                     "placeholders of gaps",
                                                     "bases",
                                                     "text",
                                                     "seeds",
                                                     "ranges of seeds",
                                                     "windows",
                                                     "ranges of windows"};

/// Whether the part is so small that its sum is taken whenever the file is opened.
constexpr bool isSmall(Part part) {
  return part != Part::kBases && part != Part::kText && part != Part::kSeeds &&
         part != Part::kWindows;
}

struct PartPlace {
  uint64_t offset;  // in the file
  uint64_t bytes;
  Md5Digits md5;
};

/// A file that the index was made of.
struct Source {
  uint64_t bytes;
  Md5Digits md5;
};

struct Header {
  std::array<char, 8> magic;
  uint32_t byteOrder;
  uint32_t version;
  uint64_t bytes;  // of the file
  int64_t kmer;
  int64_t shortestContig;
  int64_t cut;
  int64_t readLength;  // by which contigs are cut; 0 where none are
  Source assembly;
  Md5Digits assemblyEnds;  // of the assembly's first and last bytes
  Source agp;              // no sum: there is none
  AssemblyNotes notes;
  std::array<PartPlace, kParts> parts;
  Md5Digits md5;  // of all of the header in front of it
};
static_assert(std::has_unique_object_representations_v<Header>);
static_assert(sizeof(Header) <= kPage);

struct SavedScaffold {
  static constexpr uint64_t kNone = ~uint64_t{0};

  uint64_t length;    // bases
  uint64_t lastBase;  // where a single one lies behind the last gap; kNone: nowhere
  uint64_t contigs;   // number
};

struct SavedContig {
  uint64_t start;         // of its first base, in the scaffold
  uint64_t end;           // behind its last base
  uint64_t frontGapNum;   // as the model has them
  uint64_t frontGapSize;  //
  uint64_t unknown;       // bases N in the gap in front
  uint32_t placeholders;  // number of that gap
  uint32_t hasNonAcgt;
};
static_assert(std::has_unique_object_representations_v<SavedContig>);

}  // namespace velk::run::saved
