#include "tests/kmer/failingAllocations.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr int kNever = -1;
std::atomic<int> allocationsLeft = kNever;  // until one fails
std::atomic<int> newsLeft = kNever;

std::atomic<std::size_t> denied = 0;

std::atomic<int64_t> held = 0;  // bytes
std::atomic<int64_t> mostHeld = 0;

// Counts what has been allocated, or is about to be freed.
void* counted(void* memory, int sign) {
  const auto bytes = static_cast<int64_t>(malloc_usable_size(memory));
  const int64_t now = held += sign * bytes;
  for (int64_t most = mostHeld; now > most && !mostHeld.compare_exchange_weak(most, now);) {
  }
  return memory;
}

bool mustFail(std::atomic<int>& left, std::size_t bytes) {
  if (left == kNever || left-- != 0) return false;
  denied = bytes;
  return true;
}

}  // namespace

// The linker option --wrap sends the calls of the program to these functions, under these names.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void __real_free(void* memory);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size);
void __wrap_free(void* memory);

void* __wrap_malloc(std::size_t size) {
  return mustFail(allocationsLeft, size) ? nullptr : counted(__real_malloc(size), 1);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return mustFail(allocationsLeft, count * size) ? nullptr : counted(__real_calloc(count, size), 1);
}

void* __wrap_realloc(void* memory, std::size_t size) {
  if (mustFail(allocationsLeft, size)) return nullptr;
  return counted(__real_realloc(counted(memory, -1), size), 1);
}

void __wrap_free(void* memory) {
  __real_free(counted(memory, -1));
}
}

void* operator new(std::size_t size) {
  void* const memory = mustFail(newsLeft, size) ? nullptr : __real_malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return counted(memory, 1);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

// The sanitizers' own would not come to the ones above.

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace velk::test {

void failAllocationAfter(int n) {
  allocationsLeft = n;
  denied = 0;
}

void failNewAfter(int n) {
  newsLeft = n;
  denied = 0;
}

void failNoAllocation() {
  allocationsLeft = kNever;
  newsLeft = kNever;
}

std::size_t deniedBytes() {
  return denied;
}

uint64_t mostBytesOf(const std::function<void()>& work) {
  const int64_t before = held;
  mostHeld = before;
  work();
  return static_cast<uint64_t>(mostHeld - before);
}

}  // namespace velk::test
