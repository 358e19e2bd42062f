// The worker pool: starting the workers, handing them a batch, stopping them.
//
// Calling order of the driver: startWorkers once, sendSignal(1) for every batch (by the readers),
// sendSignal(2) once, then releaseRows. streaming/mailbox.h says how a batch changes hands.
// A worker that runs out of memory ends its pass, and the hand-off then ends the run on the main
// thread with "[ERROR]: out of memory", status 2.
#pragma once

namespace velk {

/// Allocates the arrays and rows of `workers` workers and starts the workers, which sleep until the
/// first sendSignal() and from then on poll as thread_routine() does. Asks to have them and the
/// calling thread scheduled as SCHED_BATCH, unless the user chose another policy. Exits with status
/// 2 after "[ERROR]: can't create worker thread N: REASON" when one won't start.
void startWorkers(int workers);

/// A worker's life: polls its mailbox, makes a pass for every 1, ends on any value but 0 and 1.
/// threadId_p points to the worker's number. Returns the value that ended it.
void* thread_routine(void* threadId_p);

/// Puts SIG into the mailboxes. For 1 (of the threadNum workers that share a batch): waits until
/// all of them are idle again. For any other value (of all thread_num workers): joins them.
void sendSignal(int SIG);

}  // namespace velk
