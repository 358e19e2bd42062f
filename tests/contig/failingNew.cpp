#include "tests/contig/failingNew.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::size_t largestArray = SIZE_MAX;  // bytes

}  // namespace

// The array forms of new and delete of the whole test program.
void* operator new[](std::size_t size) {
  void* const memory = size > largestArray ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace velk::test {

void failArraysAbove(std::size_t bytes) {
  largestArray = bytes;
}

}  // namespace velk::test
