// The keys that are cut out of packed bases, against those that are packed letter by letter.
#include "kmer/packedBases.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <string>
#include <vector>

#include "kmer/Sequence.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

uint64_t packed(const std::string& bases) {
  uint64_t key = 0;
  Seq2Kmer(key, bases);
  return key;
}

TEST(PackedBases, KeysOfEveryLengthAtEveryOffset) {
  EXPECT_TRUE(rc::check([] {
    const auto bases =
        *rc::gen::container<std::string>(*rc::gen::inRange<std::size_t>(0, 200),
                                         rc::gen::element('A', 'C', 'G', 'T', 'a', 'c', 'g', 't'));
    PackedBases all;
    RC_ASSERT(all.fill(bases));
    const auto longest = static_cast<int>(std::min<std::size_t>(bases.size(), DATA_LEN));
    for (int kmer = 1; kmer <= longest; ++kmer) {
      const auto length = static_cast<std::size_t>(kmer);
      for (std::size_t at = 0; at + length <= bases.size(); ++at) {
        RC_ASSERT(all.at(at, kmer) == packed(bases.substr(at, length)));
      }
    }
  }));
}

TEST(PackedBases, AnotherLetterAnywhereIsRefused) {
  PackedBases all;
  for (const std::size_t length : {1UL, 7UL, 8UL, 9UL, 31UL, 32UL, 33UL, 64UL, 70UL}) {
    const std::string bases = randomBases(length, 5);
    EXPECT_TRUE(all.fill(bases));
    for (std::size_t at = 0; at < length; ++at) {
      for (int byte = 0; byte < 256; ++byte) {
        std::string odd = bases;
        odd[at] = static_cast<char>(byte);
        ASSERT_EQ(all.fill(odd), baseCode(odd[at]) < 4) << length << ' ' << at << ' ' << byte;
      }
    }
  }
}

TEST(PackedBases, TakesALongerAndThenAShorterStretch) {
  PackedBases all;
  for (const std::size_t length : {100UL, 40UL, 65UL}) {
    const std::string bases = randomBases(length, static_cast<unsigned>(length));
    ASSERT_TRUE(all.fill(bases));
    EXPECT_EQ(all.at(length - 31, 31), packed(bases.substr(length - 31)));
  }
}

TEST(PackedBases, OtherLettersStandAsAnA) {
  EXPECT_TRUE(rc::check([] {
    const auto letters = *rc::gen::container<std::string>(
        *rc::gen::inRange<std::size_t>(1, 100),
        rc::gen::weightedElement<char>(
            {{50, 'A'}, {50, 'C'}, {50, 'g'}, {50, 'T'}, {1, 'N'}, {1, '\xC1'}}));
    std::string bases = letters;
    for (char& letter : bases) letter = baseCode(letter) < 4 ? letter : 'A';
    std::vector<uint64_t> words((letters.size() - 1) / DATA_LEN + 1);
    RC_ASSERT(packBases(letters, words.data()) == (bases == letters));
    bases.resize(words.size() * DATA_LEN, 'A');
    for (std::size_t n = 0; n < words.size(); ++n) {
      RC_ASSERT(words[n] == packed(bases.substr(n * DATA_LEN, DATA_LEN)));
    }
  }));
}

TEST(ReversedKey, IsTheKeyOfTheReverseComplement) {
  for (int kmer = 1; kmer <= 32; ++kmer) {
    const std::string bases = randomBases(static_cast<std::size_t>(kmer), 7);
    EXPECT_EQ(reversedKey(packed(bases), kmer), packed(reverseComplement(bases))) << kmer;
  }
}

}  // namespace
}  // namespace velk::test
