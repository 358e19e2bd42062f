// The places of a text at which a read may begin: those where its first bases are much like the
// text's. A quick look that leaves few places to compare in full.
//
// Letters are looked at as codes of two bits, 32 in a word that moves along the text. Equal letters
// have equal codes, so a place is left out only for letters that differ.
#pragma once

#include <cstdint>
#include <string_view>

namespace velk::run {

class LikeStart {
 public:
  static constexpr int64_t kBases = 32;  // that are looked at

  /// `read`: of which the first kBases letters count. Places with more than mostUnlike of them
  /// unlike are left out. REQUIRES: read.size() >= kBases.
  LikeStart(std::string_view read, int64_t mostUnlike)
      : start_(codesOf(read.data(), kBases)), mostUnlike_(mostUnlike) {}

  /// Calls visit(i), in order, for the i in [0, places) at which the read may begin. REQUIRES: text
  /// has places + kBases - 1 letters.
  template <class Visit>
  void forEachPlace(const char* text, int64_t places, Visit visit) const {
    if (places <= 0) return;
    uint64_t codes = codesOf(text, kBases - 1);
    for (int64_t i = 0; i < places; ++i) {
      codes = codes << 2 | codeOf(text[i + kBases - 1]);
      if (unlike(codes) <= mostUnlike_) visit(i);
    }
  }

 private:
  static uint64_t codeOf(char letter) { return static_cast<uint64_t>(letter) >> 1 & 3U; }

  static uint64_t codesOf(const char* letters, int64_t count) {
    uint64_t codes = 0;
    for (int64_t i = 0; i < count; ++i) codes = codes << 2 | codeOf(letters[i]);
    return codes;
  }

  // How many codes differ: their bits are added up pair by pair, four by four, and all together.
  int64_t unlike(uint64_t codes) const {
    const uint64_t difference = codes ^ start_;
    uint64_t sums = (difference | difference >> 1) & 0x5555555555555555U;
    sums = (sums & 0x3333333333333333U) + (sums >> 2 & 0x3333333333333333U);
    sums = (sums + (sums >> 4)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<int64_t>(sums * 0x0101010101010101U >> 56);
  }

  uint64_t start_;
  int64_t mostUnlike_;
};

}  // namespace velk::run
