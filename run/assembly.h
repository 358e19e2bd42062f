// The assembly of the run: its FASTA file of any width and case, plain or compressed; and its
// scaffolds with their names, their contigs and the gaps between these, as the model that the
// search uses has them.
//
// Positions on a scaffold count from 0. The model's contigs are stretches of the scaffold; short
// ones (--min-contig) are no contigs and belong to a gap, and --cut takes bases from the ends of
// the others. Loaded by one thread; any thread may ask afterwards.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contig/contig.h"
#include "run/placeholders.h"

namespace velk::run {

class SavedIndex;

/// A contig of the model, where it lies on its scaffold.
struct ContigPlace {
  uint64_t start;  // of its first base, in the scaffold
  uint64_t end;    // behind its last base
};

/// A gap of the model: what lies between two contigs that follow each other.
struct Gap {
  uint32_t scaffold;
  uint32_t contigBehind;       // index in the scaffold, from 1
  uint64_t start;              // in the scaffold: behind the contig in front
  uint64_t end;                // the first base of the contig behind
  uint64_t unknown;            // bases N in it
  uint64_t length;             // bases, as the search takes it
  bool isPlaceholder = false;  // whether some of its length is unknown
  uint64_t lengthened = 0;     // bases of its length that are not written in the assembly
  std::vector<uint64_t> placeholders = {};  // lengths of the runs of N that stand for that
};

struct Scaffold {
  std::string name;  // the header up to the first blank
  uint64_t length;   // bases, gaps included
  std::vector<ContigPlace> contigs;
  std::optional<ContigPlace> lastBase;  // a single base behind the last gap, which is no contig
  uint64_t firstGap;                    // number of the gap in front of contig 1
};

/// What was fixed in the assembly's file, or is worth a word: numbers.
struct AssemblyNotes {
  uint64_t lowerCase = 0;        // bases
  uint64_t carriageReturns = 0;  // lines
  uint64_t otherLetters = 0;     // bases that are none of A, C, G, T and N
  uint64_t empty = 0;            // scaffolds without a base, which are left out
};

/// What decides how scaffolds are cut.
struct CutOptions {
  int shortestContig = 70;
  int cut = 0;
  int readLength = 100;  // bases
};

class Assembly {
 public:
  /// Reads a FASTA file with lines of any width, plain or compressed, and cuts its scaffolds.
  /// Throws Failure or reads::InputError.
  Assembly(const std::string& file, const CutOptions& options, const PlaceholderRule& placeholders);

  /// Takes the assembly of an index, which was made of this file with these options. Throws Failure
  /// where the index is damaged.
  Assembly(const std::string& file, const CutOptions& options,
           std::shared_ptr<const SavedIndex> saved);

  Assembly(const Assembly&) = delete;
  Assembly& operator=(const Assembly&) = delete;

  /// Has the search take placeholders as long as this, where they are shorter. Once, before the
  /// search.
  void lengthenPlaceholders(uint64_t bases);

  const std::string& file() const { return file_; }

  /// The index that it was taken from, if any.
  const SavedIndex* saved() const { return saved_.get(); }

  const AssemblyNotes& notes() const { return notes_; }
  const std::vector<Scaffold>& scaffolds() const { return scaffolds_; }
  const std::vector<Gap>& gaps() const { return gaps_; }
  const ScaffoldInfo* model() const { return model_.scaffolds.data(); }

  /// The bases of a contig of the model, in upper case. The bases of a scaffold that belong to no
  /// contig are not kept: a large assembly stands in memory once.
  std::string_view basesOf(uint64_t scaffold, uint64_t contig) const {
    return model_.scaffolds[scaffold].contigsInfo[contig].bases();
  }

  /// The number of the gap in front of a contig of the model (its index is 1 at least).
  uint64_t gapInFront(uint64_t scaffold, uint64_t contig) const {
    return scaffolds_[scaffold].firstGap + contig - 1;
  }

 private:
  // Owns the contigs.
  struct Model {
    Model() = default;
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;
    ~Model();

    std::vector<ScaffoldInfo> scaffolds;
  };

  void setParameters(const CutOptions& options) const;
  void add(const std::string& name, const std::string& bases, const PlaceholderRule& placeholders);
  void addGaps(const std::string& bases, const PlaceholderRule& placeholders);

  std::string file_;
  AssemblyNotes notes_;
  std::vector<Scaffold> scaffolds_;
  std::vector<Gap> gaps_;
  Model model_;
  std::shared_ptr<const SavedIndex> saved_;
  uint64_t gapSum_ = 0;  // the model's own numbers of gaps, as in velk
};

struct AssemblyNotes;

/// The first character that the name of a reference sequence in a SAM file cannot have; 0 without
/// one. REQUIRES: the name is not empty.
char forbiddenIn(std::string_view name);

/// Throws Failure where the file is one of reads: FASTQ, SAM or BAM. Reads its start.
void requireNoReads(const std::string& file);

/// Calls onScaffold(name, bases) for each scaffold that has a base, in order: the header up to its
/// first blank, and the bases in upper case. Adds what it fixed to `notes` (inout). Throws Failure
/// where a name cannot stand in a SAM file or occurs twice, where sequence stands in front of the
/// first header or a character is no letter, and where a scaffold is too long; throws
/// reads::InputError where the file cannot be read.
void readFasta(const std::string& file, AssemblyNotes& notes,
               const std::function<void(const std::string&, const std::string&)>& onScaffold);

}  // namespace velk::run
