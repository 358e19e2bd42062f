#include "streaming/decodedInput.h"

#include <cassert>
#include <utility>

namespace velk {

// Returns whether there were bytes.
bool DecodedInput::Block::fill(Decoder& decoder) {
  size = decoder.read({bytes.get(), kRoom});
  return size != 0;
}

void DecodedInput::decodeAhead(std::shared_ptr<void> owner) {
  assert(block_ == nullptr && ahead_ == nullptr);
  const auto atEnd = owner == nullptr ? HelperAtEnd::kIsAwaited : HelperAtEnd::kIsLeft;
  ahead_ = std::make_unique<AheadRing<Block>>(
      [&decoder = decoder_, owner = std::move(owner)](Block& block) { return block.fill(decoder); },
      atEnd);
  if (!ahead_->start("inflate")) ahead_.reset();
}

std::string_view DecodedInput::next() {
  const Block* block = nullptr;
  if (ahead_ != nullptr) {
    block = ahead_->next();
  } else {
    if (block_ == nullptr) block_ = std::make_unique<Block>();
    if (block_->fill(decoder_)) block = block_.get();
  }
  if (ahead_ == nullptr || block == nullptr) damage_ = decoder_.damage();
  if (block == nullptr) return {};
  return {block->bytes.get(), block->size};
}

}  // namespace velk
