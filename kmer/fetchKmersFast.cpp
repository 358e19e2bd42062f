// The fast engine: the seed index has every k-mer. The numbers of the hash set follow from how many
// there are.
#include <memory>
#include <new>
#include <string>

#include "driver/fatal.h"
#include "driver/listener.h"
#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "kmer/seedIndex.h"

namespace velk {
constexpr AllocationSite kGrowth{__LINE__, "enlarge_hashset", kUserError, ". Function: ", ".\n"};

HashSet* kmerHash = nullptr;
SeedIndex* seedIndex = nullptr;

HashSet* newKmerHash(uint64_t initSize, float loadFactor) {
  return newNumbers(initSize, loadFactor);
}

void growToHold(HashSet* set, uint64_t keys) {
  while (set->max < keys) {
    say("old set->size: " + std::to_string(set->size) + "\n");
    if (!growNumbers(*set, set->max + 1)) outOfMemory(kGrowth);
    say("new set->size: " + std::to_string(set->size) + "\n");
  }
  set->count = keys;
}

void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  std::unique_ptr<SeedIndex> made(new (std::nothrow) SeedIndex);
  if (made == nullptr || !made->build(scaffoldInfo, scaffoldSum, Kmer, thread_num))
    outOfMemory(kGrowth);
  growToHold(kmerHash, made->distinctKeys());
  delete seedIndex;
  seedIndex = made.release();
}

void freeKmerHash(HashSet* kmerHash) {
  delete seedIndex;
  seedIndex = nullptr;
  delete[] kmerHash;
}

}  // namespace velk
