#include "tests/support/assembly.h"

#include <algorithm>
#include <random>

#include "contig/contig.h"
#include "kmer/fetchKmers.h"
#include "streaming/readBuffer.h"

namespace velk::test {

std::string randomBases(std::size_t length, unsigned seed) {
  std::mt19937 random(seed);
  std::string bases(length, ' ');
  for (char& base : bases) base = "ACGT"[random() % 4];
  return bases;
}

std::string reverseComplement(const std::string& bases) {
  std::string reversed(bases.rbegin(), bases.rend());
  for (char& base : reversed) {
    switch (base) {
      case 'A':
        base = 'T';
        break;
      case 'C':
        base = 'G';
        break;
      case 'G':
        base = 'C';
        break;
      default:
        base = 'A';
        break;
    }
  }
  return reversed;
}

void AssemblyTest::releaseAssembly() {
  releaseScaffolds();
  if (kmerHash != nullptr) freeKmerHash(kmerHash);
  kmerHash = nullptr;
  delete[] readSumInEachGap;
  readSumInEachGap = nullptr;
}

AssemblyTest::~AssemblyTest() {
  releaseAssembly();
  if (rows_ != 0) releaseRows(rows_);
  threadNum = 1;
  insertLength = 0;
  bufferNum = 0;
  foundNumInLib = totalFoundNum = 0;
}

void AssemblyTest::load(const std::vector<TestScaffold>& scaffolds) {
  scaffoldSum = static_cast<uint32_t>(scaffolds.size());
  scaffoldInfo = new ScaffoldInfo[scaffoldSum]();
  uint64_t gaps = 0;
  for (std::size_t i = 0; i < scaffolds.size(); ++i) {
    ScaffoldInfo& info = scaffoldInfo[i];
    info.scaffoldId.assign(1, 's').append(std::to_string(i));
    info.contigsSum = static_cast<uint32_t>(scaffolds[i].size());
    info.contigsInfo = new ContigInfo[info.contigsSum]();
    for (std::size_t j = 0; j < scaffolds[i].size(); ++j) {
      info.contigsInfo[j].contigSeq = scaffolds[i][j].bases;
      if (j == 0) continue;
      info.contigsInfo[j].frontGapSize = static_cast<uint64_t>(scaffolds[i][j].gapBefore);
      info.contigsInfo[j].frontGapNum = gaps++;
    }
  }
  kmerHash = newKmerHash(1024, LoadFactor);
  FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum);
  readSumInEachGap = new int[gaps]();
}

void AssemblyTest::allocateRows(int workers) {
  rows_ = thread_num = threadNum = workers;
  allocateWorkerArrays(workers);
  for (int t = 0; t < workers; ++t) allocateRow(t, workers);
}

std::vector<TestRecord> AssemblyTest::recordsOf(int t, uint64_t n) {
  std::vector<TestRecord> records;
  for (uint64_t k = 0; k < n; ++k) {
    records.push_back({foundReads[t][k], scaffold[t][k], frontContig[t][k], positionInGap[t][k],
                       gapNum[t][k], gapsSize[t][k]});
  }
  return records;
}

}  // namespace velk::test
