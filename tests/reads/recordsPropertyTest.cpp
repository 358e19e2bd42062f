// Random records, written in random ways, against a plain reading of the text.
#include <rapidcheck.h>

#include <algorithm>

#include "tests/reads/plainRecords.h"

namespace velk::test {
namespace {

using reads::Helpers;
using reads::Packing;

std::string anyOf(const std::string& letters, std::size_t length) {
  return *rc::gen::container<std::string>(length, rc::gen::elementOf(letters));
}

// Lengths small and large: some records are longer than a block of a file.
std::size_t anyLength() {
  return *rc::gen::weightedOneOf<std::size_t>({{8, rc::gen::inRange<std::size_t>(0, 40)},
                                               {4, rc::gen::inRange<std::size_t>(0, 400)},
                                               {1, rc::gen::inRange<std::size_t>(3000, 9000)}});
}

std::vector<Read> anyReads(bool isFastq) {
  std::vector<Read> reads;
  const auto count = *rc::gen::inRange(0, 12);
  for (int i = 0; i < count; ++i) {
    const std::size_t length = anyLength();
    const bool isLower = *rc::gen::weightedElement<bool>({{4, false}, {1, true}});
    Read read{anyOf("ab:/.12#>+", *rc::gen::inRange<std::size_t>(1, 9)),
              anyOf(isLower ? "acgtnACGTN" : "ACGTNRY", length), ""};
    if (isFastq) read.quality = anyOf("@>+!~IF#", length);
    reads.push_back(read);
  }
  return reads;
}

Writing anyWriting(bool isFastq) {
  Writing writing;
  writing.isFastq = isFastq;
  writing.width = *rc::gen::element<std::size_t>(0, 0, 1, 7, 60, 4096);
  writing.lineEnd = *rc::gen::element<std::string>("\n", "\n", "\r\n");
  writing.repeatsHeader = *rc::gen::arbitrary<bool>();
  writing.endsWithLine = *rc::gen::arbitrary<bool>();
  writing.blankLines = *rc::gen::inRange<std::size_t>(0, 3);
  writing.comment = *rc::gen::element<std::string>("", " 1:N:0:AC", "\t@x > y");
  return writing;
}

// The text packed as a whole, or in pieces one behind the other.
std::string anyPacked(const std::string& text, Packing packing) {
  const std::size_t cut = *rc::gen::inRange<std::size_t>(0, text.size() + 1);
  if (packing == Packing::kNone || *rc::gen::arbitrary<bool>()) return packed(text, packing);
  return packed(text.substr(0, cut), packing) + packed(text.substr(cut), packing);
}

// A record whose last line has neither characters nor an end is one that is cut short.
bool isCutShort(const std::vector<Read>& reads, const Writing& writing) {
  return !writing.isFastq && !writing.endsWithLine && !reads.empty() && reads.back().bases.empty();
}

class RecordsProperty : public ReadsTest {};

TEST_F(RecordsProperty, RecordsAreThoseOfThePlainReading) {
  EXPECT_TRUE(rc::check("records are those of the plain reading", [this] {
    const bool isFastq = *rc::gen::arbitrary<bool>();
    const std::vector<Read> reads = anyReads(isFastq);
    const Writing writing = anyWriting(isFastq);
    RC_PRE(!isCutShort(reads, writing));
    const std::string text = written(reads, writing);
    const Packing packing =
        *rc::gen::elementOf(std::vector<Packing>(std::begin(kPackings), std::end(kPackings)));
    const Helpers helpers = *rc::gen::element(Helpers::kNone, Helpers::kInflateAhead);
    write("in", anyPacked(text, packing));
    const Records got = recordsOf("in", helpers);
    RC_ASSERT(got.error == "");
    RC_ASSERT(got.reads == plainRecords(text));
    RC_ASSERT(got.reads.size() == reads.size());
    RC_CLASSIFY(packing != Packing::kNone, "packed");
    RC_CLASSIFY(writing.width != 0, "wrapped");
  }));
}

// Any change of a byte: the reads before it stay, and nothing but an error or another read follows.
TEST_F(RecordsProperty, ChangedBytesAreNoEndOfTheWorld) {
  EXPECT_TRUE(rc::check("changed bytes", [this] {
    const bool isFastq = *rc::gen::arbitrary<bool>();
    const std::vector<Read> reads = anyReads(isFastq);
    const Packing packing =
        *rc::gen::elementOf(std::vector<Packing>(std::begin(kPackings), std::end(kPackings)));
    std::string file = packed(written(reads, {.isFastq = isFastq}), packing);
    RC_PRE(!file.empty());
    const auto place = *rc::gen::inRange<std::size_t>(0, file.size());
    const auto byte = static_cast<char>(*rc::gen::inRange(0, 256));
    RC_PRE(file[place] != byte);
    file[place] = byte;
    write("in", file);
    const Records got = recordsOf("in");
    RC_ASSERT(got == recordsOf("in", Helpers::kInflateAhead));
    if (packing == Packing::kNone) return;
    // Headers of members hold some bytes that mean nothing; all others are reported.
    RC_ASSERT(!got.error.empty() || got.reads.size() == reads.size());
  }));
}

}  // namespace
}  // namespace velk::test
