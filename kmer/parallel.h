// Work that several threads share.
#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <thread>
#include <vector>

namespace velk {

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
