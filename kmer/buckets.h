// Buckets: places in the text, hashed into cache lines.
//
// A bucket holds up to `room` places of 4 or 5 bytes, and a tag of one byte for each. The tag has 6
// bits of the hash, so that few places need a comparison with the text, and the 2 highest bits of
// the place. Places with the same hash are in the order in which they were added: each went into
// the first bucket with room, from the home bucket on. A bucket that is not full ends a search.
#pragma once

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace velk {

/// The upper half of a product of 64 bits each: `hash` scaled to [0, size).
inline uint64_t scaledTo(uint64_t hash, uint64_t size) {
  __extension__ using Wide = unsigned __int128;
  // cppcheck-suppress shiftTooManyBits ; of 128
  return static_cast<uint64_t>(Wide{hash} * size >> 64);
}

inline constexpr unsigned kRegionBits = 8;  // the top bits of a hash, which choose its region

/// The layout of the places in a bucket.
struct BucketShape {
  std::size_t room;   // places that a bucket can hold
  std::size_t width;  // bytes of a place, without the bits in its tag

  /// The shape for places below `end`.
  static constexpr BucketShape forPlacesBelow(uint64_t end) {
    return end <= uint64_t{1} << 34 ? BucketShape{12, 4} : BucketShape{10, 5};
  }
};

// cppcheck-suppress noConstructor ; buckets are made zeroed
class alignas(64) Bucket {
 public:
  static constexpr unsigned kTagBits = 6;

  /// A bit for each place whose tag agrees with the hash; the first place has the lowest bit.
  unsigned hits(uint64_t hash) const {
    const uint64_t tag = hash & kTagMask;
#if defined(__SSE2__)
    const __m128i tags = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes_));
    const __m128i low = _mm_and_si128(tags, _mm_set1_epi8(static_cast<char>(kTagMask)));
    const __m128i equal = _mm_cmpeq_epi8(low, _mm_set1_epi8(static_cast<char>(tag)));
    const auto like = static_cast<unsigned>(_mm_movemask_epi8(equal));
#else
    unsigned like = 0;
    for (unsigned i = 0; i < 16; ++i) like |= ((bytes_[i] & kTagMask) == tag ? 1U : 0U) << i;
#endif
    return like & ((1U << count_ % 32U) - 1);
  }

  uint64_t place(unsigned i, BucketShape shape) const {
    uint64_t bytes = 0;  // the place is in the highest ones
    std::memcpy(&bytes, bytes_ + shape.room + (i + 1) * shape.width - sizeof bytes, sizeof bytes);
    return bytes >> (64 - 8 * shape.width) | uint64_t{bytes_[i]} >> kTagBits << 8 * shape.width;
  }

  bool isFull(BucketShape shape) const {
    return count_ == shape.room;
  }
  unsigned count() const {
    return count_;
  }

  /// REQUIRES: the bucket is not full.
  void add(uint64_t place, uint64_t hash, BucketShape shape) {
    assert(!isFull(shape));
    const unsigned i = count_++;
    bytes_[i] = static_cast<uint8_t>((hash & kTagMask) | place >> 8 * shape.width << kTagBits);
    std::memcpy(bytes_ + shape.room + i * shape.width, &place, shape.width);
  }

 private:
  static constexpr uint64_t kTagMask = (1U << kTagBits) - 1;

  uint8_t count_;
  uint8_t bytes_[63];  // tags, then places
};
static_assert(sizeof(Bucket) == 64);

/// The buckets of a region. A search that passes their end goes on at their start. It stays inside
/// and ends, whatever bytes they hold. REQUIRES: there is at least one bucket.
struct BucketRange {
  Bucket* first;
  uint64_t size;
  BucketShape shape;

  /// The first bucket for a hash: the bits after the top kRegionBits choose it.
  Bucket* home(uint64_t hash) const { return first + scaledTo(hash << kRegionBits, size); }
  Bucket* next(Bucket* bucket) const { return bucket + 1 == first + size ? first : bucket + 1; }

  /// Calls onHit(place) for every place whose tag agrees with the hash, in the order in which they
  /// were added, until it returns true. Returns whether it did.
  template <class OnHit>
  bool anyHit(uint64_t hash, OnHit onHit) const {
    assert(size != 0);
    const unsigned places = (1U << shape.room) - 1;
    Bucket* const start = home(hash);
    Bucket* bucket = start;
    do {
      for (unsigned hits = bucket->hits(hash) & places; hits != 0; hits &= hits - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(hits));
        if (onHit(bucket->place(i, shape))) return true;
      }
      if (!bucket->isFull(shape)) return false;
      bucket = next(bucket);
    } while (bucket != start);
    return false;
  }

  /// Adds a place after all others with its hash. REQUIRES: a bucket that is not full is left
  /// afterwards.
  void add(uint64_t place, uint64_t hash) const {
    assert(size != 0);
    Bucket* bucket = home(hash);
    while (bucket->isFull(shape)) {
      bucket = next(bucket);
      assert(bucket != home(hash));
    }
    bucket->add(place, hash, shape);
  }
};

}  // namespace velk
