// The hand-off of a batch between the main thread and the workers, through one mailbox per worker.
//
//   value   meaning                                        written by
//   0       idle: no batch, or the pass is finished        driver at the start, then the worker
//   1       work: a batch is ready, process your share     sendSignal(1)
//   other   quit: leave the loop, end the thread           sendSignal(2)
//
// While any mailbox holds 1 the workers own the read buffer, bufferNum, insertLength and threadNum
// (read only, but for pairs that point outwards: a worker reverses those of its share in place) and
// each its own row; while all hold 0 the main thread owns everything. Workers sleep until the first
// signal is sent, then they poll every 2 microseconds, the main thread every 10. There are no
// locks: the two accessors below are all the synchronisation.
#pragma once

#include "streaming/readBuffer.h"

namespace velk {

inline constexpr unsigned kWorkerPollMicroseconds = 2;
inline constexpr unsigned kMainPollMicroseconds = 10;

/// Reads worker t's mailbox. Acquire: whoever sees a new value also sees all that its writer wrote
/// before storing it (the batch before a 1, the records before a 0).
inline int mailboxValue(int t) {
  return __atomic_load_n(&signal[t], __ATOMIC_ACQUIRE);
}

/// Writes worker t's mailbox. Release: the counterpart of mailboxValue's acquire.
inline void setMailbox(int t, int value) {
  __atomic_store_n(&signal[t], value, __ATOMIC_RELEASE);
}

}  // namespace velk
