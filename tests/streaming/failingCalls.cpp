#include "tests/streaming/failingCalls.h"

#include <pthread.h>
#include <sys/types.h>
#include <zlib.h>

#include <cerrno>
#include <cstddef>

namespace {

constexpr int kNever = -1;
int readsLeft = kNever;  // until one fails
int readError = 0;
int inflateResult = Z_OK;
bool failsInflateInit = false;
bool failsThreads = false;

}  // namespace

// The linker option --wrap sends the calls of the program to these functions, under these names.
extern "C" {
ssize_t __real_read(int descriptor, void* bytes, std::size_t count);
int __real_inflate(z_streamp stream, int flush);
int __real_inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument);
ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument);
int __wrap_inflate(z_streamp stream, int flush);
int __wrap_inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize);

ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count) {
  if (readsLeft == kNever || readsLeft-- != 0) return __real_read(descriptor, bytes, count);
  errno = readError;
  return -1;
}

int __wrap_inflate(z_streamp stream, int flush) {
  return inflateResult == Z_OK ? __real_inflate(stream, flush) : inflateResult;
}

int __wrap_inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize) {
  if (failsInflateInit) return Z_MEM_ERROR;
  return __real_inflateInit2_(stream, windowBits, version, streamSize);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument) {
  return failsThreads ? EAGAIN : __real_pthread_create(thread, attributes, routine, argument);
}
}

namespace velk::test {

void failReadAfter(int n, int error) {
  readsLeft = n;
  readError = error;
}

void failInflate(int result) {
  inflateResult = result;
}

void failInflateInit(bool fails) {
  failsInflateInit = fails;
}

void failThreads(bool fails) {
  failsThreads = fails;
}

}  // namespace velk::test
