#include "streaming/decodedInput.h"

#include <cassert>
#include <new>

namespace velk {
namespace {

constexpr std::size_t kDecodedBlock = 256 << 10;  // bytes

}  // namespace

void DecodedInput::decodeAhead() {
  assert(block_ == nullptr && ahead_ == nullptr);
  ahead_ = std::make_unique<InflateAhead>(decoder_);
  if (!ahead_->start()) ahead_.reset();
}

std::string_view DecodedInput::next() {
  if (ahead_ != nullptr) {
    const std::string_view bytes = ahead_->next();
    if (bytes.empty()) damage_ = decoder_.damage();
    return bytes;
  }
  if (block_ == nullptr) block_.reset(new char[kDecodedBlock]);
  const std::size_t made = decoder_.read({block_.get(), kDecodedBlock});
  damage_ = decoder_.damage();
  return {block_.get(), made};
}

InflateAhead::InflateAhead(Decoder& decoder) : decoder_(decoder) {
  for (Block& block : ring_) block.bytes.reset(new char[kDecodedBlock]);
}

InflateAhead::~InflateAhead() {
  if (!isRunning_) return;
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_all();
  pthread_join(helper_, nullptr);
}

bool InflateAhead::start() {
  isRunning_ = pthread_create(&helper_, nullptr, runHelper, this) == 0;
  if (isRunning_) pthread_setname_np(helper_, "inflate");  // for lists of threads
  return isRunning_;
}

std::string_view InflateAhead::next() {
  assert(isRunning_);
  std::unique_lock lock(mutex_);
  if (freed_ != given_) {
    freed_ = given_;
    changed_.notify_all();
  }
  changed_.wait(lock, [&] { return filled_ != given_; });
  const Block& block = ring_[given_ % kBlocks];
  if (block.size == 0) {  // it stays, and is found again
    if (memoryRanOut_) throw std::bad_alloc();
    return {};
  }
  ++given_;
  return {block.bytes.get(), block.size};
}

void* InflateAhead::runHelper(void* ring) {
  static_cast<InflateAhead*>(ring)->help();
  return nullptr;
}

void InflateAhead::help() {
  for (std::size_t n = 0; awaitRoom(); ++n) {
    const bool isLast = !fill(ring_[n % kBlocks]);
    std::unique_lock lock(mutex_);
    ++filled_;
    changed_.notify_all();
    if (isLast) {
      changed_.wait(lock, [&] { return isStopped_; });
      return;
    }
  }
}

// Waits until a block is free. Returns false when the ring is to be destroyed.
bool InflateAhead::awaitRoom() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return isStopped_ || filled_ - freed_ < kBlocks; });
  return !isStopped_;
}

// Returns whether there were bytes for the block.
bool InflateAhead::fill(Block& block) {
  block.size = 0;
  try {
    block.size = decoder_.read({block.bytes.get(), kDecodedBlock});
  } catch (const std::bad_alloc&) {
    const std::lock_guard lock(mutex_);
    memoryRanOut_ = true;
  }
  return block.size != 0;
}

}  // namespace velk
