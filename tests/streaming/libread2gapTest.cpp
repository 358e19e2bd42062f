// All read files of all libraries: their order, the insert length of each, the messages.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "driver/listener.h"
#include "libinfo/libinfo.h"
#include "streaming/library.h"
#include "streaming/mailbox.h"
#include "streaming/readBuffer.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

// The files of one library.
struct TestLibrary {
  int averageInsert = 0;  // bases
  std::vector<std::pair<std::string, std::string>> pairs;
  std::vector<std::string> single2;
  std::vector<std::string> single;
  std::vector<std::string> singlequal;
};

// The records of `libraries`, released at the end of its life.
class TestLibraries {
 public:
  explicit TestLibraries(const std::vector<TestLibrary>& libraries);
  ~TestLibraries() { delete[] libs_; }
  TestLibraries(const TestLibraries&) = delete;
  TestLibraries& operator=(const TestLibraries&) = delete;

  // Runs libread2gap over all libraries. Returns the messages, the elapsed seconds replaced by
  // "N".
  std::string stream();

  // Runs libread2gap, the messages going where they belong.
  void streamAloud();

 private:
  Lib* libs_;
  int count_;
  std::vector<std::unique_ptr<SingleQual[]>> singlequal_;  // no record releases these
};

template <class Entry>
Entry* namesIn(const std::vector<std::string>& files, Len_t& count) {
  count = static_cast<Len_t>(files.size());
  if (files.empty()) return nullptr;
  auto* const entries = new Entry[files.size()];
  for (std::size_t j = 0; j < files.size(); ++j) entries[j].readfile = files[j];
  return entries;
}

TestLibraries::TestLibraries(const std::vector<TestLibrary>& libraries)
    : libs_(new Lib[libraries.size()]), count_(static_cast<int>(libraries.size())) {
  for (std::size_t i = 0; i < libraries.size(); ++i) {
    const TestLibrary& from = libraries[i];
    Lib& lib = libs_[i];
    lib.avg_ins = from.averageInsert;
    lib.pfilenum = static_cast<Len_t>(from.pairs.size());
    if (lib.pfilenum != 0) lib.pairs = new Pair[lib.pfilenum];
    for (std::size_t j = 0; j < from.pairs.size(); ++j) {
      lib.pairs[j] = {from.pairs[j].first, from.pairs[j].second};
    }
    lib.single2 = namesIn<Single>(from.single2, lib.s2filenum);
    lib.single = namesIn<Single>(from.single, lib.sfilenum);
    lib.singlequal = namesIn<SingleQual>(from.singlequal, lib.qfilenum);
    singlequal_.emplace_back(lib.singlequal);
  }
}

std::string TestLibraries::stream() {
  const CapturedErrors errors;
  libread2gap(libs_, count_);
  const std::string text = errors.text();
  const char* const digits = "0123456789";
  const std::size_t from = text.find_first_of(digits, text.find("Used time: "));
  if (from == std::string::npos) return text;
  return text.substr(0, from).append("N").append(text, text.find_first_not_of(digits, from));
}

void TestLibraries::streamAloud() {
  libread2gap(libs_, count_);
}

class Libread2gap : public GapAssemblyTest {
 protected:
  // Streams the libraries through two workers. Returns the messages.
  std::string stream(const std::vector<TestLibrary>& libraries) {
    start(2);
    openOutputFile();
    return TestLibraries(libraries).stream();
  }

  // A file of one pair or one read, numbered for gap number % 2.
  void writePair(const std::string& one, const std::string& two, unsigned number) const {
    write(one, fastq({firstMate(gapOf(number), number)}));
    write(two, fastq({secondMate(number)}));
  }
  void writeInterleaved(const std::string& file, unsigned number) const {
    write(file, fasta({firstMate(gapOf(number), number), secondMate(number)}));
  }
  void writeRead(const std::string& file, unsigned number) const {
    write(file, fasta({singleRead(gapOf(number), number)}));
  }

  std::string pairRecord(unsigned number) const { return mateRecord(gapOf(number), number); }
  std::string readRecord(unsigned number) const { return singleRecord(gapOf(number), number); }

 private:
  static int gapOf(unsigned number) { return static_cast<int>(number % 2); }
};

constexpr const char* kPairMessages =
    "bufferNum: 1\nLoad pair-end reads in *.fq format done!\n1 reads were found in gaps.\n";
