#include "streaming/zlibInflater.h"

#include <new>

namespace velk {

ZlibInflater::ZlibInflater() {
  constexpr int kNoHeader = -MAX_WBITS;  // zlib's way to ask for deflate alone
  if (inflateInit2(&stream_, kNoHeader) != Z_OK) throw std::bad_alloc();
}

ZlibInflater::~ZlibInflater() {
  inflateEnd(&stream_);
}

void ZlibInflater::start() {
  inflateReset(&stream_);
  checksum_ = 0;
}

Inflater::Step ZlibInflater::inflate(std::string_view input, std::span<char> room) {
  // zlib changes no input, but its structure does not say so.
  stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
  stream_.avail_in = static_cast<uInt>(input.size());
  stream_.next_out = reinterpret_cast<Bytef*>(room.data());
  stream_.avail_out = static_cast<uInt>(room.size());
  const int result = ::inflate(&stream_, Z_NO_FLUSH);
  if (result == Z_MEM_ERROR) throw std::bad_alloc();
  const std::size_t made = room.size() - stream_.avail_out;
  checksum_ = static_cast<uint32_t>(
      crc32(checksum_, reinterpret_cast<const Bytef*>(room.data()), static_cast<uInt>(made)));
  const bool goesOn = result == Z_OK || result == Z_BUF_ERROR;
  const State state = result == Z_STREAM_END ? State::kEnded
                      : goesOn               ? State::kGoesOn
                                             : State::kDamaged;
  return {state, made, stream_.avail_in};
}

}  // namespace velk
