#include "streaming/workerPool.h"

#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>

#include "driver/fatal.h"
#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "streaming/mailbox.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

std::atomic<bool> memoryRanOut = false;  // set by a worker, before its mailbox says idle
std::atomic<int> isAnyMailSent = 0;      // 1 from the first sendSignal() on

void makePass(int t) {
  try {
    FindReads(t);
  } catch (const std::bad_alloc&) {
    foundReadNum[t] = 0;
    memoryRanOut = true;
  }
}

// Where a worker's thread begins: asleep until the first mail is sent. Workers that polled already
// would take time from the main thread while it creates the others and reads the first batch.
void* startThread(void* threadId_p) {
  isAnyMailSent.wait(0, std::memory_order_acquire);
  return thread_routine(threadId_p);
}

bool allIdle() {
  for (int t = 0; t < threadNum; ++t) {
    if (mailboxValue(t) == 1) return false;
  }
  return true;
}

// Asks the system to schedule the calling thread, and those that it starts from now on, as ones
// that compute: where all processors are taken, one that wakes to look at a mailbox does not
// interrupt another at its work. What the user asked for instead stays.
void scheduleAsBatch() {
  const sched_param unused{};
  if (sched_getscheduler(0) == SCHED_OTHER) sched_setscheduler(0, SCHED_BATCH, &unused);
}

}  // namespace

void startWorkers(int workers) {
  scheduleAsBatch();
  allocateWorkerArrays(workers);
  // Row by row with its worker: too large a number of workers fails at the system's limit of
  // threads before it takes the memory of their rows.
  isAnyMailSent = 0;
  for (int t = 0; t < workers; ++t) {
    allocateRow(t, workers);
    const int error = pthread_create(&threads[t], nullptr, startThread, &threadId[t]);
    if (error != 0) {
      fatal(kMemoryError, "[ERROR]: can't create worker thread " + std::to_string(t) + ": " +
                              std::strerror(error) + "\n");
    }
  }
}

void* thread_routine(void* threadId_p) {
  const int t = *static_cast<const int*>(threadId_p);
  for (;;) {
    const int value = mailboxValue(t);
    if (value == 0) {
      usleep(kWorkerPollMicroseconds);
    } else if (value == 1) {
      makePass(t);
      setMailbox(t, 0);
    } else {
      return reinterpret_cast<void*>(static_cast<intptr_t>(value));
    }
  }
}

void sendSignal(int SIG) {
  // Every worker must get the last signal, also when no read file has set threadNum.
  const int addressed = SIG == 1 ? threadNum : thread_num;
  for (int t = 0; t < addressed; ++t) setMailbox(t, SIG);
  isAnyMailSent.store(1, std::memory_order_release);
  isAnyMailSent.notify_all();
  if (SIG == 1) {
    do {
      usleep(kMainPollMicroseconds);
    } while (!allIdle());
    if (memoryRanOut) fatal(kMemoryError, "[ERROR]: out of memory\n");
  } else {
    for (int t = 0; t < addressed; ++t) pthread_join(threads[t], nullptr);
  }
}

}  // namespace velk
