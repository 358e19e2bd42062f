// What the fuzz targets share: inputs taken apart, runs that end early, findings.
//
// A target is a program with one tryInput(). It makes an input of velk of the bytes, lets velk work
// on it in the same process, and compares the result with what a plain model or a rule says. The
// preset `fuzz` links it with libFuzzer, all others with replayMain.cpp, which runs it over the
// files of a corpus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driver/listener.h"
#include "driver/outputFile.h"

namespace velk::fuzz {

/// Thrown in place of the end of the process.
struct RunEnded {
  int status;
};

/// The status of an action that came to its own end.
inline constexpr int kRanOn = -1;

/// Does `action`. Returns the status with which it ended the run, or kRanOn. REQUIRES: a Said
/// lives.
template <class Action>
int statusOf(Action action) {
  try {
    action();
  } catch (const RunEnded& end) {
    forgetFiles();  // the streams of the open ones are gone
    return end.status;
  }
  return kRanOn;
}

/// Reports that velk has given a wrong result and ends the process.
[[noreturn]] void finding(std::string_view what);

/// A finding unless `holds`.
inline void require(bool holds, std::string_view what) {
  if (!holds) finding(what);
}

/// An input: some bytes that choose parameters, then a text.
class Input {
 public:
  Input(const uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  /// The next byte as a number below 64, so that '@' stands for 0, 'A' for 1 and so on; 0 at the
  /// end.
  int next();

  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

/// The lines of `text` as std::getline gives them.
std::vector<std::string> linesOf(std::string_view text);

/// `text` cut at every `separator`; one part without any.
std::vector<std::string> partsOf(std::string_view text, char separator);

/// The decimal number at the start of `text`, as velk should take it.
int64_t numberIn(std::string_view text);

/// The same, cut to 32 bits.
int intIn(std::string_view text);

/// Collects what velk says during its life, and throws RunEnded where velk would end the process.
class Said final : public Listener {
 public:
  void say(std::string_view text) override { errors_ += text; }
  [[noreturn]] void end(ExitStatus status, std::string_view message) override;
  [[noreturn]] void endOnOutput(ExitStatus status, std::string_view text) override;

  const std::string& errors() const { return errors_; }
  const std::string& output() const { return output_; }

 private:
  std::string errors_;
  std::string output_;
  ListenerInUse inUse_{*this};
};

/// A file in memory that has a name.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const std::string& name() const { return name_; }

  void fill(std::string_view content) const;

 private:
  int descriptor_;
  std::string name_;
};

/// Writes `content` to the file `name`, in place of what it held.
void writeFile(const std::string& name, std::string_view content);

/// What the file `name` holds; a finding when it cannot be read.
std::string contentOf(const std::string& name);

/// Gives all run parameters their defaults and forgets what else is left of an earlier run's files.
void startAfresh();

/// What a target does with an input; called after startAfresh(). Each target defines it.
void tryInput(Input input);

}  // namespace velk::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);
