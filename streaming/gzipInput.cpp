#include "streaming/gzipInput.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace velk {
namespace {

constexpr std::size_t kRawBlock = 128 << 10;       // bytes
constexpr std::size_t kInflatedBlock = 256 << 10;  // bytes
constexpr int kGzipOnly = MAX_WBITS + 16;  // zlib's way to ask for a gzip header and trailer
constexpr Bytef kMagic[] = {0x1f, 0x8b};

}  // namespace

GzipInput::GzipInput()
    : blocks_(kRawBlock), output_(std::make_unique_for_overwrite<char[]>(kInflatedBlock)) {
  if (inflateInit2(&stream_, kGzipOnly) != Z_OK) throw std::bad_alloc();
}

GzipInput::~GzipInput() {
  inflateEnd(&stream_);
}

bool GzipInput::open(const std::string& file) {
  return blocks_.open(file);
}

std::string_view GzipInput::next() {
  for (;;) {
    switch (state_) {
      case State::kBetweenMembers:
        startMember();
        break;
      case State::kInMember:
        if (const std::string_view bytes = inflateSome(); !bytes.empty()) return bytes;
        break;
      case State::kPlain:
        if (const std::string_view bytes = takePlain(); !bytes.empty()) return bytes;
        break;
      case State::kPadding:
        skipPadding();
        break;
      case State::kEnd:
        return {};
    }
  }
}

// Adds the next block behind the raw bytes not yet used. Returns false at the end of the file.
bool GzipInput::refill() {
  input_.erase(0, input_.size() - stream_.avail_in);
  const std::string_view block = blocks_.next();
  input_ += block;
  stream_.next_in = reinterpret_cast<Bytef*>(input_.data());
  stream_.avail_in = static_cast<uInt>(input_.size());
  return !block.empty();
}

// Decides by the next two bytes what follows.
void GzipInput::startMember() {
  while (stream_.avail_in < std::size(kMagic) && refill()) {
  }
  if (blocks_.error() != 0) {
    endWith(std::strerror(blocks_.error()));
  } else if (stream_.avail_in >= std::size(kMagic) &&
             std::equal(std::begin(kMagic), std::end(kMagic), stream_.next_in)) {
    inflateReset(&stream_);
    isFirstMember_ = false;
    state_ = State::kInMember;
  } else {
    state_ = isFirstMember_ ? State::kPlain : State::kPadding;
  }
}

std::string_view GzipInput::inflateSome() {
  stream_.next_out = reinterpret_cast<Bytef*>(output_.get());
  stream_.avail_out = static_cast<uInt>(kInflatedBlock);
  const int result = inflate(&stream_, Z_NO_FLUSH);
  const std::string_view bytes(output_.get(), kInflatedBlock - stream_.avail_out);
  if (result == Z_STREAM_END) {
    state_ = State::kBetweenMembers;
  } else if (result == Z_MEM_ERROR) {
    throw std::bad_alloc();
  } else if (result != Z_OK && result != Z_BUF_ERROR) {
    endWith(stream_.msg != nullptr ? stream_.msg : "not a gzip stream that zlib can inflate");
  } else if (bytes.empty() && stream_.avail_in == 0 && !refill()) {
    endWith(blocks_.error() != 0 ? std::strerror(blocks_.error()) : "unexpected end of file");
  }
  return bytes;
}

std::string_view GzipInput::takePlain() {
  if (stream_.avail_in == 0 && !refill()) {
    endWith(blocks_.error() != 0 ? std::strerror(blocks_.error()) : "");
    return {};
  }
  const std::string_view bytes(reinterpret_cast<const char*>(stream_.next_in), stream_.avail_in);
  stream_.avail_in = 0;
  return bytes;
}

void GzipInput::skipPadding() {
  do {
    const Bytef* const bytes = stream_.next_in;
    if (std::any_of(bytes, bytes + stream_.avail_in, [](Bytef byte) { return byte != 0; })) {
      endWith("trailing bytes after the last member");
      return;
    }
    stream_.avail_in = 0;
  } while (refill());
  endWith(blocks_.error() != 0 ? std::strerror(blocks_.error()) : "");
}

void GzipInput::endWith(const std::string& damage) {
  damage_ = damage;
  state_ = State::kEnd;
}

}  // namespace velk
