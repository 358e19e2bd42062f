// BAM: what is left out, reversed back and put in order, and what is refused; read in place and
// ahead.
#include <pthread.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <thread>

#include "tests/reads/readsTest.h"

namespace {

bool failsThreads = false;

}  // namespace

// The linker option --wrap sends the calls of the program to this function, under this name.
extern "C" {
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument) {
  return failsThreads ? EAGAIN : __real_pthread_create(thread, attributes, routine, argument);
}
}

namespace velk::test {
namespace {

using reads::Helpers;

constexpr const char* kHeader = "@HD\tVN:1.6\tSO:unsorted\tGO:query\n@SQ\tSN:c\tLN:1000\n";
constexpr const char* kAdvice = "; `samtools collate` puts mates together";

// A line of SAM.
std::string line(const std::string& name, int flag, const std::string& bases,
                 const std::string& quality) {
  const bool isAligned = (flag & 4) == 0;
  return name + "\t" + std::to_string(flag) + (isAligned ? "\tc\t10\t60\t" : "\t*\t0\t0\t") +
         (isAligned ? std::to_string(bases.size()) + "M" : "*") + "\t*\t0\t0\t" + bases + "\t" +
         quality + "\n";
}

class BamRecords : public ReadsTest {
 protected:
  // The records of a BAM file with these lines, in place and ahead.
  Records of(const std::string& lines) const {
    return recordsOfBoth(write("reads.bam", bamOf(kHeader + lines)));
  }

  static Records recordsOfBoth(const std::string& file) {
    const Records records = recordsOf(file, Helpers::kNone);
    EXPECT_EQ(recordsOf(file, Helpers::kInflateAhead), records);
    return records;
  }

