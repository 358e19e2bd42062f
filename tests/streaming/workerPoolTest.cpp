// The hand-off between the main thread and the workers, and how its threads poll.
#include "streaming/workerPool.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "driver/velk.h"
#include "streaming/library.h"
#include "streaming/mailbox.h"
#include "streaming/readBuffer.h"
#include "streaming/readers.h"
#include "tests/streaming/streamingTest.h"

namespace {

constexpr unsigned kLongest = 100;

// One flag a number of microseconds, the last for all longer ones. Nothing here has a destructor:
// workers poll on while exit() runs those of the program.
std::array<std::atomic<bool>, kLongest + 1> seen;

}  // namespace

// The linker option --wrap sends the calls of the program to this function, under this name.
extern "C" {
int __real_usleep(useconds_t microseconds);
int __wrap_usleep(useconds_t microseconds);

int __wrap_usleep(useconds_t microseconds) {
  seen[microseconds < kLongest ? microseconds : kLongest] = true;
  return __real_usleep(microseconds);
}
}

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

// Begins to watch.
void watchPolls() {
  for (auto& flag : seen) flag = false;
}

// The microseconds that usleep() has been asked for since then, each once; 100 stands for
// 100 and more.
std::set<unsigned> pollsSeen() {
  std::set<unsigned> polls;
  for (unsigned microseconds = 0; microseconds <= kLongest; ++microseconds) {
    if (seen[microseconds]) polls.insert(microseconds);
  }
  return polls;
}

// The policies by which the main thread and worker t are scheduled.
std::vector<int> policiesWithWorker(int t) {
  int policy = -1;
  sched_param unused{};
  pthread_getschedparam(threads[t], &policy, &unused);
  return {sched_getscheduler(0), policy};
}

class WorkerPool : public GapAssemblyTest {
 protected:
  // Hands `reads` over to the first `workers` workers as a single-end batch.
  void handOver(std::vector<std::string>& reads, int workers) {
    readsA = reads.data();
    readsB = nullptr;
    bufferNum = static_cast<int>(reads.size());
    threadNum = workers;
    sendSignal(1);
  }

  // In a process of its own, which has `before` as its policy: starts workers and expects `after`
  // of the main thread and of them.
  void expectPolicy(int before, int after) {
    EXPECT_EXIT(
        {
          const sched_param unused{};
          sched_setscheduler(0, before, &unused);
          start(2);
          std::exit(policiesWithWorker(1) == std::vector<int>(2, after) ? 0 : 1);
        },
        ExitedWithCode(0), Eq(""));
  }

  // The reads that worker t found.
  static std::vector<std::string> foundBy(int t) {
    return {foundReads[t], foundReads[t] + foundReadNum[t]};
  }

  // The reads of a batch that stride sharing gives to worker t.
  static std::vector<std::string> shareOf(const std::vector<std::string>& reads, int t,
                                          int workers) {
    std::vector<std::string> share;
    for (std::size_t j = 0; j < reads.size(); ++j) {
      if (static_cast<int>(j) % workers == t) share.push_back(reads[j]);
    }
    return share;
  }
};

TEST_F(WorkerPool, StartsIdleWithNothingFound) {
  start(3);
  for (int t = 0; t < 3; ++t) {
    EXPECT_EQ(mailboxValue(t), 0);
    EXPECT_EQ(foundReadNum[t], 0u);
    EXPECT_EQ(threadId[t], t);
  }
}

TEST_F(WorkerPool, SharesTheBatchByStride) {
  for (const int workers : {1, 2, 3, 8}) {
    SCOPED_TRACE(::testing::Message() << workers << " workers");
    start(workers);
    for (unsigned count = 1; count <= 17; ++count) {
      std::vector<std::string> reads;
      for (unsigned i = 0; i < count; ++i) reads.push_back(singleRead(0, 100 * count + i));
      handOver(reads, workers);
      for (int t = 0; t < workers; ++t) {
        EXPECT_EQ(mailboxValue(t), 0);
        EXPECT_EQ(foundBy(t), shareOf(reads, t, workers));
      }
    }
    stop();
  }
}

// Every hand-off passes one read on; also food for the thread sanitizer.
TEST_F(WorkerPool, ManyBatchesOfOneRead) {
  for (const int workers : {1, 2, 3, 8}) {
    start(workers);
    for (unsigned i = 0; i < 300; ++i) {
      std::vector<std::string> reads = {singleRead(static_cast<int>(i % 2), i)};
      handOver(reads, workers);
      ASSERT_EQ(foundBy(0), reads);
      ASSERT_EQ(gapNum[0][0], i % 2);
      for (int t = 1; t < workers; ++t) ASSERT_EQ(foundReadNum[t], 0u);
    }
    stop();
  }
}

