#include "tests/kmer/failingAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr int kNever = -1;
std::atomic<int> allocationsLeft = kNever;  // until one fails
std::atomic<int> newsLeft = kNever;

std::atomic<std::size_t> denied = 0;

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
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size);

void* __wrap_malloc(std::size_t size) {
  return mustFail(allocationsLeft, size) ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return mustFail(allocationsLeft, count * size) ? nullptr : __real_calloc(count, size);
}

void* __wrap_realloc(void* memory, std::size_t size) {
  return mustFail(allocationsLeft, size) ? nullptr : __real_realloc(memory, size);
}
}

void* operator new(std::size_t size) {
  void* const memory = mustFail(newsLeft, size) ? nullptr : __real_malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

// The sanitizers' own would not come to the ones above.

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

}  // namespace velk::test
