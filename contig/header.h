// What the loaders of both kinds of input ask of a header and of a contig; files of another kind in
// the place of the scaffolds: the error with which the run then ends does not say so; these
// warnings do, and name the file. Main thread only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "driver/fatal.h"
#include "driver/textInput.h"

namespace velk {

/// Gives a warning when the first line of `file` begins as a compressed file does, or when `line`,
/// which no header precedes, opens a section of a library file. Returns whether it did.
bool warnOfOtherKind(const std::string& file, const std::string& line, bool isFirstLine);

/// What stands before the id in a header of this system's own.
inline constexpr std::string_view kScaffoldWord = ">scaffold";

/// The same in a header of a scaffold file that holds a C.
inline constexpr std::string_view kLetterWord = ">C";

/// The scaffold's id in what a contig's header holds behind kScaffoldWord: up to the first '_'.
std::string scaffoldPart(const std::string& contigId);

/// Returns `header`, the line that `input` read last, without its first `dropped` characters.
/// Exits with `status` after an "[ERROR]: ..." message when it has fewer than these.
std::string idAfter(const std::string& header, std::size_t dropped, const TextInput& input,
                    ExitStatus status);

/// Ends the run with `status` when a contig of `length` bases is longer than a signed 32-bit
/// number can say, which the arithmetic of placement rests on.
void requireContigLength(std::size_t length, const std::string& file, const std::string& id,
                         ExitStatus status);

/// Ends the run with `status`: the second reading of `file` disagrees with the first.
[[noreturn]] void failChanged(const std::string& file, ExitStatus status);

}  // namespace velk
