#include "tests/streaming/streamingTest.h"

#include <stdlib.h>

#include <fstream>

#include "streaming/readBuffer.h"

namespace velk::test {
namespace {

constexpr const char* kFolderVariable = "VELK_STREAMING_TEST_FOLDER";

}  // namespace

StreamingTest::StreamingTest() : cameFrom_(std::filesystem::current_path()) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const char* const folderOfParent = getenv(kFolderVariable);
  if (folderOfParent != nullptr) {
    std::filesystem::current_path(folderOfParent);
    return;
  }
  folder_ = std::make_unique<TemporaryFolder>();
  setenv(kFolderVariable, folder_->path("").c_str(), 1);
  std::filesystem::current_path(folder_->path(""));
}

StreamingTest::~StreamingTest() {
  std::filesystem::current_path(cameFrom_);
  if (folder_ != nullptr) unsetenv(kFolderVariable);
  batchLimit = bufferSize;
  readsA = readsB = nullptr;
  if (fout.is_open()) fout.close();
  fout.clear();
}

void StreamingTest::write(const std::string& name, const std::string& text) {
  std::ofstream(name, std::ios::binary) << text;
}

void StreamingTest::writeGzip(const std::string& name, const std::string& text) {
  write(name, gzipped(text));
}

}  // namespace velk::test
