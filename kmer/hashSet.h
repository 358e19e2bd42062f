// The k-mer hash set: where each contig k-mer lies, and whether it occurs more than once.
//
// Open addressing with linear probing over `size` slots. The driver creates the one set of a run,
// FetchKmers1 fills it, the workers only look up. Read without locks once workers exist, which
// rests on these invariants:
//   1. A slot is filled when any of its bits is set, or when it is zeroSlot (isFilled): a probe
//      reads slots alone. All others are all zero, after creation and after every growth.
//   2. The sentinel slot array[size] is all zero: the slot of a missing key reads as not unique.
//   3. nul_flag tells the same as isFilled; it is behind from addBegun, or TableShare::add, until
//      noteFilled.
//   4. count <= max < size: an empty slot ends every probe.
//   5. Nothing inserts or grows while a worker runs, and a run deletes nothing.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "kmer/fetchLine.h"
#include "kmer/kmerPlace.h"

namespace velk {

// Bits of an entity's fields.
inline constexpr int kScaffoldBits = 20;
inline constexpr int kContigBits = 19;
inline constexpr int kOffsetBits = 24;

// How many scaffolds, contigs of a scaffold and offsets in a contig the fields can tell apart.
inline constexpr uint64_t kScaffolds = uint64_t{1} << kScaffoldBits;
inline constexpr uint64_t kContigs = uint64_t{1} << kContigBits;
inline constexpr uint64_t kOffsets = uint64_t{1} << kOffsetBits;

/// One slot: a k-mer and the place where it was first added. 16 bytes.
struct Entity {
  uint64_t bitSeq;                       // packed k-mer, the key
  uint64_t scaffoldNum : kScaffoldBits;  // index of the scaffold, low bits
  uint64_t contigNum : kContigBits;      // index of the contig in its scaffold, low bits
  uint64_t startPos : kOffsetBits;       // offset of the k-mer's first base in contigSeq, low bits
  uint64_t unique : 1;                   // 1 while the k-mer was added once only
};
static_assert(sizeof(Entity) == 16);

/// The entity of a k-mer that has been added once; its fields take the low bits of the place.
/// Made of two words: stored field by field, it could not be loaded whole before all these stores
/// have reached the cache.
inline Entity uniqueEntity(uint64_t key, const KmerPlace& place) {
  const uint64_t placeBits = place.scaffold % kScaffolds |
                             place.contig % kContigs << kScaffoldBits |
                             place.start % kOffsets << (kScaffoldBits + kContigBits);
  constexpr int kBitsBeforeUnique = kScaffoldBits + kContigBits + kOffsetBits;
  const std::array<uint64_t, 2> words = {key, placeBits | uint64_t{1} << kBitsBeforeUnique};
  return std::bit_cast<Entity>(words);
}

struct HashSet {
  uint32_t e_size;          // bytes of one entity
  uint64_t size;            // slots; also the answer for a missing key
  uint64_t count;           // filled slots
  uint64_t count_conflict;  // filled slots stepped over by insertions right after a growth
  uint64_t max;             // highest count before the next insertion grows the table
  float load_factor;        // filled share that sets max
  uint64_t iter_ptr;        // iteration cursor, not used
  Entity* array;            // size + 1 slots
  uint8_t* nul_flag;        // bit per slot: filled
  uint8_t* del_flag;        // bit per slot: deleted
  uint64_t zeroSlot;        // the filled slot whose bits are all zero; kNoSlot without one
};

inline constexpr uint64_t kNoSlot = UINT64_MAX;

extern HashSet* kmerHash;  // null: the set of the run, written by the driver

/// Most slots that a table may have (16 TiB of them): beyond it memory is taken to have run out,
/// before the search for a prime number of slots can take long.
inline constexpr uint64_t kMaxSlots = uint64_t{1} << 40;

/// Returns a new empty set of find_next_prime(init_size) slots (3 when init_size is 2 or less).
/// A load factor of 0 or below counts as 0.25, of 1 or above (or not a number) as 0.75.
/// Exits with status 1 after the out-of-memory message when there is no memory.
HashSet* init_hashset(uint64_t init_size, float load_factor);

/// The slots of a new set that is asked for with `init_size`, at most kMaxSlots + 1.
uint64_t slotsFor(uint64_t init_size);

/// The load factor that a set takes for `load_factor`.
float clampedLoadFactor(float load_factor);

/// The most entities that a new set of `size` slots holds before it grows. REQUIRES: a load factor
/// that clampedLoadFactor has given.
uint64_t mostEntities(uint64_t size, float load_factor);

/// The size of the next table: the first of the growth series behind `size` that holds `needed`
/// entities; above kMaxSlots when there is none.
uint64_t grownSize(uint64_t size, uint64_t needed, float load_factor);

/// Adds `entity`, or clears the `unique` bit of the entity that has its key already. Grows the
/// table first when it is full, with two lines on standard error. Returns 1.
int add_hashset(HashSet* set, const Entity& entity);

/// Returns the slot of the entity whose key is entity.bitSeq, or set->size when it is not there (or
/// deleted). The answer may be used as an index of set->array in either case.
uint64_t get_hashset(const HashSet* set, const Entity& entity);

/// Returns the slot that holds the key (flag 1, out) or the first empty slot met (flag 0, out).
uint64_t GetHashSet(const HashSet* set, const Entity& entity, int& flag);

/// Grows the table so that count + num entities fit, moving them in place. REQUIRES: the nul_flag
/// bits of all filled slots are set.
/// Exits with status 1 after the out-of-memory message when there is no memory.
void enlarge_hashset(HashSet* set, uint64_t num);

/// Marks the entity with this key as deleted. Returns whether it was there.
bool delete_hashset(HashSet* set, const Entity& entity);

/// Returns whether an entity with this key is in the set.
bool exists_hashset(const HashSet* set, const Entity& entity);

/// Releases the set. Returns 1.
int free_hash(HashSet* set);

/// Hash of the key: a 64-bit integer mix by Thomas Wang, "Integer Hash Function" (2007).
inline uint64_t hash_code(const Entity& entity) {
  uint64_t key = entity.bitSeq;
  key += ~(key << 32);
  key ^= key >> 22;
  key += ~(key << 13);
  key ^= key >> 8;
  key *= 9;
  key ^= key >> 15;
  key += ~(key << 27);
  key ^= key >> 31;
  return key;
}

/// Returns whether two entities have the same key.
inline bool hash_equal(const Entity& entity, const Entity& stored) {
  return entity.bitSeq == stored.bitSeq;
}

/// Returns whether `num` counts as prime: odd divisors are tried below the whole part of the square
/// root only, so 9, 15, 25 and 35 pass, and so does every number below 4.
bool is_prime(uint64_t num);

/// Returns the first odd number from `num` on that is_prime accepts.
uint64_t find_next_prime(uint64_t num);

/// Bits of a slot bitmap: the bit of slot i is in byte i / 8, the first slot of a byte highest.
inline uint8_t slotMask(uint64_t slot) {
  return static_cast<uint8_t>(128U >> (slot % 8));
}

inline bool is_entity_null(const uint8_t* nul_flag, uint64_t slot) {
  return (nul_flag[slot / 8] & slotMask(slot)) == 0;
}

inline void set_entity_fill(uint8_t* nul_flag, uint64_t slot) {
  nul_flag[slot / 8] |= slotMask(slot);
}

inline bool is_entity_delete(const uint8_t* del_flag, uint64_t slot) {
  return (del_flag[slot / 8] & slotMask(slot)) != 0;
}

inline void set_entity_delete(uint8_t* del_flag, uint64_t slot) {
  del_flag[slot / 8] |= slotMask(slot);
}

// Look-ups in two steps, so that the memory of several can be fetched at the same time.

/// The slot at which probing for `key` begins.
inline uint64_t homeSlot(const HashSet& set, uint64_t key) {
  return hash_code(Entity{key, 0, 0, 0, 0}) % set.size;
}

/// The slot behind `slot` in a table of `size` slots, wrapping at the end.
inline uint64_t nextSlot(uint64_t slot, uint64_t size) {
  return slot + 1 == size ? 0 : slot + 1;
}

/// A look-up that has been begun; of use as long as the table does not grow.
struct SlotProbe {
  uint64_t key;
  uint64_t slot;  // home slot of the key
};

/// Begins a look-up.
inline SlotProbe beginProbe(const HashSet& set, uint64_t key) {
  return {key, homeSlot(set, key)};
}

/// Has the memory of a begun look-up's home slot fetched, and that of the next ones, which mostly
/// lie in another cache line.
inline void fetchSlots(const HashSet& set, uint64_t slot) {
  constexpr uint64_t kProbed = 3;  // slots behind the home slot that a probe comes to often
  fetchLine(&set.array[slot]);
  fetchLine(&set.array[std::min(slot + kProbed, set.size)]);
}

/// Begins a look-up, and has its memory fetched.
inline SlotProbe startProbe(const HashSet& set, uint64_t key) {
  const SlotProbe probe = beginProbe(set, key);
  fetchSlots(set, probe.slot);
  return probe;
}

/// Returns whether all bits of an entity are zero: its key, its place and `unique`.
inline bool isZero(const Entity& entity) {
  std::array<uint64_t, 2> words;
  std::memcpy(words.data(), &entity, sizeof entity);
  return (words[0] | words[1]) == 0;
}

/// Returns whether `slot` is filled.
inline bool isFilled(const HashSet& set, uint64_t slot) {
  return !isZero(set.array[slot]) || slot == set.zeroSlot;
}

/// Ends a look-up as GetHashSet does.
inline uint64_t probeFrom(const HashSet& set, const SlotProbe& probe, int& flag) {
  uint64_t slot = probe.slot;
  while (isFilled(set, slot)) {
    if (set.array[slot].bitSeq == probe.key) {
      flag = 1;
      return slot;
    }
    slot = nextSlot(slot, set.size);
  }
  flag = 0;
  return slot;
}

/// Ends a look-up as get_hashset does. REQUIRES: nothing has been deleted.
inline uint64_t findBegun(const HashSet& set, const SlotProbe& probe) {
  int flag = 0;
  const uint64_t slot = probeFrom(set, probe, flag);
  return flag == 1 ? slot : set.size;
}

/// Puts `entity` into `slot`.
inline void putEntity(HashSet* set, uint64_t slot, const Entity& entity) {
  set->array[slot] = entity;
  if (isZero(entity)) set->zeroSlot = slot;
}

/// Clears the `unique` bit of the entity in `slot`.
inline void clearUnique(HashSet* set, uint64_t slot) {
  Entity entity = set->array[slot];
  entity.unique = 0;
  putEntity(set, slot, entity);
}

/// Adds an entity that makes the table grow; the rest of addBegun.
uint64_t addWithGrowth(HashSet* set, const Entity& entity);

/// Ends a look-up as add_hashset does, but for the nul_flag bit of a new entity, which is left to
/// noteFilled. Returns the slot of the entity that had the key already, set->size when `entity` is
/// new. REQUIRES: probe.key == entity.bitSeq.
inline uint64_t addBegun(HashSet* set, const Entity& entity, const SlotProbe& probe) {
  int flag = 0;
  const uint64_t slot = probeFrom(*set, probe, flag);
  if (flag == 1) {
    clearUnique(set, slot);
    return slot;
  }
  if (set->count + 1 > set->max) return addWithGrowth(set, entity);
  putEntity(set, slot, entity);
  ++set->count;
  return set->size;
}

/// Sets the nul_flag bits of all filled slots, slot by slot.
void noteFilled(HashSet* set);

/// The same of the slots [from, to), and of the others whose bits lie in the last one's byte.
/// REQUIRES: from is a multiple of 8.
void noteFilled(HashSet* set, uint64_t from, uint64_t to);

}  // namespace velk
