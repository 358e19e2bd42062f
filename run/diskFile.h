// Files on disk, by their names: small ones written at once, any of them synced and summed; and a
// file that is read where it lies in memory, which all processes share.
//
// While a file is mapped, a part of it that can't be read when it is wanted, as somebody has cut
// the file or its disk fails, ends the process with status 1 after a message, and without its
// unfinished files (run/wholeFile.h).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velk::run {

/// Throws Failure saying that `file` can't be WHAT ("made", "written" ...), and why.
[[noreturn]] void failFile(const std::string& file, const char* what);

/// A file that is open, closed at the end.
class Descriptor {
 public:
  /// Opens a file as open(2) does, closed in other programs. Throws Failure, which calls the file
  /// `name`, or as it is called.
  Descriptor(const std::string& file, int flags) : Descriptor(file, flags, file) {}
  Descriptor(const std::string& file, int flags, const std::string& name);
  ~Descriptor();
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return descriptor_; }

  /// Returns whether nothing failed.
  bool close();

 private:
  int descriptor_;
};

/// Writes a file. Throws Failure.
void writeFile(const std::string& file, std::string_view text);

/// Writes to an open file that messages call `name`. Throws Failure.
void writeDescriptor(int descriptor, const std::string& name, std::string_view text);

/// All of a file. Throws Failure.
std::string readFile(const std::string& file);

/// All that an open file still has. Throws Failure.
std::string readDescriptor(int descriptor, const std::string& name);

/// Has a file, or a folder's entries, on disk. Throws Failure.
void syncFile(const std::string& file);

/// The MD5 sum of a file in hexadecimal digits, and its size (out). Throws Failure.
std::string md5OfFile(const std::string& file, uint64_t& bytes);

/// Whether an open file, or folder, is the one that has this name now.
bool isCalled(int descriptor, const std::string& name);

/// Locks an open file, or folder, for this process. Returns false, with errno set, where that
/// fails: EWOULDBLOCK where another one has it. Some file systems have no locks; there two
/// processes are not distinguished.
bool lockFile(int descriptor);

/// Whether there is anything of that name. Throws Failure where that cannot be found out.
bool exists(const std::string& file);

/// One object at a time.
class MappedFile {
 public:
  /// Maps all of a regular file. Throws Failure.
  explicit MappedFile(const std::string& file);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  uint64_t bytes() const { return bytes_; }

  /// To be read only. Null where the file is empty.
  char* memory() const { return memory_; }

 private:
  char* memory_ = nullptr;
  uint64_t bytes_ = 0;
};

}  // namespace velk::run
