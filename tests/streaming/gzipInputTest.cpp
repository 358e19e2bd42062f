// The bytes of whole gzip files, however they are cut into members and blocks.
#include "streaming/gzipInput.h"

#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

constexpr std::size_t kRawBlock = 131072;       // bytes that GzipInput reads at once
constexpr std::size_t kInflatedBlock = 262144;  // bytes that it hands out at once

class GzipBytes : public GzipWayTest {
 protected:
  static void expectWhole(const std::string& file, const std::string& bytes) {
    const Inflated inflated = inflateFile(file);
    EXPECT_EQ(inflated.damage, "");
    // No EXPECT_EQ, which would print large texts.
    EXPECT_EQ(inflated.bytes.size(), bytes.size());
    EXPECT_TRUE(inflated.bytes == bytes);
  }
};

INSTANTIATE_GZIP_WAYS(GzipBytes);

TEST_P(GzipBytes, OneMember) {
  expectWhole(gzipped(">1\nACGT\n"), ">1\nACGT\n");
}

TEST_P(GzipBytes, SeveralMembers) {
  expectWhole(gzipped("AC") + gzipped("G\nT") + gzipped("T\n"), "ACG\nTT\n");
}

TEST_P(GzipBytes, EmptyMembers) {
  expectWhole(gzipped(""), "");
  expectWhole(gzipped("") + gzipped("AC\n"), "AC\n");
  expectWhole(gzipped("AC\n") + gzipped("") + gzipped("") + gzipped("GT\n"), "AC\nGT\n");
  expectWhole(gzipped("AC\n") + gzipped(""), "AC\n");
}

TEST_P(GzipBytes, MemberBoundaryAroundTheEndOfABlock) {
  // From the whole trailer of the first member in the second block to the whole header of the
  // second member in the first block.
  const std::string first = noise(kRawBlock - 300, 1);
  const std::string second = "ACGT\n";
  for (int shift = -14; shift <= 12; ++shift) {
    SCOPED_TRACE(shift);
    const std::size_t size = static_cast<std::size_t>(static_cast<int>(kRawBlock) + shift);
    expectWhole(memberOfSize(first, size) + gzipped(second), first + second);
  }
}

TEST_P(GzipBytes, MemberThatEndsWithABlockAndTheFile) {
  const std::string bytes = noise(kRawBlock - 300, 2);
  expectWhole(memberOfSize(bytes, kRawBlock), bytes);
  const std::string more = noise(2 * kRawBlock - 400, 3);
  expectWhole(memberOfSize(more, 2 * kRawBlock), more);
}

TEST_P(GzipBytes, OutputAroundOneBlock) {
  for (const std::size_t size : {kInflatedBlock - 1, kInflatedBlock, kInflatedBlock + 1}) {
    const std::string bytes(size, 'A');
    expectWhole(gzipped(bytes), bytes);
    expectWhole(gzipped(bytes) + gzipped("C"), bytes + "C");
  }
}

TEST_P(GzipBytes, OutputOfManyBlocks) {
  const std::string even(5 * kInflatedBlock + 17, 'G');  // much output from little input
  expectWhole(gzipped(even), even);
  const std::string uneven = noise(3 * kInflatedBlock + 17, 4);
  expectWhole(gzipped(uneven) + gzipped(even), uneven + even);
}

TEST_P(GzipBytes, PlainContent) {
  expectWhole(">1\nACGT\n", ">1\nACGT\n");
  const std::string large = std::string(3 * kRawBlock + 5, 'C') + "\n";
  expectWhole(large, large);
  expectWhole(std::string(kRawBlock, 'C'), std::string(kRawBlock, 'C'));
}

TEST_P(GzipBytes, PlainContentStaysPlainToItsEnd) {
  const std::string file = ">1\nAC\n" + gzipped("GT\n");
  expectWhole(file, file);
}

TEST_P(GzipBytes, FileOfOneByte) {
  expectWhole("A", "A");
  expectWhole("\x1f", "\x1f");
  expectWhole(std::string(1, '\0'), std::string(1, '\0'));
}

TEST_P(GzipBytes, EmptyFile) {
  expectWhole("", "");
}

TEST_P(GzipBytes, NulPadding) {
  expectWhole(gzipped("AC\n") + std::string(1, '\0'), "AC\n");
  expectWhole(gzipped("AC\n") + std::string(512, '\0'), "AC\n");
  expectWhole(gzipped("AC\n") + std::string(3 * kRawBlock, '\0'), "AC\n");
}

TEST_P(GzipBytes, OptionalHeaderFields) {
  expectWhole(memberOfSize("ACGT\n", 3000) + memberOfSize("AC\n", 300000), "ACGT\nAC\n");
}

TEST_P(GzipBytes, FileThatCannotBeOpened) {
  GzipInput input;
  EXPECT_FALSE(input.open("missing.gz"));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(input.next().empty());
  EXPECT_EQ(input.damage(), "");
}

}  // namespace
}  // namespace velk::test
