#include "streaming/bgzfInflaters.h"

#include <new>

namespace velk {
namespace {

constexpr std::size_t kTrailer = 8;       // bytes: checksum and length
constexpr std::size_t kLengthAt = 4;      // in the trailer
constexpr std::size_t kShare = 32 << 10;  // inflated bytes that are worth waking a thread

bool inflateMember(Inflater& inflater, std::string_view packed, std::span<char> room) {
  const std::string_view trailer = packed.substr(packed.size() - kTrailer);
  packed.remove_prefix(BgzfInflaters::kHeader);
  packed.remove_suffix(kTrailer);
  try {
    inflater.start();
    const Inflater::Step step = inflater.inflate(packed, room);
    return step.state == Inflater::State::kEnded && step.made == room.size() && step.unused == 0 &&
           inflater.checksum() == numberIn(trailer);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

uint32_t numberIn(std::string_view bytes) {
  uint32_t number = 0;
  for (std::size_t i = 0; i < sizeof number; ++i) {
    number |= uint32_t{static_cast<unsigned char>(bytes[i])} << 8 * i;
  }
  return number;
}

BgzfInflaters::BgzfInflaters(int threads) : helpersToStart_(threads - 1) {
  helpers_.reserve(static_cast<std::size_t>(helpersToStart_));
}

BgzfInflaters::~BgzfInflaters() {
  {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  hasWork_.notify_all();
  for (const pthread_t helper : helpers_) pthread_join(helper, nullptr);
}

// The header has one extra field and nothing else behind its fixed part.
std::size_t BgzfInflaters::sizeOf(std::string_view bytes) {
  constexpr std::string_view kStart = "\x1f\x8b\x08\x04";
  constexpr std::string_view kExtra(
      "\x06\x00"
      "BC\x02\x00",
      6);
  constexpr std::size_t kExtraAt = 10;
  constexpr std::size_t kSizeAt = 16;
  if (bytes.size() < kHeader || !bytes.starts_with(kStart) ||
      bytes.substr(kExtraAt, kExtra.size()) != kExtra) {
    return 0;
  }
  const auto low = static_cast<unsigned char>(bytes[kSizeAt]);
  const auto high = static_cast<unsigned char>(bytes[kSizeAt + 1]);
  const std::size_t size = (std::size_t{high} << 8 | low) + 1;
  return size < kHeader + kTrailer ? 0 : size;
}

BgzfInflaters::Inflated BgzfInflaters::inflate(std::string_view bytes, std::span<char> room,
                                               Inflater& own) {
  const std::size_t count = cut(bytes, room);
  const bool areShared = count != 0 && members_[count - 1].room.data() >= room.data() + kShare;
  if (areShared) startHelpers();
  std::unique_lock lock(mutex_);
  next_ = 0;
  count_ = count;
  if (areShared) hasWork_.notify_all();
  work(lock, own);
  isDone_.wait(lock, [&] { return busy_ == 0; });
  Inflated all{0, 0, true};
  for (std::size_t n = 0; n != count; ++n) {
    const Member& member = members_[n];
    if (!member.isSound) return {all.used, all.made, false};
    all.used += member.packed.size();
    all.made += member.room.size();
  }
  return all;
}

// Lists the whole members that find room. Returns their number.
std::size_t BgzfInflaters::cut(std::string_view bytes, std::span<char> room) {
  std::size_t count = 0;
  for (std::size_t size = sizeOf(bytes); size != 0 && size <= bytes.size(); size = sizeOf(bytes)) {
    const std::size_t length = numberIn(bytes.substr(size - kTrailer + kLengthAt));
    if (length > room.size() || count == members_.size()) break;
    members_[count++] = {bytes.substr(0, size), room.first(length), false};
    bytes.remove_prefix(size);
    room = room.subspan(length);
  }
  return count;
}

void BgzfInflaters::startHelpers() {
  for (; helpersToStart_ != 0; --helpersToStart_) {
    pthread_t helper{};
    if (pthread_create(&helper, nullptr, runHelper, this) != 0) continue;
    pthread_setname_np(helper, "inflate");
    helpers_.push_back(helper);
  }
}

// A helper that gets no memory leaves the work to the others.
void* BgzfInflaters::runHelper(void* inflaters) {
  try {
    static_cast<BgzfInflaters*>(inflaters)->help(*makeInflater());
  } catch (const std::bad_alloc&) {
  }
  return nullptr;
}

void BgzfInflaters::help(Inflater& inflater) {
  std::unique_lock lock(mutex_);
  for (;;) {
    hasWork_.wait(lock, [&] { return isStopped_ || next_ != count_; });
    if (isStopped_) return;
    work(lock, inflater);
    isDone_.notify_one();
  }
}

// Inflates members, a share at a time, until none is left to take.
void BgzfInflaters::work(std::unique_lock<std::mutex>& lock, Inflater& inflater) {
  while (next_ != count_) {
    const std::size_t first = next_;
    for (std::size_t share = 0; next_ != count_ && share < kShare; ++next_) {
      share += members_[next_].room.size();
    }
    const std::size_t last = next_;
    ++busy_;
    lock.unlock();
    for (std::size_t n = first; n != last; ++n) {
      members_[n].isSound = inflateMember(inflater, members_[n].packed, members_[n].room);
    }
    lock.lock();
    --busy_;
  }
}

}  // namespace velk
