// Which numbers of slots count as prime.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kmer/hashSet.h"
#include "tests/kmer/hashSetFixture.h"

namespace velk::test {
namespace {

// The first odd divisor of `num` from 3 on, or `num`.
uint64_t leastOddDivisor(uint64_t num) {
  uint64_t divisor = 3;
  while (divisor < num && num % divisor != 0) divisor += 2;
  return divisor;
}

TEST(HashSet, PrimeQuirk) {
  for (const uint64_t num : {9U, 15U, 25U, 35U, 49U, 121U, 143U, 169U, 289U, 323U, 361U}) {
    EXPECT_TRUE(is_prime(num)) << num;
  }
  for (const uint64_t num : {21U, 27U, 33U, 45U, 63U, 77U, 91U, 117U, 221U}) {
    EXPECT_FALSE(is_prime(num)) << num;
  }
}

TEST(HashSet, NumbersBelowFourCountAsPrime) {
  for (uint64_t num = 0; num < 4; ++num) EXPECT_TRUE(is_prime(num)) << num;
}

TEST(HashSet, EvenNumbersAreNotPrime) {
  for (uint64_t num = 4; num < 1000; num += 2) EXPECT_FALSE(is_prime(num)) << num;
  EXPECT_FALSE(is_prime(uint64_t{1} << 40));
}

TEST(HashSet, OddNumbersArePrimeWithoutADivisorBelowTheirRoot) {
  for (uint64_t num = 5; num < 20000; num += 2) {
    uint64_t root = 1;
    while ((root + 1) * (root + 1) <= num) ++root;
    EXPECT_EQ(is_prime(num), leastOddDivisor(num) >= root) << num;
  }
}

TEST(HashSet, RootIsTakenInSinglePrecision) {
  // 4217 x 4219 = 4218 x 4218 - 1, which single precision rounds up to the square, so that the
  // smaller factor is tried; of 1019 x 1021 = 1020 x 1020 - 1 it is not
  EXPECT_FALSE(is_prime(17791523));
  EXPECT_FALSE(is_prime(17040383));
  EXPECT_TRUE(is_prime(1040399));
}

TEST(HashSet, NextPrimeStartsAtTheNumberIfItIsOdd) {
  EXPECT_EQ(find_next_prime(0), 1U);
  EXPECT_EQ(find_next_prime(1), 1U);
  EXPECT_EQ(find_next_prime(2), 3U);
  EXPECT_EQ(find_next_prime(3), 3U);
  EXPECT_EQ(find_next_prime(4), 5U);
  EXPECT_EQ(find_next_prime(8), 9U);
  EXPECT_EQ(find_next_prime(9), 9U);
  EXPECT_EQ(find_next_prime(10), 11U);
  EXPECT_EQ(find_next_prime(21), 23U);
  EXPECT_EQ(find_next_prime(26), 29U);
  EXPECT_EQ(find_next_prime(1048576), 1048583U);
}

// The reckoned sizes of the hash set against the hash set itself, and against rules written anew.

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

// The sizes of a set from its making on, while a number of different keys is added one by one.
struct TableCourse {
  std::vector<uint64_t> sizes;  // slots of the new set, then after each growth
  bool isTooLarge = false;      // the next size would be above kMaxSlots; the run ends there
  uint64_t most = 0;            // entities that the last set holds before it grows
};

// The course by the numbers. No sizes at all when even the new set is too large.
TableCourse courseOfTable(uint64_t slots, float loadFactor, uint64_t keys) {
  HashSet table = numbersOfNew(slots, loadFactor);
  TableCourse course;
  course.isTooLarge = table.size > kMaxSlots;
  while (!course.isTooLarge) {
    course.sizes.push_back(table.size);
    course.most = table.max;
    if (course.most >= keys) break;
    course.isTooLarge = !growNumbers(table, course.most + 1);
  }
  return course;
}

// Load factors inside and outside of the range that a set takes as it stands.
rc::Gen<float> anyLoadFactor() {
  return rc::gen::oneOf(rc::gen::element(-1.0F, -0.0F, 0.0F, 0.001F, 0.25F, 0.5F, 0.75F, 0.9F,
                                         0.99F, std::nextafter(1.0F, 0.0F), 1.0F, 7.0F, kNoNumber),
                        rc::gen::map(rc::gen::inRange(1, 1000), [](int thousandths) {
                          return static_cast<float>(thousandths) / 1000.0F;
                        }));
}

std::string linesOf(const TableCourse& course) {
  std::string lines;
  for (std::size_t i = 1; i < course.sizes.size(); ++i) {
    lines += "old set->size: " + std::to_string(course.sizes[i - 1]) + "\n";
    lines += "new set->size: " + std::to_string(course.sizes[i]) + "\n";
  }
  return lines;
}

// At every number of keys on the way, not at the last one alone.
TEST(TableCourse, IsThatOfTheHashSet) {
  EXPECT_TRUE(rc::check("keys added one by one", [] {
    const auto slots =
        *rc::gen::oneOf(rc::gen::inRange<uint64_t>(0, 40), rc::gen::inRange<uint64_t>(0, 3000));
    const float loadFactor = *anyLoadFactor();
    const auto keys = *rc::gen::inRange<uint64_t>(0, 3000);
    const OwnSet set = makeSet(slots, loadFactor);
    std::string lines;
    for (uint64_t n = 0; n <= keys; ++n) {
      const TableCourse course = courseOfTable(slots, loadFactor, n);
      RC_ASSERT(!course.isTooLarge);
      RC_ASSERT(linesOf(course) == lines);
      RC_ASSERT(course.sizes.back() == set->size);
      RC_ASSERT(course.most == set->max);
      RC_ASSERT(set->count == n);
      lines += add(set, entityOf(n * 0x9E3779B97F4A7C15U));
    }
  }));
}

// The rules once more, literally: one key after the other, in the words of add_hashset.
TableCourse literalCourse(uint64_t slots, float loadFactor, uint64_t keys) {
  const float factor = clampedLoadFactor(loadFactor);
  uint64_t size = slots > 2 ? find_next_prime(slots) : 3;
  auto max = std::min(static_cast<uint64_t>(static_cast<float>(size) * factor), size - 1);
  TableCourse course;
  course.isTooLarge = size > uint64_t{1} << 40;
  if (course.isTooLarge) return course;
  course.sizes.push_back(size);
  uint64_t count = std::min(keys, max);
  while (count < keys) {
    do {
      size = find_next_prime(size < 1073741823 ? size * 2 : size + 1073741823);
    } while (static_cast<float>(count + 1) > static_cast<float>(size) * factor);
    if (size > uint64_t{1} << 40) {
      course.isTooLarge = true;
      break;
    }
    course.sizes.push_back(size);
    const float limit = static_cast<float>(size) * factor;
    max = std::min(static_cast<uint64_t>(static_cast<double>(limit) + 0.5), size - 1);
    ++count;
    count = std::max(count, std::min(keys, max));
  }
  course.most = max;
  return course;
}

TEST(TableCourse, OfTablesThatNoTestCanFill) {
  EXPECT_TRUE(rc::check("many keys", [] {
    const int slotBits = *rc::gen::inRange(0, 40);
    const int keyBits = *rc::gen::inRange(0, 32);
    const auto slots = *rc::gen::inRange(uint64_t{1} << slotBits, uint64_t{2} << slotBits);
    const auto keys = *rc::gen::inRange<uint64_t>(uint64_t{1} << keyBits, uint64_t{2} << keyBits);
    const float loadFactor = *rc::gen::element(0.25F, 0.5F, 0.75F, 0.9F, 0.999F, 1.0F, kNoNumber);
    const TableCourse course = courseOfTable(slots, loadFactor, keys);
    const TableCourse literal = literalCourse(slots, loadFactor, keys);
    RC_ASSERT(course.sizes == literal.sizes);
    RC_ASSERT(course.isTooLarge == literal.isTooLarge);
    if (!course.isTooLarge) RC_ASSERT(course.most == literal.most);
  }));
}

TEST(TableCourse, NewTableAboveTheLargestHasNoSizes) {
  for (const uint64_t slots : {kMaxSlots, kMaxSlots + 1, UINT64_MAX}) {
    const TableCourse course = courseOfTable(slots, 0.75F, 1);
    EXPECT_TRUE(course.isTooLarge) << slots;
    EXPECT_TRUE(course.sizes.empty()) << slots;
  }
}

TEST(TableCourse, LargestNewTableStays) {
  const uint64_t slots = numbersOfNew(kMaxSlots - 1000, 0.5F).size;
  ASSERT_LT(slots, kMaxSlots);
  const TableCourse course = courseOfTable(kMaxSlots - 1000, 0.5F, uint64_t{1} << 39);
  EXPECT_FALSE(course.isTooLarge);
  EXPECT_EQ(course.sizes, std::vector<uint64_t>{slots});
  EXPECT_TRUE(courseOfTable(kMaxSlots - 1000, 0.5F, course.most + 1).isTooLarge);
}

TEST(TableCourse, LargeTablesGrowByAFixedNumberOfSlots) {
  // worked out apart from this program: 1000000007 doubled, then 1073741823 more, each to the next
  // prime
  const TableCourse course = courseOfTable(1000000000, 0.75F, 2000000000);
  EXPECT_EQ(course.sizes, (std::vector<uint64_t>{1000000007, 2000000033, 3073741897}));
  EXPECT_EQ(course.most, 2305306368U);
}

TEST(TableCourse, EndsWhereGrowthWouldGoBeyondTheLargest) {
  // 2^40 slots at this load factor hold 1099 keys: 3 slots hold none, so the first key grows it
  const TableCourse course = courseOfTable(3, 1e-9F, 5000);
  EXPECT_TRUE(course.isTooLarge);
  ASSERT_GT(course.sizes.size(), 2U);
  EXPECT_LE(course.sizes.back(), kMaxSlots);
  EXPECT_GT(course.sizes.back(), kMaxSlots - 2 * uint64_t{1073741823});
  for (std::size_t i = 1; i < course.sizes.size(); ++i) {
    EXPECT_GT(course.sizes[i], course.sizes[i - 1]);
  }
  EXPECT_FALSE(courseOfTable(3, 1e-9F, course.most).isTooLarge);
  EXPECT_TRUE(courseOfTable(3, 1e-9F, course.most + 1).isTooLarge);
}

TEST(TableCourse, TinyLoadFactorEndsAtTheFirstKey) {
  for (const float factor : {5e-13F, 1e-20F, 1e-38F, 1e-45F}) {
    const TableCourse course = courseOfTable(3, factor, 1);
    EXPECT_TRUE(course.isTooLarge) << factor;
    EXPECT_EQ(course.sizes, std::vector<uint64_t>{3}) << factor;
    EXPECT_FALSE(courseOfTable(3, factor, 0).isTooLarge) << factor;
  }
}

}  // namespace

}  // namespace velk::test