TEST_F(WorkerPool, FewerReadsThanWorkers) {
  start(8);
  std::vector<std::string> many;
  for (unsigned i = 0; i < 8; ++i) many.push_back(singleRead(0, i));
  handOver(many, 8);
  for (int t = 0; t < 8; ++t) EXPECT_EQ(foundReadNum[t], 1u);

  // Workers without a read are woken all the same: they take back their counts.
  std::vector<std::string> few = {many[3], many[4]};
  handOver(few, 8);
  EXPECT_EQ(foundBy(0), (std::vector<std::string>{many[3]}));
  EXPECT_EQ(foundBy(1), (std::vector<std::string>{many[4]}));
  for (int t = 2; t < 8; ++t) {
    EXPECT_EQ(foundReadNum[t], 0u);
    EXPECT_EQ(mailboxValue(t), 0);
  }
}

TEST_F(WorkerPool, AddressesTheWorkersThatShareABatch) {
  start(3);
  foundReadNum[2] = 77;
  std::vector<std::string> reads = {singleRead(0, 1), singleRead(0, 2), singleRead(0, 3)};
  handOver(reads, 2);
  EXPECT_EQ(foundReadNum[0], 2u);
  EXPECT_EQ(foundReadNum[1], 1u);
  EXPECT_EQ(foundReadNum[2], 77u) << "a third worker was woken";
}

TEST_F(WorkerPool, WorkerReadsItsNumberOnce) {
  start(2);
  std::vector<std::string> reads = {singleRead(0, 1), singleRead(1, 2)};
  handOver(reads, 2);
  threadId[0] = threadId[1] = 9;
  handOver(reads, 2);
  EXPECT_EQ(foundBy(0), (std::vector<std::string>{reads[0]}));
  EXPECT_EQ(foundBy(1), (std::vector<std::string>{reads[1]}));
}

TEST_F(WorkerPool, QuitReachesAllWorkersWhenNoReadFileWasStreamed) {
  ASSERT_EQ(threadNum, 1);
  thread_num = 3;
  startWorkers(3);
  sendSignal(2);
  for (int t = 0; t < 3; ++t) EXPECT_EQ(mailboxValue(t), 2);
  // A worker that still lives would take up this work and say idle.
  bufferNum = 0;
  for (int t = 0; t < 3; ++t) setMailbox(t, 1);
  usleep(20000);
  for (int t = 0; t < 3; ++t) EXPECT_EQ(mailboxValue(t), 1) << "worker " << t << " lives";
  releaseRows(3);
}

TEST_F(WorkerPool, QuitValueIsTheExitValue) {
  allocateRows(1);
  for (const int value : {7, 2, -3}) {
    setMailbox(0, 0);
    pthread_t worker;
    ASSERT_EQ(pthread_create(&worker, nullptr, thread_routine, &threadId[0]), 0);
    setMailbox(0, value);
    void* exitValue = nullptr;
    ASSERT_EQ(pthread_join(worker, &exitValue), 0);
    EXPECT_EQ(reinterpret_cast<intptr_t>(exitValue), value);
    EXPECT_EQ(mailboxValue(0), value) << "only a pass makes a mailbox idle";
  }
}

TEST_F(WorkerPool, AnyOtherSignalQuits) {
  thread_num = 2;
  startWorkers(2);
  sendSignal(7);  // returns once both threads are joined
  EXPECT_EQ(mailboxValue(0), 7);
  EXPECT_EQ(mailboxValue(1), 7);
  releaseRows(2);
}

TEST_F(WorkerPool, WaitsForEveryWorkerAndCountsAnewInEveryCycle) {
  constexpr useconds_t kManyCycles = 20000;  // microseconds
  allocateRows(2);
  std::atomic<bool> isReturned = false;
  std::thread mainThread([&] {
    sendSignal(1);
    isReturned = true;
  });
  while (mailboxValue(0) != 1 || mailboxValue(1) != 1) usleep(1);
  setMailbox(0, 0);
  usleep(kManyCycles);
  EXPECT_FALSE(isReturned) << "worker 1 still works";
  setMailbox(0, 1);
  usleep(kManyCycles);
  setMailbox(1, 0);
  usleep(kManyCycles);
  EXPECT_FALSE(isReturned) << "worker 0 works again";
  setMailbox(0, 0);
  mainThread.join();
  EXPECT_TRUE(isReturned);
}

// The workers turn pairs of large inserts round in the buffer, a repeated pair once more.
TEST_F(WorkerPool, RepeatedPairOfALargeInsertIsReversedBack) {
  start(1);
  insertLength = 1001;
  batchLimit = 1;
  std::string a;
  std::string b;
  readsA = &a;
  readsB = &b;
  const CapturedErrors errors;
  write("reads", ">\nAACC\n>\nTTTG");
  LoadPEfaPair("reads");
  EXPECT_EQ(a, "CAAA");
  EXPECT_EQ(b, "GGTT");
  write("reads", ">\nAACC\n>\nTTTG\n");
  LoadPEfaPair("reads");
  EXPECT_EQ(a, "AACC");
  EXPECT_EQ(b, "TTTG");
}

