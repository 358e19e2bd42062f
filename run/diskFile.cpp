#include "run/diskFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include "run/checksum.h"
#include "run/failure.h"
#include "run/wholeFile.h"

namespace velk::run {
namespace {

constexpr std::size_t kReadBytes = std::size_t{1} << 18;

// Reads a file to its end, part by part.
template <class Take>
void forEachPart(int descriptor, const std::string& name, Take take) {
  std::vector<char> buffer(kReadBytes);
  for (;;) {
    const ssize_t got = read(descriptor, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) failFile(name, "read");
    if (got == 0) return;
    take(std::string_view(buffer.data(), static_cast<std::size_t>(got)));
  }
}

}  // namespace

Descriptor::Descriptor(const std::string& file, int flags, const std::string& name)
    : descriptor_(open(file.c_str(), flags | O_CLOEXEC, 0666)) {
  if (descriptor_ < 0) failFile(name, "opened");
}

Descriptor::~Descriptor() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

bool Descriptor::close() {
  const int result = ::close(descriptor_);
  descriptor_ = -1;
  return result == 0;
}

void failFile(const std::string& file, const char* what) {
  throw Failure(Status::kFailed, file + " can't be " + what + ": " + std::strerror(errno));
}

void writeDescriptor(int descriptor, const std::string& name, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) failFile(name, "written");
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void writeFile(const std::string& file, std::string_view text) {
  Descriptor output(file, O_WRONLY | O_CREAT | O_TRUNC);
  writeDescriptor(output.get(), file, text);
  if (!output.close()) failFile(file, "written");
}

void syncFile(const std::string& file) {
  Descriptor output(file, O_RDONLY);
  // Some file systems have nothing to sync, which is no failure.
  if (fsync(output.get()) != 0 && errno != EINVAL && errno != EROFS) failFile(file, "written");
  if (!output.close()) failFile(file, "written");
}

std::string readDescriptor(int descriptor, const std::string& name) {
  std::string text;
  forEachPart(descriptor, name, [&](std::string_view part) { text.append(part); });
  return text;
}

std::string readFile(const std::string& file) {
  const Descriptor input(file, O_RDONLY);
  return readDescriptor(input.get(), file);
}

std::string md5OfFile(const std::string& file, uint64_t& bytes) {
  const Descriptor input(file, O_RDONLY);
  Md5 md5;
  bytes = 0;
  forEachPart(input.get(), file, [&](std::string_view part) {
    md5.add(part);
    bytes += part.size();
  });
  return md5.sum();
}

bool isCalled(int descriptor, const std::string& name) {
  struct stat a {};
  struct stat b {};
  return fstat(descriptor, &a) == 0 && stat(name.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
         a.st_ino == b.st_ino;
}

bool lockFile(int descriptor) {
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return true;
  return errno == ENOSYS || errno == ENOLCK || errno == EOPNOTSUPP;
}

bool exists(const std::string& file) {
  struct stat status {};
  if (lstat(file.c_str(), &status) == 0) return true;
  if (errno != ENOENT && errno != ENOTDIR) failFile(file, "looked at");
  return false;
}

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
  const Descriptor input(file, O_RDONLY | O_NONBLOCK);  // a pipe is refused, not waited for
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
