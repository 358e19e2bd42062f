#include "report/partialFolder.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "run/diskFile.h"
#include "run/resultNames.h"

namespace velk::report {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = ".velk-report";

std::vector<std::string> filesIn(const std::vector<std::string>& folders,
                                 const std::vector<std::string>& names) {
  std::vector<std::string> files;
  for (const std::string& folder : folders) {
    for (const std::string& name : names) files.push_back(folder + "/" + name);
  }
  return files;
}

void require(const std::error_code& error, const std::string& file, const char* what) {
  if (!error) return;
  errno = error.value();
  run::failFile(file, what);
}

// Holds all signals back.
class SignalsWait {
 public:
  SignalsWait() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsWait() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

PartialFolder::PartialFolder(const std::string& folder, std::vector<std::string> names)
    : folder_(folder),
      path_(folder + "/" + kName),
      earlier_(path_ + "/earlier"),
      names_(std::move(names)) {
  const SignalsWait signalsWait;
  std::vector<std::string> folders{earlier_, path_};
  if (access((folder + "/.").c_str(), W_OK) == 0) {
    lock_ = std::make_unique<run::FolderLock>(folder);
    folders.push_back(folder + "/" + run::kPartialName);
  }
  cleanup_ = std::make_unique<run::SignalCleanup>(filesIn({earlier_, path_}, names_), folders);
}

// From when on others may make .partial, a signal must not remove it.
PartialFolder::~PartialFolder() {
  remove();
  const SignalsWait signalsWait;
  cleanup_.reset();
  lock_.reset();
}

bool PartialFolder::isLeft() const {
  return run::exists(path_);
}

void PartialFolder::make() const {
  remove();
  std::error_code error;
  fs::create_directories(earlier_, error);
  require(error, path_, "made");
}

void PartialFolder::moveAll() {
  keepEarlier();
  cleanup_->hold();
  std::size_t moved = 0;
  try {
    for (; moved < names_.size(); ++moved) {
      const std::string to = folder_ + "/" + names_[moved];
      if (std::rename((path_ + "/" + names_[moved]).c_str(), to.c_str()) != 0) {
        run::failFile(to, "made");
      }
    }
  } catch (...) {
    restore(moved);
    cleanup_->release();
    throw;
  }
  cleanup_->release();
}

void PartialFolder::keepEarlier() const {
  for (const std::string& name : names_) {
    const std::string file = folder_ + "/" + name;
    if (!run::exists(file)) continue;
    std::error_code error;
    fs::copy_file(file, earlier_ + "/" + name, error);
    require(error, earlier_ + "/" + name, "made");
  }
}

// What fails here cannot be helped.
void PartialFolder::restore(std::size_t moved) const {
  for (std::size_t n = 0; n < moved; ++n) {
    const std::string file = folder_ + "/" + names_[n];
    std::error_code ignored;
    const std::string earlier = earlier_ + "/" + names_[n];
    fs::exists(earlier, ignored) ? fs::rename(earlier, file, ignored)
                                 : static_cast<void>(fs::remove(file, ignored));
  }
}

void PartialFolder::remove() const {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

}  // namespace velk::report
