// Random small assemblies, parameters and reads for the comparison of velk with its plain model.
//
// Sized so that rules meet: short contigs with repeats, gaps of the order of the inserts (negative
// ones too), reads mostly from the contigs' ends, and pairs that span what the insert says.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/placement/plainPlacement.h"

namespace velk::test {

struct RandomPlacement {
  std::vector<TestScaffold> assembly;
  PlainSettings settings;
  int workers;
  std::vector<std::string> reads;  // a single-end batch
  std::vector<std::string> first;  // a batch of pairs
  std::vector<std::string> second;
};

/// The same for the same seed.
RandomPlacement randomPlacement(uint32_t seed);

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

/// The same for the same seed. K-mers have 16 to 32 bases.
RandomPlacement repeatPlacement(uint32_t seed);

/// For k-mers of so many bases, from 1 on.
RandomPlacement mismatchPlacement(int kmer);

}  // namespace velk::test
