// Inputs: mates put together, the sample and what follows it, what was read of the files, and
// batches.
#include "reads/readInput.h"

#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <future>
#include <thread>

#include "reads/readBatch.h"
#include "tests/reads/plainRecords.h"
#include "tests/reads/readsTest.h"

namespace velk::test {
namespace {

using reads::Helpers;
using reads::InputFiles;
using reads::ReadBatch;

class ReadInput : public ReadsTest {
 protected:
  ReadInput() {
    for (std::size_t i = 0; i < 10; ++i) {
      const std::string name = "r" + std::to_string(i);
      firsts_.push_back({name, randomBases(20 + i, 1), std::string(20 + i, 'F')});
      seconds_.push_back({name, randomBases(30 - i, 2), std::string(30 - i, '#')});
      both_.push_back(firsts_.back());
      both_.push_back(seconds_.back());
    }
    write("R1", written(firsts_, {}));
    write("R2", written(seconds_, {}));
    write("both", written(both_, {}));
  }

  // The names of a pair of files with one record each, once read; or the error.
  Records pairNamed(const std::string& first, const std::string& second) const {
    write("A", "@" + first + "\nAC\n+\nII\n");
    write("B", "@" + second + "\nGT\n+\nII\n");
    return readsOf({"A", "B"});
  }

