// The decoded bytes of a file, block by block: decoded in place, or ahead by a helper thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "streaming/decoder.h"
#include "streaming/inflateAhead.h"

namespace velk {

class DecodedInput {
 public:
  /// `decoder` must outlive it.
  explicit DecodedInput(Decoder& decoder) : decoder_(decoder) {}

  /// Has a helper thread decode from now on; where the system gives none, it is done in place all
  /// the same. REQUIRES: nothing was read.
  void decodeAhead();

  /// Returns the next decoded bytes, valid until the next call; none at the end or at damage.
  /// Throws std::bad_alloc when there is no memory.
  std::string_view next();

  /// Returns what is wrong with the file, empty as long as nothing was met.
  const std::string& damage() const { return damage_; }

 private:
  Decoder& decoder_;
  std::unique_ptr<char[]> block_;        // the bytes decoded in place
  std::unique_ptr<InflateAhead> ahead_;  // null: in place
  std::string damage_;
};

}  // namespace velk
