// What the index needs of the machine: flat arrays, prefetching, vector instructions, threads.
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

// Marks functions of plain loops that gcc turns into vector instructions. They are compiled twice,
// with and without registers of 32 bytes. The program chooses the form for its processor when it
// starts; both give the same results.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define VELK_VECTORISED [[gnu::target_clones("avx2", "default")]]
#else
#define VELK_VECTORISED
#endif

namespace velk {

/// Prefetches the cache line of `address`; any address will do. The empty instruction counts as an
/// effect: without one, the compiler would leave out calls of functions that only prefetch.
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

/// Values in a row, in memory that it owns or in memory that it views. T holds no pointers.
template <class T>
class Array {
 public:
  Array() = default;

  /// Views these values, which must stay where they are.
  Array(T* values, std::size_t size) : values_(values), size_(size) {}

  /// Allocates `size` zeroed values, aligned for T, on huge pages if there are any. Without memory
  /// it throws std::bad_alloc and is empty.
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

  /// Keeps the first `size` values, and returns the memory after them to the system.
  /// REQUIRES: it owns its memory; size <= size().
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

/// Calls work(n) once for every n of [0, count) on up to `threads` threads, of which one is the
/// calling one; on fewer if the system has no more. Throws what the first failing call threw, after
/// all running calls have ended; calls that had not begun are left out.
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
    // The system has no more threads. Those that are there do the work.
  }
  share();
  for (std::thread& helper : helpers) helper.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace velk
