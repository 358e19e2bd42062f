// The assembly's file: FASTA of any width and case, plain or compressed.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace velk::run {

struct AssemblyNotes;

/// The first character that the name of a reference sequence in a SAM file cannot have; 0 without
/// one. REQUIRES: the name is not empty.
char forbiddenIn(std::string_view name);

/// Calls onScaffold(name, bases) for each scaffold that has a base, in order: the header up to its
/// first blank, and the bases in upper case. Adds what it fixed to `notes` (inout). Throws Failure
/// where a name cannot stand in a SAM file or occurs twice, where sequence stands in front of the
/// first header or a character is no letter, and where a scaffold is too long; throws
/// reads::InputError where the file cannot be read.
void readFasta(const std::string& file, AssemblyNotes& notes,
               const std::function<void(const std::string&, const std::string&)>& onScaffold);

}  // namespace velk::run
