// reads.bam: its records in bytes that can be kept, sorted and written later (doc/places.md
// describes their tags), and the file with its index. Records come in the order in which they stand
// in the file; the bytes do not depend on the number of threads. One thread writes, any may encode.
#pragma once

#include <htslib/hts.h>
#include <htslib/sam.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "run/alignmentRecords.h"
#include "run/assembly.h"
#include "run/library.h"

namespace velk::run {

/// Handles of htslib that are released by themselves.
struct HtsCloser {
  void operator()(htsFile* file) const { sam_close(file); }
  void operator()(sam_hdr_t* header) const { sam_hdr_destroy(header); }
  void operator()(bam1_t* record) const { bam_destroy1(record); }
  void operator()(hts_idx_t* index) const { hts_idx_destroy(index); }
  void operator()(hts_itr_t* iterator) const { hts_itr_destroy(iterator); }
};

template <class T>
using HtsHandle = std::unique_ptr<T, HtsCloser>;

/// The record with its tags; `readGroup` is its library's. Any thread may call it. Throws Failure
/// for what BAM cannot hold: a name of more than 254 letters.
std::string encodeBam(const OutRecord& record, const std::string& readGroup);

/// Whose record it is, read from encodeBam()'s bytes, which the name is part of.
struct BamName {
  uint32_t library;
  std::string_view name;
};
BamName bamNameOf(std::string_view bytes);

/// Fills `record` (out) from encodeBam()'s bytes, with `namePrefix` in front of its name. Throws
/// Failure where the name becomes too long.
void decodeBam(std::string_view bytes, std::string_view namePrefix, bam1_t* record);

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
