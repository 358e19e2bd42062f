#include "streaming/decodedInput.h"

#include <cassert>

namespace velk {
namespace {

constexpr std::size_t kDecodedBlock = 256 << 10;  // bytes

}  // namespace

void DecodedInput::decodeAhead() {
  assert(block_ == nullptr && ahead_ == nullptr);
  ahead_ = std::make_unique<InflateAhead>(decoder_);
  if (!ahead_->start()) ahead_.reset();
}

std::string_view DecodedInput::next() {
  if (ahead_ != nullptr) {
    const std::string_view bytes = ahead_->next();
    if (bytes.empty()) damage_ = decoder_.damage();
    return bytes;
  }
  if (block_ == nullptr) block_.reset(new char[kDecodedBlock]);
  const std::size_t made = decoder_.read({block_.get(), kDecodedBlock});
  damage_ = decoder_.damage();
  return {block_.get(), made};
}

}  // namespace velk
