#include "tests/streaming/streamingTest.h"

#include <stdlib.h>

#include <fstream>

#include "driver/velk.h"
#include "streaming/readBuffer.h"
#include "streaming/workerPool.h"
#include "tests/streaming/streamingTest.h"

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

namespace {

constexpr std::size_t kContig = 400;  // bases
constexpr int kGapLengths[] = {150, 160};

std::string recordOf(int gap, int position, int insert, const std::string& read) {
  std::string record(">");
  record.append(std::to_string(gap)).append("\t").append(std::to_string(kGapLengths[gap]));
  record.append("\t").append(std::to_string(position)).append("\ts").append(std::to_string(gap));
  return record.append("\t0\t").append(std::to_string(insert)).append("\n").append(read) + "\n";
}

std::string joined(const std::vector<std::string>& reads, const char* header, const char* tail) {
  std::string text;
  for (const std::string& read : reads) {
    if (!text.empty()) text += "\n";
    text.append(header).append("\n").append(read).append(tail);
  }
  return text;
}

}  // namespace

GapAssemblyTest::GapAssemblyTest() : left_{randomBases(kContig, 1), randomBases(kContig, 2)} {
  const CapturedErrors progress;
  load({{{left_[0]}, {randomBases(kContig, 3), kGapLengths[0]}},
        {{left_[1]}, {randomBases(kContig, 4), kGapLengths[1]}}});
}

GapAssemblyTest::~GapAssemblyTest() {
  if (workers_ != 0) stop();
}

std::string GapAssemblyTest::singleRead(int gap, unsigned number) const {
  return left_[gap].substr(kContig - 60) + randomBases(40, 2000 + number);
}

std::string GapAssemblyTest::firstMate(int gap, unsigned number) const {
  // offset + kInsert - 100 - kContig is the second mate's position
  return left_[gap].substr(number, 100);
}

std::string GapAssemblyTest::singleRecord(int gap, unsigned number) const {
  return recordOf(gap, -60, 0, singleRead(gap, number));
}

std::string GapAssemblyTest::mateRecord(int gap, unsigned number) {
  return recordOf(gap, static_cast<int>(number), kInsert, storedMate(number));
}

void GapAssemblyTest::openOutputFile() {
  out_file = "found.fa";
  fout.open(out_file);
}

std::string GapAssemblyTest::writtenOutput() {
  fout.close();
  return contentOf("found.fa");
}

void GapAssemblyTest::start(int workers) {
  workers_ = thread_num = workers;
  startWorkers(workers);
}

void GapAssemblyTest::stop() {
  sendSignal(2);
  releaseRows(workers_);
  workers_ = 0;
}

std::string fasta(const std::vector<std::string>& reads) {
  return joined(reads, ">", "");
}

std::string fastq(const std::vector<std::string>& reads) {
  return joined(reads, "@", "\n+\nI");
}

}  // namespace velk::test
