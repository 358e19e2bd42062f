// What the machine gives, of made folders in place of the system's.
#include "survey/machine.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "driver/velk.h"
#include "kmer/seedIndex.h"
#include "placement/Read2Scaf.h"
#include "survey/costModel.h"
#include "tests/support/assembly.h"
#include "tests/support/files.h"

namespace velk::survey {
namespace {

constexpr uint64_t kMegabyte = 1 << 20;

// A folder with the proc/ and sys/ of a system with 1000 MB of memory available.
class MachineTest : public ::testing::Test {
 protected:
  MachineTest() {
    unsetenv("SLURM_CPUS_PER_TASK");
    write("proc/meminfo", "MemTotal:  2048000 kB\nMemFree: 1 kB\nMemAvailable: 1024000 kB\n");
  }
  ~MachineTest() override { unsetenv("SLURM_CPUS_PER_TASK"); }

  void write(const std::string& name, const std::string& text) const {
    const std::filesystem::path path = folder_.path(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
  }

  std::string root() const { return folder_.path(""); }
  uint64_t freeMegabytes() const { return freeMemory(root()) / kMegabyte; }

 private:
  test::TemporaryFolder folder_;
};

TEST_F(MachineTest, MemoryOfTheMachine) {
  EXPECT_EQ(freeMemory(root()), 1000 * kMegabyte);
}

TEST_F(MachineTest, MemoryIsUnlimitedWhereNothingTells) {
  write("proc/meminfo", "");
  EXPECT_EQ(freeMemory(root()), kNoLimit);
}

TEST_F(MachineTest, MemoryOfTheGroupAtTheRoot) {
  write("sys/fs/cgroup/memory.max", "104857600\n");
  write("sys/fs/cgroup/memory.current", "41943040\n");
  EXPECT_EQ(freeMegabytes(), 60U);
}

TEST_F(MachineTest, FilesThatAGroupCanDropAreFree) {
  write("sys/fs/cgroup/memory.max", "104857600\n");
  write("sys/fs/cgroup/memory.current", "104857600\n");
  write("sys/fs/cgroup/memory.stat", "anon 1\nactive_file 1\ninactive_file 31457280\n");
  EXPECT_EQ(freeMegabytes(), 30U);
}

TEST_F(MachineTest, GroupsThatUseMoreThanTheyMayLeaveNothing) {
  write("sys/fs/cgroup/memory.max", "100\n");
  write("sys/fs/cgroup/memory.current", "200\n");
  EXPECT_EQ(freeMemory(root()), 0U);
}

TEST_F(MachineTest, GroupsWithoutALimitLimitNothing) {
  write("sys/fs/cgroup/memory.max", "max\n");
  write("sys/fs/cgroup/memory.current", "200\n");
  EXPECT_EQ(freeMegabytes(), 1000U);
}

TEST_F(MachineTest, TheNarrowestGroupOnTheWayToTheRootCounts) {
  write("proc/self/cgroup", "0::/jobs/job 7/step\n");
  for (const std::string group : {"jobs/job 7/step", "jobs/job 7", "jobs"}) {
    write("sys/fs/cgroup/" + group + "/memory.max",
          group == "jobs/job 7" ? "52428800\n" : "209715200\n");
    write("sys/fs/cgroup/" + group + "/memory.current", "10485760\n");
  }
  EXPECT_EQ(freeMegabytes(), 40U);
}

TEST_F(MachineTest, MemoryOfGroupsOfTheFirstVersion) {
  write("proc/self/cgroup", "9:cpu,cpuacct:/other\n7:memory:/job\n");
  write("sys/fs/cgroup/memory/job/memory.limit_in_bytes", "104857600\n");
  write("sys/fs/cgroup/memory/job/memory.usage_in_bytes", "52428800\n");
  write("sys/fs/cgroup/memory/job/memory.stat", "total_inactive_file 10485760\n");
  EXPECT_EQ(freeMegabytes(), 60U);
}

TEST_F(MachineTest, ProcessorsAreThoseOfTheAffinity) {
  EXPECT_EQ(allowedProcessors(root()), static_cast<int>(std::thread::hardware_concurrency()));
}

TEST_F(MachineTest, ProcessorsWithinAQuota) {
  write("sys/fs/cgroup/cpu.max", "50000 100000\n");
  EXPECT_EQ(allowedProcessors(root()), 1);
  write("sys/fs/cgroup/cpu.max", "max 100000\n");
  EXPECT_EQ(allowedProcessors(root()), static_cast<int>(std::thread::hardware_concurrency()));
}

TEST_F(MachineTest, ProcessorsWithinAQuotaOfTheFirstVersion) {
  write("proc/self/cgroup", "9:cpu,cpuacct:/job\n");
  write("sys/fs/cgroup/cpu/job/cpu.cfs_quota_us", "-1\n");
  write("sys/fs/cgroup/cpu/job/cpu.cfs_period_us", "100000\n");
  EXPECT_EQ(allowedProcessors(root()), static_cast<int>(std::thread::hardware_concurrency()));
  write("sys/fs/cgroup/cpu/job/cpu.cfs_quota_us", "100000\n");
  EXPECT_EQ(allowedProcessors(root()), 1);
}

TEST_F(MachineTest, ProcessorsOfASlurmTask) {
  setenv("SLURM_CPUS_PER_TASK", "1", 1);
  EXPECT_EQ(allowedProcessors(root()), 1);
  for (const char* const text : {"", "0", "x", "1x", "-1", "1000000"}) {
    setenv("SLURM_CPUS_PER_TASK", text, 1);
    EXPECT_EQ(allowedProcessors(root()), static_cast<int>(std::thread::hardware_concurrency()))
        << text;
  }
}

TEST_F(MachineTest, FileHandlesAreThoseOfTheLimit) {
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit fewer{before.rlim_cur - 1, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &fewer), 0);
  EXPECT_EQ(fileHandles(), before.rlim_cur - 1);
  setrlimit(RLIMIT_NOFILE, &before);
}

TEST_F(MachineTest, DiskOfAFileThatIsNotThereYet) {
  const Disk here = diskOf("found.fa");
  const Disk there = diskOf(root() + "found.fa");
  EXPECT_EQ(here.device, diskOf("./other.fa").device);
  EXPECT_GT(there.free, 0U);
  EXPECT_LT(there.free, kNoLimit);
  EXPECT_EQ(diskOf(root() + "missing/found.fa").free, kNoLimit);
}

// The memory and the time that a run takes: of the index, against one that is made; of the rest, by
// hand.

class MemoryModelTest : public test::AssemblyTest {
 protected:
  static Scaffolds all() { return {scaffoldInfo, scaffoldSum}; }
};

#ifndef VELK_PLAIN_ENGINE
TEST_F(MemoryModelTest, IndexIsThatWhichIsMade) {
  for (const int kmer : {17, 21, 31, 32}) {
    Kmer = kmer;
    load({{{test::randomBases(400000, 1)}, {test::randomBases(300000, 2), 100}}});
    const auto estimate =
        static_cast<double>(indexBytes(kmer, indexedKmers(all()), contigBases(all())));
    uint64_t bytes = 0;
    const auto add = [&](const auto& array) { bytes += array.size() * sizeof(array[0]); };
    SeedIndex::forEachKept(*seedIndex, add);
    seedIndex->text().forEachLaid(add);
    EXPECT_NEAR(estimate / static_cast<double>(bytes), 1, 0.05) << "-k " << kmer;
    releaseAssembly();
  }
}
#endif

// Two windows in three begin with a new seed where it has two places in a window.
TEST_F(MemoryModelTest, IndexGrowsWithTheShareOfSeeds) {
  EXPECT_GT(indexBytes(12, 1000000, 1000000), 2 * indexBytes(31, 1000000, 1000000));
}

TEST_F(MemoryModelTest, AnyLengthOfKmersHasAnIndex) {
  for (const int kmer : {0, 1, 63, 2147483647}) {
    EXPECT_GT(indexBytes(kmer, 1000, 2000), 1000U) << "-k " << kmer;
  }
}

TEST_F(MemoryModelTest, AssemblyIsItsBasesAndLittleMore) {
  load({{{test::randomBases(400000, 1)}, {test::randomBases(300000, 2), 100}}});
  EXPECT_GE(assemblyBytes(all()), 700000U);
  EXPECT_LE(assemblyBytes(all()), 700500U);
}

TEST(BatchBytes, HoldBothReadsOfPairs) {
  BatchShape singles;
  singles.entries = singles.room;
  singles.readLength = 150;
  BatchShape pairs = singles;
  pairs.arePairs = true;
  const uint64_t rows = batchBytes(BatchShape{.room = 0});
  EXPECT_EQ(batchBytes(pairs) - rows, 2 * (batchBytes(singles) - rows));
  // A string of 151 characters takes 160 bytes on the heap.
  EXPECT_EQ(batchBytes(singles) - rows, bufferSize * (sizeof(std::string) + 160));
}

TEST(BatchBytes, AreThoseOfFewEntries) {
  BatchShape shape;
  shape.readLength = 150;
  shape.room = 1000;
  shape.entries = 400;
  const uint64_t few = batchBytes(shape);
  shape.entries = 401;
  EXPECT_EQ(batchBytes(shape) - few, 160U);
  shape.entries = 5000;
  EXPECT_EQ(batchBytes(shape) - few, 600 * 160U);
}

TEST(BatchBytes, GrowWithWhatIsFound) {
  BatchShape shape;
  shape.readLength = 150;
  shape.entries = shape.room;
  const uint64_t none = batchBytes(shape);
  shape.foundPerRead = 0.5;
  EXPECT_GT(batchBytes(shape) - none, bufferSize / 2 * (160 + sizeof(FoundRecord)));
}

TEST(PeakMemory, IsTheSumAndWhatEachThreadTakes) {
  const MemoryEstimate one = peakMemory(1000, 200, 30, 1);
  const MemoryEstimate four = peakMemory(1000, 200, 30, 4);
  EXPECT_EQ(one.index, 1000U);
  EXPECT_EQ(one.assembly, 200U);
  EXPECT_EQ(one.batch, 30U);
  EXPECT_GT(one.peak, 1230U);
  EXPECT_GT(four.peak, one.peak);
  EXPECT_EQ(peakMemory(1000, 200, 30, -1).peak, one.peak);
}

// The search of samples, and what is made of its time.

class TrySearchTest : public test::AssemblyTest {
 protected:
  TrySearchTest() { load({{{left_}, {right_, 200}}}); }

