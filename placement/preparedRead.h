// A read, and what the fast engine knows of it before its windows are looked up.
//
// All of it can be found out again by look-ups: no answer depends on what is known.
#pragma once

#include <string>
#include <vector>

#include "kmer/packedBases.h"
#include "kmer/seedIndex.h"
#include "placement/alignment.h"
#include "placement/windowSet.h"

namespace velk {

struct PreparedRead {
  std::string* bases = nullptr;

  bool isPacked = false;  // it has bases alone, and a window of them
  PackedBases packed{};
  std::size_t length = 0;   // bases packed
  std::size_t windows = 0;  // of the index's window length

  bool isAligned = false;  // whether `alignment` has been asked for
  Alignment alignment{};   // if it is there

  bool isSifted = false;  // whether `absent` is known
  WindowSet absent{};     // windows that the index has on neither strand

  std::string reversed{};  // the reverse complement of *bases
  bool hasReversed = false;

  // The look-up of a window, and of seeds, on their way.
  SeedIndex::LookUp lookUp{};
  std::vector<SeedIndex::SeedLookUp> seeds{};
};

}  // namespace velk
