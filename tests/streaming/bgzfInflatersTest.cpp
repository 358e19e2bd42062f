// BGZF members inflated by several threads: what is taken together, and that a file gives the same
// bytes and the same word of damage however many threads inflate it.
#include "streaming/bgzfInflaters.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "streaming/gzipDecoder.h"
#include "streaming/gzipInput.h"
#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

constexpr std::size_t kUsual = 65280;  // bytes of text that bgzip puts into a member

std::string flipped(std::string bytes, std::size_t at, unsigned mask) {
  bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ mask);
  return bytes;
}

// Texts of a few packed bytes each, long enough that each is inflated by the next free thread.
std::string longText(unsigned number) {
  return std::string(40000, 'A') + randomBases(30, number) + "\n";
}

// A BGZF file and its text.
struct Bgzf {
  void add(const std::string& part) {
    starts.emplace_back(file.size(), text.size());
    file += bgzfMember(part);
    text += part;
  }

  // How much of the text stands before the member in which byte `at` of the file is.
  std::size_t textBefore(std::size_t at) const {
    std::size_t before = 0;
    for (const auto& [start, inText] : starts) before = start <= at ? inText : before;
    return before;
  }

  std::string file;
  std::string text;
  std::vector<std::pair<std::size_t, std::size_t>> starts;  // of the members, in file and text
};

class BgzfTest : public StreamingTest, public ::testing::WithParamInterface<InflateLibrary> {
 protected:
  BgzfTest() { inflateLibrary = GetParam(); }
  ~BgzfTest() override { inflateLibrary = usualLibrary_; }

  // The file, the same for all numbers of threads. ISA-L makes some bytes of a damaged block of
  // what memory held before: `certain` bytes are known to stand in front of it.
  static Inflated inflateByAll(const std::string& file, std::size_t certain = std::string::npos) {
    Inflated alone = inflateFile(file, 0);
    if (GetParam() == InflateLibrary::kZlib) certain = std::string::npos;
    for (const int threads : {1, 2, 3}) {
      const Inflated together = inflateFile(file, threads);
      EXPECT_EQ(together.damage, alone.damage) << threads;
      EXPECT_EQ(together.bytes.size(), alone.bytes.size()) << threads;
      EXPECT_TRUE(together.bytes.substr(0, certain) == alone.bytes.substr(0, certain)) << threads;
    }
    return alone;
  }

 private:
  InflateLibrary usualLibrary_ = inflateLibrary;
};

#define INSTANTIATE_BGZF(fixture)                                                             \
  INSTANTIATE_TEST_SUITE_P(All, fixture, ::testing::ValuesIn(inflateLibraries()),             \
                           [](const auto& library) {                                          \
                             return library.param == InflateLibrary::kZlib ? "Zlib" : "Isal"; \
                           })

// The members that are taken together.

class BgzfInflating : public BgzfTest {
 protected:
  struct Result {
    std::string text;
    std::size_t used;
    bool isSound;

    bool operator==(const Result&) const = default;
  };

  static Result inflateBy(int threads, std::string file, std::size_t roomSize) {
    const std::size_t size = file.size();
    file.append(Inflater::kReachOn, '\x55');
    std::string room(roomSize, '\0');
    BgzfInflaters inflaters(threads);
    Result last{};
    for (int time = 0; time < 2; ++time) {  // the helpers go on sleeping in between
      const auto own = makeInflater();
      const BgzfInflaters::Inflated inflated =
          inflaters.inflate(std::string_view(file).substr(0, size), room, *own);
      last = {room.substr(0, inflated.made), inflated.used, inflated.isSound};
    }
    return last;
  }

  static void expectTaken(const std::string& file, std::size_t roomSize, const Result& expected) {
    for (const int threads : {1, 2, 3, 5}) {
      EXPECT_TRUE(inflateBy(threads, file, roomSize) == expected) << threads;
    }
  }
};

INSTANTIATE_BGZF(BgzfInflating);

