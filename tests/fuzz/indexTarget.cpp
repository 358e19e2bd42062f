// The seed index against a map of all k-mers: answers, absent keys, marks, and what seeds rule out.
// Input: placementInput.h; the workers are the threads, and the big gap chooses where places begin.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/seedIndex.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/placementInput.h"
#include "tests/kmer/packingModel.h"
#include "tests/placement/placementTest.h"

namespace velk::fuzz {
namespace {

using Map = std::unordered_map<uint64_t, KmerAnswer>;

// The index under test and the map, over the same contigs.
class Ground : public test::PlacementTest {
 public:
  void TestBody() override {}

  void compare(const PlacementInput& input) {
    makeParameters(input.settings);
    assemble(input.assembly);
    k_ = static_cast<std::size_t>(Kmer);
    fillMap(input.assembly);
    SeedIndex index;
    require(index.build(scaffoldInfo, scaffoldSum, Kmer, input.workers, placeBase(BIGGAPLEN),
                        uint64_t{1} << (readLen & 63)),
            "no index");
    require(index.distinctKeys() == map_.size(), "another number of distinct keys");
    compareAnswers(index);
    if (!index.hasText()) return;
    for (std::size_t n = 0; n < index.text().contigs().size(); ++n) compareMarks(index, n);
    for (const std::string& read : input.reads) compareRead(index, read);
  }

 private:
  // Most inputs have small places; others some around 2^32 or 2^34, or all beyond.
  static uint64_t placeBase(int gap) {
    const int shift = gap / 15 % 16 == 1   ? 32
                      : gap / 15 % 16 == 2 ? 34
                      : gap / 15 % 16 == 3 ? 38
                                           : 0;
    return shift == 0 ? 0 : (uint64_t{1} << shift) - 300;
  }

  void fillMap(const std::vector<test::TestScaffold>& assembly) {
    map_.clear();
    for (uint64_t s = 0; s < assembly.size(); ++s) {
      for (uint64_t c = 0; c < assembly[s].size(); ++c) {
        const std::string& letters = assembly[s][c].bases;
        if (letters.size() < static_cast<uint32_t>(CONTIGLEN)) continue;
        for (uint64_t start = 0; start + k_ <= letters.size(); ++start) {
          const auto [entry, isNew] =
              map_.try_emplace(keyOf(letters, start), KmerAnswer{{s, c, start}, true});
          if (!isNew) entry->second.isUnique = false;
        }
      }
    }
  }

  uint64_t keyOf(std::string_view letters, std::size_t start) const {
    return test::modelOfPacking(std::string(letters.substr(start, k_)));
  }

  void compareAnswer(const SeedIndex& index, uint64_t key) const {
    const auto answer = index.placeOf(key);
    const auto entry = map_.find(key);
    require(answer.has_value() == (entry != map_.end()), "a k-mer is lost, or made up");
    if (!answer) return;
    const KmerAnswer& expected = entry->second;
    require(answer->isUnique == expected.isUnique, "unique or not");
    require(answer->first.scaffold == expected.first.scaffold &&
                answer->first.contig == expected.first.contig &&
                answer->first.start == expected.first.start,
            "another first occurrence");
  }

  // All keys, and beside each one with another base, its reverse complement, and its inverse.
  void compareAnswers(const SeedIndex& index) const {
    const int bases = std::min(Kmer, DATA_LEN);
    unsigned turn = 0;
    for (const auto& [key, answer] : map_) {
      ++turn;
      compareAnswer(index, key);
      compareAnswer(index, ~key);
      if (bases == 0) continue;
      const uint64_t changed = key ^ uint64_t { 1 + turn % 3 }
                                         << LEN_TO_BITLEN * (turn % static_cast<unsigned>(bases));
      compareAnswer(index, changed);
      compareAnswer(index, reversedKey(key, bases));
      compareAnswer(index, reversedKey(changed, bases));
    }
  }

