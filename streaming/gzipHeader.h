// The header of a gzip member, read byte by byte. Format: RFC 1952.
#pragma once

#include <cstdint>
#include <string_view>

namespace velk {

class GzipHeader {
 public:
  /// Begins with a new header, at its first byte.
  void start() { *this = GzipHeader(); }

  /// Takes bytes off the front of `input` (inout), up to the end of the header at most.
  void take(std::string_view& input);

  /// Whether the header has ended without damage.
  bool isWhole() const { return field_ == Field::kNone; }

  /// What is wrong with it; empty when nothing is.
  std::string_view damage() const { return damage_; }

 private:
  // In their order; which of those behind kFixed there are is said by the flags.
  enum class Field { kFixed, kExtraLength, kExtra, kName, kComment, kChecksum, kNone };

  void takeByte(unsigned char byte);
  void takeFixed(unsigned char byte);
  bool hasField() const;
  void endField();

  Field field_ = Field::kFixed;
  unsigned flags_ = 0;
  unsigned taken_ = 0;          // bytes of the field
  unsigned number_ = 0;         // kExtraLength, kChecksum: so far; kExtra: the field's length
  unsigned long checksum_ = 0;  // CRC-32 of the header, but for its own
  std::string_view damage_;
};

}  // namespace velk
