// Text inputs of the main thread, read line by line: no failure to read passes for their end.
//
// For the library file and the assembly; read files have line sources of their own
// (streaming/lineSource.h).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velk {

class TextInput {
 public:
  explicit TextInput(const std::string& file);
  TextInput(TextInput&& other) noexcept;
  TextInput(const TextInput&) = delete;
  TextInput& operator=(const TextInput&) = delete;
  ~TextInput();

  /// Whether the file could be opened.
  bool isOpen() const { return descriptor_ >= 0; }

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
  // Reads the next block. Returns false at the end of the file.
  bool readBlock();

  std::string file_;
  std::unique_ptr<char[]> block_;
  int descriptor_;
  std::string_view unread_;  // of the block
  uint64_t lineNumber_ = 0;
};

/// Ends the run with "[ERROR]: can't read FILE: Illegal seek", status 1, when `file` is a pipe: it
/// gives its bytes once only, and inputs that are opened twice would come out short.
void refusePipe(const std::string& file);

}  // namespace velk
