// Temporary folders and small files for tests.
#pragma once

#include <filesystem>
#include <string>

namespace velk::test {

/// A new empty folder that is removed with everything in it at the end of its life.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  /// The path of `name` inside the folder.
  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  /// Writes `text` to the file `name` of the folder. Returns the file's path.
  std::string write(const std::string& name, const std::string& text) const;

  /// Writes `text` as one gzip member to the file `name` of the folder. Returns the file's path.
  std::string writeGzip(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path folder_;
};

/// The bytes of `file`; a test failure when it can't be read.
std::string contentOf(const std::string& file);

/// `text` as one gzip member.
std::string gzipped(const std::string& text);

}  // namespace velk::test