  // Those of it as an interleaved input.
  Records pairsOf(const std::string& lines) const {
    return readsOf({write("reads.bam", bamOf(kHeader + lines)), "", true});
  }
};

TEST_F(BamRecords, UnalignedReads) {
  EXPECT_EQ(of(line("a", 4, "ACGTN", "!I~#F") + line("b", 4, "GRYKM", "*")),
            (Records{{{"a", "ACGTN", "!I~#F"}, {"b", "GRYKM", ""}}, ""}));
}

TEST_F(BamRecords, FileWithoutRecords) {
  EXPECT_EQ(of(""), (Records{}));
}

TEST_F(BamRecords, ReversedReadsAreReversedBack) {
  EXPECT_EQ(of(line("a", 16, "ACGTNRYKMBDHVSW", "ABCDEFGHIJKLMNO")),
            (Records{{{"a", "WSBDHVKMRYNACGT", "ONMLKJIHGFEDCBA"}}, ""}));
  EXPECT_EQ(of(line("a", 16, "AAC", "*")), (Records{{{"a", "GTT", ""}}, ""}));
}

TEST_F(BamRecords, SecondaryAndSupplementaryRecordsAreLeftOut) {
  EXPECT_EQ(of(line("a", 256, "AC", "II") + line("a", 0, "ACGT", "IIII") +
               line("a", 2048, "AC", "II") + line("a", 2064, "AC", "II")),
            (Records{{{"a", "ACGT", "IIII"}}, ""}));
}

TEST_F(BamRecords, DuplicatesAndReadsThatFailedChecksAreReads) {
  EXPECT_EQ(of(line("a", 4 | 512, "AC", "II") + line("b", 1024, "GT", "II")),
            (Records{{{"a", "AC", "II"}, {"b", "GT", "II"}}, ""}));
}

TEST_F(BamRecords, FirstMatesComeFirst) {
  const std::string first = line("a", 77, "AC", "II");
  const std::string second = line("a", 141, "GT", "##");
  const std::string between = line("a", 2048 | 77, "TT", "II");
  const std::vector<Read> pair{{"a", "AC", "II"}, {"a", "GT", "##"}};
  for (const std::string& lines :
       {first + second, second + first, second + between + first, between + second + first}) {
    EXPECT_EQ(of(lines), (Records{pair, ""}));
    EXPECT_EQ(pairsOf(lines), (Records{pair, ""}));
  }
}

TEST_F(BamRecords, PairsInEitherOrderOneBehindTheOther) {
  std::string lines;
  std::vector<Read> pairs;
  for (int i = 0; i < 8; ++i) {
    const std::string name = "n" + std::to_string(i);
    const std::string first = line(name, 77, "AC", "II");
    const std::string second = line(name, 141, "GT", "##");
    lines += i % 3 == 0 ? first + second : second + first;
    pairs.push_back({name, "AC", "II"});
    pairs.push_back({name, "GT", "##"});
  }
  EXPECT_EQ(pairsOf(lines), (Records{pairs, ""}));
}

TEST_F(BamRecords, ReadsWithoutTheirMatesAreSingleReads) {
  const std::string lines = line("a", 141, "AC", "II") + line("b", 77, "GT", "II") +
                            line("c", 141, "CC", "II") + line("d", 141, "GG", "II");
  EXPECT_EQ(
      of(lines),
      (Records{{{"a", "AC", "II"}, {"b", "GT", "II"}, {"c", "CC", "II"}, {"d", "GG", "II"}}, ""}));
}

TEST_F(BamRecords, MatesApart) {
  EXPECT_EQ(pairsOf(line("a", 65, "AC", "II") + line("b", 65, "AC", "II") +
                    line("a", 129, "GT", "II") + line("b", 129, "GT", "II")),
            (Records{{},
                     std::string("reads.bam, record 1: its name is \"a\", and the next one is "
                                 "named \"b\"") +
                         kAdvice}));
  EXPECT_EQ(pairsOf(line("a", 77, "AC", "II")).error,
            "reads.bam, record 1: it has no mate: the file ends with it");
}

TEST_F(BamRecords, SortedByCoordinate) {
  write("reads.bam",
        bamOf("@HD\tVN:1.6\tSO:coordinate\n@SQ\tSN:c\tLN:1000\n" + line("a", 0, "AC", "II")));
  EXPECT_EQ(recordsOf("reads.bam"),
            (Records{{},
                     "reads.bam: is sorted by coordinate; `samtools collate` puts mates "
                     "together"}));
}

TEST_F(BamRecords, WhatItCannotHold) {
  EXPECT_EQ(of(line("a", 4, "AC", "II") + line("b", 4, "A=", "II")),
            (Records{{{"a", "AC", "II"}}, "reads.bam, record 2: '=' in its sequence"}));
  std::string raw = bamOf(kHeader + line("a", 4, "AC", "II"));
  write("reads.bam", raw);
  EXPECT_EQ(recordsOf("reads.bam").error, "");
  raw.resize(raw.size() - 28);  // the block that ends it
  write("reads.bam", raw);
  EXPECT_EQ(
      recordsOf("reads.bam"),
      (Records{{{"a", "AC", "II"}}, "reads.bam, record 2: damaged BAM data: its end is missing"}));
}

TEST_F(BamRecords, BytesRead) {
  constexpr int kReads = 20000;
  std::string lines;
  for (int i = 0; i < kReads; ++i) lines += line(std::to_string(i), 4, randomBases(150, 1), "*");
  write("reads.bam", bamOf(kHeader + lines));
  for (const Helpers helpers : {Helpers::kNone, Helpers::kInflateAhead}) {
    const auto source = reads::openRecords("reads.bam", helpers);
    EXPECT_EQ(source->bytes(), std::filesystem::file_size("reads.bam"));
    reads::RecordView view;
    uint64_t before = 0;
    for (int i = 0; i < kReads; ++i) {
      ASSERT_TRUE(source->next(view));
      EXPECT_GE(source->bytesRead(), before);
      before = source->bytesRead();
      if (i == kReads / 2) {
        EXPECT_GT(before, source->bytes() / 3);
        EXPECT_LT(before, source->bytes() * 2 / 3);
      }
    }
    EXPECT_FALSE(source->next(view));
    EXPECT_EQ(source->bytesRead(), source->bytes());
  }
}

// Records that a helper reads ahead: more than its ring holds, which is 2 MiB.

void rest() {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

class BamAhead : public ReadsTest {
 protected:
  static constexpr std::size_t kBases = 500;

  BamAhead() {
    std::string lines;
    for (unsigned i = 0; i < 5000; ++i) {
      const std::string bases = randomBases(i == 2000 ? 700'000 : kBases, i);
      reads_.push_back({"r" + std::to_string(i), bases, std::string(bases.size(), 'F')});
      lines += line(reads_[i].name, 4, bases, reads_[i].quality);
    }
    file_ = bamOf(kHeader + lines);
    write("reads.bam", file_);
  }
  ~BamAhead() override { failsThreads = false; }

  static std::unique_ptr<reads::RecordSource> open() {
    return reads::openRecords("reads.bam", Helpers::kInflateAhead);
  }

  std::vector<Read> reads_;
  std::string file_;
};

TEST_F(BamAhead, RecordsAreTheSame) {
  EXPECT_TRUE(recordsOf("reads.bam", Helpers::kNone) == (Records{reads_, ""}));
  EXPECT_TRUE(recordsOf("reads.bam", Helpers::kInflateAhead) == (Records{reads_, ""}));
}

TEST_F(BamAhead, HelperThatIsFasterThanItsReader) {
  const auto source = open();
  reads::RecordView view;
  for (const Read& read : reads_) {
    ASSERT_TRUE(source->next(view));
    if (&read - reads_.data() < 5) rest();
    ASSERT_TRUE(kept(view) == read);
  }
  EXPECT_FALSE(source->next(view));
}

TEST_F(BamAhead, ReaderThatStopsAnywhere) {
  for (const std::size_t records : {std::size_t{0}, std::size_t{1}, reads_.size() / 2}) {
    for (const bool rests : {false, true}) {
      const auto source = open();
      reads::RecordView view;
      for (std::size_t i = 0; i < records; ++i) ASSERT_TRUE(source->next(view));
      if (rests) rest();
    }
  }
}

TEST_F(BamAhead, DamageIsToldAtTheSameRecord) {
  for (const std::size_t part : {1u, 5u, 9u}) {
    std::string damaged = file_;
    damaged[file_.size() * part / 10] ^= '\x55';
    for (const std::string& file : {damaged, file_.substr(0, file_.size() * part / 10)}) {
      write("reads.bam", file);
      const Records inPlace = recordsOf("reads.bam", Helpers::kNone);
      EXPECT_EQ(inPlace.error, "reads.bam, record " + std::to_string(inPlace.reads.size() + 1) +
                                   ": damaged BAM data");
      EXPECT_TRUE(std::equal(inPlace.reads.begin(), inPlace.reads.end(), reads_.begin()));
      EXPECT_TRUE(recordsOf("reads.bam", Helpers::kInflateAhead) == inPlace);
    }
  }
}

TEST_F(BamAhead, WhatIsMetIsThrownAgain) {
  write("reads.bam", file_.substr(0, file_.size() / 2));
  const auto source = open();
  reads::RecordView view;
  EXPECT_THROW(
      {
        while (source->next(view)) {
        }
      },
      reads::InputError);
  EXPECT_THROW(source->next(view), reads::InputError);
}

TEST_F(BamAhead, HelperThatCannotStart) {
  failsThreads = true;
  EXPECT_TRUE(recordsOf("reads.bam", Helpers::kInflateAhead) == (Records{reads_, ""}));
}

}  // namespace
}  // namespace velk::test
