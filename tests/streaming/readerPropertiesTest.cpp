// Random small files: every reader must make of them what the standard tools make of them.
#include <rapidcheck.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "driver/velk.h"
#include "tests/streaming/readerKinds.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

using Bytes = std::string;

rc::Gen<std::string> anyLine(bool mayHoldNul) {
  const auto repeated = [](char letter, int least, int most) {
    return rc::gen::map(rc::gen::inRange(least, most), [letter](int count) {
      return std::string(static_cast<std::size_t>(count), letter);
    });
  };
  const std::string letters = mayHoldNul ? std::string("ACGT>@+\r\0", 9) : std::string("ACGT>@+\r");
  return rc::gen::weightedOneOf<std::string>(
      {{3, rc::gen::just(std::string())},
       {12, rc::gen::container<std::string>(rc::gen::elementOf(letters))},
       {1, repeated('C', 1018, 1028)},
       {1, repeated('G', 2040, 2050)}});
}

rc::Gen<std::string> anyText(bool mayHoldNul) {
  return rc::gen::exec([mayHoldNul] {
    const auto count = *rc::gen::inRange<std::size_t>(0, 61);
    const auto lines = *rc::gen::container<std::vector<std::string>>(count, anyLine(mayHoldNul));
    std::string text;
    for (const std::string& line : lines) text.append(line).append("\n");
    const bool endsWithNewline = *rc::gen::weightedElement<bool>({{2, true}, {1, false}});
    if (!endsWithNewline && !text.empty()) text.pop_back();
    return text;
  });
}

// The text as a file under a gzip name: as it stands, or as members cut anywhere, empty ones too.
rc::Gen<Bytes> packed(const std::string& text) {
  return rc::gen::exec([text]() -> Bytes {
    const auto members = *rc::gen::inRange<std::size_t>(0, 4);
    if (members == 0) return text;
    Bytes file;
    std::size_t from = 0;
    for (std::size_t i = 1; i <= members; ++i) {
      const std::size_t to =
          i == members ? text.size() : *rc::gen::inRange<std::size_t>(from, text.size() + 1);
      file += gzipped(text.substr(from, to - from));
      from = to;
    }
    return file;
  });
}

class ReaderProperties : public StreamingTest, public ::testing::WithParamInterface<ReaderKind> {};

INSTANTIATE_TEST_SUITE_P(Twelve, ReaderProperties, ::testing::ValuesIn(kReaderKinds),
                         ::testing::PrintToStringParamName());

TEST_P(ReaderProperties, ReaderEqualsThePlainLoopOverStandardTools) {
  const ReaderKind& kind = GetParam();
  const std::string fileA = kind.isGzip ? "one.gz" : "one";
  const std::string fileB = kind.files == 1 ? "" : kind.isGzip ? "two.gz" : "two";
  const bool holds = rc::check([&] {
    const auto fill = [&](const std::string& file) {
      const std::string text = *anyText(true);
      std::ofstream(file, std::ios::binary) << (kind.isGzip ? *packed(text) : text);
    };
    fill(fileA);
    if (kind.files == 2) fill(fileB);
    const Slots slots = oldSlots(*rc::gen::inRange<std::size_t>(1, 6));
    thread_num = *rc::gen::inRange(1, 3);  // gzip files are inflated in place, or ahead
    const Batches expected = batchesByStandardTools(kind, fileA, fileB, slots);
    const ReaderRun run = runReader(kind, fileA, fileB, slots);
    RC_TAG(std::min<std::size_t>(expected.size(), 3));
    RC_ASSERT(run.batches == expected);
    RC_ASSERT(run.messages == messagesOf(kind, expected));
  });
  EXPECT_TRUE(holds);
}

TEST_P(ReaderProperties, CountingLinesAgreesWithTheStandardTools) {
  const ReaderKind& kind = GetParam();
  const std::string fileA = kind.isGzip ? "one.gz" : "one";
  const std::string fileB = kind.files == 1 ? "" : kind.isGzip ? "two.gz" : "two";
  for (int count = 0; count <= 3; ++count) {
    for (std::size_t cut = 0; cut < static_cast<std::size_t>(kind.lines); ++cut) {
      for (const bool endsWithNewline : {true, false}) {
        FileText first = numberedReads(kind, 0, count);
        const FileText second = numberedReads(kind, 1, 2);
        first.lines.resize(first.lines.size() + cut, "tail");
        first.endsWithNewline = endsWithNewline;
        write(fileA, first.text());
        if (kind.files == 2) write(fileB, second.text());
        EXPECT_EQ(batchesByCounting(kind, first, second, oldSlots(2)),
                  batchesByStandardTools(kind, fileA, fileB, oldSlots(2)));
      }
    }
  }
}

}  // namespace
}  // namespace velk::test
