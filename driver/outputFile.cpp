#include "driver/outputFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "driver/fatal.h"

namespace velk {
namespace {

std::vector<std::string> protectedFiles;  // inputs, then outputs, in the order they were named

// Returns whether both names lead to one existing file.
bool sameFile(const std::string& one, const std::string& other) {
  struct stat oneStat {};
  struct stat otherStat {};
  return stat(one.c_str(), &oneStat) == 0 && stat(other.c_str(), &otherStat) == 0 &&
         oneStat.st_dev == otherStat.st_dev && oneStat.st_ino == otherStat.st_ino;
}

}  // namespace

void protectFile(const std::string& file) {
  protectedFiles.push_back(file);
}

void unprotectFile(const std::string& file) {
  const auto found = std::find(protectedFiles.begin(), protectedFiles.end(), file);
  if (found != protectedFiles.end()) protectedFiles.erase(found);
}

bool openOutput(std::ofstream& output, const std::string& file) {
  for (const std::string& other : protectedFiles) {
    if (sameFile(file, other)) {
      fatal(kUserError, "[ERROR]: output file " + file + " is the same file as " + other + "\n");
    }
  }
  output.open(file, std::ios::out | std::ios::trunc);
  if (!output.is_open()) return false;
  protectFile(file);
  return true;
}

void requireWritten(const std::ofstream& output, const std::string& file) {
  if (output.good()) return;
  const std::string reason = std::strerror(errno);
  fatal(kUserError, "[ERROR]: can't write " + file + ": " + reason + "\n");
}

void finishOutput(std::ofstream& output, const std::string& file) {
  requireWritten(output, file);
  output.close();
  requireWritten(output, file);
}

}  // namespace velk
