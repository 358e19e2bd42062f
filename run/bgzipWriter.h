// A text file, compressed block by block (bgzip), with an index of its blocks beside it, so that it
// can be read from any byte. The bytes do not depend on the number of threads. One thread calls.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velk::run {

class BgzipWriter {
 public:
  /// Makes the file. `blocksFile`: its index, made by close(). Throws Failure. `helpers`: threads
  /// that compress.
  BgzipWriter(const std::string& file, const std::string& blocksFile, int helpers);
  ~BgzipWriter();
  BgzipWriter(const BgzipWriter&) = delete;
  BgzipWriter& operator=(const BgzipWriter&) = delete;

  /// Throws Failure.
  void write(std::string_view text);

  /// Bytes of text so far.
  uint64_t bytes() const { return bytes_; }

  /// Ends the file and writes its index. Throws Failure.
  void close();

 private:
  struct Handle;

  [[noreturn]] void fail(const std::string& file) const;

  std::string file_;
  std::string blocksFile_;
  uint64_t bytes_ = 0;
  std::unique_ptr<Handle> handle_;
};

}  // namespace velk::run
