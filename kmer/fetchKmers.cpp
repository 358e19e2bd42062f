#include "kmer/fetchKmers.h"

#include <cstdlib>
#include <new>
#include <string_view>

#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/fillIndex.h"

namespace velk {
namespace {

bool outgrowsEntity = false;  // some index or offset of the model doesn't fit its field

uint64_t keyAt(const ContigInfo& contig, uint64_t offset) {
  const auto length = static_cast<std::size_t>(Kmer);
  return packedKmer(std::string_view(contig.contigSeq).substr(offset, length));
}

// The offset, of those that agree with `hit` in its field's bits, at which `contig` holds the
// k-mer; the number of the contig's windows when it doesn't.
uint64_t offsetOf(const Entity& hit, const ContigInfo& contig) {
  const uint64_t windows = windowsOf(contig);
  for (uint64_t offset = hit.startPos; offset < windows; offset += kOffsets) {
    if (keyAt(contig, offset) == hit.bitSeq) return offset;
  }
  return windows;
}

KmerPlace searchedPlaceOf(const Entity& hit) {
  for (uint64_t i = hit.scaffoldNum; i < scaffoldSum; i += kScaffolds) {
    const ScaffoldInfo& info = scaffoldInfo[i];
    for (uint64_t j = hit.contigNum; j < info.contigsSum; j += kContigs) {
      const uint64_t offset = offsetOf(hit, info.contigsInfo[j]);
      if (offset < windowsOf(info.contigsInfo[j])) return {i, j, offset};
    }
  }
  std::abort();  // cannot be: a unique k-mer was added from one of these places
}

// Makes the side index where there is memory for it; the run is slower without it, and the same.
void makeSideIndex(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, uint64_t kmers) {
  try {
    sideIndex.make(scaffoldInfo, scaffoldSum, Kmer, kmers);
  } catch (const std::bad_alloc&) {
    sideIndex.release();
  }
}

}  // namespace

// Never destroyed: a run may end while it is being filled.
SideIndex& sideIndex = *new SideIndex;

uint32_t windowsOf(const ContigInfo& contig) {
  const std::size_t length = contig.contigSeq.size();
  if (length < static_cast<uint32_t>(CONTIGLEN)) return 0;
  if (static_cast<int64_t>(length) < Kmer) return 0;
  return static_cast<uint32_t>(length - static_cast<std::size_t>(Kmer) + 1);
}

void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  uint64_t kmers = 0;
  outgrowsEntity = scaffoldSum > kScaffolds;
  forEachIndexed(scaffoldInfo, scaffoldSum,
                 [&](uint32_t, uint32_t j, const ContigInfo&, uint32_t windows) {
                   kmers += windows;
                   outgrowsEntity = outgrowsEntity || j >= kContigs || windows > kOffsets;
                 });
  sideIndex.release();
  if (hasGrams(Kmer) && !outgrowsEntity) makeSideIndex(scaffoldInfo, scaffoldSum, kmers);

  fillIndex(kmerHash, {scaffoldInfo, scaffoldSum, kmers, !outgrowsEntity});
}

KmerPlace placeOf(const Entity& hit) {
  if (outgrowsEntity) return searchedPlaceOf(hit);
  return {hit.scaffoldNum, hit.contigNum, hit.startPos};
}

}  // namespace velk
