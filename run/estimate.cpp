#include "run/estimate.h"

#include <algorithm>

#include "survey/assembly.h"
#include "survey/memoryModel.h"

namespace velk::run {
namespace {

// Measured with -t 1 and -t 2 on assemblies of 20 and 80 million bases and 4 and 8 million reads of
// 100 and 150 bases, in seconds.
constexpr double kLoadBase = 8e-9;     // a base of the assembly: checked, loaded and cut
constexpr double kIndexKmer = 20e-9;   // of one thread
constexpr double kPlainBase = 9e-9;    // a base of a read, read and searched, of all threads
constexpr double kPackedBase = 13e-9;  // the same of a compressed file
constexpr double kLeastPlain = 3e-9;   // a base, for the one thread that reads
constexpr double kLeastPacked = 3.5e-9;
constexpr double kGatherShare = 0.1;  // of the time of the search, that writing takes
constexpr double kJobStart = 5;       // of a job, until a scheduler has started it

constexpr uint64_t kWorkingMemory = uint64_t{300} << 20;  // bytes: batches, what is found
constexpr double kPackedText = 0.7;  // of a text, which only compressed files are smaller than

// Characters and bases of a sample.
struct Size {
  uint64_t text = 0;
  uint64_t bases = 0;
};

Size sizeOf(const reads::Sample& sample) {
  Size size;
  for (const auto* reads : {&sample.first, &sample.second}) {
    for (const reads::KeptRead& read : *reads) {
      size.text += read.name.size() + read.bases.size() + read.quality.size();
      size.bases += read.bases.size();
    }
  }
  return size;
}

}  // namespace

CommonEstimate estimateCommon(const Assembly& assembly, int kmer, int threads) {
  const survey::Scaffolds scaffolds(assembly.model(), assembly.scaffolds().size());
  const uint64_t kmers = survey::indexedKmers(scaffolds);
  const uint64_t bases = survey::contigBases(scaffolds);
  CommonEstimate estimate;
  estimate.loadSeconds = kLoadBase * static_cast<double>(bases);
  estimate.indexSeconds = kIndexKmer * static_cast<double>(kmers) / threads;
  estimate.memory =
      kWorkingMemory + survey::assemblyBytes(scaffolds) + survey::indexBytes(kmer, kmers, bases);
  return estimate;
}

TaskEstimate estimateTask(const OpenInput& input, int threads, const CommonEstimate& common) {
  const Size size = sizeOf(input.sample());
  const auto stored = static_cast<double>(input.reads->bytesRead());
  const bool isPacked = stored < kPackedText * static_cast<double>(size.text);
  double bases = static_cast<double>(size.bases);
  if (!input.sample().isAll && stored > 0) {
    bases *= static_cast<double>(input.reads->bytes()) / stored;
  }
  const double ofBase = std::max((isPacked ? kPackedBase : kPlainBase) / threads,
                                 isPacked ? kLeastPacked : kLeastPlain);
  return {bases * ofBase, common.memory};
}

RunEstimate estimateRun(const std::vector<TaskEstimate>& tasks, const CommonEstimate& common) {
  double sum = 0;
  double longest = 0;
  for (const TaskEstimate& task : tasks) {
    sum += task.searchSeconds;
    longest = std::max(longest, task.searchSeconds);
  }
  const double before = common.loadSeconds + common.indexSeconds;
  const double writing = kGatherShare * sum;
  return {before + sum + writing, 2 * kJobStart + before + longest + common.loadSeconds + writing};
}

}  // namespace velk::run
