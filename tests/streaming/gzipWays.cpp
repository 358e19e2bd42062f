#include "tests/streaming/gzipWays.h"

#include "driver/velk.h"

namespace velk::test {

std::vector<GzipWay> gzipWays() {
  std::vector<GzipWay> ways;
  for (const InflateLibrary library : inflateLibraries()) {
    ways.push_back({library, false});
    ways.push_back({library, true});
  }
  return ways;
}

void PrintTo(const GzipWay& way, std::ostream* out) {
  *out << (way.library == InflateLibrary::kZlib ? "Zlib" : "Isal")
       << (way.isAhead ? "Ahead" : "InPlace");
}

GzipWayTest::GzipWayTest() {
  inflateLibrary = GetParam().library;
  thread_num = GetParam().isAhead ? 2 : 1;
}

GzipWayTest::~GzipWayTest() {
  inflateLibrary = usualLibrary_;
}

Inflated GzipWayTest::inflateFile(const std::string& content) {
  return velk::test::inflateFile(content, GetParam().isAhead);
}

}  // namespace velk::test
