#include "tests/streaming/scarceMemory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> smallestToFail = SIZE_MAX;  // bytes
std::atomic<int> toSpare = 0;                        // allocations of at least that size

}  // namespace

void* operator new(std::size_t size) {
  if (size >= smallestToFail && toSpare-- <= 0) throw std::bad_alloc();
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

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

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace velk::test {

void failAllocationsFrom(std::size_t bytes, int spared) {
  toSpare = spared;
  smallestToFail = bytes;
}

}  // namespace velk::test
