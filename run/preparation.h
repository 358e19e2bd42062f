// The steps that the verbs share before they write what was found. First from the command line to
// what a search needs, for a run and for a plan: the inputs are looked at, the assembly is loaded,
// the libraries are measured. Then the index is made or taken, and the inputs are searched.
#pragma once

#include <memory>
#include <vector>

#include "kmer/seedIndex.h"
#include "run/arguments.h"
#include "run/assembly.h"
#include "run/inputs.h"
#include "run/library.h"
#include "run/search.h"
#include "run/session.h"
#include "survey/boundedIndex.h"

namespace velk::run {

class Preparation {
 public:
  /// Opens the inputs and loads the assembly. Throws Failure where they are not what a run can use.
  /// `threads`: of the inputs' helpers, and for measuring. `saved`: of openIndex(). Both references
  /// outlive it.
  Preparation(const Arguments& arguments, int threads, Session& session,
              std::shared_ptr<const SavedIndex> saved);

  /// Measures the libraries, and returns all that is fixed by it. Once. Throws Failure.
  FixedValues measure();

  /// The records that a search finds, of a read of this input, as its sample on a part of the
  /// assembly has them. REQUIRES: measure().
  double foundPerRead(const OpenInput& input, const FixedValues& fixed) const;

  const Inputs& inputs() const { return *inputs_; }
  Assembly& assembly() { return *assembly_; }

 private:
  int readLengthOfSamples() const;
  void measureOn(FixedValues& fixed);

  const Arguments& arguments_;
  int threads_;
  Session& session_;
  std::unique_ptr<Inputs> inputs_;
  int readLength_ = 0;
  std::unique_ptr<Assembly> assembly_;
  std::unique_ptr<survey::BoundedIndex> index_;  // of a part of it; null without k-mers
};

/// The index of --index, made with these options; null without one. Throws Failure.
std::shared_ptr<const SavedIndex> openIndex(const Arguments& arguments);

/// The assembly: read, or as it is saved. Throws Failure, or reads::InputError.
std::unique_ptr<Assembly> loadAssembly(const Arguments& arguments, int readLength,
                                       std::shared_ptr<const SavedIndex> saved);

/// How the assembly of a run is cut, with this read length.
CutOptions cutOptionsOf(const Arguments& arguments, int readLength);

/// What is searched, and how. All of it outlives the search.
struct ToSearch {
  const Arguments& arguments;
  const Assembly& assembly;
  const FixedValues& fixed;
  const Inputs& inputs;
};

/// Makes the index of an assembly, or takes its saved one. Throws std::bad_alloc, and Failure.
void setIndex(SeedIndex& index, const Assembly& assembly, int kmer, int threads);

/// Makes the index of the assembly, or takes its saved one, and searches the inputs for `receiver`.
/// Returns the counts of each library. Throws what Search::run() throws, and std::bad_alloc.
std::vector<ReadCounts> searchInputs(const ToSearch& toSearch, Session& session,
                                     FoundReceiver& receiver);

}  // namespace velk::run
