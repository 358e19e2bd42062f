// A helper thread that makes blocks ahead of the thread that takes them, in a bounded ring.
//
// The helper fills blocks in turn and sleeps while all are full; the taker sleeps while none is.
// From start() on what the blocks are made of is the helper's, until next() has returned null or
// thrown: then it is the taker's again. The helper never ends the run: what it meets is thrown by
// next(), behind the blocks filled before. It ends when the ring is destroyed, not before, so that
// it can always be asked to; a run that ends early leaves it behind.
#pragma once

#include <pthread.h>

#include <array>
#include <cassert>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace velk {

/// What a ring that is destroyed early does with its helper.
enum class HelperAtEnd {
  kIsAwaited,  // until it has done with its block
  kIsLeft,     // it may wait for a pipe that never goes on; ends by itself once that does
};

template <class Block>
class AheadRing {
 public:
  /// Fills a block (inout: one that was filled before, or a new one). Returns false when there is
  /// nothing more for it. Called by the helper, and owns what it uses where that helper is left.
  using Fill = std::function<bool(Block&)>;

  /// Throws std::bad_alloc when there is no memory for the ring.
  AheadRing(Fill fill, HelperAtEnd atEnd)
      : shared_(std::make_shared<Shared>(std::move(fill))), atEnd_(atEnd) {}
  ~AheadRing();
  AheadRing(const AheadRing&) = delete;
  AheadRing& operator=(const AheadRing&) = delete;

  /// Starts the helper, `name` in lists of threads. Returns false when the system does not give a
  /// thread.
  bool start(const char* name);

  /// Returns the next block, valid until the next call; null when there are no more. Throws what
  /// the filling has thrown. REQUIRES: start() has returned true.
  const Block* next();

 private:
  static constexpr std::size_t kBlocks = 8;

  // What the helper and the ring both have, for as long as either lives.
  struct Shared {
    explicit Shared(Fill made) : fill(std::move(made)) {}

    void help();
    bool awaitRoom();
    bool fillBlock(Block& block);

    Fill fill;
    std::array<Block, kBlocks> blocks;  // block n of all is blocks[n % kBlocks]

    std::mutex mutex;  // guards what follows
    std::condition_variable changed;
    std::size_t filled = 0;  // blocks that the helper has filled
    std::size_t given = 0;   // blocks that the taker has got; it holds the last of them
    std::size_t freed = 0;   // blocks that it has done with
    bool hasEnded = false;   // whether the helper will fill no more
    bool isStopped = false;  // whether the ring is destroyed
    std::exception_ptr failure;
  };

  static void* runHelper(void* owner);

  std::shared_ptr<Shared> shared_;
  HelperAtEnd atEnd_;
  pthread_t helper_{};
  bool isRunning_ = false;
};

template <class Block>
AheadRing<Block>::~AheadRing() {
  if (!isRunning_) return;
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->isStopped = true;
  }
  shared_->changed.notify_all();
  atEnd_ == HelperAtEnd::kIsAwaited ? pthread_join(helper_, nullptr) : pthread_detach(helper_);
}

template <class Block>
bool AheadRing<Block>::start(const char* name) {
  auto owner = std::make_unique<std::shared_ptr<Shared>>(shared_);
  isRunning_ = pthread_create(&helper_, nullptr, runHelper, owner.get()) == 0;
  if (!isRunning_) return false;
  static_cast<void>(owner.release());  // the helper has it
  pthread_setname_np(helper_, name);
  return true;
}

template <class Block>
const Block* AheadRing<Block>::next() {
  assert(isRunning_);
  Shared& ring = *shared_;
  std::unique_lock lock(ring.mutex);
  if (ring.freed != ring.given) {
    ring.freed = ring.given;
    ring.changed.notify_all();
  }
  ring.changed.wait(lock, [&] { return ring.filled != ring.given || ring.hasEnded; });
  if (ring.filled != ring.given) return &ring.blocks[ring.given++ % kBlocks];
  if (ring.failure) std::rethrow_exception(ring.failure);
  return nullptr;
}

template <class Block>
void* AheadRing<Block>::runHelper(void* owner) {
  const std::unique_ptr<std::shared_ptr<Shared>> shared(
      static_cast<std::shared_ptr<Shared>*>(owner));
  (*shared)->help();
  return nullptr;
}

template <class Block>
void AheadRing<Block>::Shared::help() {
  for (std::size_t n = 0; awaitRoom(); ++n) {
    const bool isFilled = fillBlock(blocks[n % kBlocks]);
    std::unique_lock lock(mutex);
    isFilled ? void(++filled) : void(hasEnded = true);
    changed.notify_all();
    if (hasEnded) {
      changed.wait(lock, [&] { return isStopped; });
      return;
    }
  }
}

// Waits until a block is free. Returns false when the ring is destroyed.
template <class Block>
bool AheadRing<Block>::Shared::awaitRoom() {
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return isStopped || filled - freed < kBlocks; });
  return !isStopped;
}

template <class Block>
bool AheadRing<Block>::Shared::fillBlock(Block& block) {
  try {
    return fill(block);
  } catch (...) {
    const std::lock_guard lock(mutex);
    failure = std::current_exception();
    return false;
  }
}

}  // namespace velk
