// Threads that together inflate the members of a BGZF file, which is what bgzip writes: gzip
// members of at most 64 KiB, each with its packed size in its header.
//
// A member counts only if it inflates to just what its trailer says. The first one that does not,
// and all behind it, are left to the caller, who finds out member by member what is wrong. Helpers
// start with the first members that are worth it, sleep while there are none, and end with the
// object; where the system gives none, the calling thread does all.
#pragma once

#include <pthread.h>

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

#include "streaming/inflater.h"

namespace velk {

/// Returns the number in the first four of `bytes`, lowest byte first, as gzip files have it.
uint32_t numberIn(std::string_view bytes);

class BgzfInflaters {
 public:
  static constexpr std::size_t kHeader = 18;            // bytes
  static constexpr std::size_t kLongestMember = 65536;  // bytes, packed

  struct Inflated {
    std::size_t used;  // bytes of whole members
    std::size_t made;  // bytes put into the room
    bool isSound;      // false: the member behind these needs a closer look
  };

  /// `threads`: how many inflate, the calling one among them. Throws std::bad_alloc when there is
  /// no memory.
  explicit BgzfInflaters(int threads);
  ~BgzfInflaters();
  BgzfInflaters(const BgzfInflaters&) = delete;
  BgzfInflaters& operator=(const BgzfInflaters&) = delete;

  /// Returns the packed size of the BGZF member whose header `bytes` begin with, 0 when they begin
  /// with another kind of member, or with none.
  static std::size_t sizeOf(std::string_view bytes);

  /// Inflates the whole members at the beginning of `bytes`, as many as find room; the calling
  /// thread does it with `own`. REQUIRES: Inflater::kReachOn behind the bytes.
  Inflated inflate(std::string_view bytes, std::span<char> room, Inflater& own);

 private:
  struct Member {
    std::string_view packed;
    std::span<char> room;  // as long as the trailer says
    bool isSound;
  };

  std::size_t cut(std::string_view bytes, std::span<char> room);
  void startHelpers();
  static void* runHelper(void* inflaters);
  void help(Inflater& inflater);
  void work(std::unique_lock<std::mutex>& lock, Inflater& inflater);

  std::vector<pthread_t> helpers_;
  int helpersToStart_;
  std::array<Member, 512> members_;  // those from count_ on have no meaning

  std::mutex mutex_;  // guards what follows
  std::condition_variable hasWork_;
  std::condition_variable isDone_;
  std::size_t next_ = 0;    // the first member that nobody has taken
  std::size_t count_ = 0;   // members to inflate
  int busy_ = 0;            // threads that inflate
  bool isStopped_ = false;  // whether the helpers are to end
};

}  // namespace velk
