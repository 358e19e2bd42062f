// The gzip files that a run reads next, opened and inflated while the batch before is placed.
//
// libread2gap makes one object and tells it when the turn of the next file, or pair of files, has
// begun. A reader has it open the files of the turn behind when it hands over its last batch, and a
// line source takes them when they are read. What cannot be opened ahead is opened at its turn, and
// said then. With one worker nothing is opened ahead. Main thread only.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "streaming/gzipInput.h"

namespace velk {

class FilesAhead {
 public:
  /// The gzip files of a turn, none where its files are plain.
  using Turn = std::vector<std::string>;

  explicit FilesAhead(std::vector<Turn> turns);
  ~FilesAhead();
  FilesAhead(const FilesAhead&) = delete;
  FilesAhead& operator=(const FilesAhead&) = delete;

  /// Says that the next turn begins, the first one at the first call.
  void beginTurn() { ++begun_; }

  /// Opens the files of the turn behind the one that has begun last.
  void openNext();

  /// Returns `file`, opened ahead and being inflated; null when it is not.
  std::unique_ptr<GzipInput> take(const std::string& file);

 private:
  void open(const std::string& file);

  std::vector<Turn> turns_;
  std::size_t begun_ = 0;  // turns
  std::vector<std::pair<std::string, std::unique_ptr<GzipInput>>> opened_;
};

/// The object of the run; null outside of libread2gap.
extern FilesAhead* filesAhead;

}  // namespace velk
