#include "run/library.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>

namespace velk::run {
namespace {

constexpr uint64_t kBinsOfOctave = 64;
constexpr int kBits = 7;  // of a length whose bin is its own

}  // namespace

std::size_t InsertHistogram::binOf(uint64_t insert) {
  const int shift = std::max(0, static_cast<int>(std::bit_width(insert)) - kBits);
  return kBinsOfOctave * static_cast<uint64_t>(shift) + (insert >> shift);
}

uint64_t InsertHistogram::startOf(std::size_t bin) {
  if (bin < 2 * kBinsOfOctave) return bin;
  const uint64_t shift = bin / kBinsOfOctave - 1;
  return (bin - kBinsOfOctave * shift) << shift;
}

void InsertHistogram::add(uint64_t insert, uint64_t pairs) {
  const std::size_t bin = binOf(insert);
  if (bin >= bins_.size()) bins_.resize(bin + 1);
  bins_[bin] += pairs;
}

InsertHistogram& InsertHistogram::operator+=(const InsertHistogram& other) {
  if (bins_.size() < other.bins_.size()) bins_.resize(other.bins_.size());
  for (std::size_t bin = 0; bin < other.bins_.size(); ++bin) bins_[bin] += other.bins_[bin];
  return *this;
}

const char* nameOf(LibraryKind kind) {
  switch (kind) {
    case LibraryKind::kPairs:
      return "pairs";
    case LibraryKind::kMatePairs:
      return "mate-pairs";
    case LibraryKind::kSingle:
      break;
  }
  return "single";
}

const char* nameOf(Orientation orientation) {
  return orientation == Orientation::kInward ? "FR" : "RF";
}

nlohmann::ordered_json jsonOf(const Library& library) {
  nlohmann::ordered_json json{{"name", library.name}, {"kind", nameOf(library.kind)}};
  if (!library.arePairs()) return json;
  json["orientation"] = nameOf(library.orientation);
  json["orientation_source"] = library.orientationSource();
  json["insert"] = library.insert;
  json["insert_source"] = library.insertSource();
  json["spread"] = library.spread;
  return json;
}

}  // namespace velk::run
