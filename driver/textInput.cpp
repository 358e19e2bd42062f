#include "driver/textInput.h"

#include <sys/stat.h>

#include <cerrno>

#include "driver/fatal.h"

namespace velk {

bool TextInput::readLine(std::string& line) {
  // With badbit as an exception getline passes on what it met, a failed read or lack of memory.
  try {
    stream_.exceptions(std::ios::badbit);
    if (std::getline(stream_, line)) {
      ++lineNumber_;
      return true;
    }
  } catch (const std::ios::failure&) {
    failReading(file_);
  }
  line.clear();
  return false;
}

std::string TextInput::place() const {
  return file_ + ", line " + std::to_string(lineNumber_);
}

void refusePipe(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode)) return;
  errno = ESPIPE;
  failReading(file);
}

}  // namespace velk
