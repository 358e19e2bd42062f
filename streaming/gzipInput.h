// The inflated bytes of a gzip file, member after member, and what is wrong with the file.
//
// A file that does not begin as a gzip file is handed out as it stands. All that inflates is handed
// out before damage ends the bytes; NUL bytes behind the last member are padding, anything else
// there is damage. Format: RFC 1952.
#pragma once

#include <zlib.h>

#include <memory>
#include <string>
#include <string_view>

#include "streaming/blockReader.h"

namespace velk {

class GzipInput {
 public:
  GzipInput();
  ~GzipInput();
  GzipInput(const GzipInput&) = delete;
  GzipInput& operator=(const GzipInput&) = delete;

  /// Opens `file`. Returns false, with errno set, when that fails.
  bool open(const std::string& file);

  /// Returns the next inflated bytes, valid until the next call; none at the end or at damage.
  std::string_view next();

  /// Returns what is wrong with the file, empty as long as nothing was met.
  const std::string& damage() const { return damage_; }

 private:
  enum class State { kBetweenMembers, kInMember, kPlain, kPadding, kEnd };

  bool refill();
  void startMember();
  std::string_view inflateSome();
  std::string_view takePlain();
  void skipPadding();
  void endWith(const std::string& damage);

  BlockReader blocks_;
  State state_ = State::kBetweenMembers;
  bool isFirstMember_ = true;
  std::string input_;               // raw bytes not yet inflated start at stream_.next_in
  std::unique_ptr<char[]> output_;  // [kInflatedBlock]
  z_stream stream_{};
  std::string damage_;
};

}  // namespace velk
