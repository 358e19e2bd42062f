#include "tests/kmer/failingAllocations.h"

namespace {

constexpr int kNever = -1;
int allocationsLeft = kNever;  // until one fails

std::size_t denied = 0;

bool mustFail(std::size_t bytes) {
  if (allocationsLeft == kNever || allocationsLeft-- != 0) return false;
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
  return mustFail(size) ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  return mustFail(count * size) ? nullptr : __real_calloc(count, size);
}

void* __wrap_realloc(void* memory, std::size_t size) {
  return mustFail(size) ? nullptr : __real_realloc(memory, size);
}
}

namespace velk::test {

void failAllocationAfter(int n) {
  allocationsLeft = n;
  denied = 0;
}

void failNoAllocation() {
  allocationsLeft = kNever;
}

std::size_t deniedBytes() {
  return denied;
}

}  // namespace velk::test