  void compareMarks(const SeedIndex& index, std::size_t number) const {
    const ContigText& text = index.text();
    const TextContig& contig = text.contigs()[number];
    const std::string_view letters = text.letters(number);
    const int length = text.windowLength();
    for (uint64_t p = contig.firstWindow; p < contig.endWindow(); ++p) {
      const std::string_view window =
          letters.substr(p - contig.start, static_cast<std::size_t>(length));
      const bool isWindow = window.find_first_not_of("ACGTacgt") == std::string_view::npos;
      require(text.isWindow(p) == isWindow, "a window with other letters, or none");
      if (!isWindow) {
        require(text.isMarkedRepeated(p), "a window with other letters is not marked");
        continue;
      }
      const uint64_t key = text.basesAt(p, length);
      require(key == test::modelOfPacking(std::string(window)), "another text");
      require(text.isMarkedRepeated(p) != map_.at(key).isUnique, "another mark of repeats");
      const uint64_t reversed = reversedKey(key, length);
      require(
          (text.reversedMarksFrom(p) & 1U) ==
              (isKnown(reversed) || haveOtherCanonicals(index.seeds(), key, reversed) ? 1U : 0U),
          "another mark of reverse complements");
    }
  }

  // The windows of a read, by their keys, and what its seeds say of them.
  void compareRead(const SeedIndex& index, const std::string& read) const {
    const auto length = static_cast<std::size_t>(index.text().windowLength());
    PackedBases bases;
    if (read.size() < length || !bases.fill(read)) return;
    const std::size_t windows = read.size() - length + 1;
    std::size_t next = 0;
    index.seeds().forEachRun(bases, 0, windows, [&](const SeedRun& run) {
      require(run.first == next && run.last >= run.first && run.last < windows,
              "a gap in the runs");
      next = run.last + 1;
      compareSeed(index, bases, run);
    });
    require(next == windows, "windows without a seed");
    for (std::size_t w = 0; w < windows; ++w) {
      const uint64_t key = bases.at(w, index.text().windowLength());
      compareAnswer(index, key);
      compareAnswer(index, reversedKey(key, index.text().windowLength()));
    }
  }

  bool isKnown(uint64_t key) const { return map_.contains(key); }

  // Whether the seeds of a window and of its reverse complement have different canonical m-mers, as
  // ties between long seeds may have it. The reverse complement then counts as indexed.
  static bool haveOtherCanonicals(const Seeds& seeds, uint64_t key, uint64_t reversed) {
    return seeds.length() > kLongestInjective &&
           seeds.seedOf(key).hash != seeds.seedOf(reversed).hash;
  }

  void compareSeed(const SeedIndex& index, const PackedBases& bases, const SeedRun& run) const {
    const int length = index.text().windowLength();
    const auto isAbsent = [&](uint64_t window) {
      const uint64_t key = bases.at(window, length);
      return !isKnown(key) && !isKnown(reversedKey(key, length));
    };
    if (!index.prefetchText(run)) {
      for (uint64_t w = run.first; w <= run.last; ++w)
        require(isAbsent(w), "a seed rules out a hit");
      return;
    }
    const auto verdict = index.verdictOn(run, bases);
    require((verdict.absent & ~run.windowMask()) == 0, "a verdict on a window of another seed");
    for (uint64_t w = run.first; w <= run.last; ++w) {
      if ((verdict.absent >> (w - run.first) & 1U) == 0) continue;
      require(isAbsent(w), "a seed's places rule out a hit");
    }
    if (!verdict.diagonal) return;
    const uint64_t key = bases.at(verdict.window, length);
    const uint64_t position = verdict.diagonal->positionOf(verdict.window);
    require(index.text().isWindow(position) &&
                index.text().basesAt(position, length) ==
                    (verdict.diagonal->isReversed ? reversedKey(key, length) : key),
            "a seed gives a place where the window does not lie");
  }

  std::size_t k_ = 0;
  Map map_;
};

}  // namespace

void tryInput(Input input) {
  static Ground ground;
  Said said;
  ground.compare(placementInput(input));
}

}  // namespace velk::fuzz
