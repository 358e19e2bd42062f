#include "reads/readBatch.h"

#include <cassert>

namespace velk::reads {
namespace {

constexpr std::size_t kLineBytes = 64;    // of the processor's cache
constexpr std::size_t kFetchedLines = 4;  // name and qualities of a short read

}  // namespace

void ReadBatch::clear(uint32_t input, uint64_t firstRecord, bool arePairs) {
  input_ = input;
  firstRecord_ = firstRecord;
  arePairs_ = arePairs;
  for (Side& side : sides_) {
    side.text.clear();
    side.reads.clear();
    side.bytes = 0;
  }
}

void ReadBatch::add(const RecordView& read) {
  addTo(sides_[0], read);
}

void ReadBatch::add(const RecordView& first, const RecordView& second) {
  addTo(sides_[0], first);
  addTo(sides_[1], second);
}

void ReadBatch::addTo(Side& side, const RecordView& read) {
  assert(read.quality.empty() || read.quality.size() == read.bases.size());
  const std::size_t entry = side.reads.size();
  side.reads.push_back(
      {side.text.size(), static_cast<uint32_t>(read.name.size()), !read.quality.empty()});
  side.text.append(read.name).append(read.quality);
  if (side.bases.size() == entry) side.bases.emplace_back();
  side.bases[entry].assign(read.bases);
  side.bytes += read.name.size() + read.bases.size() + read.quality.size();
}

RecordView ReadBatch::read(std::size_t entry, int mate) const {
  const Side& side = sides_[static_cast<std::size_t>(mate)];
  const Slices& slices = side.reads[entry];
  const std::string_view bases = side.bases[entry];
  const char* const name = side.text.data() + slices.start;
  return {{name, slices.name}, bases, {name + slices.name, slices.hasQuality ? bases.size() : 0}};
}

void ReadBatch::prefetch(std::size_t entry) const {
  for (const Side& side : sides_) {
    if (entry >= side.reads.size()) return;
    const char* const text = side.text.data() + side.reads[entry].start;
    for (std::size_t line = 0; line < kFetchedLines; ++line) {
      __builtin_prefetch(text + line * kLineBytes);
    }
  }
}

std::string* ReadBatch::copiesOfBases(int mate) {
  Side& side = sides_[static_cast<std::size_t>(mate)];
  side.copies.assign(side.bases.begin(),
                     side.bases.begin() + static_cast<std::ptrdiff_t>(side.reads.size()));
  return side.copies.data();
}

}  // namespace velk::reads
