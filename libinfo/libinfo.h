// The read libraries: the records of one run and the loader that reads them from the library file.
//
// The driver calls Loadlib once, after the options are parsed and before any worker exists, and
// Libsclear once at the end of the run. In between the records are read-only. The grammar of the
// library file is described in doc/library.md.
#pragma once

#include <cstdint>
#include <string>

namespace velk {

using Len_t = uint32_t;  // a count of files or reads

struct Pair {
  std::string read1file;  // first mates, or both mates interleaved when read2file is empty
  std::string read2file;  // second mates
};

struct Single {
  std::string readfile;
};

struct SingleQual {
  std::string readfile;
};

/// One [LIB] section of the library file; the comment gives the key that sets a field.
struct Lib {
  int min_ins = 0;                   // min_ins: minimum insert size, bases
  int max_ins = 0;                   // max_ins: maximum insert size, bases
  int avg_ins = 0;                   // avg_ins: average insert size, bases; 0 means single-end
  int rd_len_cutoff = 0;             // rd_len_cutoff: read length cut-off, bases
  int reverse = 0;                   // reverse_seq: reverse-sequence flag
  int asm_flag = 3;                  // asm_flags: assembly-use flags
  Len_t sfilenum = 0;                // entries of single
  Len_t s2filenum = 0;               // entries of single2
  Len_t pfilenum = 0;                // entries of pairs
  Len_t qfilenum = 0;                // entries of singlequal
  Len_t preadSum = 0;                // pair_reads_sum: declared number of paired reads
  Len_t sreadSum = 0;                // reads_sum: declared number of single reads
  Pair* pairs = nullptr;             // q1/f1 and q2/f2, in file order; owned
  Single* single = nullptr;          // f: single-end FASTA files; owned
  Single* single2 = nullptr;         // p: files that hold both mates of every pair; owned
  SingleQual* singlequal = nullptr;  // q: single-end FASTQ files; lives until the process ends

  Lib() = default;
  Lib(const Lib&) = delete;
  Lib& operator=(const Lib&) = delete;
  ~Lib();
};

/// Loads the library file `file`: sets `libs` to a new array of `libsNum` records (inout; release
/// it with Libsclear), MAXINSERT to the largest avg_ins and BIGGAPLEN to readLen plus the largest
/// avg_ins below MINLARGEINSERT. Progress goes to the listener.
/// Exits with status 255 after "Fail to open FILE" when the file cannot be opened, with status 1
/// when it cannot be read.
void Loadlib(const std::string& file, Lib*& libs, int& libsNum);

/// Splits `line` at its first "=" into `id` and `value` (out); a carriage return at the end of a
/// value of three or more characters is dropped. Returns false, and fills nothing, without a "=".
bool splitColumn(const std::string& line, std::string& id, std::string& value);

/// Releases the array made by Loadlib; does nothing for a null array.
void Libsclear(Lib* libs, int libsNum);

/// Releases the arrays behind Lib::singlequal of all records. For a process that makes many runs:
/// between two of them.
void releaseSingleQuals();

}  // namespace velk
