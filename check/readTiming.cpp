#include "check/readTiming.h"

#include <chrono>
#include <vector>

#include "check/readFile.h"
#include "streaming/lineSource.h"
#include "streaming/readFileName.h"

namespace velk::check {
namespace {

constexpr std::size_t kRecords = 20000;  // that are read

// Reads records of `lines` lines, of which the second is kept. Returns the seconds for one.
template <class Source>
double secondsPerRecord(const std::string& file, int lines) {
  Source source(file);
  if (!source.open()) return 0;
  std::vector<std::string> reads(kRecords);
  const auto start = std::chrono::steady_clock::now();
  std::size_t records = 0;
  for (; records < kRecords && source.startRecord(); ++records) {
    source.keepLine(reads[records]);
    for (int i = 2; i < lines; ++i) source.skipLine();
  }
  const std::chrono::duration<double> used = std::chrono::steady_clock::now() - start;
  return records == 0 ? 0 : used.count() / static_cast<double>(records);
}

double secondsOfFile(const std::string& file, bool isGzip, int lines) {
  return isGzip ? secondsPerRecord<GzipLineSource>(file, lines)
                : secondsPerRecord<PlainLineSource>(file, lines);
}

}  // namespace

double secondsToReadRecord(const ReadInput& input) {
  const bool isGzip = isGzipName(input.fileA);
  const int lines = input.isFasta ? 2 : 4;
  const double first = secondsOfFile(input.fileA, isGzip, lines);
  if (!input.isPaired) return first;
  return first + (input.fileB.empty() ? first : secondsOfFile(input.fileB, isGzip, lines));
}

}  // namespace velk::check
