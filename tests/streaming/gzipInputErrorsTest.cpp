// Gzip files that cannot be read to their end, and memory that zlib does not get.
#include <zlib.h>

#include <cerrno>
#include <new>

#include "streaming/gzipInput.h"
#include "tests/streaming/failingCalls.h"
#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

constexpr std::size_t kRawBlock = 131072;  // bytes that GzipInput reads at once
constexpr const char* kUnreadable = "Input/output error";

class GzipErrors : public GzipWayTest {
 protected:
  ~GzipErrors() override { failThreads(false); }

  // What there is of a file of which only the first `blocks` blocks can be read.
  static Inflated inflateBlocks(int blocks, const std::string& content) {
    failReadAfter(blocks, EIO);
    return inflateFile(content);
  }
};

INSTANTIATE_GZIP_WAYS(GzipErrors);

TEST_P(GzipErrors, UnreadableFromTheStart) {
  EXPECT_EQ(inflateBlocks(0, gzipped("ACGT\n")), (Inflated{"", kUnreadable}));
}

TEST_P(GzipErrors, UnreadableWithinAMember) {
  const std::string bytes = noise(3 * kRawBlock, 1);
  const std::string member = gzipped(bytes);
  const std::string expected = inflatedPart(member.substr(0, 2 * kRawBlock));
  ASSERT_GT(expected.size(), kRawBlock);
  const Inflated inflated = inflateBlocks(2, member);
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == expected);
}

TEST_P(GzipErrors, UnreadableBetweenMembers) {
  const std::string bytes = noise(kRawBlock - 300, 2);
  const Inflated inflated = inflateBlocks(1, memberOfSize(bytes, kRawBlock) + gzipped("ACGT\n"));
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == bytes);
}

TEST_P(GzipErrors, UnreadableInThePadding) {
  EXPECT_EQ(inflateBlocks(1, gzipped("ACGT\n") + std::string(2 * kRawBlock, '\0')),
            (Inflated{"ACGT\n", kUnreadable}));
}

TEST_P(GzipErrors, UnreadablePlainFile) {
  const std::string text = randomBases(2 * kRawBlock, 3);
  const Inflated inflated = inflateBlocks(1, text);
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == text.substr(0, kRawBlock));
}

TEST_P(GzipErrors, HelperThatCannotStart) {
  failThreads(true);
  const std::string bytes = noise(3 * kRawBlock, 4);
  EXPECT_TRUE(inflateFile(gzipped(bytes)) == (Inflated{bytes, ""}));
  EXPECT_EQ(inflateFile("\x1f\x8b"), (Inflated{"", "unexpected end of file"}));
}

// What zlib alone may say.
class ZlibErrors : public GzipWayTest {
 protected:
  ~ZlibErrors() override {
    failInflate(Z_OK);
    failInflateInit(false);
  }
};

INSTANTIATE_TEST_SUITE_P(All, ZlibErrors,
                         ::testing::Values(GzipWay{InflateLibrary::kZlib, false},
                                           GzipWay{InflateLibrary::kZlib, true}),
                         ::testing::PrintToStringParamName());

TEST_P(ZlibErrors, NoMemoryToBeginWith) {
  failInflateInit(true);
  EXPECT_THROW(GzipInput(), std::bad_alloc);
}

TEST_P(ZlibErrors, NoMemoryToInflate) {
  const std::string member = gzipped("ACGT\n");
  failInflate(Z_MEM_ERROR);
  EXPECT_THROW(inflateFile(member), std::bad_alloc);
}

TEST_P(ZlibErrors, FailureThatZlibDoesNotName) {
  const std::string member = gzipped("ACGT\n");
  failInflate(Z_STREAM_ERROR);
  EXPECT_EQ(inflateFile(member), (Inflated{"", "invalid compressed data"}));
}

}  // namespace
}  // namespace velk::test
