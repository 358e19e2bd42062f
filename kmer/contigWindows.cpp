#include "kmer/contigWindows.h"

#include "driver/velk.h"

namespace velk {

uint32_t windowsOf(const ContigInfo& contig) {
  const std::size_t length = contig.contigSeq.size();
  if (length < static_cast<uint32_t>(CONTIGLEN)) return 0;
  if (static_cast<int64_t>(length) < Kmer) return 0;
  return static_cast<uint32_t>(length - static_cast<std::size_t>(Kmer) + 1);
}

}  // namespace velk
