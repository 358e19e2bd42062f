#include "placement/scout.h"

#include <algorithm>
#include <utility>

#include "contig/contig.h"
#include "kmer/fetchKmers.h"
#include "kmer/fetchLine.h"
#include "placement/Read2Scaf.h"
#include "placement/diagonal.h"

namespace velk {
namespace {

constexpr std::size_t kCacheLine = 64;

void fetchBases(std::string_view bases) {
  if (bases.empty()) return;
  for (std::size_t at = 0; at < bases.size(); at += kCacheLine) fetchLine(&bases[at]);
  fetchLine(&bases.back());
}

const std::string& contigOf(const Hit& hit) {
  return scaffoldInfo[hit.scaffold].contigsInfo[hit.contig].contigSeq;
}

}  // namespace

const std::string& turnedBases(Scouted& read, const std::string& bases) {
  if (!read.hasTurned) {
    read.turned.resize(bases.size());
    ReverseComplementSeq(read.turned, bases);
    read.hasTurned = true;
  }
  return read.turned;
}

std::size_t Scout::lastWindow(std::string_view bases) const {
  return bases.size() - static_cast<std::size_t>(kmer_);
}

// A gram of a k-mer and, turned round, of its reverse complement.
std::size_t Scout::middleGram(std::size_t window) const {
  return window + sideIndex.filter().gramsOfKmer() / 2;
}

void Scout::fetchGram(const PackedBases& packed, std::size_t gram) const {
  const GramFilter& filter = sideIndex.filter();
  filter.prefetch(Gram(packed.at(gram, filter.gramLength()), filter.gramLength()));
}

// Begins to look the k-mer at `window` up, on the strands on which the index may hold it. Returns
// whether there is one.
bool Scout::begin(Scouting& read, std::size_t window) const {
  const GramFilter& filter = sideIndex.filter();
  const int length = filter.gramLength();
  const Gram gram(read.packed.at(middleGram(window), length), length);
  const uint64_t key = read.packed.at(window, kmer_);
  read.window = window;
  read.isBegun = {filter.mayHold(gram), filter.mayHold(gram.turned())};
  if (read.isBegun[0]) read.probes[0] = startProbe(index_, key);
  if (read.isBegun[1]) read.probes[1] = startProbe(index_, reversedKey(key, kmer_));
  return read.isBegun[0] || read.isBegun[1];
}

// Ends these look-ups, and has the contig fetched on which there is a hit.
void Scout::finish(Scouting& read, std::string_view bases) const {
  for (const bool isReversed : {false, true}) {
    if (!read.isBegun[isReversed ? 1 : 0]) continue;
    const uint64_t slot = findBegun(index_, read.probes[isReversed ? 1 : 0]);
    if (read.window == 0 && !isReversed) read.firstSlot = slot;
    if (slot == index_.size) continue;
    const Entity& found = index_.array[slot];
    const std::size_t before = isReversed ? lastWindow(bases) - read.window : read.window;
    const int64_t offset = static_cast<int64_t>(found.startPos) - static_cast<int64_t>(before);
    read.isFound = true;
    read.isUnique = found.unique != 0;
    read.run.clear();
    read.run.isReversed = isReversed;
    read.run.hit = {found.scaffoldNum, found.contigNum, offset};
    const std::string_view contig = contigOf(read.run.hit);
    read.run.contigLength = contig.size();
    const auto from = static_cast<std::size_t>(std::max<int64_t>(offset, 0));
    fetchBases(contig.substr(from, bases.size()));
    sideIndex.prefetchMark({found.scaffoldNum, found.contigNum, from});
    return;
  }
}

void Scout::approach(std::string_view read) {
  fetchBases(read);
}

void Scout::skip(Scouting& read) {
  read.hasBasesAlone = read.isFound = read.hasRun = read.hasTurned = false;
}

void Scout::look(Scouting& read, std::string_view bases) const {
  skip(read);
  read.firstSlot = index_.size;
  read.hasBasesAlone = sideIndex.isMade() && bases.size() >= static_cast<std::size_t>(kmer_) &&
                       read.packed.fill(bases);
  if (read.hasBasesAlone) fetchGram(read.packed, middleGram(0));
}

void Scout::ask(Scouting& read, std::string_view bases) const {
  if (!read.hasBasesAlone || begin(read, 0)) return;
  fetchGram(read.packed, middleGram(lastWindow(bases)));
}

void Scout::find(Scouting& read, std::string_view bases) const {
  if (!read.hasBasesAlone) return;
  finish(read, bases);
  if (read.isFound || begin(read, lastWindow(bases))) return;
  fetchGram(read.packed, middleGram(lastWindow(bases) / 2));
}

void Scout::findAgain(Scouting& read, std::string_view bases) const {
  if (!read.hasBasesAlone || read.isFound) return;
  finish(read, bases);
  if (!read.isFound) begin(read, lastWindow(bases) / 2);
}

void Scout::compare(Scouting& read, const std::string& bases) const {
  if (!read.hasBasesAlone) return;
  if (!read.isFound) finish(read, bases);
  if (read.isFound) findDifferences(read, bases);
  fetchForWalk(read, bases);
}

// Has fetched what the walk asks for: the slot of the first k-mer of what runs, and what the filter
// says of the windows that are not the contig's.
void Scout::fetchForWalk(const Scouting& read, std::string_view bases) const {
  const std::size_t windows = lastWindow(bases) + 1;
  if (!read.hasRun) {
    fetchStrides(read.packed, 0, windows);
    return;
  }
  const bool isReversed = read.run.isReversed;
  const auto kmer = static_cast<std::size_t>(kmer_);
  bool isFirst = true;
  read.run.forEachStretch(bases.size(), kmer, [&](std::size_t from, std::size_t) {
    if (!std::exchange(isFirst, false)) return;
    const uint64_t key = read.packed.at(isReversed ? windows - 1 - from : from, kmer_);
    startProbe(index_, isReversed ? reversedKey(key, kmer_) : key);  // for what it fetches
  });
  read.run.forEachSpoiled(bases.size(), kmer, [&](std::size_t from, std::size_t to) {
    isReversed ? fetchStrides(read.packed, windows - to, windows - from)
               : fetchStrides(read.packed, from, to);
  });
}

// Lays what runs along its contig; it is no run where it differs too much.
void Scout::findDifferences(Scouting& read, const std::string& bases) const {
  read.hasRun = true;
  const std::string& along = read.run.isReversed ? turnedBases(read, bases) : bases;
  forEachDifference(contigOf(read.run.hit), along, read.run.hit.offset, [&](std::size_t at) {
    read.hasRun = read.hasRun && read.run.addDifference(at);
  });
}

// Has fetched what the filter says when no window of [from, to) is in the index.
void Scout::fetchStrides(const PackedBases& packed, std::size_t from, std::size_t to) const {
  to = std::min(to, from + kMostForeseen);
  if (from >= to) return;
  const Strides strides(from, to, sideIndex.filter().gramsOfKmer());
  for (std::size_t n = 0; n < strides.size(); ++n) fetchGram(packed, strides[n]);
}

}  // namespace velk
