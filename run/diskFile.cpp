#include "run/diskFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "run/failure.h"
#include "run/md5.h"

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

Descriptor::Descriptor(const std::string& file, int flags)
    : descriptor_(open(file.c_str(), flags | O_CLOEXEC, 0666)) {
  if (descriptor_ < 0) failFile(file, "opened");
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

}  // namespace velk::run
