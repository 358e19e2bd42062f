#include "run/mappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "run/diskFile.h"
#include "run/failure.h"
#include "run/signalCleanup.h"

namespace velk::run {
namespace {

// What the handler reads; it changes only while no handler is set.
const char* mappedStart;
uint64_t mappedBytes;
std::string message;

void handleFault(int signal, siginfo_t* fault, void*) {
  const auto* at = static_cast<const char*>(fault->si_addr);
  if (at < mappedStart || at >= mappedStart + mappedBytes) {
    ::signal(signal, SIG_DFL);  // the fault comes again, and ends the process
    return;
  }
  // Only what a handler may call.
  const ssize_t ignored = write(STDERR_FILENO, message.data(), message.size());
  static_cast<void>(ignored);
  removeUnfinished();
  _exit(static_cast<int>(Status::kFailed));
}

}  // namespace

MappedFile::MappedFile(const std::string& file) {
  const Descriptor input(file, O_RDONLY);
  struct stat status {};
  if (fstat(input.get(), &status) != 0) failFile(file, "read");
  if (!S_ISREG(status.st_mode)) throw Failure(Status::kFailed, file + " is no regular file");
  bytes_ = static_cast<uint64_t>(status.st_size);
  if (bytes_ == 0) return;
  void* const mapped = mmap(nullptr, bytes_, PROT_READ, MAP_SHARED, input.get(), 0);
  if (mapped == MAP_FAILED) failFile(file, "mapped");
  // File systems that have huge pages give them; others take no notice.
  madvise(mapped, bytes_, MADV_HUGEPAGE);
  memory_ = static_cast<char*>(mapped);
  mappedStart = memory_;
  mappedBytes = bytes_;
  message =
      "[ERROR]: " + file + " can't be read: it was cut while it was in use, or its disk fails\n";
  struct sigaction action {};
  action.sa_sigaction = handleFault;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGBUS, &action, nullptr);
}

MappedFile::~MappedFile() {
  if (memory_ == nullptr) return;
  ::signal(SIGBUS, SIG_DFL);
  munmap(memory_, bytes_);
}

}  // namespace velk::run
