#include "run/inputs.h"

#include <algorithm>

#include "kmer/machine.h"
#include "survey/insertSize.h"

namespace velk::run {
namespace {

constexpr std::size_t kSampleEntries = 20000;
constexpr std::size_t kSampleBytes = 32 << 20;

std::size_t longestOf(const std::vector<reads::KeptRead>& reads) {
  std::size_t longest = 0;
  for (const reads::KeptRead& read : reads) longest = std::max(longest, read.bases.size());
  return longest;
}

// Calls take(library, number of the input, files) for all inputs in their order.
template <class Take>
void forEachInput(const std::vector<Library>& libraries, Take take) {
  uint32_t number = 0;
  for (uint32_t n = 0; n < libraries.size(); ++n) {
    for (const reads::InputFiles& files : libraries[n].inputs) take(n, number++, files);
  }
}

}  // namespace

Inputs::Inputs(const std::vector<Library>& libraries, int threads) {
  forEachInput(libraries, [&](uint32_t library, uint32_t number, const reads::InputFiles& files) {
    open(library, number, files, threads);
    try {
      inputs_.back().reads->takeSample(kSampleEntries, kSampleBytes);
    } catch (const reads::InputError& error) {
      inputs_.back().failure = error.what();
    }
  });
}

Inputs::Inputs(const std::vector<Library>& libraries, int threads, std::optional<uint32_t> only) {
  forEachInput(libraries, [&](uint32_t library, uint32_t number, const reads::InputFiles& files) {
    if (!only || *only == number) open(library, number, files, threads);
  });
}

void Inputs::open(uint32_t library, uint32_t number, const reads::InputFiles& files, int threads) {
  inputs_.push_back(
      {library, std::make_unique<reads::ReadInput>(files, number, reads::helpersFor(threads)), ""});
}

std::vector<SearchInput> Inputs::toSearch() const {
  std::vector<SearchInput> found;
  for (const OpenInput& input : inputs_) found.push_back({input.reads.get(), input.library});
  return found;
}

std::size_t Inputs::longestPairedRead() const {
  std::size_t longest = 0;
  for (const OpenInput& input : inputs_) {
    if (!input.reads->files().arePairs()) continue;
    longest =
        std::max({longest, longestOf(input.sample().first), longestOf(input.sample().second)});
  }
  return longest;
}

uint64_t Inputs::bytes() const {
  uint64_t sum = 0;
  for (const OpenInput& input : inputs_) {
    if (input.reads->bytes() == 0) return 0;
    sum += input.reads->bytes();
  }
  return sum;
}

namespace {

// What a library is taken for that can't be measured: its spread as share of the insert.
constexpr double kUsualSpread = 0.1;

void fix(Library& library, const survey::PairMeasure& measure) {
  library.isMeasured = measure.inward + measure.outward >= kLeastPairs;
  library.measuredInsert = measure.insert;
  library.measuredOrientation =
      measure.outward > measure.inward ? Orientation::kOutward : Orientation::kInward;
  const bool isOutwardKind = library.kind == LibraryKind::kMatePairs;
  const Orientation usual = isOutwardKind ? Orientation::kOutward : Orientation::kInward;
  library.orientation =
      library.givenOrientation.value_or(library.isMeasured ? library.measuredOrientation : usual);
  if (library.insert == 0) library.insert = library.measuredInsert;
  library.spread = library.isMeasured ? measure.spread : kUsualSpread * library.insert;
}

}  // namespace

void measureLibraries(std::vector<Library>& libraries, const Inputs& inputs,
                      const survey::BoundedIndex& index, survey::Scaffolds scaffolds,
                      const PlacementOptions& options, int threads) {
  forEachInParallel(static_cast<std::size_t>(threads), libraries.size(), [&](std::size_t n) {
    if (!libraries[n].arePairs()) return;
    survey::PairSurvey pairs(index, scaffolds, options);
    for (const OpenInput& input : inputs.all()) {
      if (input.library != n) continue;
      for (std::size_t i = 0; i < input.sample().second.size(); ++i) {
        pairs.add(input.sample().first[i].bases, input.sample().second[i].bases);
      }
    }
    fix(libraries[n], pairs.measure());
    for (std::size_t o = 0; o < libraries[n].inserts.size(); ++o) {
      libraries[n].inserts[o] = {};
      for (const uint64_t insert : pairs.inserts(static_cast<survey::Orientation>(o))) {
        libraries[n].inserts[o].add(insert);
      }
    }
  });
}

}  // namespace velk::run
