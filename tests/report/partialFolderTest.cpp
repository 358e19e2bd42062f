#include "report/partialFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <set>

#include "run/diskFile.h"
#include "run/failure.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

namespace fs = std::filesystem;
using report::PartialFolder;

constexpr int kProcesses = 4;
constexpr int kLocks = 3000;  // of each process

// Starts a child that does its work and ends with status 0, unless the work throws.
pid_t startChild(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child != 0) return child;
  try {
    work();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    _exit(1);
  }
  _exit(0);
}

int endOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

class PartialFolderTest : public ::testing::Test {
 protected:
  PartialFolderTest() {
    fs::create_directory(dir());
    run::writeFile(dir() + "/a", "old");
  }

  std::string dir() const { return root_.path("out"); }

  std::set<std::string> names() const {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(dir())) {
      names.insert(fs::relative(entry.path(), dir()).string());
    }
    return names;
  }

  TemporaryFolder root_;
};

TEST_F(PartialFolderTest, FilesTakeTheirPlaces) {
  {
    PartialFolder partial(dir(), {"a", "b"});
    EXPECT_FALSE(partial.isLeft());
    partial.make();
    for (const char* name : {"/a", "/b"}) run::writeFile(partial.path() + name, "new");
    EXPECT_EQ(run::readFile(dir() + "/a"), "old");
    partial.moveAll();
  }
  EXPECT_EQ(names(), (std::set<std::string>{"a", "b"}));
  EXPECT_EQ(run::readFile(dir() + "/a"), "new");
}

TEST_F(PartialFolderTest, WhatAKilledProcessHasLeftGoes) {
  fs::create_directories(dir() + "/.velk-report/earlier");
  run::writeFile(dir() + "/.velk-report/a", "part");
  {
    const PartialFolder partial(dir(), {"a"});
    EXPECT_TRUE(partial.isLeft());
    partial.make();
    EXPECT_FALSE(run::exists(partial.path() + "/a"));
  }
  EXPECT_EQ(names(), std::set<std::string>{"a"});
}

TEST_F(PartialFolderTest, ASignalLeavesNothing) {
  for (const bool isMade : {false, true}) {
    const pid_t child = startChild([&] {
      const PartialFolder partial(dir(), {"a"});
      if (isMade) {
        partial.make();
        run::writeFile(partial.path() + "/a", "part");
      }
      raise(SIGTERM);
    });
    const int status = endOf(child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << isMade;
    EXPECT_EQ(names(), std::set<std::string>{"a"});
  }
}

TEST_F(PartialFolderTest, WhereThereIsNoFolderNothingIsMade) {
  const PartialFolder partial(root_.path("gone"), {"a"});
  EXPECT_FALSE(fs::exists(root_.path("gone")));
}

// However their beginnings and ends meet, a process has the lock or learns that another one has
// it.
TEST_F(PartialFolderTest, ManyProcessesLockTheFolder) {
  std::array<pid_t, kProcesses> children{};
  for (pid_t& child : children) {
    child = startChild([&] {
      for (int n = 0; n < kLocks; ++n) {
        try {
          const run::FolderLock lock(dir());
          const run::Descriptor alone(dir() + "/alone", O_CREAT | O_EXCL | O_WRONLY);
          fs::remove(dir() + "/alone");
        } catch (const run::Failure& failure) {
          if (std::string(failure.what()) != "another run writes to " + dir()) throw;
        }
      }
    });
  }
  for (const pid_t child : children) EXPECT_EQ(endOf(child), 0);
  EXPECT_EQ(names(), std::set<std::string>{"a"});
}

}  // namespace
}  // namespace velk::test
