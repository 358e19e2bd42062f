// The plain engine: the hash set holds every k-mer.
#include "kmer/fetchKmers.h"
#include "kmer/plainIndex.h"

namespace velk {

HashSet* kmerHash = nullptr;

HashSet* newKmerHash(uint64_t initSize, float loadFactor) {
  return init_hashset(initSize, loadFactor);
}

void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  addContigKmers(kmerHash, scaffoldInfo, scaffoldSum);
}

void freeKmerHash(HashSet* kmerHash) {
  free_hash(kmerHash);
}

}  // namespace velk
