#include "kmer/fetchKmers.h"

#include <cstdlib>
#include <string_view>

#include "driver/velk.h"
#include "kmer/Sequence.h"

namespace velk {
namespace {

// How many values the fields of an Entity can tell apart.
constexpr uint64_t kScaffolds = uint64_t{1} << 20;
constexpr uint64_t kContigs = uint64_t{1} << 19;
constexpr uint64_t kOffsets = uint64_t{1} << 24;

bool outgrowsEntity = false;  // some index or offset of the model doesn't fit its field

// The number of indexed k-mers of a contig, counted in 32 bits; none of a short contig.
uint32_t windowsOf(const ContigInfo& contig) {
  const std::size_t length = contig.contigSeq.size();
  if (length < static_cast<uint32_t>(CONTIGLEN)) return 0;
  if (static_cast<int64_t>(length) < Kmer) return 0;
  return static_cast<uint32_t>(length - static_cast<std::size_t>(Kmer) + 1);
}

uint64_t keyAt(const ContigInfo& contig, uint64_t offset) {
  uint64_t key = 0;
  Seq2Kmer(key, std::string_view(contig.contigSeq).substr(offset, static_cast<std::size_t>(Kmer)));
  return key;
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

}  // namespace

void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  outgrowsEntity = scaffoldSum > kScaffolds;
  Entity entity{};
  entity.unique = 1;
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    const ScaffoldInfo& info = scaffoldInfo[i];
    entity.scaffoldNum = i % kScaffolds;
    outgrowsEntity = outgrowsEntity || info.contigsSum > kContigs;
    for (uint32_t j = 0; j < info.contigsSum; ++j) {
      const ContigInfo& contig = info.contigsInfo[j];
      entity.contigNum = j % kContigs;
      const uint32_t windows = windowsOf(contig);
      outgrowsEntity = outgrowsEntity || windows > kOffsets;
      for (uint32_t offset = 0; offset < windows; ++offset) {
        entity.startPos = offset % kOffsets;
        entity.bitSeq = keyAt(contig, offset);
        add_hashset(kmerHash, entity);
      }
    }
  }
}

KmerPlace placeOf(const Entity& hit) {
  if (outgrowsEntity) return searchedPlaceOf(hit);
  return {hit.scaffoldNum, hit.contigNum, hit.startPos};
}

}  // namespace velk
