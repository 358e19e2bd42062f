// Batches: what is put in comes out, and clearing leaves nothing behind.
#include "reads/readBatch.h"

#include "tests/reads/readsTest.h"

namespace velk::test {
namespace {

using reads::ReadBatch;

TEST(ReadBatch, SingleReads) {
  ReadBatch batch;
  batch.clear(3, 17, false);
  EXPECT_EQ(batch.entries(), 0u);
  batch.add({"a", "ACGT", "IIII"});
  batch.add({"bb", "", ""});
  batch.add({"c", "GG", ""});
  EXPECT_EQ(batch.entries(), 3u);
  EXPECT_EQ(batch.input(), 3u);
  EXPECT_FALSE(batch.arePairs());
  EXPECT_EQ(batch.recordOf(0), 17u);
  EXPECT_EQ(batch.recordOf(2), 19u);
  EXPECT_EQ(kept(batch.read(0, 0)), (Read{"a", "ACGT", "IIII"}));
  EXPECT_EQ(kept(batch.read(1, 0)), (Read{"bb", "", ""}));
  EXPECT_EQ(kept(batch.read(2, 0)), (Read{"c", "GG", ""}));
  EXPECT_EQ(batch.bytes(), 14u);
}

TEST(ReadBatch, Pairs) {
  ReadBatch batch;
  batch.clear(0, 0, true);
  batch.add({"a", "ACGT", "IIII"}, {"a", "CC", "!!"});
  batch.add({"b", "G", "#"}, {"b", "TTT", "III"});
  EXPECT_TRUE(batch.arePairs());
  EXPECT_EQ(batch.entries(), 2u);
  EXPECT_EQ(kept(batch.read(1, 0)), (Read{"b", "G", "#"}));
  EXPECT_EQ(kept(batch.read(0, 1)), (Read{"a", "CC", "!!"}));
  EXPECT_EQ(kept(batch.read(1, 1)), (Read{"b", "TTT", "III"}));
  EXPECT_EQ(batch.bytes(), 24u);
}

TEST(ReadBatch, CopiesOfBasesAreMadeAtEachCall) {
  ReadBatch batch;
  batch.clear(0, 0, true);
  batch.add({"a", "ACGT", "IIII"}, {"a", "CC", "!!"});
  batch.add({"b", "G", "#"}, {"b", "TTT", "III"});
  std::string* bases = batch.copiesOfBases(1);
  EXPECT_EQ(bases[0], "CC");
  EXPECT_EQ(bases[1], "TTT");
  bases[1] = "changed";
  EXPECT_EQ(batch.read(1, 1).bases, "TTT");
  EXPECT_EQ(batch.basesOf(1)[1], "TTT");
  EXPECT_EQ(batch.copiesOfBases(1)[1], "TTT");
  EXPECT_EQ(batch.basesOf(0)[0], "ACGT");
}

TEST(ReadBatch, ClearedBatchIsAsNew) {
  ReadBatch batch;
  batch.clear(0, 0, true);
  batch.add({"a", "ACGT", "IIII"}, {"a", "CC", "!!"});
  batch.add({"b", "G", "#"}, {"b", "TTT", "III"});
  batch.copiesOfBases(0);
  batch.clear(1, 5, false);
  EXPECT_EQ(batch.entries(), 0u);
  EXPECT_EQ(batch.bytes(), 0u);
  batch.add({"c", "T", "I"});
  EXPECT_EQ(batch.input(), 1u);
  EXPECT_EQ(batch.recordOf(0), 5u);
  EXPECT_EQ(kept(batch.read(0, 0)), (Read{"c", "T", "I"}));
  EXPECT_EQ(batch.basesOf(0)[0], "T");
  EXPECT_EQ(batch.copiesOfBases(0)[0], "T");
}

}  // namespace
}  // namespace velk::test
