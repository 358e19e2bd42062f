// What reaches the workers: a stand-in for the pool's one worker that copies every batch.
#pragma once

#include <iosfwd>
#include <string>
#include <thread>
#include <vector>

namespace velk::test {

/// The filled entries of the read buffer at one hand-off.
struct Batch {
  std::vector<std::string> a;
  std::vector<std::string> b;  // empty in single-end mode

  bool operator==(const Batch&) const = default;
};

using Batches = std::vector<Batch>;

/// For failure messages.
std::ostream& operator<<(std::ostream& out, const Batch& batch);

/// Answers the mailbox of worker 0 in place of a real worker: keeps a copy of the batch, finds
/// nothing. No other worker may exist.
class BatchSpy {
 public:
  BatchSpy();
  ~BatchSpy();
  BatchSpy(const BatchSpy&) = delete;
  BatchSpy& operator=(const BatchSpy&) = delete;

  /// The batches so far; to be called between hand-offs.
  const Batches& batches() const { return batches_; }

 private:
  void live();

  Batches batches_;
  std::thread thread_;
};

}  // namespace velk::test
