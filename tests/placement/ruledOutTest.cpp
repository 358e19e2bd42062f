// K-mers over a wrong base, and those of reads from elsewhere, are ruled out without a look-up: the
// walks of these tests may not read the table.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "kmer/fetchKmers.h"
#include "placement/kmerWalk.h"
#include "placement/scout.h"
#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

// The index of the run, with a table that cannot be read.
class Unreadable {
 public:
  Unreadable() : index_(*kmerHash), bytes_((index_.size + 1) * sizeof(Entity)) {
    void* const memory = mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    index_.array = static_cast<Entity*>(memory);
  }
  ~Unreadable() { munmap(index_.array, bytes_); }
  Unreadable(const Unreadable&) = delete;
  Unreadable& operator=(const Unreadable&) = delete;

  const HashSet& index() const { return index_; }

 private:
  HashSet index_;
  std::size_t bytes_;
};

class RuledOut : public PlacementTest, public testing::WithParamInterface<int> {
 protected:
  RuledOut() {
    Kmer = GetParam();
    assemble({{{x}, {y, 400}}});
    indexAsOneOf(kRoomy);
  }
  ~RuledOut() override { sideIndex.release(); }

  void scout(const std::string& read) {
    Scout scout(*kmerHash, Kmer);
    scout.look(known_, read);
    scout.ask(known_, read);
    scout.find(known_, read);
    scout.findAgain(known_, read);
    scout.compare(known_, read);
    turnedBases(known_, read);
  }

  // Walks the read that was scouted, or its reverse complement; ends with 0 when it comes to the
  // end.
  [[noreturn]] void walk(const std::string& read, bool isTurned) {
    const Unreadable unreadable;
    const std::string& bases = isTurned ? known_.turned : read;
    KmerWalk::takeStrands({Strand{&bases, &known_, isTurned}});
    int64_t i = 0;
    KmerWalk(unreadable.index(), Kmer).uniqueHits(bases, i, [](const Hit&) { return Walk::kStop; });
    std::_Exit(i == static_cast<int64_t>(bases.size()) - Kmer + 1 ? 0 : 1);
  }

  void expectNoLookUp(const std::string& read, bool isTurned) {
    EXPECT_EXIT(walk(read, isTurned), testing::ExitedWithCode(0), "") << read << isTurned;
  }

  // So many k-mers that the filter of these contigs holds hardly any other gram.
  static constexpr uint64_t kRoomy = 1 << 20;

  const std::size_t kmer_ = static_cast<std::size_t>(GetParam());
  const std::string x = randomBases(300, 71);
  const std::string y = randomBases(300, 72);
  Scouting known_;
};

TEST_P(RuledOut, AReadFromElsewhere) {
  for (const std::size_t length : {kmer_, kmer_ + 5, std::size_t{100}, std::size_t{700}}) {
    const std::string read = randomBases(length, 73);
    scout(read);
    ASSERT_FALSE(known_.hasRun);
    expectNoLookUp(read, false);
    expectNoLookUp(read, true);
  }
}

TEST_P(RuledOut, TheOtherStrandOfAReadWithWrongBases) {
  std::vector<std::vector<std::size_t>> wrong = {{40, 41}, {35, 60}, {20, 75}};
  for (std::size_t at = 0; at < 100; at += 11) wrong.push_back({at});
  for (const auto& places : wrong) {
    const std::string read = withMismatches(readAt(x, 120, 100), places);
    scout(read);
    ASSERT_TRUE(known_.hasRun);
    expectNoLookUp(read, true);
    scout(reverseComplement(read));
    ASSERT_TRUE(known_.hasRun);
    expectNoLookUp(reverseComplement(read), false);
  }
}

// Too short to have a k-mer without the wrong base, and with fewer k-mers than one has grams.
TEST_P(RuledOut, AShortReadWithAWrongBase) {
  for (std::size_t wrong = 5; wrong < kmer_; ++wrong) {
    const std::string read = withMismatches(readAt(x, 120, Kmer + 5), {wrong});
    scout(read);
    ASSERT_FALSE(known_.hasRun);
    expectNoLookUp(read, false);
    expectNoLookUp(read, true);
  }
}

INSTANTIATE_TEST_SUITE_P(KmerLengths, RuledOut, testing::Values(16, 19, 24, 31, 32));

}  // namespace
}  // namespace velk::test
