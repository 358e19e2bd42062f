// Files that take the places of others in a folder of results: first they are made in a folder of
// their own, which goes with all that is left in it, also when a signal ends the process.
#pragma once

#include <string>
#include <vector>

#include "run/wholeFile.h"

namespace velk::report {

class PartialFolder {
 public:
  /// Throws Failure.
  PartialFolder(const std::string& folder, std::vector<std::string> names);
  ~PartialFolder();
  PartialFolder(const PartialFolder&) = delete;
  PartialFolder& operator=(const PartialFolder&) = delete;

  /// Whether a process that was killed has left one in the folder, and maybe files in their places.
  static bool isLeftIn(const std::string& folder);

  /// Where the files are to be made.
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
  run::SignalCleanup cleanup_;
};

}  // namespace velk::report
