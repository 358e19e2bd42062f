#include "streaming/inflater.h"

#include <zlib.h>

#include <new>

#ifdef VELK_ISAL
#include "streaming/isalInflater.h"
#endif

namespace velk {
namespace {

class ZlibInflater : public Inflater {
 public:
  // Throws std::bad_alloc when zlib gets no memory.
  ZlibInflater();
  ~ZlibInflater() override;

  void start() override;
  Step inflate(std::string_view input, std::span<char> room) override;
  uint32_t checksum() const override { return checksum_; }

 private:
  z_stream stream_{};
  uint32_t checksum_ = 0;
};

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

}  // namespace

#ifdef VELK_ISAL

InflateLibrary inflateLibrary = InflateLibrary::kIsal;

std::vector<InflateLibrary> inflateLibraries() {
  return {InflateLibrary::kZlib, InflateLibrary::kIsal};
}

std::unique_ptr<Inflater> makeInflater() {
  if (inflateLibrary == InflateLibrary::kIsal) return std::make_unique<IsalInflater>();
  return std::make_unique<ZlibInflater>();
}

#else

InflateLibrary inflateLibrary = InflateLibrary::kZlib;

std::vector<InflateLibrary> inflateLibraries() {
  return {InflateLibrary::kZlib};
}

std::unique_ptr<Inflater> makeInflater() {
  return std::make_unique<ZlibInflater>();
}

#endif

}  // namespace velk
