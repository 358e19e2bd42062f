// Text inputs of the main thread, read line by line: no failure to read passes for their end.
//
// For the library file and the assembly; read files have line sources of their own
// (streaming/lineSource.h).
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

namespace velk {

class TextInput {
 public:
  explicit TextInput(const std::string& file) : file_(file), stream_(file) {}

  /// Whether the file could be opened.
  bool isOpen() const { return stream_.is_open(); }

  /// Reads the next line, ended by '\n' alone, into `line` (out). Returns false, and empties
  /// `line`, at the end of the file. Exits with status 1 after "[ERROR]: can't read FILE: REASON"
  /// when the file can't be read.
  bool readLine(std::string& line);

  const std::string& file() const { return file_; }

  /// The number of the line read last, from 1; 0 before the first.
  uint64_t lineNumber() const { return lineNumber_; }

  /// "FILE, line N", for messages about the line read last.
  std::string place() const;

 private:
  std::string file_;
  std::ifstream stream_;
  uint64_t lineNumber_ = 0;
};

/// Ends the run with "[ERROR]: can't read FILE: Illegal seek", status 1, when `file` is a pipe: it
/// gives its bytes once only, and inputs that are opened twice would come out short.
void refusePipe(const std::string& file);

}  // namespace velk
