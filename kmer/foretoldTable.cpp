#include "kmer/foretoldTable.h"

#include <string>

#include "driver/fatal.h"
#include "driver/listener.h"
#include "kmer/tableSize.h"

namespace velk {

HashSet* newForetoldTable(uint64_t initSize, float loadFactor) {
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

void growForetoldTable(HashSet* set, uint64_t keys) {
  const TableCourse course = courseOfTable(set->size, set->load_factor, keys);
  for (std::size_t i = 1; i < course.sizes.size(); ++i) {
    say("old set->size: " + std::to_string(course.sizes[i - 1]) + "\n");
    say("new set->size: " + std::to_string(course.sizes[i]) + "\n");
  }
  if (course.isTooLarge) {
    say("old set->size: " + std::to_string(course.sizes.back()) + "\n");
    failForetoldTable();
  }
  set->count = keys;
  set->size = course.sizes.back();
  set->max = course.most;
}

void failForetoldTable() {
  outOfMemory({__LINE__, "enlarge_hashset", kUserError, ". Function: ", ".\n"});
}

void releaseForetoldTable(HashSet* set) {
  delete[] set;
}

}  // namespace velk
