// reads.bam and its index. Records come in the order in which they stand in the file; the bytes do
// not depend on the number of threads. One thread calls.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "run/assembly.h"
#include "run/library.h"

namespace velk::run {

/// What the header says of the run.
struct RunNames {
  std::string sample;
  std::string version;                // of the program
  std::string platform = "ILLUMINA";  // that sequenced the reads; empty: not said
};

/// The header: coordinate order, the scaffolds, a read group for each library, the program.
std::string bamHeader(const Assembly& assembly, const std::vector<Library>& libraries,
                      const RunNames& names);

/// Whether the index is CSI, as scaffolds of more than 2^29 - 1 bases ask for, or else BAI.
bool needsLongIndex(const Assembly& assembly);

class BamWriter {
 public:
  /// Makes the file and writes the header. Throws Failure. `helpers`: threads that compress.
  BamWriter(const std::string& file, const std::string& indexFile, const std::string& header,
            bool hasLongIndex, int helpers);
  ~BamWriter();
  BamWriter(const BamWriter&) = delete;
  BamWriter& operator=(const BamWriter&) = delete;

  /// Writes a record that encodeBam() has made, `namePrefix` in front of its name. Throws Failure.
  void write(std::string_view record, std::string_view namePrefix);

  /// Ends both files. Throws Failure.
  void close();

 private:
  struct Handles;

  [[noreturn]] void fail(const std::string& file) const;

  std::string file_;
  std::string indexFile_;
  std::unique_ptr<Handles> handles_;
};

}  // namespace velk::run
