#include "streaming/isalInflater.h"

#include <algorithm>

namespace velk {

// inflate_state has 90 kB that need no value.
IsalInflater::IsalInflater() {
  isal_inflate_init(&stream_);
  stream_.crc_flag = ISAL_GZIP_NO_HDR;  // deflate alone, and the CRC-32 of what it makes
}

void IsalInflater::start() {
  isal_inflate_reset(&stream_);
  isDamaged_ = false;
}

Inflater::Step IsalInflater::inflate(std::string_view input, std::span<char> room) {
  // ISA-L changes no input, but its structure does not say so.
  stream_.next_in = reinterpret_cast<uint8_t*>(const_cast<char*>(input.data()));
  stream_.avail_in = static_cast<uint32_t>(input.size());
  stream_.next_out = reinterpret_cast<uint8_t*>(room.data());
  stream_.avail_out = static_cast<uint32_t>(room.size());
  if (!isDamaged_) isDamaged_ = isal_inflate(&stream_) != ISAL_DECOMP_OK;
  Step step{State::kGoesOn, room.size() - stream_.avail_out, stream_.avail_in};
  if (isDamaged_) {
    step.unused = 0;  // ISA-L does not count it then, and avail_in may be less than nothing
    step.made += takeHeldBack(room.subspan(step.made));
    if (stream_.tmp_out_processed == stream_.tmp_out_valid) step.state = State::kDamaged;
  } else if (stream_.block_state == ISAL_BLOCK_FINISH) {
    step.state = State::kEnded;
    // Whole bytes that it has taken in behind the last bit of the stream.
    step.unused += static_cast<std::size_t>(stream_.read_in_length) / 8;
  }
  return step;
}

// Takes what ISA-L has inflated before it met damage, and did not find room for: up to 64 kB.
std::size_t IsalInflater::takeHeldBack(std::span<char> room) {
  const uint8_t* const held = stream_.tmp_out_buffer + stream_.tmp_out_processed;
  const int32_t count = std::min(stream_.tmp_out_valid - stream_.tmp_out_processed,
                                 static_cast<int32_t>(room.size()));
  std::copy(held, held + count, room.begin());
  stream_.tmp_out_processed += count;
  return static_cast<std::size_t>(count);
}

}  // namespace velk
