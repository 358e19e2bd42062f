// Preloaded into a run of velk: lets allocation number N after the start of main fail.
//
// FAIL_ALLOCATION=N names it, counted over all threads from 1; with FAIL_ALLOCATIONS_AFTER set, all
// that follow it fail, too. The file that FAILED_ALLOCATION_MARK names is made when N is reached,
// so that the caller sees when a run has fewer allocations. `operator new`, the streams and zlib
// allocate through malloc and calloc.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace {

using MainFunction = int (*)(int, char**, char**);

std::atomic<bool> isInMain = false;
std::atomic<long> allocations = 0;
long firstToFail = 0;
bool allAfter = false;
const char* markFile = nullptr;
MainFunction realMain = nullptr;

template <class Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void mark() {
  const int file = open(markFile, O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  if (file >= 0) close(file);
}

// Whether the allocation that has just begun is to fail.
bool fails() {
  if (!isInMain) return false;
  const long number = ++allocations;
  if (number == firstToFail) mark();
  if (number != firstToFail && !(allAfter && number > firstToFail)) return false;
  errno = ENOMEM;
  return true;
}

int countedMain(int argc, char** argv, char** environment) {
  firstToFail = std::atol(getenv("FAIL_ALLOCATION"));
  allAfter = getenv("FAIL_ALLOCATIONS_AFTER") != nullptr;
  markFile = getenv("FAILED_ALLOCATION_MARK");
  isInMain = true;
  return realMain(argc, argv, environment);
}

}  // namespace

extern "C" {

// The C library's own functions, under the names that the wrappers below hide.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

int __libc_start_main(MainFunction main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd);

int __libc_start_main(MainFunction main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
  realMain = main;
  return next<decltype(&__libc_start_main)>("__libc_start_main")(countedMain, argc, argv, init,
                                                                 fini, loaderFini, stackEnd);
}

void* malloc(std::size_t size) noexcept {
  return fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
  return fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept {
  return fails() ? nullptr : __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return fails() ? nullptr : __libc_memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
  if (fails()) return ENOMEM;
  *block = __libc_memalign(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}

void* mmap(void* start, std::size_t size, int protection, int flags, int file,
           off_t offset) noexcept {
  if (fails()) return MAP_FAILED;
  return next<decltype(&mmap)>("mmap")(start, size, protection, flags, file, offset);
}

}  // extern "C"
