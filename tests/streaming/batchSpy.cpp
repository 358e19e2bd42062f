#include "tests/streaming/batchSpy.h"

#include <unistd.h>

#include <ostream>

#include "streaming/mailbox.h"
#include "streaming/readBuffer.h"

namespace velk::test {

std::ostream& operator<<(std::ostream& out, const Batch& batch) {
  out << "{";
  for (std::size_t i = 0; i < batch.a.size(); ++i) {
    out << (i == 0 ? "" : ", ") << '"' << batch.a[i] << '"';
    if (!batch.b.empty()) out << "/\"" << batch.b[i] << '"';
  }
  return out << "}";
}

BatchSpy::BatchSpy() {
  constexpr int kManyWorkers = bufferSize;  // makes the row of each short
  threadNum = 1;
  allocateWorkerArrays(1);
  allocateRow(0, kManyWorkers);
  thread_ = std::thread([this] { live(); });
}

BatchSpy::~BatchSpy() {
  setMailbox(0, 2);
  thread_.join();
  releaseRows(1);
}

void BatchSpy::live() {
  for (;;) {
    switch (mailboxValue(0)) {
      case 0:
        usleep(kWorkerPollMicroseconds);
        break;
      case 1: {
        Batch& batch = batches_.emplace_back();
        batch.a.assign(readsA, readsA + bufferNum);
        if (readsB != nullptr) batch.b.assign(readsB, readsB + bufferNum);
        foundReadNum[0] = 0;
        setMailbox(0, 0);
        break;
      }
      default:
        return;
    }
  }
}

}  // namespace velk::test
