// The run parameters and fixed constants of velk, the option parser that writes them and the help.
//
// Every other file may read these globals. They hold their defaults from process start, are written
// by mGetOptions (and BIGGAPLEN and MAXINSERT by Loadlib) on the main thread, and never change once
// the worker threads exist; workers read them without locks.
#pragma once

#include <cstdint>
#include <string>

namespace velk {

// Fixed constants.
inline constexpr int bufferSize = 500000;    // reads (or read pairs) in one streamed batch
inline constexpr int MINLARGEINSERT = 2000;  // bases; a library below it counts for BIGGAPLEN
inline constexpr int DATA_LEN = 32;          // bases that one k-mer word holds
inline constexpr int LEN_TO_BITLEN = 2;      // bits per base
inline constexpr int MAX_READ_LEN = 200;     // bases; declared for users of the code, not consulted
inline constexpr int MINREADLEN = 70;        // bases; declared for users of the code, not consulted

// Run parameters: option, default, unit.
extern std::string lib_file;       // -l, empty: path of the read library file
extern std::string contig_file;    // -c, empty: path of a contig FASTA
extern std::string scaffold_file;  // -s, empty: path of a scaffold FASTA, stem of the report's name
extern std::string out_file;       // -o, empty: path of the FASTA of reads found in gaps
extern double OverRatio;           // -O, 0.3: least share of a read that overlaps a contig
extern double mapCut;              // -M, 0.98: least share of equal bases in an overlap
extern int CuttEdge;               // -C, 0: bases cut from both ends of a contig
extern int Kmer;                   // -k, 31: bases in a k-mer
extern int thread_num;             // -t, 1: worker threads
extern int readLen;                // -r, 100: longest paired-end read, bases
extern uint64_t initSize;          // -m, 1048576: slots asked for in the k-mer hash set
extern int CONTIGLEN;              // -L, 70: shortest contig kept and indexed, bases
extern float LoadFactor;           // -f, 0.75: filled share at which the hash set grows
extern int BIGGAPLEN;              // 900: readLen + largest small insert, bases (set by Loadlib)
extern int MAXINSERT;              // 0: largest avg_ins of all libraries, bases (set by Loadlib)

/// Parses the command line `rgv[1] .. rgv[rgc - 1]` into the run parameters.
/// Returns the index of the first argument that is not an option or an option's value; `rgc` when
/// there is none. Exits through usage() on -h, an unknown letter, a lone "-", or a missing value.
int mGetOptions(int rgc, char** rgv);

/// Prints the help, with the current values of the run parameters, to standard output.
/// Exits with status 1.
[[noreturn]] void usage();

/// Ends the run with an "[ERROR]: ..." message and status 1 when an option's value makes no run
/// possible: -t below 1, or -k, -C or -r below 0.
void checkParameters();

/// The value of `text` as C's atoi gives it where atoi is defined; beyond 64 bits it saturates and
/// is then cut to its low 32 bits. 0 for text that is no number.
int lenientInt(const std::string& text);

}  // namespace velk
