// Rolled keys are the keys that are packed afresh.
#include "kmer/Sequence.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <string>

namespace velk::test {
namespace {

uint64_t packed(const std::string& bases, std::size_t offset, int kmer) {
  uint64_t key = 0;
  Seq2Kmer(key, bases.substr(offset, static_cast<std::size_t>(kmer)));
  return key;
}

// `length` + 40 letters, some of them no bases.
rc::Gen<std::string> sequence(std::size_t length) {
  return rc::gen::container<std::string>(
      length + 40, rc::gen::weightedElement<char>(
                       {{8, 'A'}, {8, 'C'}, {8, 'G'}, {8, 't'}, {2, 'N'}, {1, 'r'}, {1, '\xFF'}}));
}

TEST(RollingKey, StepsThroughEveryKmer) {
  EXPECT_TRUE(rc::check([] {
    const int kmer = *rc::gen::inRange(0, 71);
    const std::string bases = *sequence(static_cast<std::size_t>(kmer));
    RollingKey keys(bases, kmer);
    for (std::size_t at = 0; at + static_cast<std::size_t>(kmer) <= bases.size(); ++at) {
      if (at != 0) keys.advance();
      RC_ASSERT(keys.key() == packed(bases, at, kmer));
    }
  }));
}

TEST(RollingKey, OtherLettersFold) {
  RollingKey keys("ANAN", 2);
  EXPECT_EQ(keys.key(), 4u);
  keys.advance();
  EXPECT_EQ(keys.key(), 16u);
  keys.advance();
  EXPECT_EQ(keys.key(), 4u);
}

}  // namespace
}  // namespace velk::test
