#include "run/resultFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>

#include "run/diskFile.h"
#include "run/failure.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

namespace fs = std::filesystem;
using run::ResultFolder;

// A summary that lists these files.
std::string summaryOf(const std::vector<std::string>& names) {
  std::string files;
  for (const std::string& name : names) {
    files += (files.empty() ? "" : ", ") + ("{\"name\": \"" + name + "\"}");
  }
  return "{\"program\": {\"name\": \"velk-run\"}, \"files\": [" + files + "]}";
}

std::set<std::string> namesIn(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    names.insert(fs::relative(entry.path(), folder).string());
  }
  return names;
}

// Runs `work` in a child, which must not come back. Returns the child's end.
int statusOfChild(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(99);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

class ResultFolderTest : public ::testing::Test {
 protected:
  std::string dir() const { return root_.path("out"); }
  std::string in(const std::string& name) const { return dir() + "/" + name; }

  // A whole run with these files.
  void makeResult(const std::vector<std::string>& names, const std::string& text) const {
    ResultFolder folder(dir(), {});
    folder.begin();
    folder.clear();
    for (const std::string& name : names) run::writeFile(folder.partial(name), text);
    folder.seal(2);
    folder.publish(summaryOf(names));
  }

  // What a folder's refusal says.
  std::string refusal(const std::vector<std::string>& inputs = {}) const {
    try {
      const ResultFolder folder(dir(), inputs);
    } catch (const run::Failure& failure) {
      EXPECT_EQ(failure.status, run::Status::kFailed);
      return failure.what();
    }
    return "";
  }

  TemporaryFolder root_;
};

TEST_F(ResultFolderTest, AWholeResult) {
  ResultFolder folder(dir() + "/", {});
  EXPECT_FALSE(fs::exists(dir()));  // looking changes nothing
  folder.begin();
  folder.clear();
  run::writeFile(folder.partial("gaps.tsv"), "abc");
  run::writeFile(folder.partial("native/found.fa"), "");
  const auto files = folder.seal(2);
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].name, "gaps.tsv");
  EXPECT_EQ(files[0].bytes, 3U);
  EXPECT_EQ(files[0].md5, "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(files[1].md5, "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(namesIn(dir()), (std::set<std::string>{".partial", ".partial/gaps.tsv",
                                                   ".partial/native", ".partial/native/found.fa"}));
  folder.publish(summaryOf({"gaps.tsv", "native/found.fa"}));
  EXPECT_EQ(namesIn(dir()),
            (std::set<std::string>{"gaps.tsv", "native", "native/found.fa", "summary.json"}));
  EXPECT_EQ(contentOf(in("gaps.tsv")), "abc");
}

TEST_F(ResultFolderTest, AnUnfinishedRunLeavesNothing) {
  {
    ResultFolder folder(dir(), {});
    folder.begin();
    folder.clear();
    run::writeFile(folder.partial("reads.bam"), "abc");
  }
  EXPECT_FALSE(fs::exists(dir()));
}

TEST_F(ResultFolderTest, AFolderThatWasThereStays) {
  fs::create_directory(dir());
  run::writeFile(in("engine.log"), "mine");
  {
    ResultFolder folder(dir(), {});
    folder.begin();
    folder.clear();
    run::writeFile(folder.partial("reads.bam"), "abc");
    folder.seal(2);
  }
  EXPECT_EQ(namesIn(dir()), std::set<std::string>{"engine.log"});
}

TEST_F(ResultFolderTest, AnEarlierResultIsRemovedBeforeTheWork) {
  makeResult({"reads.bam", "native/found.fa"}, "old");
  run::writeFile(in("mine.txt"), "mine");
  ResultFolder folder(dir(), {});
  folder.begin();
  EXPECT_EQ(contentOf(in("reads.bam")), "old");
  folder.clear();
  EXPECT_EQ(namesIn(dir()), (std::set<std::string>{".partial", ".partial/native", "mine.txt"}));
}

TEST_F(ResultFolderTest, ARunThatEndsBeforeTheWorkLeavesAnEarlierResult) {
  makeResult({"reads.bam", "native/found.fa"}, "old");
  const std::set<std::string> before = namesIn(dir());
  {
    ResultFolder folder(dir(), {});
    folder.begin();
  }
  EXPECT_EQ(namesIn(dir()), before);
  const int status = statusOfChild([&] {
    ResultFolder folder(dir(), {});
    folder.begin();
    raise(SIGTERM);
  });
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  EXPECT_EQ(namesIn(dir()), before);
}

TEST_F(ResultFolderTest, WhatASummaryListsBeyondOurNamesStays) {
  makeResult({"reads.bam"}, "old");
  run::writeFile(root_.path("precious"), "mine");
  run::writeFile(in("mine.txt"), "mine");
  run::writeFile(in("summary.json"), summaryOf({"reads.bam", "../precious", "mine.txt"}));
  makeResult({"gaps.bed"}, "new");
  EXPECT_EQ(namesIn(dir()), (std::set<std::string>{"gaps.bed", "mine.txt", "summary.json"}));
  EXPECT_TRUE(fs::exists(root_.path("precious")));
}

