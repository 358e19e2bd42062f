// The libraries that inflate, through their one face: a stream in pieces of all sizes.
#include "streaming/inflater.h"

#include <zlib.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "streaming/decodedInput.h"
#include "streaming/gzipInput.h"
#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

using ::testing::ExitedWithCode;

using State = Inflater::State;

class Inflating : public StreamingTest, public ::testing::WithParamInterface<InflateLibrary> {
 protected:
  Inflating() { inflateLibrary = GetParam(); }
  ~Inflating() override { inflateLibrary = usualLibrary_; }

  // The deflate stream of a text: a gzip member without header and trailer.
  static std::string deflated(const std::string& text) {
    constexpr std::size_t kHeader = 10;  // bytes
    constexpr std::size_t kTrailer = 8;
    const std::string member = gzipped(text);
    return member.substr(kHeader, member.size() - kHeader - kTrailer);
  }

  static uint32_t checksumOf(const std::string& text) {
    return static_cast<uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(text.data()), static_cast<uInt>(text.size())));
  }

  struct Result {
    State state = State::kGoesOn;
    std::string bytes;
    std::size_t used = 0;  // bytes of the input
  };

  // Feeds `input` in pieces of `piece` bytes and takes the output in pieces of `room` bytes.
  static Result inflateBy(Inflater& inflater, const std::string& input, std::size_t piece,
                          std::size_t room) {
    Result result;
    std::string block(room, '\0');
    std::size_t given = 0;
    while (result.state == State::kGoesOn) {
      given = std::min(input.size(), result.used + piece);
      const std::string_view part =
          std::string_view(input).substr(result.used, given - result.used);
      const Inflater::Step step = inflater.inflate(part, block);
      result.state = step.state;
      result.bytes += block.substr(0, step.made);
      const std::size_t before = result.used;
      result.used = given - step.unused;
      if (result.used == before && step.made == 0) break;
    }
    return result;
  }

 private:
  InflateLibrary usualLibrary_ = inflateLibrary;
};

INSTANTIATE_TEST_SUITE_P(All, Inflating, ::testing::ValuesIn(inflateLibraries()),
                         [](const auto& library) {
                           return library.param == InflateLibrary::kZlib ? "Zlib" : "Isal";
                         });

TEST_P(Inflating, TheEndIsFoundToTheByteHoweverTheStreamIsCut) {
  const std::unique_ptr<Inflater> inflater = makeInflater();
  const std::string texts[] = {"", "A", randomBases(700, 1) + "\n", std::string(40000, 'C'),
                               noise(3000, 2)};
  for (const std::string& text : texts) {
    const std::string stream = deflated(text);
    for (std::size_t piece : {1u, 2u, 3u, 7u, 8u, 9u, 100u, 5000u}) {
      for (std::size_t room : {1u, 5u, 64u, 50000u}) {
        SCOPED_TRACE(::testing::Message() << text.size() << ", " << piece << ", " << room);
        inflater->start();
        const Result result = inflateBy(*inflater, stream + "not of the stream", piece, room);
        EXPECT_EQ(result.state, State::kEnded);
        EXPECT_EQ(result.used, stream.size());
        EXPECT_TRUE(result.bytes == text);
        EXPECT_EQ(inflater->checksum(), checksumOf(text));
      }
    }
  }
}

TEST_P(Inflating, CutStreamGoesOn) {
  const std::unique_ptr<Inflater> inflater = makeInflater();
  inflater->start();
  const std::string stream = deflated(randomBases(5000, 3));
  const Result result = inflateBy(*inflater, stream.substr(0, stream.size() / 2), 100, 1000);
  EXPECT_EQ(result.state, State::kGoesOn);
  EXPECT_EQ(result.used, stream.size() / 2);
}

TEST_P(Inflating, DamageIsFoundAndLeavesNoTraceInTheNextStream) {
  const std::unique_ptr<Inflater> inflater = makeInflater();
  const std::string text = randomBases(5000, 4);
  const std::string stream = deflated(text);
  const std::string damaged[] = {"\x07", std::string("\x01\x05\x00\x00\x00", 5),
                                 std::string("\x03\x02\x00\x00\x00", 5)};
  for (const std::string& input : damaged) {
    inflater->start();
    EXPECT_EQ(inflateBy(*inflater, input, input.size(), 10000).state, State::kDamaged);
    inflater->start();
    const Result next = inflateBy(*inflater, stream, 1000, 10000);
    EXPECT_EQ(next.state, State::kEnded);
    EXPECT_TRUE(next.bytes == text);
    EXPECT_EQ(inflater->checksum(), checksumOf(text));
  }
}

// ISA-L counts less than no input left of this one when it comes in pieces.
TEST_P(Inflating, DamageAtTheEndOfAPiece) {
  const std::string input(
      "\x73\x28\x32\xe4\x72\x74\x67\x47\xae\x6d\x2e\x4f\x24\xc0\xe5\x40\x41\x42\x41\x40\x40\x40"
      "\x1f",
      23);
  for (const std::size_t room : {std::size_t{4}, std::size_t{100}}) {
    const std::unique_ptr<Inflater> inflater = makeInflater();
    inflater->start();
    const Result result = inflateBy(*inflater, input, input.size(), room);
    EXPECT_EQ(result.state, State::kDamaged);
    EXPECT_LE(result.used, input.size());
  }
}

// A stream may name no byte before its own first one, not even where those of another stand.
TEST_P(Inflating, StreamThatReachesBackBehindItsBeginning) {
  const std::unique_ptr<Inflater> inflater = makeInflater();
  inflater->start();
  inflateBy(*inflater, deflated(std::string(1000, 'A')), 1000, 2000);
  inflater->start();
  // One block of the fixed code: length 3, distance 1.
  EXPECT_EQ(inflateBy(*inflater, std::string("\x03\x02\x00\x00\x00", 5), 5, 2000).state,
            State::kDamaged);
}

// Inflating ahead: files that fill the ring and more, readers that stop early, runs that end early.

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
