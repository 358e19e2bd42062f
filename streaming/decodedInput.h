// The decoded bytes of a file, block by block: decoded in place, or ahead by a helper thread.
#pragma once

#include <pthread.h>

#include <array>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "streaming/decoder.h"

namespace velk {

/// A helper thread that decodes a file ahead of its reader, into a bounded ring of blocks.
///
/// The helper fills blocks in turn and sleeps while all are full; the reader sleeps while none is.
/// From start() on the decoder is the helper's, until next() has returned no bytes: then it is the
/// reader's again. The helper never ends the run: memory that runs out is thrown by next(), behind
/// the blocks filled before. It ends when the ring is destroyed, not before, so that it can always
/// be asked to; a run that ends early leaves it behind.
class InflateAhead {
 public:
  /// Throws std::bad_alloc when there is no memory for the ring.
  explicit InflateAhead(Decoder& decoder);
  ~InflateAhead();
  InflateAhead(const InflateAhead&) = delete;
  InflateAhead& operator=(const InflateAhead&) = delete;

  /// Starts the helper. Returns false when the system does not give a thread.
  bool start();

  /// Returns the next decoded bytes, valid until the next call; none at their end. Throws
  /// std::bad_alloc when the helper ran out of memory. REQUIRES: start() has returned true.
  std::string_view next();

 private:
  struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
  };

  static constexpr std::size_t kBlocks = 8;

  static void* runHelper(void* ring);
  void help();
  bool awaitRoom();
  bool fill(Block& block);

  Decoder& decoder_;
  std::array<Block, kBlocks> ring_;  // block n of the file is ring_[n % kBlocks]
  pthread_t helper_{};
  bool isRunning_ = false;

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::size_t filled_ = 0;  // blocks that the helper has filled, the last one with no bytes
  std::size_t given_ = 0;   // blocks that the reader has got; it holds the last of them
  std::size_t freed_ = 0;   // blocks that it has done with
  bool memoryRanOut_ = false;
  bool isStopped_ = false;
};

/// The bytes as their readers take them.
class DecodedInput {
 public:
  /// `decoder` must outlive it.
  explicit DecodedInput(Decoder& decoder) : decoder_(decoder) {}

  /// Has a helper thread decode from now on; where the system gives none, it is done in place all
  /// the same. REQUIRES: nothing was read.
  void decodeAhead();

  /// Returns the next decoded bytes, valid until the next call; none at the end or at damage.
  /// Throws std::bad_alloc when there is no memory.
  std::string_view next();

  /// Returns what is wrong with the file, empty as long as nothing was met.
  const std::string& damage() const { return damage_; }

 private:
  Decoder& decoder_;
  std::unique_ptr<char[]> block_;        // the bytes decoded in place
  std::unique_ptr<InflateAhead> ahead_;  // null: in place
  std::string damage_;
};

}  // namespace velk
