// The packed k-mers of a sequence, one after the other, each from the one before.
#pragma once

#include <cstdint>
#include <string_view>

#include "driver/velk.h"
#include "kmer/Sequence.h"

namespace velk {

/// Gives the very words that Seq2Kmer packs afresh, the folding of other letters included.
class RollingKey {
 public:
  /// Starts on the k-mer at offset 0. REQUIRES: bases.size() >= kmer >= 0.
  RollingKey(std::string_view bases, int kmer)
      : bases_(bases),
        length_(static_cast<std::size_t>(kmer)),
        kept_(kmer == 0 || kmer > DATA_LEN ? ~uint64_t{0}
                                           : (uint64_t{1} << (LEN_TO_BITLEN * (kmer - 1))) - 1),
        above_(kmer < DATA_LEN ? uint64_t{1} << (LEN_TO_BITLEN * kmer) : 0) {
    pack();
  }

  /// The packed k-mer at the offset in hand.
  uint64_t key() const { return key_; }

  /// Steps to the next offset. REQUIRES: there is one.
  void advance() {
    if (length_ == 0) return;
    ++offset_;
    // The base that leaves takes its two bits along. The bit above the k-mer belongs to its first
    // base, where it says that this is no base at all; it is set anew.
    key_ = (key_ & kept_) << LEN_TO_BITLEN | baseCode(bases_[offset_ + length_ - 1]);
    if (baseCode(bases_[offset_]) == kNoBase) key_ |= above_;
  }

 private:
  static constexpr uint8_t kNoBase = 4;

  void pack() { key_ = packedKmer(bases_.substr(offset_, length_)); }

  std::string_view bases_;
  std::size_t length_;  // bases in a k-mer
  uint64_t kept_;       // bits of a k-mer that stay when its first base leaves
  uint64_t above_;      // the bit above the k-mer's own
  std::size_t offset_ = 0;
  uint64_t key_ = 0;
};

}  // namespace velk
