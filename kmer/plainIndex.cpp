#include "kmer/plainIndex.h"

#include <cstdlib>
#include <string_view>

#include "kmer/Sequence.h"

namespace velk {

void addContigKmers(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  const auto length = static_cast<std::size_t>(Kmer);
  Entity entity{};
  forEachIndexed(scaffoldInfo, scaffoldSum,
                 [&](uint32_t i, uint32_t j, const ContigInfo& contig, uint32_t windows) {
                   entity.scaffoldNum = i % kScaffolds;
                   entity.contigNum = j % kContigs;
                   for (uint32_t p = 0; p < windows; ++p) {
                     entity.startPos = p % kOffsets;
                     entity.unique = 1;
                     entity.bitSeq = 0;
                     Seq2Kmer(entity.bitSeq, std::string_view(contig.contigSeq).substr(p, length));
                     add_hashset(kmerHash, entity);
                   }
                 });
}

std::optional<KmerAnswer> PlainIndex::placeOf(uint64_t key) const {
  Entity asked{};
  asked.bitSeq = key;
  const uint64_t slot = get_hashset(&set_, asked);
  if (slot == set_.size) return std::nullopt;
  const Entity& hit = set_.array[slot];
  return KmerAnswer{firstPlaceOf(hit), hit.unique == 1};
}

// The first place that agrees with the fields' bits and holds the k-mer: usually the first
// candidate, because few assemblies outgrow the fields.
KmerPlace PlainIndex::firstPlaceOf(const Entity& hit) const {
  for (uint64_t i = hit.scaffoldNum; i < scaffoldSum_; i += kScaffolds) {
    const ScaffoldInfo& info = scaffoldInfo_[i];
    for (uint64_t j = hit.contigNum; j < info.contigsSum; j += kContigs) {
      const uint64_t offset = offsetOf(hit, info.contigsInfo[j]);
      if (offset < windowsOf(info.contigsInfo[j])) return {i, j, offset};
    }
  }
  std::abort();  // cannot be: the k-mer was added from one of these places
}

// The offset, of those that agree with `hit` in its field's bits, at which `contig` holds the
// k-mer; the number of the contig's windows when it doesn't.
uint64_t PlainIndex::offsetOf(const Entity& hit, const ContigInfo& contig) const {
  const uint64_t windows = windowsOf(contig);
  for (uint64_t offset = hit.startPos; offset < windows; offset += kOffsets) {
    if (keyAt(contig, offset) == hit.bitSeq) return offset;
  }
  return windows;
}

uint64_t PlainIndex::keyAt(const ContigInfo& contig, uint64_t offset) const {
  const auto length = static_cast<std::size_t>(Kmer);
  return packedKmer(std::string_view(contig.contigSeq).substr(offset, length));
}

}  // namespace velk
