// Every window of a read, packed letter by letter and looked up by itself.
//
// Index is a class with a member placeOf(key), as kmer/plainIndex.h has it.
#pragma once

#include <cassert>
#include <cstddef>
#include <optional>
#include <string_view>

#include "kmer/Sequence.h"
#include "placement/kmerWalk.h"

namespace velk {

template <class Index>
class AllWindows {
 public:
  /// REQUIRES: bases.size() >= kmer; the index and the bases outlive the windows.
  AllWindows(const Index& index, std::string_view bases, int kmer)
      : index_(index), bases_(bases), kmer_(static_cast<std::size_t>(kmer)) {
    assert(bases.size() >= kmer_);
  }

  std::size_t count() const { return bases_.size() - kmer_ + 1; }
  static std::size_t first() { return 0; }
  static std::size_t after(std::size_t window) { return window + 1; }

  std::optional<KmerPlace> uniquePlaceOf(std::size_t window) const {
    const auto answer = index_.placeOf(packedKmer(bases_.substr(window, kmer_)));
    if (!answer || !answer->isUnique) return std::nullopt;
    return answer->first;
  }

  static void noteRefused(const Hit&) {}

 private:
  const Index& index_;
  std::string_view bases_;
  std::size_t kmer_;
};

}  // namespace velk
