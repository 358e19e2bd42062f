// What streaming's contracts require is asserted in builds that assert.
#include <gtest/gtest.h>

#include "streaming/blockReader.h"
#include "streaming/gzipDecoder.h"
#include "streaming/gzipInput.h"
#include "streaming/inflateAhead.h"
#include "streaming/readBuffer.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

#ifndef NDEBUG

TEST(Contracts, ABatchIsSharedByOneWorkerAtLeast) {
  volatile int none = 0;
  EXPECT_DEATH(threadBufSize(none), "workers >= 1");
}

TEST(Contracts, BytesAreReadIntoSomeRoom) {
  BlockReader file(1024);
  GzipDecoder decoder(file);
  EXPECT_DEATH(decoder.read({}), "room");
}

TEST(Contracts, TheHelperIsStartedBeforeItIsAsked) {
  BlockReader file(1024);
  GzipDecoder decoder(file);
  InflateAhead ahead(decoder);
  EXPECT_DEATH(ahead.next(), "isRunning");
}

TEST(Contracts, AFileIsInflatedAheadFromItsStartOrNotAtAll) {
  const TemporaryFolder folder;
  GzipInput input;
  ASSERT_TRUE(input.open(folder.writeGzip("a.gz", "bytes")));
  input.next();
  EXPECT_DEATH(input.inflateAhead(), "block_");
}

#endif

}  // namespace
}  // namespace velk::test
