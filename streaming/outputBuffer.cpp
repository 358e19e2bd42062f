// Writes the records of a batch to the output, worker by worker.
#include <array>
#include <charconv>
#include <limits>
#include <string>

#include "contig/contig.h"
#include "driver/outputFile.h"
#include "driver/velk.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

constexpr std::size_t kBlock = 256 << 10;  // bytes that are written together

// Appends `number` in decimal, and `end`.
template <class Number>
void append(std::string& text, Number number, char end) {
  std::array<char, std::numeric_limits<Number>::digits10 + 2> digits{};
  const auto [last, error] = std::to_chars(digits.begin(), digits.end(), number);
  text.append(digits.begin(), last);
  text += end;
}

void appendRecord(std::string& text, int t, uint64_t k) {
  text += '>';
  append(text, gapNum[t][k], '\t');
  append(text, gapsSize[t][k], '\t');
  append(text, positionInGap[t][k], '\t');
  text += scaffoldInfo[scaffold[t][k]].scaffoldId;
  text += '\t';
  append(text, frontContig[t][k], '\t');
  append(text, insertLength, '\n');
  text += foundReads[t][k];
  text += '\n';
}

void writeOut(std::string& text) {
  fout.write(text.data(), static_cast<std::streamsize>(text.size()));
  text.clear();
}

}  // namespace

void OutputBuffer() {
  std::string text;
  for (int t = 0; t < threadNum; ++t) {
    foundNumInLib += foundReadNum[t];
    for (uint64_t k = 0; k < foundReadNum[t]; ++k) {
      ++readSumInEachGap[gapNum[t][k]];
      appendRecord(text, t, k);
      if (text.size() >= kBlock) writeOut(text);
    }
  }
  writeOut(text);
  requireWritten(fout, out_file);
}

}  // namespace velk