constexpr const char* kInterleavedMessages =
    "bufferNum: 1\nLoad pair-end reads in *.pair format done!\n1 reads were found in gaps.\n";

std::string readMessages(const std::string& file) {
  return "load SE file:" + file +
         "!\nbufferNum: 1\nFind reads finished!\n"
         "Load single-end reads in *.fa format done!\nload SE read finished!\n"
         "1 reads were found in gaps.\n";
}

TEST_F(Libread2gap, FourKindsOfFilesInTheirOrder) {
  writePair("p1a", "p1b", 1);
  writePair("p2a", "p2b", 2);
  writeInterleaved("i3.pair", 3);
  writeInterleaved("i4.pair", 4);
  writeRead("f5.fa", 5);
  writeRead("f6.fa", 6);
  writeRead("q7.fq", 7);
  writeRead("q8.fq", 8);
  writeRead("f9.fa", 9);
  const TestLibrary first{500,
                          {{"p1a", "p1b"}, {"p2a", "p2b"}},
                          {"i3.pair", "i4.pair"},
                          {"f5.fa", "f6.fa"},
                          {"q7.fq", "q8.fq"}};
  const TestLibrary second{300, {}, {}, {"f9.fa"}, {}};

  // The short file names of pairs are of three characters, the least that is taken.
  EXPECT_EQ(stream({first, second}),
            std::string("Starting to find reads for each gap in 2 librarys.\n"
                        "Processing library 1...\n"
                        "\t processing pair-end read files in 2 librarys...\n") +
                kPairMessages + "\tlibrary 1 done.\n" + kPairMessages +
                "\tlibrary 2 done.\n"
                "\tprocessing pair-end read files done!\n"
                "\tprocessing pair-end read files in 2 librarys...\n" +
                kInterleavedMessages + "\tlibrary 1 done.\n" + kInterleavedMessages +
                "\tlibrary 2 done.\n"
                "\tprocessing pair-end read files done!\n"
                "\tprocessing single read files in 2 librarys...\n" +
                readMessages("f5.fa") + "\tlibrary 1 done.\n" + readMessages("f6.fa") +
                "\tlibrary 2 done.\n"
                "\tprocessing single read files done!\n"
                "\tprocessing single qual read files in 2 librarys... \n" +
                readMessages("q7.fq") + "\tlibrary 1 done.\n" + readMessages("q8.fq") +
                "\tlibrary 2 done.\n"
                "\tprocessing single read files done!\n"
                "Processing library 2...\n"
                "\tprocessing single read files in 1 librarys...\n" +
                readMessages("f9.fa") +
                "\tlibrary 1 done.\n"
                "\tprocessing single read files done!\n"
                "Find reads in gaps done! There are 9 reads found. Used time: Ns.\n");
  EXPECT_EQ(writtenOutput(), pairRecord(1) + pairRecord(2) + pairRecord(3) + pairRecord(4) +
                                 readRecord(5) + readRecord(6) + readRecord(7) + readRecord(8) +
                                 readRecord(9));
  EXPECT_EQ(readSumInEachGap[0], 4);
  EXPECT_EQ(readSumInEachGap[1], 5);
  EXPECT_EQ(totalFoundNum, 9u);
}

TEST_F(Libread2gap, NoLibrary) {
  EXPECT_EQ(stream({}),
            "Starting to find reads for each gap in 0 librarys.\n"
            "Find reads in gaps done! There are 0 reads found. Used time: Ns.\n");
}

TEST_F(Libread2gap, LibraryWithoutFiles) {
  EXPECT_EQ(stream({{500, {}, {}, {}, {}}, {}}),
            "Starting to find reads for each gap in 2 librarys.\n"
            "Processing library 1...\nProcessing library 2...\n"
            "Find reads in gaps done! There are 0 reads found. Used time: Ns.\n");
}

TEST_F(Libread2gap, EveryLibraryHasItsInsertLength) {
  writePair("p1a", "p1b", 1);
  writeRead("reads", 2);
  stream({{kInsert, {{"p1a", "p1b"}}, {}, {"reads"}, {}},
          {kInsert - 1, {{"p1a", "p1b"}}, {}, {}, {}}});
  EXPECT_EQ(writtenOutput(),
            pairRecord(1) + readRecord(2) + ">1\t160\t0\ts1\t0\t499\n" + storedMate(1) + "\n");
}

