#include "streaming/readBuffer.h"

#include <algorithm>
#include <cassert>

namespace velk {

std::string* readsA = nullptr;
std::string* readsB = nullptr;
int bufferNum = 0;
int batchLimit = bufferSize;
int insertLength = 0;
int threadNum = 1;

pthread_t* threads = nullptr;
int* signal = nullptr;
int* threadId = nullptr;
uint64_t* foundReadNum = nullptr;
std::string** foundReads = nullptr;
uint64_t** scaffold = nullptr;
uint64_t** frontContig = nullptr;
int64_t** positionInGap = nullptr;
uint64_t** gapNum = nullptr;
uint64_t** gapsSize = nullptr;

int* readSumInEachGap = nullptr;
uint64_t foundNumInLib = 0;
uint64_t totalFoundNum = 0;
std::ofstream fout;

namespace {

uint64_t* rowSize = nullptr;  // [thread_num]: records that the row has room for by now

// Gives an array of `size` entries room for `newSize`, its entries kept.
template <class Entry>
void growArray(Entry*& entries, uint64_t size, uint64_t newSize) {
  auto* const grown = new Entry[newSize];
  std::move(entries, entries + size, grown);
  delete[] entries;
  entries = grown;
}

void growRow(int t, uint64_t newSize) {
  const uint64_t size = rowSize[t];
  growArray(foundReads[t], size, newSize);
  growArray(scaffold[t], size, newSize);
  growArray(frontContig[t], size, newSize);
  growArray(positionInGap[t], size, newSize);
  growArray(gapNum[t], size, newSize);
  growArray(gapsSize[t], size, newSize);
  rowSize[t] = newSize;
}

}  // namespace

void allocateWorkerArrays(int workers) {
  const auto count = static_cast<std::size_t>(workers);
  threads = new pthread_t[count];
  signal = new int[count];
  threadId = new int[count];
  foundReadNum = new uint64_t[count];
  rowSize = new uint64_t[count];
  foundReads = new std::string*[count];
  scaffold = new uint64_t*[count];
  frontContig = new uint64_t*[count];
  positionInGap = new int64_t*[count];
  gapNum = new uint64_t*[count];
  gapsSize = new uint64_t*[count];
}

void allocateRow(int t, int workers) {
  signal[t] = 0;
  foundReadNum[t] = 0;
  threadId[t] = t;
  rowSize[t] = 0;
  foundReads[t] = nullptr;
  scaffold[t] = frontContig[t] = gapNum[t] = gapsSize[t] = nullptr;
  positionInGap[t] = nullptr;
  growRow(t, std::min(kFirstRowSize, rowCapacity(workers)));
}

void releaseRows(int workers) {
  for (int t = 0; t < workers; ++t) {
    delete[] foundReads[t];
    delete[] scaffold[t];
    delete[] frontContig[t];
    delete[] positionInGap[t];
    delete[] gapNum[t];
    delete[] gapsSize[t];
  }
  delete[] threads;
  delete[] signal;
  delete[] threadId;
  delete[] foundReadNum;
  delete[] rowSize;
  delete[] foundReads;
  delete[] scaffold;
  delete[] frontContig;
  delete[] positionInGap;
  delete[] gapNum;
  delete[] gapsSize;
  threads = nullptr;
  signal = threadId = nullptr;
  foundReadNum = rowSize = nullptr;
  foundReads = nullptr;
  scaffold = frontContig = gapNum = gapsSize = nullptr;
  positionInGap = nullptr;
}

void recordFound(int t, uint32_t& n, const std::string& read, const FoundRecord& record) {
  assert(n < rowCapacity(thread_num));
  if (n == rowSize[t]) growRow(t, std::min(2 * rowSize[t], rowCapacity(thread_num)));
  foundReads[t][n] = read;
  scaffold[t][n] = record.scaffold;
  frontContig[t][n] = record.frontContig;
  positionInGap[t][n] = record.positionInGap;
  gapNum[t][n] = record.gapNum;
  gapsSize[t][n] = record.gapsSize;
  ++n;
}

}  // namespace velk
