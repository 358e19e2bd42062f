#include "streaming/readers.h"

#include <algorithm>

#include "driver/fatal.h"
#include "driver/listener.h"
#include "streaming/filesAhead.h"
#include "streaming/lineSource.h"
#include "streaming/readBuffer.h"
#include "streaming/workerPool.h"

namespace velk {
namespace {

// What one record of a file is: its lines, and which of them (from 1) is kept in which buffer. The
// second mates of a pair are line keepB of the same file or, where that is 0, line keepA of
// another.
struct RecordShape {
  int lines;
  int keepA;
  int keepB;
};

constexpr RecordShape kFasta{2, 2, 0};
constexpr RecordShape kFastq{4, 2, 0};
constexpr RecordShape kFastaPair{4, 2, 4};
constexpr RecordShape kFastqPair{8, 2, 6};

constexpr const char* kCannotOpenPairs = "[ERROR]: can't open pair-end read files\n";

void handOver() {
  say("bufferNum: " + std::to_string(bufferNum) + "\n");
  sendSignal(1);
  OutputBuffer();
}

template <class Source>
void skipLines(Source& source, int count) {
  for (int i = 0; i < count; ++i) source.skipLine();
}

// The body of all readers: streams `first` and, for two mate files, `second` record by record.
template <class Source>
void streamRecords(Source& first, Source* second, const RecordShape& shape) {
  const int linesBehind = shape.lines - std::max(shape.keepA, shape.keepB);
  bufferNum = 0;
  while (first.startRecord() && (second == nullptr || second->startRecord())) {
    first.keepLine(readsA[bufferNum]);
    if (second != nullptr) second->keepLine(readsB[bufferNum]);
    if (shape.keepB != 0) {
      skipLines(first, shape.keepB - shape.keepA - 1);
      first.keepLine(readsB[bufferNum]);
    }
    ++bufferNum;
    skipLines(first, linesBehind);
    if (second != nullptr) skipLines(*second, linesBehind);
    if (bufferNum == batchLimit) {
      handOver();
      bufferNum = 0;
    }
  }
  first.finish();
  if (second != nullptr) second->finish();
  if (filesAhead != nullptr) filesAhead->openNext();
  if (bufferNum >= 1) handOver();
}

template <class Source>
void streamOneFile(const std::string& file, const RecordShape& shape, const char* cannotOpen) {
  Source source(file);
  if (!source.open()) fatal(kUserError, cannotOpen);
  streamRecords<Source>(source, nullptr, shape);
}

template <class Source>
void streamTwoFiles(const std::string& fileA, const std::string& fileB, const RecordShape& shape) {
  Source first(fileA);
  Source second(fileB);
  if (!first.open() || !second.open()) fatal(kUserError, kCannotOpenPairs);
  streamRecords(first, &second, shape);
}

template <class Source>
void streamSingleReads(const std::string& file, const RecordShape& shape, const char* cannotOpen) {
  streamOneFile<Source>(file, shape, cannotOpen);
  say("Find reads finished!\n");
}

void refuseMateFile(const std::string& readFileB) {
  if (readFileB.empty()) return;
  fatal(kUserError, "[ERROR]:the input file should be single end file!\n");  // sic
}

// KEPT: the 0 is part of the message (Readers.SingleEndOpenFailures)
constexpr const char* kCannotOpenFasta = "[ERROR]: can't open fasta read file0\n";
constexpr const char* kCannotOpenFastq = "[ERROR]: can't open fastq read file0\n";

}  // namespace

void LoadSEfa(const std::string& readFileA, const std::string& readFileB) {
  refuseMateFile(readFileB);
  streamSingleReads<PlainLineSource>(readFileA, kFasta, kCannotOpenFasta);
}

void LoadSEfa_gz(const std::string& readFileA) {
  streamSingleReads<GzipLineSource>(readFileA, kFasta, kCannotOpenFasta);
}

void LoadSEfq(const std::string& readFileA, const std::string& readFileB) {
  refuseMateFile(readFileB);
  streamSingleReads<PlainLineSource>(readFileA, kFastq, kCannotOpenFastq);
}

void LoadSEfq_gz(const std::string& readFileA) {
  streamSingleReads<GzipLineSource>(readFileA, kFastq, kCannotOpenFastq);
}

void LoadPEfaPair(const std::string& readFileA) {
  streamOneFile<PlainLineSource>(readFileA, kFastaPair, kCannotOpenPairs);
}

void LoadPEfaPair_gz(const std::string& readFileA) {
  streamOneFile<GzipLineSource>(readFileA, kFastaPair, kCannotOpenPairs);
}

void LoadPEfa(const std::string& readFileA, const std::string& readFileB) {
  streamTwoFiles<PlainLineSource>(readFileA, readFileB, kFasta);
}

void LoadPEfa_gz(const std::string& readFileA, const std::string& readFileB) {
  streamTwoFiles<GzipLineSource>(readFileA, readFileB, kFasta);
}

void LoadPEfqPair(const std::string& readFileA) {
  streamOneFile<PlainLineSource>(readFileA, kFastqPair, kCannotOpenPairs);
}

void LoadPEfqPair_gz(const std::string& readFileA) {
  streamOneFile<GzipLineSource>(readFileA, kFastqPair, kCannotOpenPairs);
}

void LoadPEfq(const std::string& readFileA, const std::string& readFileB) {
  streamTwoFiles<PlainLineSource>(readFileA, readFileB, kFastq);
}

void LoadPEfq_gz(const std::string& readFileA, const std::string& readFileB) {
  streamTwoFiles<GzipLineSource>(readFileA, readFileB, kFastq);
}

}  // namespace velk
