// Gzip files that cannot be read to their end, and memory that zlib does not get.
#include <zlib.h>

#include <cerrno>
#include <new>

#include "streaming/gzipInput.h"
#include "tests/streaming/failingCalls.h"
#include "tests/streaming/gzipMembers.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

constexpr std::size_t kRawBlock = 131072;  // bytes that GzipInput reads at once
constexpr const char* kUnreadable = "Input/output error";

class GzipErrors : public StreamingTest {
 protected:
  ~GzipErrors() override {
    failInflate(Z_OK);
    failInflateInit(false);
  }

  // What there is of a file of which only the first `blocks` blocks can be read.
  static Inflated inflateBlocks(int blocks, const std::string& content) {
    failReadAfter(blocks, EIO);
    return inflateFile(content);
  }
};

TEST_F(GzipErrors, UnreadableFromTheStart) {
  EXPECT_EQ(inflateBlocks(0, gzipped("ACGT\n")), (Inflated{"", kUnreadable}));
}

TEST_F(GzipErrors, UnreadableWithinAMember) {
  const std::string bytes = noise(3 * kRawBlock, 1);
  const std::string member = gzipped(bytes);
  const std::string expected = inflatedPart(member.substr(0, 2 * kRawBlock));
  ASSERT_GT(expected.size(), kRawBlock);
  const Inflated inflated = inflateBlocks(2, member);
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == expected);
}

TEST_F(GzipErrors, UnreadableBetweenMembers) {
  const std::string bytes = noise(kRawBlock - 300, 2);
  const Inflated inflated = inflateBlocks(1, memberOfSize(bytes, kRawBlock) + gzipped("ACGT\n"));
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == bytes);
}

TEST_F(GzipErrors, UnreadableInThePadding) {
  EXPECT_EQ(inflateBlocks(1, gzipped("ACGT\n") + std::string(2 * kRawBlock, '\0')),
            (Inflated{"ACGT\n", kUnreadable}));
}

TEST_F(GzipErrors, UnreadablePlainFile) {
  const std::string text = randomBases(2 * kRawBlock, 3);
  const Inflated inflated = inflateBlocks(1, text);
  EXPECT_EQ(inflated.damage, kUnreadable);
  EXPECT_TRUE(inflated.bytes == text.substr(0, kRawBlock));
}

TEST_F(GzipErrors, NoMemoryToBeginWith) {
  failInflateInit(true);
  EXPECT_THROW(GzipInput(), std::bad_alloc);
}

TEST_F(GzipErrors, NoMemoryToInflate) {
  const std::string member = gzipped("ACGT\n");
  failInflate(Z_MEM_ERROR);
  EXPECT_THROW(inflateFile(member), std::bad_alloc);
}

TEST_F(GzipErrors, FailureThatZlibDoesNotName) {
  const std::string member = gzipped("ACGT\n");
  failInflate(Z_STREAM_ERROR);
  EXPECT_EQ(inflateFile(member), (Inflated{"", "not a gzip stream that zlib can inflate"}));
}

}  // namespace
}  // namespace velk::test
