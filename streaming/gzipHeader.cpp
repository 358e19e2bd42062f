#include "streaming/gzipHeader.h"

#include <zlib.h>

namespace velk {
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
