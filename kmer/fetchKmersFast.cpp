// The fast engine: the seed index holds every k-mer, and the hash set is foretold from their
// number.
#include <memory>
#include <new>
#include <string>

#include "driver/fatal.h"
#include "driver/listener.h"
#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "kmer/seedIndex.h"
#include "kmer/tableSize.h"

namespace velk {
namespace {

[[noreturn]] void failGrowth() {
  outOfMemory({__LINE__, "enlarge_hashset", kUserError, ". Function: ", ".\n"});
}

}  // namespace

HashSet* kmerHash = nullptr;
SeedIndex* seedIndex = nullptr;

HashSet* newKmerHash(uint64_t initSize, float loadFactor) {
  const AllocationSite site{__LINE__, "init_hashset", kUserError};
  const uint64_t size = slotsFor(initSize);
  if (size > kMaxSlots) outOfMemory(site);
  auto* set = allocateArray<HashSet>(1, site);
  set->e_size = sizeof(Entity);
  set->size = size;
  set->load_factor = clampedLoadFactor(loadFactor);
  set->max = mostOfNew(size, set->load_factor);
  return set;
}

void growForetold(HashSet* set, uint64_t keys) {
  const TableCourse course = courseOfTable(set->size, set->load_factor, keys);
  for (std::size_t i = 1; i < course.sizes.size(); ++i) {
    say("old set->size: " + std::to_string(course.sizes[i - 1]) + "\n");
    say("new set->size: " + std::to_string(course.sizes[i]) + "\n");
  }
  if (course.isTooLarge) {
    say("old set->size: " + std::to_string(course.sizes.back()) + "\n");
    failGrowth();
  }
  set->count = keys;
  set->size = course.sizes.back();
  set->max = course.most;
}

void FetchKmers1(HashSet* kmerHash, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  std::unique_ptr<SeedIndex> made(new (std::nothrow) SeedIndex);
  if (made == nullptr || !made->build(scaffoldInfo, scaffoldSum, Kmer, thread_num)) failGrowth();
  growForetold(kmerHash, made->distinctKeys());
  delete seedIndex;
  seedIndex = made.release();
}

void freeKmerHash(HashSet* kmerHash) {
  delete seedIndex;
  seedIndex = nullptr;
  delete[] kmerHash;
}

}  // namespace velk
