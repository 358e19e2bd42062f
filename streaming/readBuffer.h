// The shared state of read streaming: the read buffer and the rows of found-read records.
//
// Main thread and workers own it by turns (streaming/mailbox.h). While the main thread owns it, a
// reader fills the buffer and OutputBuffer reads the rows; while the workers own it they read the
// buffer, and worker t writes row t through recordFound and its own foundReadNum alone.
#pragma once

#include <pthread.h>

#include <cassert>
#include <cstdint>
#include <fstream>
#include <string>

#include "driver/velk.h"

namespace velk {

// The read buffer, refilled batch by batch.
extern std::string* readsA;  // [batchLimit], null: reads, or first mates; stale from bufferNum on
extern std::string* readsB;  // [batchLimit]: second mates; null says the batch is single-end
extern int bufferNum;        // 0: filled entries, at most batchLimit
extern int batchLimit;       // bufferSize: entries of a full batch; only tests make it smaller
extern int insertLength;     // 0: avg_ins of the current library, bases; 0 for single-end files
extern int threadNum;        // 1: workers that share a batch, set by FindReadsInGaps

// The workers and their rows, allocated by startWorkers and released by releaseRows. Entry k of row
// t of the six arrays is one found-read record; entries below foundReadNum[t] are valid. A row
// begins small and grows with what its worker finds, at most to rowCapacity(thread_num) entries.
extern pthread_t* threads;        // [thread_num]
extern int* signal;               // [thread_num]: mailboxes, see streaming/mailbox.h
extern int* threadId;             // [thread_num]: each worker's number, its start argument
extern uint64_t* foundReadNum;    // [thread_num]: records of the worker's last pass
extern std::string** foundReads;  // [thread_num][]: the read, on the contigs' strand
extern uint64_t** scaffold;       // [thread_num][]: index in scaffoldInfo
extern uint64_t** frontContig;    // [thread_num][]: index of the contig before the gap
extern int64_t** positionInGap;   // [thread_num][]: bases from the gap's first base to
                                  // the read's first base, may be negative
extern uint64_t** gapNum;         // [thread_num][]: run-wide number of the gap
extern uint64_t** gapsSize;       // [thread_num][]: length of the gap, bases

// Counters and the output of found reads, main thread only.
extern int* readSumInEachGap;   // [gaps of the run], null: records written per gap
extern uint64_t foundNumInLib;  // 0: records of the current read file
extern uint64_t totalFoundNum;  // 0: records of the run
extern std::ofstream fout;      // the found-read FASTA, opened on out_file by the driver

/// Records that one entry of the buffer can yield: a mate in each of two gaps, and the anchor.
inline constexpr int kRecordsPerEntry = 3;

/// Records that a row begins with room for. It doubles when it is full.
inline constexpr uint64_t kFirstRowSize = 1024;

/// Returns the largest share of a batch that one of `workers` workers receives.
/// REQUIRES: workers >= 1.
constexpr int threadBufSize(int workers) {
  assert(workers >= 1);
  return bufferSize / workers + 1;
}

/// Returns the records that a row has room for: all that a worker's largest share can yield.
constexpr std::size_t rowCapacity(int workers) {
  return kRecordsPerEntry * static_cast<std::size_t>(threadBufSize(workers));
}

/// Allocates the outer arrays for `workers` workers; their rows do not exist yet.
void allocateWorkerArrays(int workers);

/// Allocates row t, empty, for one of `workers` workers, and sets its mailbox and count to 0.
void allocateRow(int t, int workers);

/// Releases all rows and outer arrays of `workers` workers.
void releaseRows(int workers);

/// One found read, apart from its bases.
struct FoundRecord {
  uint64_t scaffold;      // index in scaffoldInfo
  uint64_t frontContig;   // index of the contig before the gap
  int64_t positionInGap;  // bases from the gap's first base to the read's first base
  uint64_t gapNum;        // run-wide number of the gap
  uint64_t gapsSize;      // length of the gap, bases
};

/// Writes `read` and `record` to slot n of row t and advances n (inout), growing the row when it is
/// full. The only writer of rows. REQUIRES: the slots before n have been written.
void recordFound(int t, uint32_t& n, const std::string& read, const FoundRecord& record);

/// Writes the records of all workers to fout, worker by worker, and counts them per gap and file.
/// Exits with status 1 when they cannot be written.
void OutputBuffer();

}  // namespace velk
