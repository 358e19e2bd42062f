#include "run/measure.h"

#include "kmer/parallel.h"
#include "survey/pairGeometry.h"

namespace velk::run {
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
