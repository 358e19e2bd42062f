// The folder of a run's results: whole ones, or none.
//
// Everything is made in the folder .partial within it. publish() then moves the files to their
// names, the summary last: a folder without a summary holds no result. What is moved is listed in
// .partial/summary.json before the first move, so that a run that is killed between two moves
// leaves files that the next one knows as velk-run's. One thread calls; one object at a time.
//
//   ResultFolder folder(dir, inputs)   looks, and changes nothing
//   folder.begin()                     makes .partial, and keeps other runs out
//   folder.clear()                     removes an earlier result
//   ... files are written to folder.partial(name) ...
//   folder.seal(threads)               has them on disk, and returns sizes and checksums
//   folder.publish(summary)            moves them
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "run/resultNames.h"
#include "run/wholeFile.h"

namespace velk::run {

/// A file of the result.
struct ResultFile {
  std::string name;
  uint64_t bytes;
  std::string md5;  // in hexadecimal digits
};

/// Keeps other processes that write to a folder out of it while it lives, by a lock of its
/// .partial.
class FolderLock {
 public:
  /// Makes .partial. Throws Failure; also where another process has it.
  explicit FolderLock(std::string folder);

  /// Removes .partial, unless something is in it.
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  void unlock();

  std::string folder_;
  int lock_ = -1;
};

class ResultFolder {
 public:
  /// `inputs`: all files that the run reads. Throws Failure where a name that the run would write
  /// is taken by a file that no earlier run has written, or is that of an input.
  ResultFolder(std::string folder, const std::vector<std::string>& inputs,
               const FolderForm& form = resultForm());

  /// Removes what is unfinished.
  ~ResultFolder();
  ResultFolder(const ResultFolder&) = delete;
  ResultFolder& operator=(const ResultFolder&) = delete;

  /// Makes the folder and keeps other runs out of it. Throws Failure; also where another run is at
  /// work in it. From now on a signal that ends the process removes what is unfinished.
  void begin();

  /// Removes an earlier result, which is there until then. Called before the first file is made.
  /// Throws Failure.
  void clear();

  const std::string& path() const { return folder_; }

  /// Where a file is made. REQUIRES: `name` is one of the form's, or for a file that is removed
  /// at once.
  std::string partial(const std::string& name) const;

  /// The files are summed up by `threads` threads. Throws Failure.
  std::vector<ResultFile> seal(int threads);

  /// `summary`: text of the summary. Throws Failure.
  void publish(const std::string& summary);

 private:
  std::string file(const std::string& name) const { return folder_ + "/" + name; }
  void checkNames(const std::vector<std::string>& inputs) const;
  std::set<std::string> ownNames() const;
  void removeEarlier();
  void removePartial() const;
  void removePublished() const;

  std::string folder_;
  const FolderForm& form_;
  std::unique_ptr<FolderLock> lock_;
  bool isMade_ = false;     // whether the folder is this run's
  bool isCleared_ = false;  // whether no earlier result is left
  std::vector<ResultFile> sealed_;
  std::set<std::string> published_;
  std::unique_ptr<SignalCleanup> cleanup_;
};

}  // namespace velk::run
