// Base and k-mer coding.
#include "kmer/Sequence.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <string>
#include <vector>

#include "kmer/packedBases.h"
#include "tests/kmer/packingModel.h"
#include "tests/support/assembly.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

class Sequence : public RunParametersTest {};

uint64_t packed(std::string_view sequence) {
  uint64_t kmer = 0;
  Seq2Kmer(kmer, sequence);
  return kmer;
}

TEST_F(Sequence, EveryByteHasItsCode) {
  const std::string coded = "AaCcGgTt";
  for (int byte = 0; byte < 256; ++byte) {
    const auto place = coded.find(static_cast<char>(byte));
    const std::size_t code = place == std::string::npos ? 4 : place / 2;
    EXPECT_EQ(alphabet[static_cast<std::size_t>(byte)], code) << byte;
    EXPECT_EQ(baseCode(static_cast<char>(byte)), code) << byte;
  }
}

TEST_F(Sequence, EveryCharacterHasItsComplement) {
  ASSERT_EQ(complementAlphabet.size(), 128U);
  for (int byte = 0; byte < 256; ++byte) {
    const auto base = static_cast<char>(byte);
    char complement = 'A';  // of T and N, too, and of bytes from 128 on
    if (base == 'A' || base == 'a') complement = 'T';
    if (base == 'C' || base == 'c') complement = 'G';
    if (base == 'G' || base == 'g') complement = 'C';
    EXPECT_EQ(complementOf(base), complement) << byte;
    if (byte < 128) {
      EXPECT_EQ(complementAlphabet[static_cast<std::size_t>(byte)], complement) << byte;
    }
  }
}

TEST_F(Sequence, FirstBaseIsHighest) {
  EXPECT_EQ(packed("ACGT"), 0b00011011U);
  EXPECT_EQ(packed("TTTT"), 255U);
  EXPECT_EQ(packed("A"), 0U);
  EXPECT_EQ(packed(""), 0U);
  EXPECT_EQ(packed("CAAA"), 0b01000000U);
}

TEST_F(Sequence, OtherLettersSetTheLowBitOfTheBaseBefore) {
  EXPECT_EQ(packed("AN"), 0b0100U);
  EXPECT_EQ(packed("CN"), 0b0100U);
  EXPECT_EQ(packed("GN"), 0b1100U);
  EXPECT_EQ(packed("TN"), 0b1100U);
  EXPECT_EQ(packed("ANG"), 0b010010U);
  EXPECT_EQ(packed("ANN"), 0b010100U);
}

TEST_F(Sequence, OtherLetterInFrontLiesOutsideTheWord) {
  EXPECT_EQ(packed("NA"), 0b10000U);
  EXPECT_EQ(packed("N"), 0b100U);
  // 31 letters take 62 bits, so the letter in front sets the next one; of 32 it is shifted out
  EXPECT_EQ(packed("N" + std::string(30, 'A')), uint64_t{1} << 62);
  EXPECT_EQ(packed("N" + std::string(31, 'A')), 0U);
}

TEST_F(Sequence, AllOtherBytesPackAlike) {
  for (const char letter : std::string("nRYKMSWBDHVXxu-.*\r >0\x7f\x80\xc3\xff")) {
    EXPECT_EQ(packed(std::string("A") + letter + "G"), packed("ANG")) << letter;
  }
}

TEST_F(Sequence, LowerCasePacksAsUpperCase) {
  EXPECT_EQ(packed("acgtgca"), packed("ACGTGCA"));
}

TEST_F(Sequence, OnlyTheLast32BasesStay) {
  const std::string bases = randomBases(40, 3);
  EXPECT_EQ(packed(bases), packed(bases.substr(8)));
  EXPECT_EQ(packed("ACGTACGT" + bases.substr(8)), packed(bases));
  EXPECT_EQ(packed(std::string(32, 'T')), ~uint64_t{0});
  // a letter behind the word's first base reaches into it, the one in front of it does not
  EXPECT_EQ(packed("N" + std::string(32, 'A')), 0U);
  EXPECT_EQ(packed("AN" + std::string(31, 'A')), 0U);
  EXPECT_EQ(packed("AAN" + std::string(30, 'A')), uint64_t{1} << 62);
}

TEST_F(Sequence, WordIsNotClearedFirst) {
  uint64_t kmer = 1;
  Seq2Kmer(kmer, "AC");
  EXPECT_EQ(kmer, 0b010001U);
}

TEST_F(Sequence, AgreesWithTheModel) {
  EXPECT_TRUE(rc::check("up to 80 letters, bases and others", [] {
    const auto letter = rc::gen::weightedOneOf<char>(
        {{9, rc::gen::elementOf(std::string("ACGTacgt"))}, {1, rc::gen::arbitrary<char>()}});
    const auto length = *rc::gen::inRange<std::size_t>(0, 81);
    const auto sequence = *rc::gen::container<std::string>(length, letter);
    RC_ASSERT(packed(sequence) == modelOfPacking(sequence));
  }));
}

TEST_F(Sequence, WordUnpacksIntoItsLetters) {
  for (const int length : {1, 4, 31, 32}) {
    Kmer = length;
    const std::string bases = randomBases(static_cast<std::size_t>(length), 5);
    EXPECT_EQ(Kmer2Seq(packed(bases)), bases);
  }
}

TEST_F(Sequence, UnpackingReadsKmerLettersFromTheLowBits) {
  Kmer = 3;
  EXPECT_EQ(Kmer2Seq(0b11'00'01'10), "ACG");
  Kmer = 0;
  EXPECT_EQ(Kmer2Seq(27), "");
}

TEST_F(Sequence, LongKmersDoNotUnpack) {
  Kmer = 33;
  EXPECT_EQ(Kmer2Seq(27), "");
  Kmer = 63;
  EXPECT_EQ(Kmer2Seq(27), "");
}

// The keys that are cut out of packed bases, against those that are packed letter by letter.

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
        std::string changed = bases;
        changed[at] = static_cast<char>(byte);
        ASSERT_EQ(all.fill(changed), baseCode(changed[at]) < 4)
            << length << ' ' << at << ' ' << byte;
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
