#include "survey/assembly.h"

namespace velk::survey {

uint64_t contigBases(Scaffolds scaffolds) {
  uint64_t bases = 0;
  forEachContig(scaffolds, [&](const ContigInfo& contig) { bases += contig.bases().size(); });
  return bases;
}

uint64_t indexedKmers(Scaffolds scaffolds) {
  uint64_t kmers = 0;
  forEachContig(scaffolds, [&](const ContigInfo& contig) { kmers += windowsOf(contig); });
  return kmers;
}

std::vector<uint64_t> indexedLengths(Scaffolds scaffolds) {
  std::vector<uint64_t> lengths;
  forEachContig(scaffolds, [&](const ContigInfo& contig) {
    if (windowsOf(contig) > 0) lengths.push_back(contig.bases().size());
  });
  return lengths;
}

}  // namespace velk::survey
