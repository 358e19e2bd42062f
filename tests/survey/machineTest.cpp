// What the machine gives, of made folders in place of the system's.
#include "survey/machine.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

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

}  // namespace
}  // namespace velk::survey
