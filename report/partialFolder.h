// Files that take the places of others in a folder of results: first they are made in a folder of
// their own, which goes with all that is left in it, also when a signal ends the process. Meanwhile
// no run, and no other report, writes to the folder of results.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "run/resultFolder.h"
#include "run/wholeFile.h"

namespace velk::report {

class PartialFolder {
 public:
  /// Makes nothing yet, but keeps other processes out, unless nothing can be written to the folder.
  /// Throws Failure where one is at work in it.
  PartialFolder(const std::string& folder, std::vector<std::string> names);
  ~PartialFolder();
  PartialFolder(const PartialFolder&) = delete;
  PartialFolder& operator=(const PartialFolder&) = delete;

  /// Whether a process that was killed has left one, and maybe files in their places.
  bool isLeft() const;

  /// Makes the folder in which the files are to be made. Throws Failure.
  void make() const;

  /// Its name.
  const std::string& path() const { return path_; }

  /// Moves the files to their places, in the order of their names. Throws Failure; then those that
  /// were there before are there again.
  void moveAll();

 private:
  void keepEarlier() const;
  void restore(std::size_t moved) const;
  void remove() const;

  std::string folder_;
  std::string path_;
  std::string earlier_;  // folder of what was there before
  std::vector<std::string> names_;
  std::unique_ptr<run::FolderLock> lock_;
  std::unique_ptr<run::SignalCleanup> cleanup_;
};

}  // namespace velk::report