// The workers every 2 microseconds, the main thread every 10.
TEST_F(WorkerPool, PollsAtTheFixedIntervals) {
  const std::set<unsigned> expected = {2, 10};
  std::vector<std::string> reads = {singleRead(0, 1)};
  watchPolls();
  start(2);
  // A worker that finds its batch at once has not polled.
  for (int tries = 0; tries < 1000 && pollsSeen().size() < expected.size(); ++tries) {
    handOver(reads, 2);
  }
  EXPECT_EQ(pollsSeen(), expected);
}

// Some hundred workers that poll would keep the processors from the main thread.
TEST_F(WorkerPool, WorkersSleepUntilTheFirstSignal) {
  constexpr useconds_t kManyPolls = 20000;  // microseconds
  std::vector<std::string> reads = {singleRead(0, 1)};
  for (int round = 0; round < 2; ++round) {  // a pool that is started anew sleeps anew
    watchPolls();
    start(3);
    usleep(kManyPolls);
    EXPECT_FALSE(pollsSeen().contains(kWorkerPollMicroseconds));
    handOver(reads, 3);
    usleep(kManyPolls);
    EXPECT_TRUE(pollsSeen().contains(kWorkerPollMicroseconds));
    stop();
  }
}

TEST_F(WorkerPool, ThreadsAreScheduledAsBatch) {
  const sched_param unused{};
  if (sched_setscheduler(0, SCHED_OTHER, &unused) != 0) {
    GTEST_SKIP() << "The tests run under a policy that they may not leave.";
  }
  expectPolicy(SCHED_OTHER, SCHED_BATCH);
}

TEST_F(WorkerPool, PolicyThatTheUserChoseStays) {
  expectPolicy(SCHED_IDLE, SCHED_IDLE);
}

TEST_F(WorkerPool, WorkerThatCannotBeCreatedEndsTheRun) {
  EXPECT_EXIT(
      {
        pthread_attr_t tooMuch;
        pthread_attr_init(&tooMuch);
        pthread_attr_setstacksize(&tooMuch, std::size_t{1} << 46);
        pthread_setattr_default_np(&tooMuch);
        thread_num = 2;
        startWorkers(2);
      },
      ExitedWithCode(2),
      Eq("[ERROR]: can't create worker thread 0: Resource temporarily unavailable\n"));
}

TEST_F(WorkerPool, ExitWhileWorkersSleepIsClean) {
  EXPECT_EXIT(
      {
        start(3);
        std::exit(0);
      },
      ExitedWithCode(0), Eq(""));
}

TEST_F(WorkerPool, ExitWhileWorkersPollIsClean) {
  std::vector<std::string> reads = {singleRead(0, 1), singleRead(1, 2)};
  EXPECT_EXIT(
      {
        start(3);
        handOver(reads, 3);
        std::exit(foundReadNum[0] == 1 && foundReadNum[1] == 1 ? 0 : 1);
      },
      ExitedWithCode(0), Eq(""));
}

// Many hand-offs in a row, from the reader to the output file: food for the thread sanitizer.

class HandOffStress : public GapAssemblyTest {
 protected:
  static constexpr unsigned kWorkers = 8;
  static constexpr unsigned kReads = 1000;

  // Streams "reads" in batches of `limit` entries. Returns what is written for them.
  std::string stream(int insert, int limit) {
    start(static_cast<int>(kWorkers));
    openOutputFile();
    insertLength = insert;
    batchLimit = limit;
    std::string file = "reads";
    std::string none;
    const CapturedErrors progress;
    FindReadsInGaps(file, none, static_cast<int>(kWorkers));
    stop();
    return writtenOutput();
  }

  void writeSingles() {
    std::vector<std::string> reads;
    for (unsigned i = 0; i < kReads; ++i) reads.push_back(singleRead(gapOf(i), i));
    write("reads", fasta(reads));
  }

  static int gapOf(unsigned i) { return static_cast<int>(i % 2); }
};

TEST_F(HandOffStress, BatchesOfOneRead) {
  writeSingles();
  std::string expected;
  for (unsigned i = 0; i < kReads; ++i) expected += singleRecord(gapOf(i), i);
  EXPECT_EQ(stream(0, 1), expected);
}

TEST_F(HandOffStress, BatchesOfFewReadsMoreThanWorkers) {
  constexpr unsigned kLimit = 11;
  writeSingles();
  std::string expected;
  for (unsigned first = 0; first < kReads; first += kLimit) {
    const unsigned end = std::min(first + kLimit, kReads);
    for (unsigned t = 0; t < kWorkers; ++t) {
      for (unsigned i = first + t; i < end; i += kWorkers) expected += singleRecord(gapOf(i), i);
    }
  }
  EXPECT_EQ(stream(0, static_cast<int>(kLimit)), expected);
}

TEST_F(HandOffStress, BatchesOfOnePair) {
  std::vector<std::string> reads;
  std::string expected;
  for (unsigned i = 0; i < kReads; ++i) {
    reads.push_back(firstMate(gapOf(i), i % 50));
    reads.push_back(secondMate(i % 50));
    expected += mateRecord(gapOf(i), i % 50);
  }
  write("reads", fasta(reads));
  EXPECT_EQ(stream(kInsert, 1), expected);
}

}  // namespace
}  // namespace velk::test
