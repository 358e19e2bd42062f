// The decoded bytes of a file, block by block: decoded in place, or ahead by a helper thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "streaming/aheadRing.h"
#include "streaming/decoder.h"

namespace velk {

class DecodedInput {
 public:
  /// `decoder` must outlive it.
  explicit DecodedInput(Decoder& decoder) : decoder_(decoder) {}

  /// Has a helper thread decode from now on; where the system gives none, it is done in place all
  /// the same. `owner`: what the decoder lives in, for a file that may keep its reader waiting
  /// without end, as a pipe may: then the helper is not waited for at the end. REQUIRES: nothing
  /// was read.
  void decodeAhead(std::shared_ptr<void> owner = nullptr);

  /// Returns the next decoded bytes, valid until the next call; none at the end or at damage.
  /// Throws std::bad_alloc when there is no memory.
  std::string_view next();

  /// Returns what is wrong with the file, empty as long as nothing was met.
  const std::string& damage() const { return damage_; }

 private:
  struct Block {
    static constexpr std::size_t kRoom = 256 << 10;  // bytes

    bool fill(Decoder& decoder);

    std::unique_ptr<char[]> bytes{new char[kRoom]};
    std::size_t size = 0;
  };

  Decoder& decoder_;
  std::unique_ptr<Block> block_;             // decoded in place
  std::unique_ptr<AheadRing<Block>> ahead_;  // null: in place
  std::string damage_;
};

}  // namespace velk
