#include "placement/scout.h"

#include <algorithm>
#include <cstring>

#include "contig/contig.h"
#include "kmer/fetchKmers.h"
#include "placement/diagonal.h"
#include "placement/reverseComplement.h"

namespace velk {
namespace {

constexpr std::size_t kCacheLine = 64;

uint64_t firstEight(std::string_view bases) {
  uint64_t letters = 0;
  std::memcpy(&letters, bases.data(), sizeof letters);
  return letters;
}

}  // namespace

std::size_t Scout::lastWindow(std::string_view read) const {
  return read.size() - static_cast<std::size_t>(kmer_);
}

// Begins to look the k-mer at `window` up, on both strands.
void Scout::begin(Scouted& scouted, std::size_t window) const {
  const uint64_t key = scouted.packed.at(window, kmer_);
  scouted.probes = {startProbe(index_, key), startProbe(index_, reversedKey(key, kmer_))};
}

// Ends these look-ups, and has the contig fetched on which there is a hit.
void Scout::finish(Scouted& scouted, std::string_view read, std::size_t window) const {
  for (const bool isReversed : {false, true}) {
    const uint64_t slot = findBegun(index_, scouted.probes[isReversed ? 1 : 0]);
    if (slot == index_.size) continue;
    const Entity& found = index_.array[slot];
    const std::size_t before = isReversed ? lastWindow(read) - window : window;
    const int64_t offset = static_cast<int64_t>(found.startPos) - static_cast<int64_t>(before);
    scouted.run = {read.size(),
                   isReversed ? startOfOther(read) : firstEight(read),
                   isReversed,
                   {found.scaffoldNum, found.contigNum, offset}};
    const std::string& contig =
        scaffoldInfo[found.scaffoldNum].contigsInfo[found.contigNum].contigSeq;
    const auto from = static_cast<std::size_t>(std::max<int64_t>(offset, 0));
    const std::size_t to = std::min(from + read.size(), contig.size());
    for (std::size_t at = from; at < to; at += kCacheLine) __builtin_prefetch(&contig[at]);
    sideIndex.prefetchMark({found.scaffoldNum, found.contigNum, from});
    return;
  }
}

void Scout::approach(std::string_view read) {
  for (std::size_t at = 0; at < read.size(); at += kCacheLine) __builtin_prefetch(&read[at]);
}

void Scout::look(Scouted& scouted, std::string_view read) const {
  scouted.hasBasesAlone = sideIndex.isMade() && read.size() >= static_cast<std::size_t>(kmer_) &&
                          scouted.packed.fill(read);
  if (scouted.hasBasesAlone) begin(scouted, 0);
}

void Scout::find(Scouted& scouted, std::string_view read) const {
  scouted.run.length = 0;
  if (!scouted.hasBasesAlone) return;
  finish(scouted, read, 0);
  if (scouted.run.length == 0) begin(scouted, lastWindow(read));
}

void Scout::compare(Scouted& scouted, std::string_view read) {
  if (!scouted.hasBasesAlone) return;
  if (scouted.run.length == 0) finish(scouted, read, lastWindow(read));
  const auto gramBases = static_cast<std::size_t>(gramLength(kmer_));
  const std::size_t lastGram = read.size() - gramBases;
  if (scouted.run.length == 0) {
    const std::size_t grams = gramsOf(kmer_);
    for (std::size_t gram = grams - 1; gram <= lastGram; gram += grams) {
      fetchGram(scouted.packed, gram);
    }
    return;
  }
  const bool isReversed = scouted.run.isReversed;
  std::string_view along = read;
  if (isReversed) {
    reversed_.resize(read.size());
    reverseComplement(reversed_.data(), read.data(), read.size());
    along = reversed_;
  }
  const Hit& hit = scouted.run.hit;
  const std::string& contig = scaffoldInfo[hit.scaffold].contigsInfo[hit.contig].contigSeq;
  int differences = 0;
  forEachDifference(contig, along, hit.offset, [&](std::size_t at) {
    if (++differences > kMostDifferences) return;
    // The grams that the walks of both strands ask for when this base alone is wrong.
    const std::size_t onRead = isReversed ? read.size() - 1 - at : at;
    for (const std::size_t before : {std::size_t{0}, (gramBases - 1) / 2, gramBases - 1}) {
      fetchGram(scouted.packed, std::min(lastGram, onRead - std::min(onRead, before)));
    }
  });
}

void Scout::fetchGram(const PackedBases& packed, std::size_t gram) const {
  sideIndex.filter().prefetch(Gram(packed.at(gram, gramLength(kmer_)), kmer_));
}

}  // namespace velk
