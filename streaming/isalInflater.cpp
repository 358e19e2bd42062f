#include "streaming/isalInflater.h"

namespace velk {

// inflate_state has 90 kB that need no value.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
IsalInflater::IsalInflater() {
  isal_inflate_init(&stream_);
  stream_.crc_flag = ISAL_GZIP_NO_HDR;  // deflate alone, and the CRC-32 of what it makes
}

void IsalInflater::start() {
  isal_inflate_reset(&stream_);
}

Inflater::Step IsalInflater::inflate(std::string_view input, std::span<char> room) {
  // ISA-L changes no input, but its structure does not say so.
  stream_.next_in = reinterpret_cast<uint8_t*>(const_cast<char*>(input.data()));
  stream_.avail_in = static_cast<uint32_t>(input.size());
  stream_.next_out = reinterpret_cast<uint8_t*>(room.data());
  stream_.avail_out = static_cast<uint32_t>(room.size());
  const int result = isal_inflate(&stream_);
  Step step{State::kGoesOn, room.size() - stream_.avail_out, stream_.avail_in};
  if (result != ISAL_DECOMP_OK) {
    step.state = State::kDamaged;
  } else if (stream_.block_state == ISAL_BLOCK_FINISH) {
    step.state = State::kEnded;
    // Whole bytes that it has taken in behind the last bit of the stream.
    step.unused += static_cast<std::size_t>(stream_.read_in_length) / 8;
  }
  return step;
}

}  // namespace velk