TEST_F(Libread2gap, PairWithoutSecondFileIsInterleaved) {
  writeInterleaved("reads", 3);
  EXPECT_NE(stream({{kInsert, {{"reads", ""}}, {}, {}, {}}}).find(kInterleavedMessages),
            std::string::npos);
  EXPECT_EQ(writtenOutput(), pairRecord(3));
}

TEST_F(Libread2gap, InterleavedFileWithoutInsertIsReadAsSingleReads) {
  write("reads", fasta({singleRead(0, 1), singleRead(1, 2)}));
  EXPECT_EQ(stream({{0, {}, {"reads"}, {}, {}}}),
            "Starting to find reads for each gap in 1 librarys.\nProcessing library 1...\n"
            "\tprocessing pair-end read files in 1 librarys...\n"
            "load SE file:reads!\nbufferNum: 2\nFind reads finished!\n"
            "Load single-end reads in *.fa format done!\nload SE read finished!\n"
            "2 reads were found in gaps.\n\tlibrary 1 done.\n"
            "\tprocessing pair-end read files done!\n"
            "Find reads in gaps done! There are 2 reads found. Used time: Ns.\n");
  EXPECT_EQ(writtenOutput(), singleRecord(0, 1) + singleRecord(1, 2));
}

TEST_F(Libread2gap, CompressedPairWithoutInsertIsReadAsSingleReads) {
  writeGzip("one.gz", fasta({singleRead(0, 1)}) + "\n");
  EXPECT_EQ(stream({{0, {{"one.gz", "two.gz"}}, {}, {}, {}}}),
            "Starting to find reads for each gap in 1 librarys.\nProcessing library 1...\n"
            "\t processing pair-end read files in 1 librarys...\n" +
                readMessages("one.gz") +
                "\tlibrary 1 done.\n\tprocessing pair-end read files done!\n"
                "Find reads in gaps done! There are 1 reads found. Used time: Ns.\n");
}

TEST_F(Libread2gap, PlainPairWithoutInsertEndsTheRun) {
  write("one", ">\nAC\n");
  EXPECT_EXIT(TestLibraries({{0, {{"one", "two"}}, {}, {}, {}}}).streamAloud(), ExitedWithCode(1),
              Eq("Starting to find reads for each gap in 1 librarys.\nProcessing library 1...\n"
                 "\t processing pair-end read files in 1 librarys...\nload SE file:one!\n"
                 "[ERROR]:the input file should be single end file!\n"));
}

TEST_F(Libread2gap, SkippedFileCountsNothingAndTheRunGoesOn) {
  writeRead("reads", 1);
  EXPECT_EQ(stream({{500, {}, {"no.gz"}, {"no.gz", "reads"}, {}}}),
            "Starting to find reads for each gap in 1 librarys.\nProcessing library 1...\n"
            "\tprocessing pair-end read files in 1 librarys...\n"
            "Can't open file: no.gz\n\tlibrary 1 done.\n"
            "\tprocessing pair-end read files done!\n"
            "\tprocessing single read files in 2 librarys...\n"
            "load SE file:no.gz!\nCan't open file: no.gz\n\tlibrary 1 done.\n" +
                readMessages("reads") +
                "\tlibrary 2 done.\n\tprocessing single read files done!\n"
                "Find reads in gaps done! There are 1 reads found. Used time: Ns.\n");
}

TEST_F(Libread2gap, NameShorterThanThreeCharacters) {
  const auto run = [](const TestLibrary& library) {
    TestLibraries({TestLibrary(), library}).streamAloud();
  };
  const auto message = [](const std::string& opening, const std::string& name,
                          const std::string& key) {
    return "Starting to find reads for each gap in 2 librarys.\nProcessing library 1...\n"
           "Processing library 2...\n" +
           opening + "[ERROR]: read file name \"" + name +
           "\" is shorter than three characters, library 2, key " + key + "\n";
  };
  EXPECT_EXIT(run({500, {{"ab", "mates"}}, {}, {}, {}}), ExitedWithCode(1),
              Eq(message("\t processing pair-end read files in 1 librarys...\n", "ab", "q1/f1")));
  EXPECT_EXIT(run({500, {}, {"x"}, {}, {}}), ExitedWithCode(1),
              Eq(message("\tprocessing pair-end read files in 1 librarys...\n", "x", "p")));
  EXPECT_EXIT(run({500, {}, {}, {"gz"}, {}}), ExitedWithCode(1),
              Eq(message("\tprocessing single read files in 1 librarys...\n", "gz", "f")));
  EXPECT_EXIT(run({500, {}, {}, {}, {""}}), ExitedWithCode(1),
              Eq(message("\tprocessing single qual read files in 1 librarys... \n", "", "q")));
}

