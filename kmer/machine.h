// What the index asks of the machine: flat arrays, cache lines fetched ahead of their use, vector
// instructions, threads.
#pragma once

#include <sys/mman.h>
#include <cassert>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <thread>
#include <vector>

// Functions of plain loops that gcc makes vector instructions of. They are compiled twice, and the
// processor's form, with registers of 32 bytes or not, is chosen when the program starts; both
// give the same.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define VELK_VECTORISED [[gnu::target_clones("avx2", "default")]]
#else
#define VELK_VECTORISED
#endif

namespace velk {

/// Prefetches the cache line of `address`; any address will do.
/// The empty instruction counts as an effect: a function that does nothing but prefetch has none
/// for the compiler otherwise, and calls of it are left out.
inline void prefetchLine(const void* address) {
  __builtin_prefetch(address);
  asm volatile("");
}

/// Advises the kernel about the whole pages of [start, start + bytes); the kernel may ignore it.
inline void advise(void* start, std::size_t bytes, int advice) {
  constexpr uintptr_t kPage = 4096;  // bytes of a usual page
  const auto first = (reinterpret_cast<uintptr_t>(start) + kPage - 1) / kPage * kPage;
  const auto end = (reinterpret_cast<uintptr_t>(start) + bytes) / kPage * kPage;
  if (first < end) madvise(reinterpret_cast<void*>(first), end - first, advice);
}

/// Values that lie one behind the other, in memory of its own or in memory that it views.
/// T holds no pointers.
template <class T>
class Array {
 public:
  Array() = default;

  /// Views values that stay where they are.
  Array(T* values, std::size_t size) : values_(values), size_(size) {}

  /// Makes it `size` zeroed values of its own, aligned as T asks, on huge pages where there are
  /// any. Throws std::bad_alloc, leaving it empty, without memory.
  void make(std::size_t size) {
    *this = {};
    std::size_t room = size * sizeof(T) + alignof(T);
    memory_.reset(std::calloc(room, 1));
    if (memory_ == nullptr) throw std::bad_alloc();
    advise(memory_.get(), room, MADV_HUGEPAGE);
    void* start = memory_.get();
    values_ = static_cast<T*>(std::align(alignof(T), size * sizeof(T), start, room));
    size_ = size;
  }

  /// Keeps the first `size` values, and gives the memory behind them back.
  /// REQUIRES: its own memory, and no more values than there are.
  void shrink(std::size_t size) {
    assert(memory_ != nullptr && size <= size_);
    advise(values_ + size, (size_ - size) * sizeof(T), MADV_DONTNEED);
    size_ = size;
  }

  std::size_t size() const { return size_; }
  T& operator[](std::size_t i) const { return values_[i]; }
  T* begin() const { return values_; }
  T* end() const { return values_ + size_; }

 private:
  std::unique_ptr<void, void (*)(void*)> memory_{nullptr, std::free};  // null: it views
  T* values_ = nullptr;
  std::size_t size_ = 0;
};

/// Calls work(n) once for every n of [0, count), by up to `threads` threads, the calling one
/// included; fewer where no more can be had. Throws what the first call to fail threw; the others
/// have ended by then, or were not begun.
template <class Work>
void forEachInParallel(std::size_t threads, std::size_t count, Work work) {
  std::atomic<std::size_t> next{0};
  std::atomic<bool> hasFailed{false};
  std::exception_ptr failure;  // of the call that set hasFailed
  const auto share = [&] {
    try {
      for (std::size_t n = next++; n < count && !hasFailed; n = next++) work(n);
    } catch (...) {
      if (!hasFailed.exchange(true)) failure = std::current_exception();
    }
  };
  std::vector<std::thread> helpers;
  try {
    for (std::size_t t = 1; t < threads && t < count; ++t) helpers.emplace_back(share);
  } catch (const std::exception&) {
    // no more can be had: the threads that are there do it
  }
  share();
  for (std::thread& helper : helpers) helper.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace velk
