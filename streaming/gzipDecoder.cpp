#include "streaming/gzipDecoder.h"

#include <zlib.h>

#include <algorithm>
#include <cassert>
#include <cstring>

namespace velk {
namespace {

constexpr std::string_view kMagic = "\x1f\x8b";
constexpr std::size_t kField = 4;  // bytes of the checksum, and of the length behind it
constexpr std::string_view kCut = "unexpected end of file";

}  // namespace

GzipDecoder::GzipDecoder(BlockSource& file) : blocks_(file), inflater_(makeInflater()) {
  // A block, what is left when it is read, and what an inflater may look at behind it.
  input_.reserve(kRawBlock + 2 * Inflater::kReachBack + Inflater::kReachOn);
}

void GzipDecoder::inflateBy(int threads) {
  if (threads == 1) return;
  together_ = std::make_unique<BgzfInflaters>(threads);
  input_.reserve(input_.capacity() + BgzfInflaters::kLongestMember);
}

std::size_t GzipDecoder::read(std::span<char> room) {
  assert(!room.empty());
  std::size_t made = 0;
  while (made < room.size() && state_ != State::kEnd) {
    const std::size_t together = inflateTogether(room.subspan(made));
    made += together;
    if (together != 0 && together_ != nullptr) break;  // the next member might find no room
    if (made < room.size()) made += goOn(room.subspan(made));
  }
  return made;
}

// Inflates the BGZF members that follow: the next one, read to its end, and those at hand behind
// it. Where one of them is not sound, it and all others are left to goOn().
std::size_t GzipDecoder::inflateTogether(std::span<char> room) {
  if (together_ == nullptr || state_ != State::kBetweenMembers) return 0;
  if (!haveBytes(BgzfInflaters::kHeader)) return 0;
  const std::size_t size = BgzfInflaters::sizeOf(rest());
  if (size == 0 || !haveBytes(size)) return 0;
  const BgzfInflaters::Inflated inflated = together_->inflate(rest(), room, *inflater_);
  position_ += inflated.used;
  if (inflated.used != 0) isFirstMember_ = false;
  if (!inflated.isSound) together_.reset();
  return inflated.made;
}

// Goes on by what the state asks for. Returns the number of bytes put into the room.
std::size_t GzipDecoder::goOn(std::span<char> room) {
  switch (state_) {
    case State::kBetweenMembers:
      startMember();
      return 0;
    case State::kInHeader:
      readHeader();
      return 0;
    case State::kInMember:
      return inflateSome(room);
    case State::kInTrailer:
      checkTrailer();
      return 0;
    case State::kPlain:
      return takePlain(room);
    case State::kPadding:
      skipPadding();
      return 0;
    case State::kEnd:
      return 0;
  }
  return 0;
}

// Adds the next block behind the raw bytes not yet used; keeps before these what an inflater may
// give back. Returns false at the end of the file.
bool GzipDecoder::refill() {
  const std::size_t kept = std::min(position_, Inflater::kReachBack);
  input_.erase(0, position_ - kept);
  position_ = kept;
  const std::string_view block = blocks_.next();
  input_ += block;
  return !block.empty();
}

// Returns whether there are `count` raw bytes at hand, or can be read.
bool GzipDecoder::haveBytes(std::size_t count) {
  while (rest().size() < count) {
    if (!refill()) return false;
  }
  return true;
}

// Decides by the next two bytes what follows.
void GzipDecoder::startMember() {
  if (haveBytes(kMagic.size()) && rest().starts_with(kMagic)) {
    header_.start();
    isFirstMember_ = false;
    state_ = State::kInHeader;
  } else if (blocks_.error() != 0) {
    endFile("");
  } else {
    state_ = isFirstMember_ ? State::kPlain : State::kPadding;
  }
}

void GzipDecoder::readHeader() {
  if (!haveBytes(1)) return endFile(kCut);
  std::string_view input = rest();
  header_.take(input);
  position_ = input_.size() - input.size();
  if (!header_.damage().empty()) return endWith(header_.damage());
  if (!header_.isWhole()) return;
  inflater_->start();
  length_ = 0;
  state_ = State::kInMember;
}

std::size_t GzipDecoder::inflateSome(std::span<char> room) {
  const Inflater::Step step = inflater_->inflate(rest(), room);
  position_ = input_.size() - step.unused;
  length_ += static_cast<uint32_t>(step.made);
  if (step.state == Inflater::State::kEnded) {
    state_ = State::kInTrailer;
  } else if (step.state == Inflater::State::kDamaged) {
    endWith("invalid compressed data");
  } else if (step.made == 0 && !haveBytes(1)) {
    endFile(kCut);
  }
  return step.made;
}

void GzipDecoder::checkTrailer() {
  const bool isWhole = haveBytes(2 * kField);
  const std::string_view trailer = rest();
  if (trailer.size() >= kField && numberIn(trailer) != inflater_->checksum()) {
    endWith("incorrect data check");
  } else if (!isWhole) {
    endFile(kCut);
  } else if (numberIn(trailer.substr(kField)) != length_) {
    endWith("incorrect length check");
  } else {
    position_ += 2 * kField;
    state_ = State::kBetweenMembers;
  }
}

std::size_t GzipDecoder::takePlain(std::span<char> room) {
  if (!haveBytes(1)) {
    endFile("");
    return 0;
  }
  const std::string_view bytes = rest().substr(0, room.size());
  std::copy(bytes.begin(), bytes.end(), room.begin());
  position_ += bytes.size();
  return bytes.size();
}

void GzipDecoder::skipPadding() {
  do {
    if (rest().find_first_not_of('\0') != std::string_view::npos) {
      return endWith("trailing bytes after the last member");
    }
    position_ = input_.size();
  } while (refill());
  endFile("");
}

void GzipDecoder::endWith(std::string_view damage) {
  damage_ = damage;
  state_ = State::kEnd;
}

// Ends where the file gives no more bytes: with `damage`, unless it could not be read.
void GzipDecoder::endFile(std::string_view damage) {
  endWith(blocks_.error() != 0 ? std::strerror(blocks_.error()) : damage);
}

namespace {

enum Flags : unsigned { kHasChecksum = 2, kHasExtra = 4, kHasName = 8, kHasComment = 16 };
constexpr unsigned kReservedFlags = 0xe0;
constexpr unsigned kMethodAt = 2;
constexpr unsigned kFlagsAt = 3;
constexpr unsigned kFixedLength = 10;  // bytes
constexpr unsigned kDeflate = 8;

}  // namespace

void GzipHeader::take(std::string_view& input) {
  while (!input.empty() && !isWhole() && damage_.empty()) {
    takeByte(static_cast<unsigned char>(input.front()));
    input.remove_prefix(1);
  }
}

void GzipHeader::takeByte(unsigned char byte) {
  if (field_ != Field::kChecksum) checksum_ = crc32(checksum_, &byte, 1);
  const unsigned place = taken_++;
  switch (field_) {
    case Field::kFixed:
      takeFixed(byte);
      break;
    case Field::kExtraLength:
      number_ |= unsigned{byte} << 8 * place;
      if (taken_ == 2) endField();
      break;
    case Field::kExtra:
      if (taken_ == number_) endField();
      break;
    case Field::kName:
    case Field::kComment:
      if (byte == 0) endField();
      break;
    case Field::kChecksum:
      number_ |= unsigned{byte} << 8 * place;
      if (taken_ < 2) break;
      if (number_ != (checksum_ & 0xffff)) damage_ = "header crc mismatch";
      endField();
      break;
    case Field::kNone:
      break;
  }
}

void GzipHeader::takeFixed(unsigned char byte) {
  if (taken_ == kMethodAt + 1) number_ = byte;
  if (taken_ == kFlagsAt + 1) {
    flags_ = byte;
    if (number_ != kDeflate) {
      damage_ = "unknown compression method";
    } else if ((flags_ & kReservedFlags) != 0) {
      damage_ = "unknown header flags set";
    }
    number_ = 0;
  }
  if (taken_ == kFixedLength) endField();
}

bool GzipHeader::hasField() const {
  switch (field_) {
    case Field::kExtraLength:
      return (flags_ & kHasExtra) != 0;
    case Field::kExtra:
      return number_ != 0;
    case Field::kName:
      return (flags_ & kHasName) != 0;
    case Field::kComment:
      return (flags_ & kHasComment) != 0;
    case Field::kChecksum:
      return (flags_ & kHasChecksum) != 0;
    default:
      return true;
  }
}

// Goes on to the next field that there is.
void GzipHeader::endField() {
  taken_ = 0;
  if (field_ != Field::kExtraLength) number_ = 0;
  do {
    field_ = static_cast<Field>(static_cast<int>(field_) + 1);
  } while (!hasField());
}

}  // namespace velk
