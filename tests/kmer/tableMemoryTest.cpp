// The pages under an allocation.
#include "kmer/tableMemory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <array>
#include <cstddef>

namespace velk::test {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kPages = 6;

// Pages that nothing has touched yet.
class TableMemory : public ::testing::Test {
 protected:
  TableMemory()
      : start_(static_cast<char*>(mmap(nullptr, kPages * kPage, PROT_READ | PROT_WRITE,
                                       MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
  ~TableMemory() override { munmap(start_, kPages * kPage); }
  TableMemory(const TableMemory&) = delete;
  TableMemory& operator=(const TableMemory&) = delete;

  // For every page 1 where there is memory behind it.
  std::array<int, kPages> resident() const {
    std::array<unsigned char, kPages> states{};
    EXPECT_EQ(mincore(start_, kPages * kPage, states.data()), 0);
    std::array<int, kPages> pages{};
    for (std::size_t i = 0; i < kPages; ++i) pages[i] = states[i] & 1;
    return pages;
  }

  char* start_;
};

TEST_F(TableMemory, PopulatesTheWholePagesOfAnAllocation) {
  EXPECT_EQ(resident(), (std::array{0, 0, 0, 0, 0, 0}));
  populate(start_ + 16, (kPages - 1) * kPage);
  EXPECT_EQ(resident(), (std::array{0, 1, 1, 1, 1, 0}));
}

TEST_F(TableMemory, KeepsWhatIsThere) {
  start_[2 * kPage + 5] = 'A';
  populate(start_, kPages * kPage);
  EXPECT_EQ(start_[2 * kPage + 5], 'A');
  EXPECT_EQ(resident(), (std::array{1, 1, 1, 1, 1, 1}));
}

TEST_F(TableMemory, LeavesAnAllocationWithoutAWholePage) {
  populate(start_ + 1, kPage);
  populate(start_ + 2 * kPage, kPage - 1);
  EXPECT_EQ(resident(), (std::array{0, 0, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace velk::test
