// Output files: opened only where they replace no input, checked when they are finished.
//
// The driver first passes every input of the run to protectFile(). Each output is then opened with
// openOutput() and ended with finishOutput() (or, while it stays open, looked at with
// requireWritten()), so a run that ends with status 0 has every byte on disk. A run that ends early
// keeps what was written to its open outputs. Main thread only.
//
// Every program calls openStandardDescriptors() before anything else. Otherwise the first file that
// it opens gets the number of a closed one of standard input, output and error, and messages land
// in it.
#pragma once

#include <fstream>
#include <string>

namespace velk {

/// Opens each of the descriptors 0 to 2 that is closed on /dev/null, so that it stays unreadable or
/// unwritable as a closed one is. Exits with status 1 after "[ERROR]: can't open /dev/null: REASON"
/// when that fails.
void openStandardDescriptors();

/// Keeps the file named `file`, if it exists, from being opened as an output.
void protectFile(const std::string& file);

/// Lifts the protection that one protectFile(file) gave.
void unprotectFile(const std::string& file);

/// An output that lives in a function, which it may leave unfinished by an exception: it then keeps
/// what was written, as far as that can be written.
class LocalOutput : public std::ofstream {
 public:
  ~LocalOutput() override;
};

/// Opens `output` on `file` for writing with truncation and protects the file from later outputs.
/// Returns whether it could be opened. REQUIRES: `output` is a LocalOutput, or finishOutput(output)
/// comes before it is destroyed, unless the process ends first. Exits with status 1, the file
/// untouched, after "[ERROR]: output file FILE is the same file as OTHER" when it is protected and
/// after "[ERROR]: can't read NAME: REASON" when that cannot be found out.
bool openOutput(std::ofstream& output, const std::string& file);

/// Exits with status 1 after "[ERROR]: can't write FILE: REASON" when a write to `output` failed.
void requireWritten(const std::ofstream& output, const std::string& file);

/// Flushes and closes `output`; exits like requireWritten() when any byte could not be written.
void finishOutput(std::ofstream& output, const std::string& file);

/// Forgets all protected and all open files. For a process that makes many runs: between two of
/// them.
void forgetFiles();

}  // namespace velk
