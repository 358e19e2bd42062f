#include "run/signalCleanup.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace velk::run {
namespace {

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

}  // namespace velk::run
