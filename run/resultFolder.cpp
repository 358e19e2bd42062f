#include "run/resultFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "kmer/machine.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/resultNames.h"

namespace velk::run {
namespace {

namespace fs = std::filesystem;

constexpr const char* kEarlierName = ".partial/earlier.json";  // summary of a result being removed
constexpr const char* kNextName = ".partial/summary.json";     // of one that is being moved

bool isSameFile(const std::string& one, const std::string& other) {
  struct stat a {};
  struct stat b {};
  return stat(one.c_str(), &a) == 0 && stat(other.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
         a.st_ino == b.st_ino;
}

void removeFile(const std::string& file) {
  if (unlink(file.c_str()) != 0 && errno != ENOENT) failFile(file, "removed");
}

void move(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0) failFile(to, "made");
}

// Makes a folder, unless it is there. Returns whether it was made. One that was there a moment ago
// is one that another process has just removed.
bool makeFolder(const std::string& folder) {
  while (mkdir(folder.c_str(), 0777) != 0) {
    const int why = errno;
    if (why == EEXIST && fs::is_directory(folder)) return false;
    std::error_code ignored;
    const fs::file_type there = fs::symlink_status(folder, ignored).type();
    const bool mayGo = there == fs::file_type::not_found || there == fs::file_type::directory;
    if (why == EEXIST && mayGo) continue;
    errno = why;
    failFile(folder, "made");
  }
  return true;
}

}  // namespace

ResultFolder::ResultFolder(std::string folder, const std::vector<std::string>& inputs,
                           const FolderForm& form)
    : folder_(std::move(folder)), form_(form) {
  while (folder_.size() > 1 && folder_.ends_with('/')) folder_.pop_back();
  if (exists(folder_) && !fs::is_directory(folder_)) {
    throw Failure(Status::kFailed, folder_ + " is there, and is no folder");
  }
  checkNames(inputs);
}

ResultFolder::~ResultFolder() {
  if (!lock_) return;
  if (isCleared_) {
    removePublished();
    removePartial();
  }
  lock_.reset();
  if (isMade_) rmdir(folder_.c_str());
}

std::string ResultFolder::partial(const std::string& name) const {
  return folder_ + "/" + kPartialName + "/" + name;
}

// The names that earlier runs have written: of the result that is there, and of those that were
// being moved or removed when a run was killed.
std::set<std::string> ResultFolder::ownNames() const {
  std::set<std::string> names;
  for (const char* summary : {form_.summary, kEarlierName, kNextName}) {
    names.merge(namesOfSummary(file(summary), form_.names));
  }
  if (isSummary(file(form_.summary))) names.insert(form_.summary);
  return names;
}

void ResultFolder::checkNames(const std::vector<std::string>& inputs) const {
  const std::set<std::string> own = ownNames();
  std::vector<std::string> names(form_.names.begin(), form_.names.end());
  names.emplace_back(form_.summary);
  for (const std::string& name : names) {
    for (const std::string& input : inputs) {
      if (!isSameFile(file(name), input) && !isSameFile(partial(name), input)) continue;
      throw Failure(
          Status::kFailed,
          input + " is an input, and the results would replace it; choose another folder");
    }
    if (!exists(file(name))) continue;
    if (own.contains(name) || ownNames().contains(name)) continue;  // one that has just ended
    throw Failure(Status::kFailed, file(name) +
                                       " is there, and no earlier result of velk-run lists it; "
                                       "remove it, or choose another folder");
  }
}

// The lock is one of the folder .partial, which a run that has just ended may have removed
// meanwhile.
FolderLock::FolderLock(std::string folder) : folder_(std::move(folder)) {
  const std::string partialFolder = folder_ + "/" + kPartialName;
  const auto fail = [&](const char* what) {
    const int reason = errno;
    rmdir(partialFolder.c_str());
    errno = reason;
    failFile(partialFolder, what);
  };
  while (lock_ < 0) {
    makeFolder(partialFolder);
    lock_ = open(partialFolder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (lock_ < 0 && errno != ENOENT) fail("opened");
    if (lock_ < 0) continue;
    if (!lockFile(lock_)) {
      const int reason = errno;
      unlock();
      if (reason == EWOULDBLOCK) throw Failure(Status::kFailed, "another run writes to " + folder_);
      errno = reason;
      fail("locked");
    }
    if (isCalled(lock_, partialFolder)) return;
    unlock();
  }
}

FolderLock::~FolderLock() {
  rmdir((folder_ + "/" + kPartialName).c_str());  // what a killed run has left there stays
  unlock();
}

void FolderLock::unlock() {
  close(lock_);
  lock_ = -1;
}

void ResultFolder::begin() {
  isMade_ = makeFolder(folder_);
  lock_ = std::make_unique<FolderLock>(folder_);
  std::vector<std::string> files;
  for (const char* name : form_.names) files.push_back(partial(name));
  cleanup_ = std::make_unique<SignalCleanup>(
      files, std::vector<std::string>{partial(kNativeName), file(kPartialName)});
}

// The lists of what earlier runs have written are there only while signals are held back.
void ResultFolder::clear() {
  cleanup_->hold();
  removeEarlier();
  isCleared_ = true;
  makeFolder(partial(kNativeName));
  cleanup_->release();
}

// The summary goes first, and its list stays until all that it lists is gone.
void ResultFolder::removeEarlier() {
  std::set<std::string> names = ownNames();
  if (names.erase(form_.summary) != 0) {
    move(file(form_.summary), file(kEarlierName));
    syncFile(folder_);
  }
  for (const std::string& name : names) removeFile(file(name));
  rmdir(file(kNativeName).c_str());  // unless somebody has put something there
  syncFile(folder_);
  for (const char* name : form_.names) removeFile(partial(name));
  for (const char* name : {kEarlierName, kNextName}) removeFile(file(name));
}

std::vector<ResultFile> ResultFolder::seal(int threads) {
  for (const char* name : form_.names) {
    if (exists(partial(name))) sealed_.push_back({name, 0, ""});
  }
  forEachInParallel(static_cast<std::size_t>(threads), sealed_.size(), [&](std::size_t n) {
    const std::string made = partial(sealed_[n].name);
    syncFile(made);
    sealed_[n].md5 = md5OfFile(made, sealed_[n].bytes);
  });
  return sealed_;
}

void ResultFolder::publish(const std::string& summary) {
  cleanup_->hold();
  writeFile(file(kNextName), summary);
  syncFile(file(kNextName));
  syncFile(file(kPartialName));
  for (const ResultFile& sealed : sealed_) {
    if (sealed.name.find('/') != std::string::npos) makeFolder(file(kNativeName));
    move(partial(sealed.name), file(sealed.name));
    published_.insert(sealed.name);
  }
  if (exists(file(kNativeName))) syncFile(file(kNativeName));
  syncFile(folder_);
  move(file(kNextName), file(form_.summary));
  published_.clear();
  isMade_ = false;
  syncFile(folder_);
  removePartial();
  lock_.reset();
  cleanup_->release();
}

void ResultFolder::removePublished() const {
  for (const std::string& name : published_) unlink(file(name).c_str());
  if (!published_.empty()) rmdir(file(kNativeName).c_str());
}

void ResultFolder::removePartial() const {
  for (const char* name : form_.names) unlink(partial(name).c_str());
  for (const char* name : {kEarlierName, kNextName}) unlink(file(name).c_str());
  rmdir(partial(kNativeName).c_str());
}

}  // namespace velk::run
