// Inflating ahead: files that fill the ring and more, readers that stop early, runs that end early.
#include "streaming/inflateAhead.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "streaming/gzipInput.h"
#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

using ::testing::ExitedWithCode;

constexpr std::size_t kBlock = 262144;  // bytes of a block of the ring
constexpr std::size_t kRing = 8;        // blocks

void rest() {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

class Ahead : public GzipWayTest {
 protected:
  // Opens "file.gz", whose content is given, to be inflated ahead.
  static std::unique_ptr<GzipInput> openAhead(const std::string& content) {
    write("file.gz", content);
    auto input = std::make_unique<GzipInput>();
    EXPECT_TRUE(input->open("file.gz"));
    input->inflateAhead();
    return input;
  }

  // More than the ring holds; made once, as sanitizers take long to.
  static const std::string& many() {
    static const std::string bytes = noise((kRing + 3) * kBlock + 5, 1);
    return bytes;
  }

  static const std::string& manyPacked() {
    static const std::string file = gzipped(many());
    return file;
  }
};

std::vector<GzipWay> waysAhead() {
  std::vector<GzipWay> ways = gzipWays();
  std::erase_if(ways, [](const GzipWay& way) { return !way.isAhead; });
  return ways;
}

INSTANTIATE_TEST_SUITE_P(All, Ahead, ::testing::ValuesIn(waysAhead()),
                         ::testing::PrintToStringParamName());

TEST_P(Ahead, HelperThatIsFasterThanItsReader) {
  const auto input = openAhead(manyPacked());
  std::string got;
  for (std::string_view block = input->next(); !block.empty(); block = input->next()) {
    if (got.size() < 3 * kBlock) rest();
    got += block;
  }
  EXPECT_TRUE(got == many());
}

TEST_P(Ahead, BlockStaysUntilTheNextIsAskedFor) {
  const std::string& bytes = many();
  const auto input = openAhead(manyPacked());
  const std::string_view first = input->next();
  rest();
  EXPECT_TRUE(first == bytes.substr(0, kBlock));
  const std::string_view second = input->next();
  rest();
  EXPECT_TRUE(second == bytes.substr(kBlock, kBlock));
}

TEST_P(Ahead, FilesOfWholeRings) {
  for (const std::size_t blocks : {std::size_t{1}, kRing - 1, kRing, kRing + 1, 2 * kRing}) {
    const std::string bytes(blocks * kBlock, 'A');
    EXPECT_TRUE(inflateFile(gzipped(bytes)) == (Inflated{bytes, ""})) << blocks;
  }
}

TEST_P(Ahead, ReaderThatStopsAnywhere) {
  const std::string& file = manyPacked();
  for (const std::size_t blocks : {std::size_t{0}, std::size_t{1}, kRing, kRing + 2}) {
    for (const bool rests : {false, true}) {
      const auto input = openAhead(file);
      for (std::size_t i = 0; i < blocks; ++i) EXPECT_EQ(input->next().size(), kBlock);
      if (rests) rest();
    }
  }
}

TEST_P(Ahead, DamageInALaterBlockIsToldBehindAllBlocksBefore) {
  const std::string& bytes = many();
  std::string file = manyPacked() + gzipped("ACGT\n");
  file.back() = '\x7f';  // the length
  const auto input = openAhead(file);
  std::string got;
  for (std::string_view block = input->next(); !block.empty(); block = input->next()) {
    EXPECT_EQ(input->damage(), "");
    got += block;
  }
  EXPECT_EQ(input->damage(), "incorrect length check");
  EXPECT_TRUE(got == bytes + "ACGT\n");
}

TEST_P(Ahead, ManyMembers) {
  std::string file;
  std::string text;
  for (int i = 0; i < 2000; ++i) {
    const std::string record = ">" + std::to_string(i) + "\n" + randomBases(80, 1) + "\n";
    file += gzipped(record) + (i % 7 == 0 ? gzipped("") : "");
    text += record;
  }
  EXPECT_TRUE(inflateFile(file) == (Inflated{text, ""}));
  file.resize(file.size() - 3);
  EXPECT_TRUE(inflateFile(file) == (Inflated{text, "unexpected end of file"}));
}

TEST_P(Ahead, TwoFilesSideBySide) {
  const std::string& a = many();
  const std::string b = noise(kRing * kBlock + 9, 7);
  std::ofstream("other.gz", std::ios::binary) << gzipped(b);
  const auto first = openAhead(manyPacked());
  GzipInput second;
  ASSERT_TRUE(second.open("other.gz"));
  second.inflateAhead();
  std::string gotA;
  std::string gotB;
  for (bool goesOn = true; goesOn;) {
    const std::string_view blockA = first->next();
    const std::string_view blockB = second.next();
    gotA += blockA;
    gotB += blockB;
    goesOn = !blockA.empty() || !blockB.empty();
  }
  EXPECT_TRUE(gotA == a);
  EXPECT_TRUE(gotB == b);
}

// The run may end while a helper works, sleeps on a full ring, or has come to the end.
TEST_P(Ahead, RunThatEndsEarly) {
  for (const std::string& file : {manyPacked(), gzipped("ACGT\n")}) {
    for (const bool rests : {false, true}) {
      EXPECT_EXIT(
          {
            const auto input = openAhead(file);
            input->next();
            if (rests) rest();
            std::exit(7);
          },
          ExitedWithCode(7), "");
    }
  }
}

TEST_P(Ahead, RunThatAnotherThreadEnds) {
  const std::string& file = manyPacked();
  EXPECT_EXIT(
      {
        const auto input = openAhead(file);
        std::thread([] {
          rest();
          std::exit(7);
        }).detach();
        for (;;) {
          GzipInput again;
          again.open("file.gz");
          again.inflateAhead();
          while (!again.next().empty()) {
          }
        }
      },
      ExitedWithCode(7), "");
}

}  // namespace
}  // namespace velk::test
