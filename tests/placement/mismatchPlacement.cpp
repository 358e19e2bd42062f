#include "tests/placement/mismatchPlacement.h"

#include <numeric>

#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

// Places of wrong bases in a read of 150: at its ends, side by side, a k-mer apart, and many.
std::vector<std::vector<std::size_t>> wrongPlaces() {
  std::vector<std::vector<std::size_t>> places = {{},          {5},      {5, 90},   {31, 40, 90},
                                                  {2, 3, 148}, {60, 95}, {62, 115}, {40, 41},
                                                  {35, 60},    {20, 75}, {50}};
  for (std::size_t at = 0; at < 150; at += 11) places.push_back({at});
  for (std::size_t count = 10; count < 20; ++count) {
    places.emplace_back(count);
    std::iota(places.back().begin(), places.back().end(), 40);
  }
  return places;
}

}  // namespace

RandomPlacement mismatchPlacement(int kmer) {
  const auto length = static_cast<std::size_t>(kmer);
  const std::string x = randomBases(300, 71);
  const std::string y = randomBases(300, 72);
  RandomPlacement made{};
  made.assembly = {{{x}, {y, 400}}};
  made.settings.kmer = kmer;
  made.settings.insert = 500;
  made.workers = 1;
  for (const auto& wrong : wrongPlaces()) {
    for (const std::string* contig : {&x, &y}) {
      for (const int64_t offset : {-60, 20, 120, 220}) {
        made.reads.push_back(withMismatches(readAt(*contig, offset, 150), wrong));
      }
    }
  }
  // Too short to have a k-mer without the wrong base.
  for (std::size_t wrong = 0; wrong < length; ++wrong) {
    made.reads.push_back(withMismatches(readAt(x, 120, kmer + 5), {wrong}));
  }
  for (const std::size_t bases : {length, length + 5, std::size_t{100}, std::size_t{700}}) {
    made.reads.push_back(randomBases(bases, 73));
  }
  made.reads.push_back(readAt(y, -60, 420));
  const std::size_t forward = made.reads.size();
  for (std::size_t r = 0; r < forward; ++r) {
    made.reads.push_back(reverseComplement(made.reads[r]));
  }
  made.first = made.reads;
  for (std::size_t r = 0; r < made.reads.size(); ++r) {
    made.second.push_back(made.reads[(r * 7 + 3) % made.reads.size()]);
  }
  return made;
}

}  // namespace velk::test
