// Assemblies on which an index or a skip may go wrong, and reads along them.
//
// Reads are cut anywhere, hang over contigs' ends, change from one contig to another, and have
// wrong bases, bases too many or too few, and letters that are no bases; some are shorter than a
// k-mer, some thousands of bases long.
#pragma once

#include <array>
#include <cstdint>

#include "tests/placement/randomPlacement.h"

namespace velk::test {

enum class Hard {
  kOneLetter,       // A alone, or nearly
  kTandem,          // units of 1 to 6 bases, exact and with wrong bases
  kLongTandem,      // units of 10 to 60 bases, some copies with a wrong base
  kManyCopies,      // a stretch in more copies than a seed's chain is long, between other bases
  kReversedCopies,  // stretches and their reverse complements
  kPalindromes,     // stretches that are their own reverse complements
  kOddLetters,      // N, IUPAC codes, lower case and carriage returns in the contigs
  kShortContigs,    // dozens of contigs about as long as a k-mer
  kLong,            // contigs and reads of thousands of bases
};

inline constexpr std::array<Hard, 9> kHardInputs = {
    Hard::kOneLetter,  Hard::kTandem,         Hard::kLongTandem,
    Hard::kManyCopies, Hard::kReversedCopies, Hard::kPalindromes,
    Hard::kOddLetters, Hard::kShortContigs,   Hard::kLong};

inline constexpr std::array<int, 14> kHardKmers = {0,  1,  2,  7,  8,  9,  16,
                                                   30, 31, 32, 33, 40, 64, 70};

/// The same for the same arguments.
RandomPlacement hardPlacement(Hard input, int kmer, uint32_t seed);

}  // namespace velk::test