TEST_F(ResultFolderTest, ForeignFilesOfOurNamesAreRefused) {
  fs::create_directory(dir());
  run::writeFile(in("reads.bam"), "mine");
  EXPECT_EQ(refusal(), in("reads.bam") +
                           " is there, and no earlier result of velk-run lists it; remove it, or "
                           "choose another folder");
  fs::remove(in("reads.bam"));
  run::writeFile(in("summary.json"), "{\"program\": \"other\", \"files\": []}");
  EXPECT_EQ(refusal(), in("summary.json") +
                           " is there, and no earlier result of velk-run lists it; remove it, or "
                           "choose another folder");
  run::writeFile(in("summary.json"), "no JSON");
  EXPECT_NE(refusal(), "");
}

TEST_F(ResultFolderTest, AnInputAmongTheResultsIsRefused) {
  makeResult({"pairs.fq.gz"}, "reads");
  fs::create_symlink(in("pairs.fq.gz"), root_.path("link"));
  EXPECT_EQ(
      refusal({root_.path("link")}),
      root_.path("link") + " is an input, and the results would replace it; choose another folder");
  EXPECT_EQ(refusal({root_.path("other")}), "");
}

TEST_F(ResultFolderTest, AFileInPlaceOfTheFolderIsRefused) {
  run::writeFile(dir(), "");
  EXPECT_EQ(refusal(), dir() + " is there, and is no folder");
}

TEST_F(ResultFolderTest, AFolderThatCannotBeMade) {
  ResultFolder folder(root_.path("missing/out"), {});
  EXPECT_THROW(folder.begin(), run::Failure);
}

TEST_F(ResultFolderTest, TwoRunsInOneFolder) {
  ResultFolder one(dir(), {});
  one.begin();
  ResultFolder two(dir(), {});
  try {
    two.begin();
    FAIL() << "no failure";
  } catch (const run::Failure& failure) {
    EXPECT_EQ(std::string(failure.what()), "another run writes to " + dir());
  }
}

TEST_F(ResultFolderTest, ASignalRemovesWhatIsUnfinished) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    fs::create_directory(dir());
    run::writeFile(in("mine.txt"), "mine");
    const int status = statusOfChild([&] {
      ResultFolder folder(dir(), {});
      folder.begin();
      folder.clear();
      run::writeFile(folder.partial("reads.bam"), "abc");
      run::writeFile(folder.partial("native/found.fa"), "abc");
      raise(signal);
    });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << signal;
    EXPECT_EQ(namesIn(dir()), std::set<std::string>{"mine.txt"});
    fs::remove_all(dir());
  }
}

TEST_F(ResultFolderTest, AnIgnoredSignalStaysIgnored) {
  const int status = statusOfChild([&] {
    ::signal(SIGHUP, SIG_IGN);
    ResultFolder folder(dir(), {});
    folder.begin();
    folder.clear();
    raise(SIGHUP);
    _exit(7);
  });
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
}

// Whatever a killed run leaves, the next one makes a whole result of its own; and at no moment does
// a summary stand beside files that are not the ones it lists.
TEST_F(ResultFolderTest, AKilledRunIsInNobodysWay) {
  const std::vector<std::string> names{"reads.bam", "gaps.tsv", "native/found.fa"};
  makeResult(names, "old");
  fs::create_directory(in(".partial"));
  fs::create_directory(in(".partial/native"));
  // The states between the steps: the earlier summary set aside and some of its files removed; new
  // files made; the new summary written and some files moved.
  const std::vector<std::function<void()>> steps{
      [&] { fs::rename(in("summary.json"), in(".partial/earlier.json")); },
      [&] { fs::remove(in("reads.bam")); },
      [&] {
        for (const char* name : {"gaps.tsv", "native/found.fa"}) fs::remove(in(name));
        fs::remove(in(".partial/earlier.json"));
        run::writeFile(in(".partial/reads.bam"), "new");
      },
      [&] {
        run::writeFile(in(".partial/gaps.tsv"), "new");
        run::writeFile(in(".partial/summary.json"), summaryOf({"reads.bam", "gaps.tsv"}));
        fs::rename(in(".partial/reads.bam"), in("reads.bam"));
      }};
  for (std::size_t done = 0; done <= steps.size(); ++done) {
    if (done > 0) steps[done - 1]();
    const std::string copy = root_.path("copy");
    fs::copy(dir(), copy, fs::copy_options::recursive);
    ResultFolder(copy, {}).begin();  // a run that ends before its work
    ResultFolder folder(copy, {});
    folder.begin();
    folder.clear();
    run::writeFile(folder.partial("gaps.bed"), "next");
    folder.seal(2);
    folder.publish(summaryOf({"gaps.bed"}));
    EXPECT_EQ(namesIn(copy), (std::set<std::string>{"gaps.bed", "summary.json"})) << done;
    fs::remove_all(copy);
  }
}

}  // namespace
}  // namespace velk::test