  std::vector<Read> firsts_;
  std::vector<Read> seconds_;
  std::vector<Read> both_;
};

std::vector<Read> keptOf(const std::vector<reads::KeptRead>& reads) {
  std::vector<Read> all;
  for (const reads::KeptRead& read : reads) all.push_back(kept(read.view()));
  return all;
}

std::vector<Read> firstOf(std::vector<Read> reads, std::size_t count) {
  reads.resize(count);
  return reads;
}

TEST_F(ReadInput, SingleReads) {
  EXPECT_EQ(readsOf({"R1"}), (Records{firsts_, ""}));
}

TEST_F(ReadInput, MatesInTwoFilesOrInOne) {
  for (const std::size_t most : {1u, 3u, 10u, 100u}) {
    EXPECT_EQ(readsOf({"R1", "R2"}, most), (Records{both_, ""}));
    EXPECT_EQ(readsOf({"both", "", true}, most), (Records{both_, ""}));
  }
}

TEST_F(ReadInput, MatesPackedDifferently) {
  write("R2", packed(written(seconds_, {.width = 7}), reads::Packing::kXz));
  EXPECT_EQ(readsOf({"R1", "R2"}), (Records{both_, ""}));
}

TEST_F(ReadInput, BatchesSayWhereTheyBelong) {
  reads::ReadInput input({"R1", "R2"}, 5, Helpers::kNone);
  ReadBatch batch;
  ASSERT_TRUE(input.fill(batch, 4));
  EXPECT_EQ(input.records(), 4u);
  ASSERT_TRUE(input.fill(batch, 4));
  EXPECT_EQ(batch.input(), 5u);
  EXPECT_EQ(batch.entries(), 4u);
  EXPECT_EQ(batch.recordOf(1), 5u);
  EXPECT_EQ(kept(batch.read(1, 1)), seconds_[5]);
  ASSERT_TRUE(input.fill(batch, 4));
  EXPECT_EQ(batch.entries(), 2u);
  EXPECT_FALSE(input.fill(batch, 4));
  EXPECT_EQ(batch.entries(), 0u);
  EXPECT_FALSE(input.fill(batch, 4));
  EXPECT_EQ(input.records(), 10u);
}

TEST_F(ReadInput, SampleComesAgain) {
  for (const std::size_t size : {0u, 1u, 4u, 10u, 11u}) {
    for (const InputFiles& files :
         {InputFiles{"R1", "R2"}, InputFiles{"both", "", true}, InputFiles{"R1"}}) {
      reads::ReadInput input(files, 0, Helpers::kNone);
      const reads::Sample& sample = input.takeSample(size, 1 << 20);
      const std::size_t got = std::min<std::size_t>(size, 10);
      EXPECT_EQ(keptOf(sample.first), firstOf(firsts_, got));
      EXPECT_EQ(sample.isAll, size == 11);
      if (files.arePairs()) {
        EXPECT_EQ(keptOf(sample.second), firstOf(seconds_, got));
      } else {
        EXPECT_TRUE(sample.second.empty());
      }
      EXPECT_EQ(input.records(), 0u);
      ReadBatch batch;
      for (std::size_t i = 0; i < 10; ++i) {
        ASSERT_TRUE(input.fill(batch, 1));
        EXPECT_EQ(batch.recordOf(0), i);
        EXPECT_EQ(kept(batch.read(0, 0)), firsts_[i]);
        if (!files.arePairs()) continue;
        EXPECT_EQ(kept(batch.read(0, 1)), seconds_[i]);
      }
      EXPECT_FALSE(input.fill(batch, 1));
    }
  }
}

TEST_F(ReadInput, SampleIsBoundedByItsCharacters) {
  reads::ReadInput input({"R1", "R2"}, 0, Helpers::kNone);
  EXPECT_EQ(input.takeSample(100, 105).first.size(), 2u);  // of 104 characters each
}

TEST_F(ReadInput, FailureWithinTheSampleComesAgainBehindWhatIsBeforeIt) {
  write("R2", written({seconds_[0], seconds_[1], seconds_[3]}, {}));
  const std::string message = "R1, record 3: its name is \"r2\", and the one in R2 is named \"r3\"";
  reads::ReadInput input({"R1", "R2"}, 0, Helpers::kNone);
  try {
    input.takeSample(100, 1 << 20);
    ADD_FAILURE() << "no error";
  } catch (const reads::InputError& error) {
    EXPECT_EQ(error.what(), message);
  }
  ReadBatch batch;
  ASSERT_TRUE(input.fill(batch, 2));
  EXPECT_EQ(kept(batch.read(1, 1)), seconds_[1]);
  for (int i = 0; i < 2; ++i) {
    try {
      input.fill(batch, 2);
      ADD_FAILURE() << "no error";
    } catch (const reads::InputError& error) {
      EXPECT_EQ(error.what(), message);
    }
  }
}

TEST_F(ReadInput, NamesOfMates) {
  const auto named = [](const std::string& name) {
    return Records{{{name, "AC", "II"}, {name, "GT", "II"}}, ""};
  };
  EXPECT_EQ(pairNamed("a", "a"), named("a"));
  EXPECT_EQ(pairNamed("a/1", "a/2"), named("a"));
  EXPECT_EQ(pairNamed("a.1", "a.2"), named("a"));
  EXPECT_EQ(pairNamed("a.1.1 x", "a.1.2 y"), named("a.1"));
  EXPECT_EQ(pairNamed("a 1:N:0:TT", "a 2:N:0:TT"), named("a"));
  EXPECT_EQ(pairNamed("a/1", "a"), named("a"));
  EXPECT_EQ(pairNamed("S.1", "S.1"), named("S.1"));  // numbers of reads, not of mates
  EXPECT_EQ(pairNamed("S.2", "S.2"), named("S.2"));
}

TEST_F(ReadInput, NamesThatAreNoMates) {
  for (const auto& [first, second] : {std::pair{"a", "b"},
                                      {"a/1", "b/2"},
                                      {"a/1", "a/3"},
                                      {"a_1", "a_2"},
                                      {"a1", "a2"},
                                      {"/1", "/2"},
                                      {"a", "aa"}}) {
    EXPECT_EQ(pairNamed(first, second),
              (Records{{},
                       std::string("A, record 1: its name is \"") + first +
                           "\", and the one in B is named \"" + second + "\""}));
  }
}

TEST_F(ReadInput, SecondMatesThatComeFirst) {
  for (const auto& [first, second] : {std::pair{"a/2", "a/1"}, {"b.2", "b.1"}}) {
    EXPECT_EQ(pairNamed(first, second), (Records{{},
                                                 std::string("A, record 1: its name is \"") +
                                                     first + "\", and the one in B is named \"" +
                                                     second + "\"; the second mate comes first"}));
  }
}

TEST_F(ReadInput, NamesOfSingleReadsStayWhole) {
  write("A", ">a/1\nAC\n>S.2\nGT\n");
  EXPECT_EQ(readsOf({"A"}), (Records{{{"a/1", "AC", ""}, {"S.2", "GT", ""}}, ""}));
}

TEST_F(ReadInput, WhatIsFixedInBothFiles) {
  write("A", "@a\nac\n+\nII\n@b\nAC\n+\nII\n");
  write("B", "@a\nGT\n+\nII\n@b\nG\nt\n+\nII\n");
  reads::ReadInput input({"A", "B"}, 0, Helpers::kNone);
  ReadBatch batch;
  ASSERT_TRUE(input.fill(batch, 10));
  EXPECT_EQ(input.fixes().lowerCase, 2u);
  EXPECT_EQ(input.fixes().wrapped, 1u);
  EXPECT_EQ(input.fixes().carriageReturns, 0u);
}

TEST_F(ReadInput, BytesOfItsFiles) {
  const auto size = [](const char* file) { return std::filesystem::file_size(file); };
  ReadBatch batch;
  reads::ReadInput pairs({"R1", "R2"}, 0, Helpers::kNone);
  EXPECT_EQ(pairs.bytes(), size("R1") + size("R2"));
  EXPECT_EQ(pairs.bytesRead(), 0u);
  while (pairs.fill(batch, 3)) {
  }
  EXPECT_EQ(pairs.bytesRead(), pairs.bytes());
  for (const reads::Packing packing : kPackings) {
    write("packed", packed(written(firsts_, {}), packing));
    reads::ReadInput single({"packed"}, 0, Helpers::kInflateAhead);
    EXPECT_EQ(single.bytes(), size("packed"));
    while (single.fill(batch, 3)) {
    }
    EXPECT_EQ(single.bytesRead(), single.bytes());
  }
}

TEST_F(ReadInput, Pipes) {
  for (const reads::Packing packing : kPackings) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    std::thread writer([&] {
      const std::string text = packed(written(both_, {}), packing);
      std::ofstream pipe("pipe", std::ios::binary);
      for (std::size_t at = 0; at < text.size(); at += 100) {
        pipe << text.substr(at, 100) << std::flush;
      }
    });
    reads::ReadInput input({"pipe", "", true}, 0, Helpers::kInflateAhead);
    EXPECT_EQ(input.takeSample(2, 1 << 20).first.size(), 2u);
    ReadBatch batch;
    ASSERT_TRUE(input.fill(batch, 100));
    EXPECT_EQ(batch.entries(), 10u);
    EXPECT_EQ(kept(batch.read(9, 1)), seconds_[9]);
    EXPECT_EQ(input.bytes(), 0u);
    EXPECT_FALSE(input.fill(batch, 100));
    writer.join();
    std::filesystem::remove("pipe");
  }
}

// A pipe that does not go on, and an input that is left: its helper is not waited for. The first
// bytes are waited for, as they say what the file is.
TEST_F(ReadInput, PipeThatIsLeftBeforeItGoesOn) {
  std::vector<Read> reads;
  std::string sam;
  for (unsigned i = 0; i < 4000; ++i) {
    reads.push_back({"r", randomBases(100, i), std::string(100, 'F')});
    sam += "r\t4\t*\t0\t0\t*\t*\t0\t0\t" + reads.back().bases + "\t" + reads.back().quality + "\n";
  }
  const std::string text = written(reads, {});
  for (const std::string& file :
       {packed(text, reads::Packing::kGzip), packed(text, reads::Packing::kXz),
        bgzipped(text, 65280), bamOf(sam)}) {
    ASSERT_GT(file.size(), 80000u);
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    std::promise<void> isLeft;
    auto wasLeft = std::async(std::launch::async, [&, left = isLeft.get_future()] {
      std::ofstream pipe("pipe", std::ios::binary);
      pipe << file.substr(0, file.size() - 1) << std::flush;
      return left.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    });
    {
      reads::ReadInput input({"pipe", "", true}, 0, Helpers::kInflateByTwo);
      EXPECT_EQ(input.takeSample(10, 1 << 20).first.size(), 10u);
      std::this_thread::sleep_for(std::chrono::milliseconds(50));  // it comes to the pipe's end
    }
    isLeft.set_value();
    EXPECT_TRUE(wasLeft.get());
    std::filesystem::remove("pipe");
  }
}

// One program that writes the mates of a pair by turns to two pipes, and waits where one is full.
TEST_F(ReadInput, TwoPipesOfOneWriter) {
  ASSERT_EQ(mkfifo("P1", 0600), 0);
  ASSERT_EQ(mkfifo("P2", 0600), 0);
  constexpr std::size_t kPairs = 20000;
  std::thread writer([] {
    std::ofstream first("P1");
    std::ofstream second("P2");
    for (std::size_t i = 0; i < kPairs; ++i) {
      first << ">a\n" << std::string(100, 'A') << "\n" << std::flush;
      second << ">a\n" << std::string(50, 'C') << "\n" << std::flush;
    }
  });
  reads::ReadInput input({"P1", "P2"}, 0, Helpers::kNone);
  ReadBatch batch;
  while (input.fill(batch, 1000)) {
  }
  EXPECT_EQ(input.records(), kPairs);
  writer.join();
}

TEST_F(ReadInput, BatchesOfLongReadsAreBounded) {
  write("A",
        ">a\n" + std::string(5 << 20, 'A') + "\n>b\n" + std::string(5 << 20, 'A') + "\n>c\nA\n");
  reads::ReadInput input({"A"}, 0, Helpers::kNone);
  ReadBatch batch;
  ASSERT_TRUE(input.fill(batch, 100));
  EXPECT_EQ(batch.entries(), 2u);
  ASSERT_TRUE(input.fill(batch, 100));
  EXPECT_EQ(batch.entries(), 1u);
}

// Batches: what is put in comes out, and clearing leaves nothing behind.

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