TEST_P(BgzfInflating, AllThatIsWholeAndFindsRoom) {
  const std::string texts[] = {longText(1), noise(kUsual, 1), "", "ACGT\n", longText(2), ""};
  std::string file;
  std::string text;
  for (const std::string& part : texts) {
    file += bgzfMember(part);
    text += part;
    for (const std::size_t more : {std::size_t{0}, std::size_t{1}, std::size_t{1000}}) {
      expectTaken(file, text.size() + more + 1, {text, file.size(), true});
    }
    expectTaken(file, text.empty() ? 1 : text.size(), {text, file.size(), true});
  }
}

TEST_P(BgzfInflating, WhatFindsNoRoomOrIsNotWholeOrIsNoBgzfIsLeft) {
  const std::string first = bgzfMember(longText(1)) + bgzfMember(longText(2));
  const std::string text = longText(1) + longText(2);
  const Result two{text, first.size(), true};
  const std::string third = bgzfMember(longText(3));
  expectTaken(first + third, 3 * longText(3).size() - 1, two);
  for (const std::size_t cut :
       {std::size_t{1}, std::size_t{17}, std::size_t{18}, third.size() - 1}) {
    expectTaken(first + third.substr(0, cut), 200000, two);
  }
  expectTaken(first + gzipped("ACGT\n") + third, 200000, two);
  expectTaken(first + std::string(100, '\0'), 200000, two);
  expectTaken(first + "more", 200000, two);
  expectTaken(gzipped("ACGT\n"), 200000, {"", 0, true});
}

TEST_P(BgzfInflating, MembersBeyondCountingAreTakenTheNextTime) {
  std::string file;
  for (int i = 0; i < 600; ++i) file += bgzfMember("A");
  const std::size_t one = bgzfMember("A").size();
  expectTaken(file, 1000, {std::string(512, 'A'), 512 * one, true});
}

// The damaged member and all behind it are left, whichever thread has met it.
TEST_P(BgzfInflating, NothingOfAMemberThatIsNotSoundIsTaken) {
  std::string file;
  std::string text;
  for (unsigned n = 0; n < 6; ++n) {
    const std::string member = bgzfMember(longText(n));
    const std::string sound = bgzfMember(longText(6));
    for (const std::size_t at : {std::size_t{19}, member.size() / 2, member.size() - 9,
                                 member.size() - 8, member.size() - 5, member.size() - 4}) {
      const Result expected{text, file.size(), false};
      expectTaken(file + flipped(member, at, 1) + sound + sound, 400000, expected);
    }
    file += member;
    text += longText(n);
  }
}

TEST_P(BgzfInflating, StreamThatEndsBeforeItsTrailerIsNotSound) {
  const std::string member = bgzfMember("ACGT\n");
  std::string longer = member;
  longer.insert(member.size() - 8, 1, '\0');
  ++longer[16];
  expectTaken(member, 1000, {"ACGT\n", member.size(), true});
  expectTaken(longer, 1000, {"", 0, false});
}

TEST(BgzfInflaters, AreTwoFromFourWorkersOn) {
  EXPECT_EQ(1, inflatersFor(1));
  EXPECT_EQ(1, inflatersFor(3));
  EXPECT_EQ(2, inflatersFor(4));
  EXPECT_EQ(2, inflatersFor(64));
}

TEST(BgzfHeader, OnlyItsOwnFormCounts) {
  const std::string member = bgzfMember("ACGT\n");
  EXPECT_EQ(BgzfInflaters::sizeOf(member), member.size());
  for (std::size_t at = 0; at < BgzfInflaters::kHeader; ++at) {
    EXPECT_EQ(BgzfInflaters::sizeOf(std::string_view(member).substr(0, at)), 0u);
    const bool hasNoMeaning = at >= 4 && at < 10;
    const bool isSize = at >= 16;
    for (unsigned bit = 0; bit < 8; ++bit) {
      const std::size_t size = BgzfInflaters::sizeOf(flipped(member, at, 1u << bit));
      if (hasNoMeaning) {
        EXPECT_EQ(size, member.size());
      } else if (isSize) {
        const std::size_t named =
            ((member.size() - 1) ^ (std::size_t{1} << bit << 8 * (at - 16))) + 1;
        EXPECT_EQ(size, named < 26 ? 0 : named);
      } else {
        EXPECT_EQ(size, 0u) << at;
      }
    }
  }
  EXPECT_EQ(BgzfInflaters::sizeOf(gzipped("ACGT\n") + member), 0u);
}

