// Work that several threads share.
#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <new>
#include <thread>
#include <vector>

namespace velk {

/// Calls work(n) once for every n of [0, count), by up to `threads` threads, the calling one
/// included; fewer where no more can be had. Throws std::bad_alloc when some call did; the others
/// have ended by then, or were not begun.
template <class Work>
void forEachInParallel(std::size_t threads, std::size_t count, Work work) {
  std::atomic<std::size_t> next{0};
  std::atomic<bool> ranOut{false};
  const auto share = [&] {
    try {
      for (std::size_t n = next++; n < count && !ranOut; n = next++) work(n);
    } catch (const std::bad_alloc&) {
      ranOut = true;
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
  if (ranOut) throw std::bad_alloc();
}

}  // namespace velk
