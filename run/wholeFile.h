// Files that are there as a whole or not at all: one has another name until it is on disk, and a
// signal that ends the process removes what is unfinished.
//
// SIGHUP, SIGINT, SIGQUIT, SIGPIPE and SIGTERM remove the files and then end the process as they
// always do; one that was ignored stays so. SIGXFSZ is ignored, so that a file that grows too large
// is an error of its write.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::run {

/// Removes unfinished files while it lives and a signal ends the process. One object at a time.
class SignalCleanup {
 public:
  /// `files` are removed first, then `folders`, in this order.
  SignalCleanup(const std::vector<std::string>& files, const std::vector<std::string>& folders);
  ~SignalCleanup();
  SignalCleanup(const SignalCleanup&) = delete;
  SignalCleanup& operator=(const SignalCleanup&) = delete;

  /// Between these two a signal waits.
  void hold();
  void release();
};

/// Removes the files and folders of the object that lives, if any; a handler of signals may call
/// it.
void removeUnfinished();

/// Throws Failure where `file`, which writeWhole() is to make WHAT ("plan" ...), or what it is
/// called until it is whole, is one of the inputs.
void requireNoInput(const std::string& file, const std::vector<std::string>& inputs,
                    const std::string& what);

/// Makes `file`, which replaces another one: write(descriptor, name) writes to a new file that is
/// called so until then, and is removed where anything fails or a signal ends the process. A link
/// stays, and the file that it leads to is replaced; what is no regular file, such as a pipe, is
/// written as it stands. Throws Failure, also where another process is making the same file.
void writeWhole(const std::string& file,
                const std::function<void(int descriptor, const std::string& name)>& write);

/// The same with a text.
void writeWhole(const std::string& file, std::string_view text);

}  // namespace velk::run
