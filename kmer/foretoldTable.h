// The numbers of the run's hash set without the hash set, for an index that holds its k-mers in
// another form: what is told of the set is foretold from the number of different k-mers.
#pragma once

#include <cstdint>

#include "kmer/hashSet.h"

namespace velk {

/// Returns the numbers of init_hashset(initSize, loadFactor), with null arrays, to be released with
/// releaseForetoldTable. Exits as init_hashset does without memory, also when no table may have so
/// many slots.
HashSet* newForetoldTable(uint64_t initSize, float loadFactor);

/// Makes the numbers those of the set after `keys` different keys have been added, with the lines
/// that add_hashset tells as it grows. REQUIRES: the set is new.
/// Exits as enlarge_hashset does without memory when the set would grow beyond kMaxSlots.
void growForetoldTable(HashSet* set, uint64_t keys);

/// Ends the run as enlarge_hashset does without memory.
[[noreturn]] void failForetoldTable();

/// Releases the numbers.
void releaseForetoldTable(HashSet* set);

}  // namespace velk
