#include "run/diskFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <thread>

#include "run/bam.h"
#include "run/failure.h"
#include "run/fastqWriter.h"
#include "run/wholeFile.h"
#include "tests/support/files.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace velk::test {
namespace {

namespace fs = std::filesystem;

std::string failureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const run::Failure& failure) {
    EXPECT_EQ(failure.status, run::Status::kFailed);
    return failure.what();
  }
  return "no failure";
}

class DiskFileTest : public ::testing::Test {
 protected:
  std::string path(const std::string& name) const { return folder_.path(name); }

  TemporaryFolder folder_;
};

TEST_F(DiskFileTest, WhatCannotBeWritten) {
  EXPECT_EQ(failureOf([&] { run::writeFile(path("no/file"), "abc"); }),
            path("no/file") + " can't be opened: No such file or directory");
  EXPECT_EQ(failureOf([] { run::writeFile("/dev/full", "abc"); }),
            "/dev/full can't be written: No space left on device");
  EXPECT_EQ(failureOf([&] { run::syncFile(path("gone")); }),
            path("gone") + " can't be opened: No such file or directory");
  run::syncFile("/dev/null");  // it has nothing to be synced
}

TEST_F(DiskFileTest, WhatCannotBeRead) {
  EXPECT_EQ(failureOf([&] { run::readFile(path("gone")); }),
            path("gone") + " can't be opened: No such file or directory");
  EXPECT_EQ(failureOf([&] { run::readFile(path("")); }),
            path("") + " can't be read: Is a directory");
  EXPECT_EQ(failureOf([&] { run::exists(std::string(5000, 'n')); }),
            std::string(5000, 'n') + " can't be looked at: File name too long");
  run::writeFile(path("file"), "abc");
  EXPECT_FALSE(run::exists(path("file/below")));
  EXPECT_TRUE(run::exists(path("file")));
}

TEST_F(DiskFileTest, WhatIsMapped) {
  EXPECT_EQ(failureOf([&] { run::MappedFile(path("")); }), path("") + " is no regular file");
  run::writeFile(path("file"), "abc");
  const run::MappedFile mapped(path("file"));
  EXPECT_EQ(std::string(mapped.memory(), mapped.bytes()), "abc");
}

TEST_F(DiskFileTest, AnEmptyFileIsMapped) {
  run::writeFile(path("file"), "");
  const run::MappedFile mapped(path("file"));
  EXPECT_EQ(mapped.bytes(), 0U);
  EXPECT_EQ(mapped.memory(), nullptr);
}

TEST_F(DiskFileTest, TheNameOfAnOpenFile) {
  run::writeFile(path("file"), "");
  const run::Descriptor file(path("file"), O_RDONLY);
  EXPECT_TRUE(run::isCalled(file.get(), path("file")));
  fs::rename(path("file"), path("other"));
  EXPECT_FALSE(run::isCalled(file.get(), path("file")));
  run::writeFile(path("file"), "");
  EXPECT_FALSE(run::isCalled(file.get(), path("file")));
}

TEST_F(DiskFileTest, ALockIsOneProcesssOrDescriptors) {
  run::writeFile(path("file"), "");
  const run::Descriptor one(path("file"), O_RDONLY);
  const run::Descriptor other(path("file"), O_RDONLY);
  EXPECT_TRUE(run::lockFile(one.get()));
  EXPECT_FALSE(run::lockFile(other.get()));
  EXPECT_EQ(errno, EWOULDBLOCK);
  EXPECT_FALSE(run::lockFile(-1));
  EXPECT_EQ(errno, EBADF);
}

TEST_F(DiskFileTest, AFileIsReplacedAsAWhole) {
  run::writeFile(path("file"), "old");
  fs::create_symlink("file", path("link"));
  run::writeWhole(path("link"), [&](int descriptor, const std::string& name) {
    EXPECT_EQ(name, fs::canonical(path("file")).string() + ".partial");
    run::writeDescriptor(descriptor, name, "new");
    EXPECT_EQ(contentOf(path("file")), "old");
    EXPECT_EQ(failureOf([&] { run::writeWhole(path("file"), "third"); }),
              "another run writes to " + path("file"));
  });
  EXPECT_EQ(contentOf(path("file")), "new");
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_FALSE(fs::exists(path("file.partial")));
}

