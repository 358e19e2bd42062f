#include "survey/boundedIndex.h"

#include <cassert>
#include <chrono>
#include <new>
#include <utility>

#include "driver/velk.h"

namespace velk::survey {

FirstContigs::FirstContigs(Scaffolds scaffolds, uint64_t mostKmers) {
  for (const ScaffoldInfo& info : scaffolds) {
    chosen_.push_back({"", info.contigsSum, info.contigsInfo});
    for (uint32_t j = 0; j < info.contigsSum; ++j) {
      const uint64_t windows = windowsOf(info.contigsInfo[j]);
      if (kmers_ > 0 && kmers_ + windows > mostKmers) {
        chosen_.back().contigsSum = j;
        areAll_ = false;
        return;
      }
      kmers_ += windows;
    }
  }
}

#ifdef VELK_PLAIN_ENGINE

struct BoundedIndex::Built {
  Built(Scaffolds scaffolds, uint64_t kmers, int /*kmer*/, int /*threads*/)
      : count(static_cast<uint32_t>(scaffolds.size())),
        scaffolds(scaffolds.data()),
        set(init_hashset(kSlotsOfKmer * kmers, kLoad)) {
    addContigKmers(set, scaffolds.data(), count);
  }
  ~Built() { free_hash(set); }
  Built(const Built&) = delete;
  Built& operator=(const Built&) = delete;

  Engine engine(int kmer) const { return {PlainIndex(*set, scaffolds, count), kmer}; }
  uint64_t distinctKmers() const { return set->count; }

  static constexpr uint64_t kSlotsOfKmer = 2;
  static constexpr float kLoad = 0.75F;  // with so many slots the set never grows

  uint32_t count;
  const ScaffoldInfo* scaffolds;
  HashSet* set;
};

#else

struct BoundedIndex::Built {
  Built(Scaffolds scaffolds, uint64_t /*kmers*/, int kmer, int threads) {
    const auto count = static_cast<uint32_t>(scaffolds.size());
    if (!index.build(scaffolds.data(), count, kmer, threads)) throw std::bad_alloc();
  }

  Engine engine(int kmer) const { return {index, kmer}; }
  uint64_t distinctKmers() const { return index.distinctKeys(); }

  SeedIndex index;
};

#endif

BoundedIndex::BoundedIndex(FirstContigs contigs, int kmer, int threads)
    : contigs_(std::move(contigs)), kmer_(kmer) {
  assert(kmer >= 1 && kmer == Kmer && contigs_.kmers() > 0);
  const auto start = std::chrono::steady_clock::now();
  built_ = std::make_unique<Built>(contigs_.chosen(), contigs_.kmers(), kmer, threads);
  const std::chrono::duration<double> used = std::chrono::steady_clock::now() - start;
  secondsPerKmer_ = used.count() / static_cast<double>(contigs_.kmers());
}

BoundedIndex::~BoundedIndex() = default;

Engine BoundedIndex::engine() const {
  return built_->engine(kmer_);
}

uint64_t BoundedIndex::distinctKmers() const {
  return built_->distinctKmers();
}

}  // namespace velk::survey
