// The k-mer hash set: where each contig k-mer lies, and whether it occurs more than once.
//
// Open addressing with linear probing over `size` slots. FetchKmers1 fills the set of a run; the
// workers only look up, without locks. They rely on these invariants:
//   1. A slot is filled when its nul_flag bit is set; the contents of the others are undefined.
//   2. The sentinel slot array[size] is all zero, after creation and after every growth. A missing
//      key has this slot, which reads as not unique.
//   3. count <= max < size: an empty slot ends every probe.
//   4. Nothing inserts or grows while a worker runs, and a run deletes nothing.
// The plain engine uses the table. The fast engine keeps only its numbers, such as `size`, and
// computes them from the number of distinct k-mers (kmer/tableSize.cpp).
#pragma once

#include <cstdint>

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

struct HashSet {
  uint32_t e_size;          // bytes of one entity
  uint64_t size;            // slots; also the answer for a missing key
  uint64_t count;           // filled slots
  uint64_t count_conflict;  // filled slots passed by insertions right after a growth
  uint64_t max;             // highest count before the next insertion grows the table
  float load_factor;        // filled share that sets max
  uint64_t iter_ptr;        // iteration cursor, not used
  Entity* array;            // size + 1 slots
  uint8_t* nul_flag;        // bit per slot: filled
  uint8_t* del_flag;        // bit per slot: deleted
};

// The rules of the sizes.

/// Most slots that a table may have (16 TiB of them): beyond it memory is taken to have run out,
/// before the search for a prime number of slots can take long.
inline constexpr uint64_t kMaxSlots = uint64_t{1} << 40;

/// Returns whether `num` counts as prime: odd divisors are tried below the whole part of the square
/// root only, so 9, 15, 25 and 35 pass, and so does every number below 4.
bool is_prime(uint64_t num);

/// Returns the first odd number from `num` on that is_prime accepts.
uint64_t find_next_prime(uint64_t num);

/// The load factor that a set uses for `load_factor`: 0.25 for 0 and below, 0.75 for 1 and above
/// and for NaN. Others stay as they are.
float clampedLoadFactor(float load_factor);

/// The numbers of a new set, without arrays. size is above kMaxSlots when there are too many.
HashSet numbersOfNew(uint64_t init_size, float load_factor);

/// The same, to be released with delete[]. Exits with status 1 after init_hashset's out-of-memory
/// message when there is no memory, or when no table may have so many slots.
HashSet* newNumbers(uint64_t init_size, float load_factor);

/// Sets size and max to their values after growing for `needed` entities. Returns false, and leaves
/// a useless size, if that is above kMaxSlots.
bool growNumbers(HashSet& set, uint64_t needed);

/// Returns a new empty set of find_next_prime(init_size) slots (3 when init_size is 2 or less).
/// Exits with status 1 after the out-of-memory message when there is no memory.
HashSet* init_hashset(uint64_t init_size, float load_factor);

/// Adds `entity`, or clears the `unique` bit of the entity that has its key already. Grows the
/// table first when it is full, with two lines on standard error. Returns 1.
int add_hashset(HashSet* set, const Entity& entity);

/// Returns the slot of the entity whose key is entity.bitSeq, or set->size when it is not there (or
/// deleted). The answer may be used as an index of set->array in either case.
uint64_t get_hashset(const HashSet* set, const Entity& entity);

/// Returns the slot that holds the key (flag 1, out) or the first empty slot met (flag 0, out).
uint64_t GetHashSet(const HashSet* set, const Entity& entity, int& flag);

/// Grows the table so that count + num entities fit, moving them in place.
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

/// The slot at which probing for the entity's key begins.
inline uint64_t homeSlot(const HashSet& set, const Entity& entity) {
  return hash_code(entity) % set.size;
}

/// The slot after `slot`; the first one after the last.
inline uint64_t nextSlot(const HashSet& set, uint64_t slot) {
  return slot + 1 == set.size ? 0 : slot + 1;
}

// Bitmaps: the bit of slot i is in byte i / 8, the first slot of a byte highest.

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

}  // namespace velk