TEST_F(Libread2gap, SecondMateFileMayHaveAShortName) {
  writePair("p1a", "b", 1);
  EXPECT_NE(stream({{kInsert, {{"p1a", "b"}}, {}, {}, {}}}).find(kPairMessages), std::string::npos);
}

// A worker that takes its time, in a library that has nothing to do with the first message.
TEST_F(Libread2gap, ElapsedSecondsCoverAllLibraries) {
  constexpr useconds_t kMoreThanASecond = 1100000;  // microseconds
  writeRead("reads", 1);
  allocateRows(1);
  std::thread slowWorker([] {
    while (mailboxValue(0) == 0) usleep(100);
    usleep(kMoreThanASecond);
    setMailbox(0, 0);
  });
  TestLibraries libraries({{}, {0, {}, {}, {"reads"}, {}}});
  const CapturedErrors errors;
  libraries.streamAloud();
  slowWorker.join();
  const std::string text = errors.text();
  const std::size_t used = text.find("Used time: ");
  ASSERT_NE(used, std::string::npos);
  const int seconds = std::stoi(text.substr(used + 11));
  EXPECT_GE(seconds, 1);
  EXPECT_LE(seconds, 60);
}

// The files that are open at each message about a batch, of those whose names end in ".gz".
class OpenFilesAtBatches final : public Listener {
 public:
  using Files = std::set<std::string>;

  void say(std::string_view text) override {
    if (text.starts_with("bufferNum: ")) batches_.push_back(openFiles());
  }
  void end(ExitStatus /*status*/, std::string_view /*message*/) override { std::abort(); }

  const std::vector<Files>& batches() const { return batches_; }

 private:
  static Files openFiles() {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code error;  // the one that lists them is gone by now
      const std::filesystem::path file = std::filesystem::read_symlink(entry, error);
      if (file.extension() == ".gz") files.insert(file.filename());
    }
    return files;
  }

  std::vector<Files> batches_;
};

class NextFile : public GapAssemblyTest {
 protected:
  NextFile() {
    for (const char* file : {"a1.gz", "a2.gz", "c.gz", "d2.gz"}) {
      writeGzip(file, fasta({firstMate(0, 1), firstMate(0, 2), firstMate(0, 3)}));
    }
    writeGzip("b.gz", fasta({firstMate(0, 1), secondMate(1)}));
    write("plain.fa", fasta({firstMate(0, 1)}));
    batchLimit = 2;  // records
  }
  ~NextFile() override { batchLimit = bufferSize; }

  // What is open at each batch of these libraries with that many workers.
  std::vector<OpenFilesAtBatches::Files> openAt(const std::vector<TestLibrary>& libraries,
                                                int workers) {
    TestLibraries libs(libraries);
    openOutputFile();
    start(workers);
    OpenFilesAtBatches seen;
    {
      const ListenerInUse inUse(seen);
      libs.streamAloud();
    }
    stop();
    writtenOutput();
    return seen.batches();
  }

  const std::vector<TestLibrary> libraries_{
      {kInsert, {{"a1.gz", "a2.gz"}}, {"b.gz"}, {}, {}},
      {0, {{"c.gz", "d2.gz"}}, {}, {"plain.fa", "missing.gz", "b.gz"}, {}}};
};

TEST_F(NextFile, IsOpenWhileTheLastBatchOfTheOneBeforeIsPlaced) {
  using Batches = std::vector<OpenFilesAtBatches::Files>;
  const Batches ahead{{"a1.gz", "a2.gz"},
                      {"a1.gz", "a2.gz", "b.gz"},  // the last batch of the pairs
                      {"b.gz", "c.gz"},            // as single reads, hence without its mates' file
                      {"c.gz"},
                      {"c.gz"},  // a plain file comes next
                      {},        // a missing one comes next
                      {"b.gz"}};
  const Batches inPlace{
      {"a1.gz", "a2.gz"}, {"a1.gz", "a2.gz"}, {"b.gz"}, {"c.gz"}, {"c.gz"}, {}, {"b.gz"}};
  EXPECT_EQ(openAt(libraries_, 2), ahead);
  EXPECT_EQ(openAt(libraries_, 1), inPlace);
}

}  // namespace
}  // namespace velk::test
