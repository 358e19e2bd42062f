#include "kmer/oddKmers.h"

#include <algorithm>
#include <span>

namespace velk {
namespace {

// The slot that holds the key, or the free one where it belongs. hash: that of the key, without the
// bits that chose the part.
template <class Entry>
Entry& slotOf(std::span<Entry> slots, uint64_t key, uint64_t hash) {
  uint64_t slot = scaledTo(hash, slots.size());
  while (slots[slot].place != 0 && slots[slot].key != key) {
    slot = slot + 1 == slots.size() ? 0 : slot + 1;
  }
  return slots[slot];
}

}  // namespace

void OddKmers::resize(Part& part, uint64_t slots) {
  std::vector<Entry> resized(slots);
  for (const Entry& entry : part.slots) {
    if (entry.place == 0) continue;
    slotOf(std::span(resized), entry.key, mixed(entry.key) << kPartBits) = entry;
  }
  part.slots.swap(resized);
}

void OddKmers::add(uint64_t key, uint64_t position) {
  parts_.resize(kParts);
  const uint64_t hash = mixed(key);
  Part& part = parts_[partOf(hash)];
  if (static_cast<double>(part.count + 1) > kMostFull * static_cast<double>(part.slots.size())) {
    resize(part, part.slots.size() + part.slots.size() / 2 + 4);
  }
  Entry& entry = slotOf(std::span(part.slots), key, hash << kPartBits);
  if (entry.place != 0) {
    entry.setRepeated();
    return;
  }
  entry = {key, 2 * (position + 1)};
  ++part.count;
  ++size_;
}

void OddKmers::settle() {
  if (parts_.empty()) return;
  const auto slotsOf = [](const Part& part) {
    if (part.count == 0) return uint64_t{0};
    return static_cast<uint64_t>(static_cast<double>(part.count) / kMostFull) + 1;
  };
  for (std::size_t n = 0; n < kParts; ++n) starts_[n + 1] = starts_[n] + slotsOf(parts_[n]);
  slots_.resize(starts_[kParts]);
  for (std::size_t n = 0; n < kParts; ++n) {
    Part& part = parts_[n];
    if (part.count == 0) continue;
    resize(part, slotsOf(part));
    std::copy(part.slots.begin(), part.slots.end(),
              slots_.begin() + static_cast<std::ptrdiff_t>(starts_[n]));
    part = {};
  }
  parts_.clear();
}

const OddKmers::Entry* OddKmers::find(uint64_t key) const {
  const uint64_t hash = mixed(key);
  const uint64_t part = partOf(hash);
  const std::span<const Entry> there(slots_.data() + starts_[part],
                                     starts_[part + 1] - starts_[part]);
  if (there.empty()) return nullptr;
  const Entry& entry = slotOf(there, key, hash << kPartBits);
  return entry.place == 0 ? nullptr : &entry;
}

}  // namespace velk
