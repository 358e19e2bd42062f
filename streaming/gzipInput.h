// The inflated bytes of a gzip file, as streaming/gzipDecoder.h has them, block by block: inflated
// in place, or ahead by a helper thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "streaming/gzipDecoder.h"
#include "streaming/inflateAhead.h"

namespace velk {

class GzipInput {
 public:
  /// Opens `file`. Returns false, with errno set, when that fails.
  bool open(const std::string& file) { return decoder_.open(file); }

  /// Has a helper thread inflate from now on; where the system gives none, it is done in place all
  /// the same. REQUIRES: the file is open, and nothing was read.
  void inflateAhead();

  /// Returns the next inflated bytes, valid until the next call; none at the end or at damage.
  /// Throws std::bad_alloc when there is no memory.
  std::string_view next();

  /// Returns what is wrong with the file, empty as long as nothing was met.
  const std::string& damage() const { return damage_; }

 private:
  GzipDecoder decoder_;
  std::unique_ptr<char[]> block_;        // the bytes inflated in place
  std::unique_ptr<InflateAhead> ahead_;  // null: in place
  std::string damage_;
};

}  // namespace velk
