// A file that is there as a whole or not at all: it has another name until it is on disk.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::run {

/// Throws Failure where `file`, which is to become WHAT ("plan" ...), is one of the inputs.
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
