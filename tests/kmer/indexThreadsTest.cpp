// Hash set, marks and messages are the same to the byte whatever the number of threads that fill
// the index; for ThreadSanitizer above all.
#include <pthread.h>

#include <cstring>
#include <string>
#include <vector>

#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "tests/kmer/hashSetFixture.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

// What an index holds: the arrays of its hash set, and the marks of the side index; and what its
// making said.
struct IndexContent {
  std::string messages;
  std::vector<uint64_t> numbers;
  std::string slots;
  std::string filled;
  std::vector<bool> marks;

  bool operator==(const IndexContent&) const = default;
};

std::string bytesOf(const void* start, std::size_t count) {
  std::string bytes(count, '\0');
  std::memcpy(bytes.data(), start, count);
  return bytes;
}

class IndexThreads : public AssemblyTest {
 protected:
  ~IndexThreads() override { sideIndex.release(); }

  // The k-mers of the assembly that has been loaded.
  static uint64_t kmers() {
    uint64_t sum = 0;
    forEachIndexed(
        scaffoldInfo, scaffoldSum,
        [&](uint32_t, uint32_t, const ContigInfo&, uint32_t windows) { sum += windows; });
    return sum;
  }

  // Indexes the assembly anew, in a set of so many slots.
  static IndexContent indexedBy(int threads, uint64_t slots, float loadFactor) {
    thread_num = threads;
    const OwnSet set = makeSet(slots, loadFactor);
    const std::string messages =
        messagesOf([&] { FetchKmers1(set.get(), scaffoldInfo, scaffoldSum); });
    EXPECT_EQ(brokenInvariant(*set), "");
    IndexContent content{messages,
                         {set->size, set->count, set->max, set->count_conflict, set->zeroSlot},
                         bytesOf(set->array, (set->size + 1) * sizeof(Entity)),
                         bytesOf(set->nul_flag, set->size / 8 + 1),
                         {}};
    forEachIndexed(scaffoldInfo, scaffoldSum,
                   [&](uint32_t i, uint32_t j, const ContigInfo&, uint32_t windows) {
                     for (uint32_t at = 0; sideIndex.isMade() && at < windows; ++at) {
                       content.marks.push_back(sideIndex.isRepeated(i, j, at));
                       content.marks.push_back(sideIndex.mayHoldReverse(i, j, at, at + 1));
                     }
                   });
    return content;
  }

  // Compares sets that just hold the k-mers, and one that has to grow, filled by 1 to 20 threads.
  static void expectSameIndex() {
    for (const float loadFactor : {0.3F, 0.75F, 0.98F}) {
      uint64_t slots = kmers();
      while (mostEntities(slots, loadFactor) < kmers()) ++slots;
      for (const uint64_t size : {slots, slots / 3}) {
        SCOPED_TRACE(::testing::Message() << size << " slots, load factor " << loadFactor);
        const IndexContent alone = indexedBy(1, size, loadFactor);
        for (const int threads : {2, 3, 4, 20}) {
          EXPECT_TRUE(indexedBy(threads, size, loadFactor) == alone) << threads << " threads";
        }
      }
    }
  }
};

// Contigs with repeats on both strands, other letters, and runs of A from the first place on.
std::vector<TestScaffold> assemblyWithRepeats(unsigned seed) {
  const std::string one = randomBases(2000, seed);
  const std::string two = randomBases(1500, seed + 100);
  std::string odd = randomBases(300, seed + 200);
  odd[50] = 'N';
  odd[90] = 'r';
  return {
      {{std::string(100, 'A') + one + two}, {reverseComplement(one).substr(100, 900) + odd, 50}},
      {{two.substr(50, 700)}, {one.substr(0, 90), 20}, {randomBases(1200, seed + 300), 9}},
      {{reverseComplement(odd)}, {odd.substr(20, 150) + two, 5}}};
}

TEST_F(IndexThreads, AssemblyWithRepeats) {
  for (const int kmer : {5, 16, 23, 31, 40}) {
    Kmer = kmer;
    load(assemblyWithRepeats(static_cast<unsigned>(kmer)));
    SCOPED_TRACE(kmer);
    expectSameIndex();
    releaseAssembly();
  }
}

TEST_F(IndexThreads, OneKmerAllOver) {
  load({{{std::string(5000, 'A')}}});
  expectSameIndex();
}

// A repeated k-mer of A at the first place is a slot of zeros: it lies in any share, at any place.
TEST_F(IndexThreads, SlotOfZerosInSetsOfManySizes) {
  load({{{std::string(62, 'A') + randomBases(3000, 5)}}});
  for (uint64_t size = 4090; size < 4600; size += 10) {
    const IndexContent alone = indexedBy(1, size, 0.75F);
    EXPECT_TRUE(indexedBy(16, size, 0.75F) == alone) << size;
  }
}

// The calling thread does what other threads would have done.
TEST_F(IndexThreads, ThreadsThatCannotBeHad) {
  load(assemblyWithRepeats(1));
  const IndexContent alone = indexedBy(1, 40000, 0.75F);
  pthread_attr_t before;
  pthread_attr_t tooMuch;
  pthread_getattr_default_np(&before);
  pthread_attr_init(&tooMuch);
  pthread_attr_setstacksize(&tooMuch, std::size_t{1} << 46);
  pthread_setattr_default_np(&tooMuch);
  for (const int threads : {2, 3, 20}) {
    EXPECT_TRUE(indexedBy(threads, 40000, 0.75F) == alone) << threads;
  }
  pthread_setattr_default_np(&before);
}

}  // namespace
}  // namespace velk::test
