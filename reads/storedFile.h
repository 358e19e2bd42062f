// A file as it is stored, opened once and read from its start to its end, so that a pipe will do.
//
// Its first bytes can be looked at before it is read: by next(), or by htslib, which then takes the
// file over. One thread at a time reads it; bytesRead() may be asked by any.
#pragma once

#include <htslib/hfile.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "streaming/decoder.h"

namespace velk::reads {

/// What packs read files.
enum class Packing { kNone, kGzip, kZstd, kXz, kBzip2 };

/// Returns how a file that starts so is packed.
Packing packingOf(std::string_view start);

/// Returns its name, as in "gzip".
std::string_view nameOf(Packing packing);

class StoredFile final : public BlockSource {
 public:
  /// Opens `file`. Throws InputError when that fails.
  explicit StoredFile(const std::string& file);
  ~StoredFile() override;

  const std::string& name() const { return name_; }

  /// Returns the first bytes, some thousand of them, or all of a shorter file; reads them at the
  /// first call. Throws InputError when that fails. REQUIRES: next() was not called.
  std::string_view start();

  /// Whether the file is BAM. REQUIRES: as start().
  bool isBam();

  /// Hands the file over, at its start and to be closed by the caller; from then on there are only
  /// name() and bytes(). REQUIRES: next() was not called.
  hFILE* release();

  std::string_view next() override;
  int error() const override { return error_; }

  /// What went wrong; empty when nothing did.
  const std::string& fault() const { return fault_; }

  /// Bytes that next() has returned.
  uint64_t bytesRead() const { return bytesRead_.load(std::memory_order_relaxed); }

  /// Bytes that the file has; 0 where that is not known, as of a pipe.
  uint64_t bytes() const { return bytes_; }

 private:
  std::string_view readOn();

  std::string name_;
  int descriptor_ = -1;    // file_'s
  hFILE* file_ = nullptr;  // has read start_
  std::optional<std::vector<char>> start_;
  bool startIsDue_ = false;  // whether next() is to return it
  std::unique_ptr<char[]> block_;
  int error_ = 0;
  std::string fault_;
  uint64_t bytes_ = 0;
  std::atomic<uint64_t> bytesRead_ = 0;
};

/// What is said of a file of `known` bytes of which `read` were there; empty where that agrees.
std::string sizeFault(uint64_t known, uint64_t read);

}  // namespace velk::reads
