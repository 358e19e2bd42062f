// Placement, with its index and its walk, against the plain model. Input: placementInput.h.
#include <algorithm>
#include <string>
#include <vector>

#include "driver/velk.h"
#include "kmer/hashSet.h"
#include "placement/kmerWalk.h"
#include "streaming/readBuffer.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/placementInput.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/plainPlacement.h"

namespace velk::fuzz {
namespace {

using test::Outcome;
using test::PlainHit;
using test::PlainPlacement;
using test::TestRecord;

// The fixture of the placement tests, outside a test.
class Ground : public test::PlacementTest {
 public:
  void TestBody() override {}

  void compare(PlacementInput input) {
    prepare(input);
    PlainPlacement plain(input.assembly, input.settings);
    for (std::size_t k = 0; k < input.first.size(); ++k) {
      compareRoutines(plain, input.first[k], input.second[k]);
      compareRoutines(plain, test::plainReverseComplement(input.first[k]), input.second[k]);
    }
    compareBatches(plain, input);
  }

 private:
  void prepare(const PlacementInput& input) {
    setWorkers(input.workers);
    Kmer = input.settings.kmer;
    OverRatio = input.settings.overRatio;
    mapCut = input.settings.mapCut;
    readLen = input.settings.readLength;
    CONTIGLEN = input.settings.shortestContig;
    BIGGAPLEN = input.settings.bigGap;
    insertLength = input.settings.insert;
    assemble(input.assembly);
  }

  static std::vector<PlainHit> hitsOf(const std::string& read) {
    std::vector<PlainHit> hits;
    int64_t i = 0;
    KmerWalk(*kmerHash, Kmer).uniqueHits(read, i, [&](const Hit& hit) {
      hits.push_back(
          {i, static_cast<int64_t>(hit.scaffold), static_cast<int64_t>(hit.contig), hit.offset});
      return Walk::kGoOn;
    });
    return hits;
  }

  // The walk may leave out a hit at a place at which it has shown one, and no other.
  static void compareHits(const std::vector<PlainHit>& plain, const std::vector<PlainHit>& shown) {
    auto next = shown.begin();
    for (const PlainHit& hit : plain) {
      if (next != shown.end() && *next == hit) {
        ++next;
        continue;
      }
      const bool isShown = std::any_of(shown.begin(), next, [&](const PlainHit& earlier) {
        return earlier.scaffold == hit.scaffold && earlier.contig == hit.contig &&
               earlier.offset == hit.offset;
      });
      require(isShown, "the walk leaves out a hit");
    }
    require(next == shown.end(), "the walk shows a hit that is none");
  }

  template <class Model>
  static void compare(const Outcome& outcome, Model model, std::string_view what) {
    std::vector<TestRecord> records;
    require(model(records) == outcome.stop && records == outcome.records, what);
  }

  static void compareRoutines(PlainPlacement& plain, const std::string& read,
                              const std::string& mate) {
    if (read.size() < static_cast<std::size_t>(Kmer)) return;
    compareHits(plain.hitsOf(read), hitsOf(read));
    compare(
        single(read), [&](auto& records) { return plain.single(read, records); },
        "a single read is placed otherwise");
    compare(
        forward(read, mate), [&](auto& records) { return plain.forward(read, mate, records); },
        "a forward read is placed otherwise");
    compare(
        reverse(read, mate), [&](auto& records) { return plain.reverse(read, mate, records); },
        "a reverse read is placed otherwise");
  }

  void compareBatches(PlainPlacement& plain, PlacementInput& input) {
    const auto workers = static_cast<std::size_t>(input.workers);
    setBatch(input.reads);
    for (std::size_t t = 0; t < workers; ++t) {
      require(plain.scan(input.reads, t, workers) == scan(static_cast<int>(t)),
              "a batch of single reads gives other records");
    }
    require(input.reads == firstReads(), "a batch of single reads is changed");
    setBatch(input.first, input.second);
    for (std::size_t t = 0; t < workers; ++t) {
      require(plain.scan(input.first, input.second, t, workers) == scan(static_cast<int>(t)),
              "a batch of pairs gives other records");
    }
    require(input.first == firstReads() && input.second == secondReads(),
            "a batch of pairs is changed otherwise");
  }
};

}  // namespace
}  // namespace velk::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  using namespace velk::fuzz;
  static Ground ground;
  startAfresh();
  const Said said;
  ground.compare(placementInput(Input(data, size)));
  return 0;
}