// Whole files.

class BgzfFile : public BgzfTest {};

INSTANTIATE_BGZF(BgzfFile);

// Ordinary members, and with them other ways through the ring's blocks, may stand between.
TEST_P(BgzfFile, AnyMembersGiveTheSameByAnyThreads) {
  rc::detail::checkGTest([] {
    const auto count = *rc::gen::inRange<unsigned>(0, 24);
    const bool arePure = *rc::gen::arbitrary<bool>();
    std::string file;
    std::string text;
    for (unsigned n = 0; n < count; ++n) {
      const auto size = *rc::gen::element<std::size_t>(0, 1, 700, 20000, 40000, kUsual, 65536);
      const bool isNoise = *rc::gen::arbitrary<bool>();
      const std::string part = isNoise ? noise(std::min(size, kUsual), n)
                                       : longText(n).substr(0, size) + std::string(size / 2, 'C');
      file += arePure || *rc::gen::inRange(0, 4) != 0 ? bgzfMember(part) : gzipped(part);
      text += part;
    }
    file += *rc::gen::element(bgzfMember(""), std::string(), std::string(300, '\0'));
    const bool hasMembers = file.starts_with('\x1f');
    RC_ASSERT(inflateByAll(file) == (Inflated{hasMembers ? text : file, ""}));
  });
}

TEST_P(BgzfFile, MuchMoreThanTheRingHolds) {
  Bgzf all;
  for (unsigned n = 0; n < 80; ++n) {
    all.add(n % 3 == 0 ? noise(kUsual, n) : randomBases(kUsual, n));
  }
  all.add("");
  const std::string& file = all.file;
  EXPECT_TRUE(inflateByAll(file) == (Inflated{all.text, ""}));
  for (const std::size_t at : {file.size() / 3, file.size() / 2, file.size() - 40}) {
    const Inflated part = inflateByAll(flipped(file, at, 4), all.textBefore(at));
    EXPECT_NE(part.damage, "");
    EXPECT_TRUE(part.bytes.starts_with(all.text.substr(0, all.textBefore(at))));
    EXPECT_EQ(inflateByAll(file.substr(0, at)).damage, "unexpected end of file");
  }
  EXPECT_EQ(inflateByAll(file + "more").damage, "trailing bytes after the last member");
}

TEST_P(BgzfFile, LongMembersOfOtherKinds) {
  const std::string text(3'000'000, 'A');  // packs to less than 65,536 bytes, and fills many blocks
  const std::string file = bgzfMember("AC\n") + bgzfMember(text) + bgzfMember(longText(1));
  EXPECT_TRUE(inflateByAll(file) == (Inflated{"AC\n" + text + longText(1), ""}));
}

TEST_P(BgzfFile, PlainTextAndNoText) {
  for (const std::string& file : {std::string(), std::string("A"), std::string("\x1f"),
                                  std::string("ACGT\n"), randomBases(300000, 1)}) {
    EXPECT_TRUE(inflateByAll(file) == (Inflated{file, ""}));
  }
  EXPECT_EQ(inflateByAll(bgzfMember("")), (Inflated{"", ""}));
  EXPECT_EQ(inflateByAll(bgzfMember("") + "A").damage, "trailing bytes after the last member");
}

