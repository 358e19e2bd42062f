// The fast engine: the seed index holds every k-mer, and the hash set is foretold from their
// number.
#include <memory>
#include <new>

#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "kmer/foretoldTable.h"
#include "kmer/seedIndex.h"

namespace velk {
namespace {

// The index of all indexed k-mers; null without memory.
std::unique_ptr<SeedIndex> builtIndex(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  try {
    auto index = std::make_unique<SeedIndex>();
    if (index->build(scaffoldInfo, scaffoldSum, Kmer, thread_num)) return index;
  } catch (const std::bad_alloc&) {
    // no memory for the object itself
  }
  return nullptr;
}

}  // namespace

HashSet* kmerHash = nullptr;
SeedIndex* seedIndex = nullptr;

HashSet* newKmerHash(uint64_t initSize, float loadFactor) {
  return newForetoldTable(initSize, loadFactor);
}

void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  std::unique_ptr<SeedIndex> made = builtIndex(scaffoldInfo, scaffoldSum);
  if (made == nullptr) failForetoldTable();
  growForetoldTable(kmerHash, made->distinctKeys());
  delete seedIndex;
  seedIndex = made.release();
}

void freeKmerHash(HashSet* kmerHash) {
  delete seedIndex;
  seedIndex = nullptr;
  releaseForetoldTable(kmerHash);
}

}  // namespace velk
