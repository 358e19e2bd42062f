// Which windows of a read are looked up: those that are left out are no hits, or lie where a hit
// has been refused.
#include "placement/fastEngine.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "contig/contig.h"
#include "kmer/Sequence.h"
#include "kmer/plainIndex.h"
#include "placement/alignment.h"
#include "placement/readPreparer.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/randomPlacement.h"

namespace velk::test {
namespace {

// How much is known of a read before its windows are walked over.
enum class Known { kPacked, kAligned, kFiltered };

constexpr std::array<Known, 3> kAllKnown = {Known::kPacked, Known::kAligned, Known::kFiltered};

class CandidateWindowsTest : public PlacementTest {
 protected:
  // Whether reads are walked over as candidates.
  static bool isPacked(const std::string& read) {
    return preparedOf(read, Known::kPacked).isPacked();
  }

  static PreparedRead preparedOf(const std::string& read, Known known) {
    PreparedRead prepared;
    prepared.bases = &read;
    ReadPreparer preparer(*seedIndex, Kmer);
    preparer.pack({&prepared, 1});
    if (known >= Known::kAligned) preparer.align({&prepared, 1});
    if (known >= Known::kFiltered) preparer.filter({&prepared, 1});
    return prepared;
  }

  // The windows of a strand that are asked for when all hits are refused, in order.
  std::vector<std::size_t> walk(const std::string& read, bool isReversed, Known known) {
    PreparedRead prepared = preparedOf(read, known);
    const std::string bases = isReversed ? plainReverseComplement(read) : read;
    ReadPreparer preparer(*seedIndex, Kmer);
    CandidateWindows windows(preparer, prepared, isReversed);
    EXPECT_EQ(windows.count(), bases.size() - static_cast<std::size_t>(Kmer) + 1);
    std::vector<std::size_t> asked;
    refused_.clear();
    for (std::size_t w = windows.first(); w < windows.count(); w = windows.after(w)) {
      asked.push_back(w);
      const auto place = windows.uniquePlaceOf(w);
      const auto expected = hitAt(bases, w);
      EXPECT_EQ(place.has_value(), expected.has_value()) << w;
      if (!place || !expected) continue;
      const Hit hit{place->scaffold, place->contig,
                    static_cast<int64_t>(place->start) - static_cast<int64_t>(w)};
      EXPECT_EQ(hit, *expected) << w;
      refused_[w] = hit;
      windows.noteRefused(hit);
    }
    return asked;
  }

  // The hit of a window by the plain index.
  static std::optional<Hit> hitAt(const std::string& bases, std::size_t window) {
    const PlainIndex index(*plainHash, scaffoldInfo, scaffoldSum);
    const std::string_view all = bases;
    const auto answer =
        index.placeOf(packedKmer(all.substr(window, static_cast<std::size_t>(Kmer))));
    if (!answer || !answer->isUnique) return std::nullopt;
    const KmerPlace& place = answer->first;
    return Hit{place.scaffold, place.contig,
               static_cast<int64_t>(place.start) - static_cast<int64_t>(window)};
  }

  // Checks every window that was not asked for.
  void compareWalk(const std::string& read, bool isReversed, Known known) {
    const std::vector<std::size_t> asked = walk(read, isReversed, known);
    const std::string bases = isReversed ? plainReverseComplement(read) : read;
    std::size_t next = 0;
    std::set<Hit> refused;
    for (std::size_t w = 0; w + static_cast<std::size_t>(Kmer) <= bases.size(); ++w) {
      if (next < asked.size() && asked[next] == w) {
        ++next;
        ++met_["asked"];
        if (refused_.contains(w)) refused.insert(refused_.at(w));
        continue;
      }
      const auto hit = hitAt(bases, w);
      ++met_[hit ? "left out: at a refused hit" : "left out: no hit"];
      ASSERT_TRUE(!hit || refused.contains(*hit)) << "window " << w << " of " << bases;
    }
    ASSERT_EQ(next, asked.size());
  }

  std::map<std::size_t, Hit> refused_;  // of the last walk, by the window
  std::map<std::string, int> met_;
};

TEST_F(CandidateWindowsTest, WindowsLeftOutAreNoHitsOrRefused) {
  for (const Hard input : kHardInputs) {
    for (const int kmer : kHardKmers) {
      const RandomPlacement hard = hardPlacement(input, kmer, 11);
      makeParameters(hard.settings);
      assemble(hard.assembly);
      for (const std::string& read : hard.reads) {
        if (read.size() < static_cast<std::size_t>(kmer) || !isPacked(read)) continue;
        for (const Known known : kAllKnown) {
          compareWalk(read, false, known);
          compareWalk(read, true, known);
          if (HasFailure()) return;
        }
      }
    }
  }
  EXPECT_GE(met_["asked"], 100000);
  EXPECT_GE(met_["left out: at a refused hit"], 50000);
  EXPECT_GE(met_["left out: no hit"], 50000);
}

// ---- one skip each ------------------------------------------------------------------------------

class OneSkip : public CandidateWindowsTest {
 protected:
  using Windows = std::vector<std::size_t>;

