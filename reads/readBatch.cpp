#include "reads/readBatch.h"

namespace velk::reads {

void ReadBatch::clear(uint32_t input, uint64_t firstRecord, bool arePairs) {
  input_ = input;
  firstRecord_ = firstRecord;
  arePairs_ = arePairs;
  for (Side& side : sides_) {
    side.text.clear();
    side.reads.clear();
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
  side.reads.push_back(
      {side.text.size(), read.name.size(), read.bases.size(), read.quality.size()});
  side.text += read.name;
  side.text += read.bases;
  side.text += read.quality;
}

RecordView ReadBatch::read(std::size_t entry, int mate) const {
  const Side& side = sides_[static_cast<std::size_t>(mate)];
  const Slices& slices = side.reads[entry];
  const std::string_view text = std::string_view(side.text).substr(slices.start);
  return {text.substr(0, slices.name), text.substr(slices.name, slices.bases),
          text.substr(slices.name + slices.bases, slices.quality)};
}

std::string* ReadBatch::basesOf(int mate) {
  Side& side = sides_[static_cast<std::size_t>(mate)];
  if (side.bases.size() < side.reads.size()) side.bases.resize(side.reads.size());
  for (std::size_t i = 0; i < side.reads.size(); ++i) side.bases[i] = read(i, mate).bases;
  return side.bases.data();
}

}  // namespace velk::reads