TEST_F(DiskFileTest, AFileThatFailsLeavesTheOldOne) {
  run::writeFile(path("file"), "old");
  EXPECT_EQ(failureOf([&] {
              run::writeWhole(path("file"), [](int descriptor, const std::string& name) {
                run::writeDescriptor(descriptor, name, "new");
                throw run::Failure(run::Status::kFailed, "as it is");
              });
            }),
            "as it is");
  EXPECT_EQ(contentOf(path("file")), "old");
  EXPECT_FALSE(fs::exists(path("file.partial")));
  EXPECT_EQ(failureOf([&] { run::writeWhole(path("no/file"), "abc"); }),
            path("no/file") + " can't be opened: No such file or directory");
}

TEST_F(DiskFileTest, WhatIsNoRegularFileIsWrittenAsItStands) {
  EXPECT_EQ(failureOf([] { run::writeWhole("/dev/full", "abc"); }),
            "/dev/full can't be written: No space left on device");
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  std::string got;
  std::thread reader([&] { got = contentOf(path("pipe")); });
  run::writeWhole(path("pipe"), "abc");
  reader.join();
  EXPECT_EQ(got, "abc");
  EXPECT_TRUE(fs::is_fifo(path("pipe")));
}

TEST_F(DiskFileTest, AnInputIsNotReplaced) {
  run::writeFile(path("file"), "abc");
  fs::create_symlink("file", path("link"));
  run::requireNoInput(path("link"), {path("gone"), path("")}, "plan");
  EXPECT_EQ(failureOf([&] { run::requireNoInput(path("link"), {path("file")}, "plan"); }),
            path("file") + " is an input, and the plan would replace it");
}

TEST_F(DiskFileTest, WhatIsUnfinishedIsRemoved) {
  fs::create_directories(path("out/.partial"));
  run::writeFile(path("out/.partial/a"), "abc");
  run::writeFile(path("mine"), "abc");
  {
    const run::SignalCleanup cleanup({path("out/.partial/a"), path("gone")},
                                     {path("out/.partial"), path("out")});
    run::removeUnfinished();
    EXPECT_FALSE(fs::exists(path("out")));
  }
  run::removeUnfinished();  // nothing is named any more
  EXPECT_TRUE(fs::exists(path("mine")));
}

TEST_F(DiskFileTest, AFolderThatSomebodyHasFilledStays) {
  fs::create_directories(path("out"));
  run::writeFile(path("out/mine"), "abc");
  const run::SignalCleanup cleanup({}, {path("out")});
  run::removeUnfinished();
  EXPECT_EQ(contentOf(path("out/mine")), "abc");
}

TEST_F(DiskFileTest, WritersOfFilesThatCannotBeMade) {
  const std::string missing = path("no/file");
  const std::string reason = " can't be written: No such file or directory";
  EXPECT_EQ(failureOf([&] { run::BgzipWriter(missing, path("blocks"), 0); }), missing + reason);
  const std::string header = "@HD\tVN:1.6\tSO:coordinate\n@SQ\tSN:a\tLN:9\n";
  EXPECT_EQ(failureOf([&] { run::BamWriter(missing, path("index"), header, false, 0); }),
            missing + reason);
}

TEST_F(DiskFileTest, WritersOfFullDisks) {
#ifdef __SANITIZE_ADDRESS__
  // htslib keeps the memory of a file that it could not write to the end.
  const __lsan::ScopedDisabler keptMemory;
#endif
  EXPECT_EQ(failureOf([&] {
              run::BgzipWriter writer("/dev/full", path("blocks"), 0);
              writer.write(std::string(1 << 20, 'a'));
              writer.close();
            }),
            "/dev/full can't be written: No space left on device");
  EXPECT_EQ(failureOf([&] {
              run::BgzipWriter writer(path("texts"), path("no/blocks"), 2);
              writer.write("abc");
              writer.close();
            }),
            path("no/blocks") + " can't be written: No such file or directory");
}

}  // namespace
}  // namespace velk::test
