#include "run/wholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "run/diskFile.h"
#include "run/failure.h"

namespace velk::run {
namespace {

namespace fs = std::filesystem;

constexpr std::array kSignals{SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM};
constexpr int kMostTries = 1000;  // other threads may still make a file

// What the handler reads; it changes only while no handler is set.
std::vector<std::string> filesToRemove;
std::vector<std::string> foldersToRemove;
std::array<struct sigaction, kSignals.size()> actionsBefore;
struct sigaction sizeActionBefore;
volatile std::sig_atomic_t isHeld = 0;
volatile std::sig_atomic_t heldSignal = 0;

void endBy(int signal) {
  removeUnfinished();
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigaction(signal, &action, nullptr);
  raise(signal);
}

void handle(int signal) {
  if (isHeld != 0) {
    heldSignal = signal;
  } else {
    endBy(signal);
  }
}

}  // namespace

// Only what a handler may call.
void removeUnfinished() {
  for (int n = 0; n < kMostTries; ++n) {
    for (const std::string& file : filesToRemove) unlink(file.c_str());
    bool isDone = true;
    for (const std::string& folder : foldersToRemove) {
      if (rmdir(folder.c_str()) != 0 && errno == ENOTEMPTY) isDone = false;
    }
    if (isDone) return;
  }
}

SignalCleanup::SignalCleanup(const std::vector<std::string>& files,
                             const std::vector<std::string>& folders) {
  filesToRemove = files;
  foldersToRemove = folders;
  isHeld = 0;
  heldSignal = 0;
  struct sigaction action {};
  action.sa_handler = handle;
  action.sa_flags = SA_RESTART;
  sigfillset(&action.sa_mask);
  for (std::size_t n = 0; n < kSignals.size(); ++n) {
    sigaction(kSignals[n], nullptr, &actionsBefore[n]);
    if (actionsBefore[n].sa_handler != SIG_IGN) sigaction(kSignals[n], &action, nullptr);
  }
  struct sigaction ignored {};
  ignored.sa_handler = SIG_IGN;
  sigaction(SIGXFSZ, &ignored, &sizeActionBefore);
}

SignalCleanup::~SignalCleanup() {
  release();
  for (std::size_t n = 0; n < kSignals.size(); ++n) {
    sigaction(kSignals[n], &actionsBefore[n], nullptr);
  }
  sigaction(SIGXFSZ, &sizeActionBefore, nullptr);
  filesToRemove.clear();
  foldersToRemove.clear();
}

void SignalCleanup::hold() {
  isHeld = 1;
}

void SignalCleanup::release() {
  isHeld = 0;
  if (heldSignal != 0) endBy(heldSignal);
}

namespace {

// What `file` is called until it is whole. A link stays: it is the file that it leads to.
std::string targetOf(const std::string& file) {
  std::error_code ignored;
  const fs::path target = fs::canonical(file, ignored);
  return target.empty() ? file : target.string();
}
std::string partialOf(const std::string& file) {
  return targetOf(file) + ".partial";
}

// The unfinished file, locked. One that a process has just renamed, or removed, is no longer it.
std::unique_ptr<Descriptor> openPartial(const std::string& file, const std::string& partial) {
  for (;;) {
    auto output = std::make_unique<Descriptor>(partial, O_WRONLY | O_CREAT | O_NOFOLLOW,
                                               fs::is_symlink(partial) ? partial : file);
    if (!lockFile(output->get())) {
      if (errno != EWOULDBLOCK) failFile(partial, "locked");
      throw Failure(Status::kFailed, "another run writes to " + file);
    }
    if (isCalled(output->get(), partial)) return output;
  }
}

}  // namespace

void requireNoInput(const std::string& file, const std::vector<std::string>& inputs,
                    const std::string& what) {
  for (const std::string& input : inputs) {
    for (const std::string& written : {file, partialOf(file)}) {
      std::error_code ignored;
      if (!fs::equivalent(written, input, ignored)) continue;
      throw Failure(Status::kFailed, input + " is an input, and the " + what + " would replace it");
    }
  }
}

void writeWhole(const std::string& file,
                const std::function<void(int descriptor, const std::string& name)>& write) {
  std::error_code ignored;
  const auto status = fs::status(file, ignored);
  const bool isThere = fs::exists(status);
  if (isThere && !fs::is_regular_file(status)) {
    Descriptor output(file, O_WRONLY);
    write(output.get(), file);
    if (!output.close()) failFile(file, "written");
    return;
  }
  const std::string target = targetOf(file);
  const std::string partial = partialOf(file);
  const std::unique_ptr<Descriptor> output = openPartial(file, partial);
  const SignalCleanup cleanup({partial}, {});
  try {
    if (ftruncate(output->get(), 0) != 0) failFile(partial, "written");
    write(output->get(), partial);
    syncFile(partial);
    if (std::rename(partial.c_str(), target.c_str()) != 0) failFile(file, "made");
  } catch (...) {
    std::remove(partial.c_str());
    throw;
  }
}

void writeWhole(const std::string& file, std::string_view text) {
  writeWhole(file, [text](int descriptor, const std::string& name) {
    writeDescriptor(descriptor, name, text);
  });
}

}  // namespace velk::run
