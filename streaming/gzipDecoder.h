// A gzip file inflated, member after member, and what is wrong with the file.
//
// A file that does not begin as a gzip file is handed out as it stands. All that inflates is handed
// out before damage ends the bytes; NUL bytes behind the last member are padding, anything else
// there is damage. One thread at a time; members whose sizes are known beforehand, as those of
// bgzip are, may be inflated by several, with the same result. Format: RFC 1952.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "streaming/bgzfInflaters.h"
#include "streaming/decoder.h"
#include "streaming/inflater.h"

namespace velk {

/// Returns how many threads inflate each BGZF file that a run of `workers` workers inflates ahead.
/// Two are faster than the thread that reads (doc/labbook.md); with fewer workers there are hardly
/// processors for them.
constexpr int inflatersFor(int workers) {
  return workers < 4 ? 1 : 2;
}

/// The header of a gzip member, read byte by byte.
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

class GzipDecoder final : public Decoder {
 public:
  static constexpr std::size_t kRawBlock = 128 << 10;  // bytes

  /// Decodes `file`, which must outlive it. Throws std::bad_alloc when there is no memory.
  /// REQUIRES: no block of the file is longer than kRawBlock.
  explicit GzipDecoder(BlockSource& file);

  /// Has `threads` threads, the calling one among them, inflate the members of BGZF files. Throws
  /// std::bad_alloc when there is no memory. REQUIRES: nothing was read.
  void inflateBy(int threads);

  std::size_t read(std::span<char> room) override;
  const std::string& damage() const override { return damage_; }

 private:
  enum class State { kBetweenMembers, kInHeader, kInMember, kInTrailer, kPlain, kPadding, kEnd };

  std::string_view rest() const { return std::string_view(input_).substr(position_); }
  bool refill();
  bool haveBytes(std::size_t count);
  std::size_t inflateTogether(std::span<char> room);
  std::size_t goOn(std::span<char> room);
  void startMember();
  void readHeader();
  std::size_t inflateSome(std::span<char> room);
  void checkTrailer();
  std::size_t takePlain(std::span<char> room);
  void skipPadding();
  void endWith(std::string_view damage);
  void endFile(std::string_view damage);

  BlockSource& blocks_;
  State state_ = State::kBetweenMembers;
  bool isFirstMember_ = true;
  std::string input_;         // raw bytes, those not yet used from position_ on
  std::size_t position_ = 0;  // in input_
  GzipHeader header_;
  std::unique_ptr<Inflater> inflater_;
  std::unique_ptr<BgzfInflaters> together_;  // null: members are inflated one after the other
  uint32_t length_ = 0;                      // of the member's bytes so far, as the trailer has it
  std::string damage_;
};

}  // namespace velk