  SearchTrial searched(const std::vector<Sample>& samples) const {
    const Scaffolds all(scaffoldInfo, scaffoldSum);
    const BoundedIndex index(FirstContigs(all, 1000000), Kmer, 1);
    return trySearch(index, all, optionsOfRun(), samples);
  }

  const std::string left_ = test::randomBases(3000, 1);
  const std::string right_ = test::randomBases(3000, 2);
};

TEST_F(TrySearchTest, CountsReadsAndWhatIsFound) {
  // One read over the left contig's end, one inside it, one from elsewhere.
  const std::string over = left_.substr(2950) + test::randomBases(50, 3);
  const SearchTrial trial =
      searched({{0, {over, left_.substr(0, 100), test::randomBases(100, 4)}, {}}});
  EXPECT_EQ(trial.reads, 3U);
  EXPECT_EQ(trial.found, 1U);
  EXPECT_GT(trial.seconds, 0);
  EXPECT_DOUBLE_EQ(trial.foundPerRead(), 1.0 / 3);
  EXPECT_DOUBLE_EQ(trial.secondsPerRead(), trial.seconds / 3);
}

// With 400 bases of insert the mate lies in the gap; a large insert's pairs point outwards.
TEST_F(TrySearchTest, SearchesPairsByTheirInsert) {
  const std::string anchor = left_.substr(2750, 100);
  const std::string mate = test::randomBases(100, 5);
  EXPECT_EQ(searched({{400, {anchor}, {mate}}}).found, 1U);
  EXPECT_EQ(searched({{400, {anchor}, {mate}}}).reads, 2U);
  EXPECT_EQ(searched({{400, {left_.substr(1000, 100)}, {mate}}}).found, 0U);
  BIGGAPLEN = 10000;
  const std::string farAnchor = test::reverseComplement(left_.substr(1150, 100));
  EXPECT_EQ(searched({{2000, {farAnchor}, {mate}}}).found, 1U);
  EXPECT_EQ(searched({{999, {farAnchor}, {mate}}}).found, 0U);
}

TEST_F(TrySearchTest, NothingToSearch) {
  const SearchTrial trial = searched({});
  EXPECT_EQ(trial.reads, 0U);
  EXPECT_EQ(trial.secondsPerRead(), 0);
  EXPECT_EQ(trial.foundPerRead(), 0);
}

TEST(InputSeconds, ReadingIsSharedByNobody) {
  EXPECT_DOUBLE_EQ(inputSeconds({1000, false, 0.5}, 2.0, 1), 1000 * 2.5);
  EXPECT_DOUBLE_EQ(inputSeconds({1000, true, 0.5}, 2.0, 4), 1000 * (0.5 + 1.0));
}

}  // namespace

}  // namespace velk::survey
