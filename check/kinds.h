// Kinds of findings: the record that all tables of them are made of, and the table of those on the
// command line, the outputs and the machine. Those in the inputs stand in check/kindsInputs.h.
#pragma once

#include <array>
#include <string_view>

namespace velk::check {

enum class Level {
  kNote,     // changes no result, or is as it should be; good to know
  kWarning,  // the result may be less than it could be
  kError,    // velk stops, or the result would be wrong or lost
};

struct Kind {
  std::string_view id;  // never changes its meaning
  Level level;
  std::string_view meaning;   // what is the matter
  std::string_view effect;    // what velk does with it
  std::string_view fix;       // what to do about it
  std::string_view run = {};  // where velk-run would not need that; empty: nowhere
};

/// Of kinds that velk-run takes as they are.
inline constexpr std::string_view kNoFix = "needs no fix";

inline constexpr auto kKindsCommand = std::to_array<Kind>({
    {"option-missing", Level::kError, "an option that velk needs is not given",
     "velk stops with a message", "give -l, -o and one of -s and -c"},
    {"stray-argument", Level::kError, "an argument that belongs to no option",
     "velk stops at it with status 255 (Please check input!)",
     "remove it, or write the option in front of it"},
    {"value-not-number", Level::kError, "a value that is no number, or more than a number",
     "velk takes the digits at its start, 0 without any", "write plain digits: 4000000, not 4M"},
    {"value-refused", Level::kError, "a value that makes no run possible",
     "velk stops with a message", "see the message"},
    {"kmer-over-32", Level::kWarning, "-k above 32",
     "only the last 32 bases of each k-mer are compared, and shorter reads are skipped",
     "give -k 32 or less"},
    {"kmer-short", Level::kWarning, "-k below 15",
     "so short k-mers occur by chance, so few are unique and reads are lost or misplaced",
     "give a -k of 21 to 31"},
    {"threads-many", Level::kWarning, "more threads than processors",
     "the threads wait for each other; the reads found are the same",
     "give as many as the machine has"},
    {"load-factor-replaced", Level::kWarning, "a load factor out of range",
     "velk takes 0.25 for 0 and below, 0.75 for 1 and above", "give -f between 0 and 1"},
    {"ratio-odd", Level::kWarning, "-O or -M is not between 0 and 1",
     "above 1 no read is good enough, below 0 every read is", "give a share, like 0.98"},
    {"cutoff-negative", Level::kError, "-L is negative",
     "no contig is long enough to be searched in, so nothing is found", "give -L 70 or so"},
    {"cutoff-below-kmer", Level::kNote, "-L is below -k",
     "contigs shorter than -k hold no k-mer and are not searched in all the same",
     "nothing, or give -L at least -k"},
    {"cutoff-drops-contigs", Level::kWarning, "-L leaves out much of the assembly",
     "shorter contigs become part of the gap around them (-c: are not searched in)",
     "give a smaller -L"},
    {"edge-cut-no-effect", Level::kNote, "-C changes nothing",
     "only contigs of a scaffold file that have at least 2 x (-r + -C) bases are cut",
     "leave -C out"},
    {"edge-cut-large", Level::kWarning, "-C is larger than the reads",
     "single reads at the ends of contigs lie within the cut bases, not in the gap itself",
     "give a smaller -C"},
    {"contigs-ignored", Level::kWarning, "both -s and -c are given", "velk ignores -c",
     "leave one of them out"},
    {"output-is-input", Level::kError, "an output is the same file as an input",
     "velk stops before it overwrites it", "give -o another name, or move the input"},
    {"output-unwritable", Level::kError, "an output cannot be written",
     "velk stops when it opens the file; for the gap report that is at the very end",
     "choose a folder that exists and may be written"},
    {"output-exists", Level::kNote, "an output exists already", "velk replaces it",
     "keep a copy if it is still needed"},
    {"table-refused", Level::kError, "-m, or what -f makes of it, is beyond what a table can have",
     "velk stops, out of memory", "leave -m and -f out"},
    {"memory-short", Level::kError, "the run takes more memory than is free",
     "velk is killed or stops, out of memory", "use a larger machine"},
    {"memory-tight", Level::kWarning, "the run takes most of the memory that is free",
     "velk may be killed when other programs need memory", "keep the machine free for the run"},
    {"disk-short", Level::kError, "the outputs take more space than is free",
     "velk stops when the disk is full", "make space, or write elsewhere"},
});

}  // namespace velk::check
