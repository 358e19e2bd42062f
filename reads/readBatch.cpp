#include "reads/readBatch.h"

namespace velk::reads {

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
  const std::size_t entry = side.reads.size();
  side.reads.push_back({side.text.size(), read.name.size(), read.quality.size()});
  side.text += read.name;
  side.text += read.quality;
  if (side.bases.size() == entry) side.bases.emplace_back();
  side.bases[entry].assign(read.bases);
  side.bytes += read.name.size() + read.bases.size() + read.quality.size();
}

RecordView ReadBatch::read(std::size_t entry, int mate) const {
  const Side& side = sides_[static_cast<std::size_t>(mate)];
  const Slices& slices = side.reads[entry];
  const std::string_view text = std::string_view(side.text).substr(slices.start);
  return {text.substr(0, slices.name), side.bases[entry], text.substr(slices.name, slices.quality)};
}

std::string* ReadBatch::copiesOfBases(int mate) {
  Side& side = sides_[static_cast<std::size_t>(mate)];
  side.copies.assign(side.bases.begin(),
                     side.bases.begin() + static_cast<std::ptrdiff_t>(side.reads.size()));
  return side.copies.data();
}

}  // namespace velk::reads
