#include "driver/outputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "driver/fatal.h"

namespace velk {
namespace {

std::vector<std::string> protectedFiles;  // inputs, then outputs, in the order they were named
std::vector<std::ofstream*> unfinished;   // outputs that are open

// Puts what is known of `file` into `status`; returns false when no such file can be reached, which
// opening it will report. Exits when it cannot be known, as the file might be an input.
bool lookUp(const std::string& file, struct stat& status) {
  if (stat(file.c_str(), &status) == 0) return true;
  constexpr int kNoSuchFile[] = {ENOENT, ENOTDIR, EACCES, ELOOP, ENAMETOOLONG};
  if (std::find(std::begin(kNoSuchFile), std::end(kNoSuchFile), errno) == std::end(kNoSuchFile)) {
    failReading(file);
  }
  return false;
}

// Returns whether both names lead to one file that exists.
bool isSameFile(const std::string& one, const std::string& other) {
  struct stat oneStatus {};
  struct stat otherStatus {};
  return lookUp(one, oneStatus) && lookUp(other, otherStatus) &&
         oneStatus.st_dev == otherStatus.st_dev && oneStatus.st_ino == otherStatus.st_ino;
}

void refuseProtected(const std::string& file) {
  const auto found =
      std::find_if(protectedFiles.begin(), protectedFiles.end(),
                   [&](const std::string& other) { return isSameFile(file, other); });
  if (found == protectedFiles.end()) return;
  fatal(kUserError, "[ERROR]: output file " + file + " is the same file as " + *found + "\n");
}

// exit() flushes no stream that lives in a function; what was written must stay all the same.
void flushUnfinished() {
  for (std::ofstream* output : unfinished) output->flush();
}

}  // namespace

LocalOutput::~LocalOutput() {
  std::erase(unfinished, this);
}

void protectFile(const std::string& file) {
  protectedFiles.push_back(file);
}

void unprotectFile(const std::string& file) {
  const auto found = std::find(protectedFiles.begin(), protectedFiles.end(), file);
  if (found != protectedFiles.end()) protectedFiles.erase(found);
}

bool openOutput(std::ofstream& output, const std::string& file) {
  refuseProtected(file);
  output.open(file, std::ios::out | std::ios::trunc);
  if (!output.is_open()) return false;
  refuseProtected(file);  // opening has made the file, if it was an input that did not exist
  protectFile(file);
  static const int kRegistered = std::atexit(flushUnfinished);
  static_cast<void>(kRegistered);
  unfinished.push_back(&output);
  return true;
}

void requireWritten(const std::ofstream& output, const std::string& file) {
  if (output.good()) return;
  const std::string reason = std::strerror(errno);
  fatal(kUserError, "[ERROR]: can't write " + file + ": " + reason + "\n");
}

void finishOutput(std::ofstream& output, const std::string& file) {
  requireWritten(output, file);
  std::erase(unfinished, &output);
  output.close();
  requireWritten(output, file);
}

void forgetFiles() {
  protectedFiles.clear();
  unfinished.clear();
}

void openStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    // All lower numbers are taken, so open() gives this one. The direction is the useless one:
    // whatever is written fails, as it would have, instead of passing for written.
    const int direction = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (open("/dev/null", direction) != descriptor) {
      const std::string reason = std::strerror(errno);
      fatal(kUserError, "[ERROR]: can't open /dev/null: " + reason + "\n");
    }
  }
}

}  // namespace velk
