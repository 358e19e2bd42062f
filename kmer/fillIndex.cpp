#include "kmer/fillIndex.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "driver/velk.h"
#include "kmer/indexer.h"
#include "kmer/sideIndex.h"
#include "kmer/tableShare.h"

namespace velk {
namespace {

using Work = std::function<void()>;

// Starts a thread for each work but the first, as far as threads, and memory for them, can be had.
std::vector<std::jthread> startThreads(const std::vector<Work>& works) {
  std::vector<std::jthread> threads;
  try {
    for (std::size_t n = 1; n < works.size(); ++n) threads.emplace_back(works[n]);
  } catch (const std::system_error&) {
    // doTogether does what is left
  } catch (const std::bad_alloc&) {
    // so here
  }
  return threads;
}

// Does all works, the first on the calling thread, each other one on a thread of its own or, where
// none can be had, on the calling thread afterwards.
void doTogether(const std::vector<Work>& works) {
  const std::vector<std::jthread> threads = startThreads(works);
  works.front()();
  for (std::size_t n = threads.size() + 1; n < works.size(); ++n) works[n]();
}

// The threads that have enough to do with so many k-mers: not so many that one has few to add, or
// that all do little but look at the k-mers of others.
std::size_t threadsFor(uint64_t kmers) {
  constexpr uint64_t kLeastKmers = 64;  // of a thread
  constexpr uint64_t kMostThreads = 16;
  const auto threads = static_cast<uint64_t>(std::max(thread_num, 1));
  return std::max(std::min({threads, kmers / kLeastKmers, kMostThreads}), uint64_t{1});
}

// The shares of an empty set of which each of `threads` threads fills one. The last thread, which
// has `sideWork` to do besides (1 is the adding of all k-mers), has a smaller one or none.
// REQUIRES: threads > 1.
std::vector<TableShare> sharesOf(const HashSet& set, std::size_t threads, double sideWork) {
  const auto count = static_cast<double>(threads);
  const double lastPart = std::max(0.0, (1 + sideWork) / count - sideWork);
  const double part = (1 - lastPart) / (count - 1);
  const std::size_t shares = lastPart > 0 ? threads : threads - 1;
  std::vector<TableShare> made;
  uint64_t from = 0;
  for (std::size_t n = 1; n <= shares; ++n) {
    const double end = static_cast<double>(n) * part * static_cast<double>(set.size);
    const uint64_t to = n == shares ? set.size : static_cast<uint64_t>(end) / 8 * 8;
    made.emplace_back(set, from, to);
    from = to;
  }
  return made;
}

class Filling {
 public:
  Filling(HashSet* set, const IndexedModel& model)
      : set_(set), model_(model), threads_(threadsFor(model.kmers)) {}

  void run() {
    if (!canBeShared() || !fillShares()) fillWhole();
    if (!sideIndex.isMade()) return;
    try {
      if (!sideRanOut_) settleSide();
    } catch (const std::bad_alloc&) {
      sideRanOut_ = true;
    }
    if (sideRanOut_) sideIndex.release();
  }

 private:
  bool canBeShared() const {
    const bool willGrow = set_->count + model_.kmers > set_->max;
    return threads_ > 1 && set_->count == 0 && !willGrow && model_.fitsEntity;
  }

  // Returns false, and leaves the set empty, where its shares can't be joined or memory runs out.
  bool fillShares() {
    try {
      if (fillAndJoin()) return true;
    } catch (const std::bad_alloc&) {
      // one thread needs less of it
    }
    emptySlots(set_);
    return false;
  }

  bool fillAndJoin() {
    constexpr double kSideWork = 0.3;
    auto shares = sharesOf(*set_, threads_, hasSideWork() ? kSideWork : 0);
    std::vector<Work> works;
    works.reserve(threads_);
    for (std::size_t n = 0; n < threads_; ++n) {
      works.emplace_back([this, &shares, n] {
        if (n + 1 == threads_) fillSide();
        if (n < shares.size()) fillShare(shares[n]);
      });
    }
    doTogether(works);
    return !shareRanOut_ && joinShares(set_, shares);
  }

  void fillShare(TableShare& share) {
    try {
      addAll(share);
    } catch (const std::bad_alloc&) {
      shareRanOut_ = true;
    }
  }

  void fillWhole() {
    WholeTable table(*set_);
    if (threads_ > 1 && hasSideWork()) {
      doTogether({[&] { addAll(table); }, [this] { fillSide(); }});
    } else {
      addAll(table);
      fillSide();
    }
  }

  template <class Table>
  void addAll(Table& table) const {
    Indexer(table, sideIndex, Kmer).addAll(model_.scaffoldInfo, model_.scaffoldSum);
  }

  bool hasSideWork() const { return sideIndex.isMade() && !isSideFilled_; }

  void fillSide() {
    if (!hasSideWork()) return;
    isSideFilled_ = true;
    try {
      forEachIndexed(model_.scaffoldInfo, model_.scaffoldSum,
                     [](uint32_t i, uint32_t j, const ContigInfo& contig, uint32_t windows) {
                       sideIndex.addContig(i, j, contig.contigSeq, windows, Kmer);
                     });
    } catch (const std::bad_alloc&) {
      sideRanOut_ = true;
    }
  }

  void settleSide() {
    for (const auto settle : {&SideIndex::settleReversed, &SideIndex::shareReversed}) {
      std::vector<Work> works;
      for (std::size_t part = 0; part < threads_; ++part) {
        works.emplace_back([this, settle, part] {
          std::size_t contig = 0;
          forEachIndexed(model_.scaffoldInfo, model_.scaffoldSum,
                         [&](uint32_t i, uint32_t j, const ContigInfo& info, uint32_t) {
                           if (contig++ % threads_ != part) return;
                           (sideIndex.*settle)(*set_, i, j, info.contigSeq, Kmer);
                         });
        });
      }
      doTogether(works);
    }
  }

  HashSet* set_;
  const IndexedModel& model_;
  std::size_t threads_;  // that fill the index
  std::atomic<bool> shareRanOut_ = false;
  bool isSideFilled_ = false;
  bool sideRanOut_ = false;
};

}  // namespace

void fillIndex(HashSet* set, const IndexedModel& model) {
  Filling(set, model).run();
}

}  // namespace velk
