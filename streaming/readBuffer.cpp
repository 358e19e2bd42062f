#include "streaming/readBuffer.h"

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

void allocateWorkerArrays(int workers) {
  const auto count = static_cast<std::size_t>(workers);
  threads = new pthread_t[count];
  signal = new int[count];
  threadId = new int[count];
  foundReadNum = new uint64_t[count];
  foundReads = new std::string*[count];
  scaffold = new uint64_t*[count];
  frontContig = new uint64_t*[count];
  positionInGap = new int64_t*[count];
  gapNum = new uint64_t*[count];
  gapsSize = new uint64_t*[count];
}

void allocateRow(int t, int workers) {
  const std::size_t capacity = rowCapacity(workers);
  signal[t] = 0;
  foundReadNum[t] = 0;
  threadId[t] = t;
  foundReads[t] = new std::string[capacity];
  scaffold[t] = new uint64_t[capacity];
  frontContig[t] = new uint64_t[capacity];
  positionInGap[t] = new int64_t[capacity];
  gapNum[t] = new uint64_t[capacity];
  gapsSize[t] = new uint64_t[capacity];
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
  delete[] foundReads;
  delete[] scaffold;
  delete[] frontContig;
  delete[] positionInGap;
  delete[] gapNum;
  delete[] gapsSize;
  threads = nullptr;
  signal = threadId = nullptr;
  foundReadNum = nullptr;
  foundReads = nullptr;
  scaffold = frontContig = gapNum = gapsSize = nullptr;
  positionInGap = nullptr;
}

void recordFound(int t, uint32_t& n, const std::string& read, const FoundRecord& record) {
  foundReads[t][n] = read;
  scaffold[t][n] = record.scaffold;
  frontContig[t][n] = record.frontContig;
  positionInGap[t][n] = record.positionInGap;
  gapNum[t][n] = record.gapNum;
  gapsSize[t][n] = record.gapsSize;
  ++n;
}

}  // namespace velk