class BgzfDamage : public BgzfTest {
 protected:
  BgzfDamage() {
    for (unsigned n = 0; n < 3; ++n) {
      ofLong_.add(longText(n));
      ofShort_.add(randomBases(20, n) + "\n");
    }
    ofLong_.add("");
    ofShort_.add("");
  }

  Bgzf ofLong_;   // inflated by several threads
  Bgzf ofShort_;  // by one, the members still together
};

INSTANTIATE_BGZF(BgzfDamage);

TEST_P(BgzfDamage, EveryByteChanged) {
  for (const Bgzf* whole : {&ofLong_, &ofShort_}) {
    for (std::size_t at = 0; at < whole->file.size(); ++at) {
      SCOPED_TRACE(at);
      const std::size_t certain = whole->textBefore(at);
      const Inflated part = inflateByAll(flipped(whole->file, at, 1u << at % 8), certain);
      EXPECT_TRUE(part.bytes.starts_with(whole->text.substr(0, certain)));
    }
  }
}

TEST_P(BgzfDamage, CutAtEveryLength) {
  for (const Bgzf* whole : {&ofLong_, &ofShort_}) {
    for (std::size_t size = 0; size < whole->file.size(); ++size) {
      SCOPED_TRACE(size);
      inflateByAll(whole->file.substr(0, size));
    }
  }
}

// The threads: they sleep, and end with the input.

std::size_t threadsOfProcess() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

void rest(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

// Whether the process comes to have so many threads: one that has ended is listed a moment longer.
bool areThreads(std::size_t count) {
  for (int tries = 0; tries < 5000 && threadsOfProcess() != count; ++tries) rest(1);
  return threadsOfProcess() == count;
}

class BgzfThreads : public BgzfTest {
 protected:
  BgzfThreads() {
    std::string file;
    for (unsigned n = 0; n < 80; ++n) file += bgzfMember(longText(n));
    write("file.gz", file);
  }

  static std::unique_ptr<GzipInput> openBy(int threads) {
    auto input = std::make_unique<GzipInput>();
    EXPECT_TRUE(input->open("file.gz"));
    input->inflateAhead(threads);
    return input;
  }
};

INSTANTIATE_BGZF(BgzfThreads);

TEST_P(BgzfThreads, AreAsManyAsAskedForAndEndWithTheInput) {
  std::thread([] {}).join();  // a sanitizer starts a thread of its own beside the first
  rest(100);
  const std::size_t before = threadsOfProcess();
  for (const int threads : {1, 2, 3, 5}) {
    for (const int blocks : {1, 9}) {
      const auto input = openBy(threads);
      for (int i = 0; i < blocks; ++i) EXPECT_FALSE(input->next().empty());
      EXPECT_TRUE(areThreads(before + static_cast<std::size_t>(threads))) << threads;
    }
    EXPECT_TRUE(areThreads(before)) << threads;
  }
  write("file.gz", gzipped(longText(1)) + gzipped(longText(2)));
  const auto input = openBy(3);
  EXPECT_FALSE(input->next().empty());
  EXPECT_LE(threadsOfProcess(), before + 1) << "helpers without BGZF";
}

TEST_P(BgzfThreads, SleepWhileTheRingIsFull) {
  const auto input = openBy(4);
  EXPECT_FALSE(input->next().empty());
  std::clock_t used = CLOCKS_PER_SEC;  // in a fifth of a second, once the ring is full
  for (int tries = 0; tries < 25 && used >= CLOCKS_PER_SEC / 100; ++tries) {
    const std::clock_t before = std::clock();
    rest(200);
    used = std::clock() - before;
  }
  EXPECT_LT(used, CLOCKS_PER_SEC / 100);
}

TEST_P(BgzfThreads, RunThatEndsEarly) {
  for (const int milliseconds : {0, 1, 20}) {
    EXPECT_EXIT(
        {
          const auto input = openBy(3);
          input->next();
          rest(milliseconds);
          std::exit(7);
        },
        ::testing::ExitedWithCode(7), "");
  }
}

}  // namespace
}  // namespace velk::test
