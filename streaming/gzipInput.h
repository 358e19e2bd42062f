// The inflated bytes of a gzip file, as streaming/gzipDecoder.h has them, block by block; and what
// becomes of damaged files: a message when the damage is met, a failed run at its end.
#pragma once

#include <string>
#include <string_view>

#include "streaming/blockReader.h"
#include "streaming/decodedInput.h"
#include "streaming/gzipDecoder.h"

namespace velk {

/// Reports "[ERROR]: damaged gzip file: FILE: REASON" and remembers it.
void reportGzipDamage(const std::string& file, const std::string& reason);

/// Returns whether any damage was reported: the run must not end with status 0.
bool gzipDamageSeen();

/// Forgets all damage. For a process that makes many runs: between two of them.
void forgetGzipDamage();

class GzipInput {
 public:
  /// Opens `file`. Returns false, with errno set, when that fails.
  bool open(const std::string& file) { return file_.open(file); }

  /// Has a helper thread inflate from now on, where the system gives one; of a BGZF file `threads`
  /// in all. Throws std::bad_alloc when there is no memory. REQUIRES: the file is open, and nothing
  /// was read.
  void inflateAhead(int threads = 1) {
    decoder_.inflateBy(threads);
    input_.decodeAhead();
  }

  /// Returns the next inflated bytes, valid until the next call; none at the end or at damage.
  /// Throws std::bad_alloc when there is no memory.
  std::string_view next() { return input_.next(); }

  /// Returns what is wrong with the file, empty as long as nothing was met.
  const std::string& damage() const { return input_.damage(); }

 private:
  BlockReader file_{GzipDecoder::kRawBlock};
  GzipDecoder decoder_{file_};
  DecodedInput input_{decoder_};
};

}  // namespace velk
