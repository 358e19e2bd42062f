#include "run/estimate.h"

#include <algorithm>

#include "survey/assembly.h"
#include "survey/costModel.h"

namespace velk::run {
namespace {

// Measured with -t 1 and -t 2 on assemblies of 20 and 80 million bases and 4 and 8 million reads of
// 100 and 150 bases, in seconds.
constexpr double kLoadBase = 8e-9;       // a base of the assembly: checked, loaded and cut
constexpr double kIndexKmer = 20e-9;     // of one thread
constexpr double kPlainBase = 9e-9;      // a base of a read, read and searched, of all threads
constexpr double kPackedBase = 13e-9;    // the same of a compressed file
constexpr double kLeastPlain = 3.7e-9;   // a base, for the one thread that reads
constexpr double kLeastPacked = 3.5e-9;  // a base, for the thread that inflates a file
constexpr double kFindRecord = 6.5e-6;   // a record, described and sorted, of all threads
constexpr double kWriteRecord = 6.2e-6;  // the same, written to the files of a result
constexpr double kJobStart = 1.1;        // of a job, until an idle Slurm has started it

constexpr double kPackedText = 0.7;  // of a text, which only compressed files are smaller than

// Reads of a sample, their characters and bases.
struct Size {
  uint64_t reads = 0;
  uint64_t text = 0;
  uint64_t bases = 0;
};

Size sizeOf(const reads::Sample& sample) {
  Size size;
  for (const auto* reads : {&sample.first, &sample.second}) {
    size.reads += reads->size();
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
  if (assembly.saved() == nullptr) {
    estimate.loadSeconds = kLoadBase * static_cast<double>(bases);
    estimate.indexSeconds = kIndexKmer * static_cast<double>(kmers) / threads;
  }
  estimate.memory =
      kWorkingMemory + survey::assemblyBytes(scaffolds) + survey::indexBytes(kmer, kmers, bases);
  return estimate;
}

TaskEstimate estimateTask(const OpenInput& input, double foundPerRead, int threads,
                          const CommonEstimate& common) {
  const Size size = sizeOf(input.sample());
  const auto stored = static_cast<double>(input.reads->bytesRead());
  const bool isPacked = stored < kPackedText * static_cast<double>(size.text);
  const bool isPart = !input.sample().isAll && stored > 0;
  const double times = isPart ? static_cast<double>(input.reads->bytes()) / stored : 1;
  const double bases = times * static_cast<double>(size.bases);
  const double found = times * static_cast<double>(size.reads) * foundPerRead;
  const int files = input.reads->files().second.empty() ? 1 : 2;
  const double ofBase = isPacked ? std::max(kPackedBase / threads, kLeastPacked / files)
                                 : std::max(kPlainBase / threads, kLeastPlain);
  return {bases * ofBase + found * kFindRecord / threads, writeSeconds(found, threads),
          common.memory};
}

double writeSeconds(double records, int threads) {
  return kWriteRecord * records / threads;
}

RunEstimate estimateRun(const std::vector<TaskEstimate>& tasks, const CommonEstimate& common) {
  double search = 0;
  double longest = 0;
  double gather = 0;
  for (const TaskEstimate& task : tasks) {
    search += task.searchSeconds;
    longest = std::max(longest, task.searchSeconds);
    gather += task.gatherSeconds;
  }
  const double before = common.loadSeconds + common.indexSeconds;
  const int jobs = before > 0 ? 3 : 2;  // one after the other: the index, the tasks, gathering
  return {before + search + gather, jobs * kJobStart + before + longest + gather};
}

}  // namespace velk::run
