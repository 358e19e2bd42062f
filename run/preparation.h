// From the command line to what a search needs: looks at the inputs, loads the assembly, measures
// the libraries. A run does so, and a plan.
#pragma once

#include <memory>

#include "run/arguments.h"
#include "run/assembly.h"
#include "run/fixed.h"
#include "run/inputs.h"
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

}  // namespace velk::run
