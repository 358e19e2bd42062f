// How long the tasks of a plan will take, and how much memory, by constants that were measured. The
// time left of a run follows from the same.
#pragma once

#include <cstdint>
#include <vector>

#include "run/assembly.h"
#include "run/inputs.h"

namespace velk::run {

/// What a run takes beside the assembly and its index: batches, what is found. Bytes.
inline constexpr uint64_t kWorkingMemory = uint64_t{300} << 20;

/// What all tasks have in common.
struct CommonEstimate {
  double loadSeconds = 0;   // of the assembly; none where its index is saved
  double indexSeconds = 0;  // of its index; none where it is saved
  uint64_t memory = 0;      // bytes
};

/// One task.
struct TaskEstimate {
  double searchSeconds = 0;
  double gatherSeconds = 0;  // of what it finds
  uint64_t memory = 0;       // bytes
};

/// All of them, one after the other or at once.
struct RunEstimate {
  double oneRun = 0;  // seconds of a run in one go
  double inTasks =
      0;  // of saving the index, the tasks, each on a machine of its own, and gathering
};

CommonEstimate estimateCommon(const Assembly& assembly, int kmer, int threads);

/// `foundPerRead`: records of the search. REQUIRES: the sample was taken without helpers.
TaskEstimate estimateTask(const OpenInput& input, double foundPerRead, int threads,
                          const CommonEstimate& common);

/// How long so many records take to be written to the files of a result.
double writeSeconds(double records, int threads);

RunEstimate estimateRun(const std::vector<TaskEstimate>& tasks, const CommonEstimate& common);

}  // namespace velk::run
