#include "tests/contig/contigFixture.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <new>
#include <sstream>

#include "driver/outputFile.h"
#include "tests/support/assembly.h"

namespace velk::test {

void PrintTo(const PlainContig& contig, std::ostream* output) {
  *output << "{" << contig.bases << ", gap " << contig.gapNum << ", size " << contig.gapSize << "}";
}

std::string bases(std::size_t length) {
  return randomBases(length, static_cast<unsigned>(length));
}

std::string letters(std::size_t count, char letter) {
  std::string text;
  text.assign(count, letter);
  return text;
}

std::string messagesOf(const std::function<void()>& action) {
  std::ostringstream messages;
  std::streambuf* const before = std::cerr.rdbuf(messages.rdbuf());
  action();
  std::cerr.rdbuf(before);
  return messages.str();
}

ContigTest::~ContigTest() {
  releaseScaffolds();
}

PlainContigs ContigTest::split(const std::string& sequence) {
  releaseScaffolds();
  scaffoldInfo = new ScaffoldInfo[1]();
  scaffoldSum = 1;
  std::ostringstream positions;
  uint32_t scaffold = 0;
  splitScaffold(scaffoldInfo, sequence, "7", scaffold, gaps_, positions);
  EXPECT_EQ(scaffold, 0U);
  EXPECT_EQ(scaffoldInfo[0].scaffoldId, "7");
  positions_ = positions.str();
  return contigsOf(0);
}

std::string ContigTest::loadScaffoldFile(const std::string& text) {
  const std::string file = folder_.write("scaffolds.fa", text);
  releaseScaffolds();
  messagesOf([&] {
    InitialScaffold(scaffoldInfo, file, scaffoldSum);
    velk::LoadScaffolds(scaffoldInfo, file, scaffoldSum, gaps_);
  });
  // a run loads once; a test may load again into the same files
  unprotectFile(file + ".contigPos");
  unprotectFile(file + ".contig");
  return file;
}

void ContigTest::loadContigFile(const std::string& text) {
  const std::string file = folder_.write("contigs.fa", text);
  releaseScaffolds();
  messagesOf([&] {
    ScaftigMap counts;
    CountscaftigNum(file, counts);
    InitialScaffold(scaffoldInfo, counts, gaps_);
    contigtoScafInfo(file, scaffoldInfo, counts);
    scaffoldSum = static_cast<uint32_t>(counts.size());
  });
}

PlainContigs ContigTest::contigsOf(uint32_t i) {
  PlainContigs contigs;
  for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
    const ContigInfo& contig = scaffoldInfo[i].contigsInfo[j];
    EXPECT_EQ(contig.readsInFrontGap, nullptr);
    contigs.push_back({contig.contigSeq, contig.frontGapNum, contig.frontGapSize});
  }
  return contigs;
}

std::vector<std::string> ContigTest::ids() {
  std::vector<std::string> found;
  for (uint32_t i = 0; i < scaffoldSum; ++i) found.push_back(scaffoldInfo[i].scaffoldId);
  return found;
}

}  // namespace velk::test

namespace {

std::size_t largestArray = SIZE_MAX;  // bytes

}  // namespace

// The array forms of new and delete of the whole test program.
void* operator new[](std::size_t size) {
  void* const memory = size > largestArray ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace velk::test {

void failArraysAbove(std::size_t bytes) {
  largestArray = bytes;
}

}  // namespace velk::test
