#include "tests/kmer/failingAllocations.h"

#include <cstddef>

namespace {

constexpr int kNever = -1;
int allocationsLeft = kNever;  // until one fails

bool mustFail() {
  if (allocationsLeft == kNever) return false;
  return allocationsLeft-- == 0;
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
  return mustFail() ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return mustFail() ? nullptr : __real_calloc(count, size);
}

void* __wrap_realloc(void* memory, std::size_t size) {
  return mustFail() ? nullptr : __real_realloc(memory, size);
}
}

namespace velk::test {

void failAllocationAfter(int n) {
  allocationsLeft = n;
}

}  // namespace velk::test
