#include "run/search.h"

#include <cmath>
#include <mutex>
#include <string_view>

#include "placement/batchScan.h"
#include "placement/engine.h"
#include "run/flanks.h"
#include "run/workers.h"

namespace velk::run {
namespace {

constexpr std::size_t kBatchEntries = 4096;

// A library, and its number.
struct WorkedOn {
  const Library& library;
  uint32_t number;
};

// Collects what is found of an entry, and hands it on when the next one begins.
class Collector {
 public:
  static constexpr bool kTakesRefusals = true;

  Collector(const reads::ReadBatch& batch, const WorkedOn& library, const Spans& spans,
            GapWatch& watch, int worker, FoundReceiver& receiver)
      : batch_(batch),
        library_(library.library),
        spans_(spans),
        watch_(watch),
        worker_(worker),
        receiver_(receiver) {
    entry_.library = library.number;
    entry_.input = batch.input();
    entry_.reads = batch.arePairs() ? 2 : 1;
  }

  void found(const Found& found, const std::string& bases) {
    begin(found.origin.entry);
    batch_.prefetch(static_cast<std::size_t>(current_));
    const Origin& origin = found.origin;
    const GapPlace& place = found.place;
    entry_.places.push_back({origin.mate, origin.isReversed, place.kind, found.hit.scaffold,
                             place.gap, place.position, place.unmoved, found.hit.contig,
                             found.hit.offset, bases});
  }

  void anchored(const Anchored& anchored) {
    begin(anchored.origin.entry);
    const Origin& origin = anchored.origin;
    entry_.anchor = FoundAnchor{origin.mate, origin.isReversed, anchored.hit.scaffold,
                                anchored.hit.contig, anchored.hit.offset};
    watch_.anchored(anchored.hit, lengthOf(origin.mate));
  }

  void refused(const Refused& refused) {
    begin(refused.origin.entry);
    const int mate = refused.origin.mate;
    watch_.refused(refused, lengthOf(mate), entry_.reads == 2 ? lengthOf(1 - mate) : 0);
  }

  // Hands the last entry on.
  void finish() {
    if (current_ < 0) return;
    const auto entry = static_cast<std::size_t>(current_);
    watch_.endEntry(!entry_.places.empty());
    if (entry_.anchor) lookForSpan(entry);
    if (entry_.places.empty()) return;
    entry_.record = batch_.recordOf(entry);
    for (int mate = 0; mate < entry_.reads; ++mate) {
      entry_.texts[static_cast<std::size_t>(mate)] = batch_.read(entry, mate);
    }
    receiver_.take(worker_, entry_);
  }

 private:
  void begin(int64_t entry) {
    if (entry == current_) return;
    finish();
    current_ = entry;
    entry_.places.clear();
    entry_.anchor.reset();
  }

  // Bases of a read of the entry.
  int64_t lengthOf(int mate) const {
    const auto entry = static_cast<std::size_t>(current_);
    return static_cast<int64_t>(batch_.basesOfRead(entry, mate).size());
  }

  void lookForSpan(std::size_t entry) {
    const FoundAnchor& anchor = *entry_.anchor;
    const PairBases pair{batch_.basesOfRead(entry, anchor.mate),
                         batch_.basesOfRead(entry, 1 - anchor.mate)};
    if (const auto span = spans_.find(anchor, pair, library_)) {
      receiver_.takeSpan(*span, entry_.library);
    }
  }

  const reads::ReadBatch& batch_;
  const Library& library_;
  const Spans& spans_;
  GapWatch& watch_;
  int worker_;
  FoundReceiver& receiver_;
  int64_t current_ = -1;
  FoundEntry entry_{};
};

}  // namespace

ReadCounts& ReadCounts::operator+=(const ReadCounts& other) {
  bases += other.bases;
  placed += other.placed;
  withN += other.withN;
  tooShort += other.tooShort;
  longer += other.longer;
  return *this;
}

ReadCounts Search::countReads(const reads::ReadBatch& batch) const {
  ReadCounts counts;
  const int reads = batch.arePairs() ? 2 : 1;
  for (std::size_t entry = 0; entry < batch.entries(); ++entry) {
    bool hasN = false;
    bool isShort = false;
    for (int mate = 0; mate < reads; ++mate) {
      const std::string_view bases = batch.basesOfRead(entry, mate);
      counts.bases += bases.size();
      hasN |= bases.find('N') != std::string_view::npos;
      isShort |= bases.size() < static_cast<std::size_t>(values_.kmer);
      if (reads == 2 && bases.size() > static_cast<std::size_t>(values_.readLength)) {
        ++counts.longer;
      }
    }
    counts.withN += static_cast<uint64_t>(hasN);
    counts.tooShort += static_cast<uint64_t>(!hasN && isShort);
  }
  return counts;
}

// Returns the entries that lie on a contig, at least in part.
uint64_t Search::searchBatch(reads::ReadBatch& batch, uint32_t library, int worker,
                             FoundReceiver& receiver) const {
  const Library& from = libraries_[library];
  const auto entries = static_cast<int64_t>(batch.entries());
  const int insert = batch.arePairs() ? static_cast<int>(std::lround(from.insert)) : 0;
  const bool areOutward = batch.arePairs() && from.orientation == Orientation::kOutward;
  // Pairs that point outwards are rewritten by the scan.
  const auto basesOf = [&](int mate) {
    return areOutward ? batch.copiesOfBases(mate) : batch.basesOf(mate);
  };
  std::string* const a = basesOf(0);
  std::string* const b = batch.arePairs() ? basesOf(1) : nullptr;
  const Batch toScan{a,
                     b,
                     entries,
                     0,
                     1,
                     assembly_.model(),
                     {values_.kmer, insert, values_.bigGapLength, values_.readLength,
                      values_.mapCut, values_.overRatio, areOutward}};
  Engine engine{index_, values_.kmer};
  const Spans spans(assembly_, index_, values_.kmer, values_.mapCut);
  GapWatch watch(assembly_, library, receiver.evidence());
  Collector collector(batch, {from, library}, spans, watch, worker, receiver);
  scanBatch(engine, toScan, collector);
  collector.finish();
  return watch.placedEntries();
}

std::vector<ReadCounts> Search::run(const std::vector<SearchInput>& inputs, FoundReceiver& receiver,
                                    const std::function<void(const Progress&)>& onProgress) const {
  struct Task {
    reads::ReadBatch batch;
    uint32_t library = 0;
  };
  std::vector<ReadCounts> counts(libraries_.size());
  std::mutex countsMutex;
  Workers<Task> workers(values_.threads, [&](Task& task, int worker) {
    ReadCounts ofBatch = countReads(task.batch);
    ofBatch.placed = searchBatch(task.batch, task.library, worker, receiver);
    const std::lock_guard lock(countsMutex);
    counts[task.library] += ofBatch;
  });
  Progress progress{0, 0};
  for (const SearchInput& input : inputs) {
    const uint64_t before = progress.bytes;
    for (;;) {
      Task& task = workers.freeTask();
      task.library = input.library;
      if (!input.reads->fill(task.batch, kBatchEntries)) break;
      progress.reads += task.batch.entries() * (task.batch.arePairs() ? 2 : 1);
      progress.bytes = before + input.reads->bytesRead();
      workers.submit();
      onProgress(progress);
    }
  }
  workers.finish();
  return counts;
}

}  // namespace velk::run