  OneSkip() { assemble({{{x}}}); }

  const std::string x = randomBases(300, 81);
  const std::string onX = readAt(x, 50, 100);
};

TEST_F(OneSkip, OneWindowOfADiagonal) {
  for (const Known known : kAllKnown) {
    EXPECT_EQ(walk(onX, false, known), Windows{0});
    EXPECT_EQ(walk(plainReverseComplement(onX), true, known), Windows{0});
  }
}

TEST_F(OneSkip, BothSidesOfAWrongBase) {
  const std::string read = withMismatches(onX, {40});
  EXPECT_EQ(walk(read, false, Known::kFiltered), Windows{0});
  EXPECT_EQ(walk(withMismatches(onX, {10}), false, Known::kFiltered), Windows{11});
}

TEST_F(OneSkip, NoneOfAStrayRead) {
  const std::string stray = randomBases(100, 85);
  for (const Known known : kAllKnown) {
    EXPECT_EQ(walk(stray, false, known), Windows{});
    EXPECT_EQ(walk(stray, true, known), Windows{});
  }
}

TEST_F(OneSkip, NoneOfTheOtherStrand) {
  EXPECT_EQ(walk(onX, true, Known::kFiltered), Windows{});
  EXPECT_EQ(walk(plainReverseComplement(onX), false, Known::kFiltered), Windows{});
}

// A read with another letter is not packed: all its windows are walked over.
TEST_F(OneSkip, NoneOfAReadWithAnotherLetter) {
  EXPECT_TRUE(isPacked(onX));
  EXPECT_FALSE(isPacked(onX.substr(1) + "R"));
}

// WindowSet against a row of flags.

using Flags = std::vector<bool>;

std::size_t firstWith(const Flags& flags, std::size_t from, bool value) {
  for (; from < flags.size(); ++from) {
    if (flags[from] == value) return from;
  }
  return flags.size();
}

std::size_t lastMissing(const Flags& flags, std::size_t end) {
  for (; end > 0; --end) {
    if (!flags[end - 1]) return end - 1;
  }
  return WindowSet::kNone;
}

void compare(const WindowSet& set, const Flags& flags) {
  ASSERT_EQ(set.size(), flags.size());
  for (std::size_t window = 0; window < flags.size(); ++window) {
    ASSERT_EQ(set.contains(window), flags[window]) << window;
    ASSERT_EQ(set.firstMissing(window), firstWith(flags, window, false)) << window;
    ASSERT_EQ(set.firstContained(window), firstWith(flags, window, true)) << window;
    ASSERT_EQ(set.lastMissing(window), lastMissing(flags, window)) << window;
  }
  EXPECT_EQ(set.lastMissing(flags.size()), lastMissing(flags, flags.size()));
  EXPECT_EQ(set.firstMissing(flags.size()), flags.size());
  EXPECT_EQ(set.firstContained(flags.size()), flags.size());
}

class WindowSets : public testing::TestWithParam<std::size_t> {};

TEST_P(WindowSets, EmptyAfterReset) {
  WindowSet set;
  set.reset(300);
  set.insertRange(0, 300);
  set.reset(GetParam());
  compare(set, Flags(GetParam()));
}

TEST_P(WindowSets, EveryRange) {
  const std::size_t size = GetParam();
  const std::size_t step = size > 70 ? 7 : 1;
  for (std::size_t from = 0; from <= size; from += step) {
    for (std::size_t to = 0; to <= size; to += step) {
      WindowSet set;
      set.reset(size);
      set.insertRange(from, to);
      Flags flags(size);
      for (std::size_t window = from; window < to; ++window) flags[window] = true;
      compare(set, flags);
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(WindowSets, RandomChanges) {
  const std::size_t size = GetParam();
  if (size == 0) return;
  std::mt19937 random(static_cast<unsigned>(size));
  WindowSet set;
  WindowSet other;
  set.reset(size);
  Flags flags(size);
  for (int turn = 0; turn < 200 && !HasFatalFailure(); ++turn) {
    const std::size_t window = random() % size;
    switch (random() % 4) {
      case 0:
        set.insertMask(window, 1);
        flags[window] = true;
        break;
      case 1:
        set.erase(window);
        flags[window] = false;
        break;
      case 2: {
        other.reset(size);
        other.insertMask(window, 1);
        other.insertMask(size - 1, 1);
        set.insertAll(other);
        flags[window] = flags[size - 1] = true;
        break;
      }
      default:
        other.reset(size);
        other.insertRange(window, size);
        set.insertMarked(other,
                         [](std::size_t from) { return from == 0 ? 0x5555555555555555U : 6U; });
        for (std::size_t w = window; w < size; ++w) {
          if (w < 64 ? w % 2 == 0 : w % 64 == 1 || w % 64 == 2) flags[w] = true;
        }
    }
    compare(set, flags);
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, WindowSets,
                         testing::Values(0, 1, 2, 63, 64, 65, 127, 128, 129, 200));

}  // namespace

}  // namespace velk::test
