// The memory of the index: zeroed arrays, on huge pages.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace velk {

/// Asks for huge pages under the whole pages of an allocation; it works without them, too.
inline void adviseHugePages(void* start, uint64_t bytes) {
  constexpr uintptr_t kPage = 4096;  // bytes of a usual page
  const auto first = (reinterpret_cast<uintptr_t>(start) + kPage - 1) / kPage * kPage;
  const auto end = (reinterpret_cast<uintptr_t>(start) + bytes) / kPage * kPage;
  if (first < end) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}

/// A large array of zeroed values, aligned as T asks, on huge pages where there are any.
template <class T>
class ZeroedArray {
 public:
  /// Makes it `size` zeroed values. Throws std::bad_alloc, leaving it empty, without memory.
  void make(std::size_t size) {
    release();
    std::size_t room = size * sizeof(T) + alignof(T);
    memory_.reset(std::calloc(room, 1));
    if (memory_ == nullptr) throw std::bad_alloc();
    adviseHugePages(memory_.get(), room);
    void* start = memory_.get();
    values_ = static_cast<T*>(std::align(alignof(T), size * sizeof(T), start, room));
    size_ = size;
  }

  void release() {
    memory_.reset();
    values_ = nullptr;
    size_ = 0;
  }

  std::size_t size() const { return size_; }

  T& operator[](std::size_t i) { return values_[i]; }
  const T& operator[](std::size_t i) const { return values_[i]; }

 private:
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };

  std::unique_ptr<void, Free> memory_;
  T* values_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace velk
