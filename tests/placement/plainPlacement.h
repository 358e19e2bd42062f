// A plain model of read placement, to compare velk with on random assemblies and reads.
//
// Made to be right at a glance, not fast: k-mers are strings in a map, every base is compared in a
// loop, and forward and reverse placement are two separate functions that spell out every rule. It
// shares no code with velk. It gives what it makes of every read, refusals included, and counts how
// often each rule was met, so that a comparison can check whether its input reached them all.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tests/support/assembly.h"

namespace velk::test {

/// The run parameters that placement reads.
struct PlainSettings {
  int kmer = 31;
  double overRatio = 0.3;
  double mapCut = 0.98;
  int readLength = 100;     // readLen
  int shortestContig = 70;  // CONTIGLEN
  int bigGap = 900;         // BIGGAPLEN
  int insert = 0;           // insertLength
};

/// A k-mer of a read that lies at one place of the assembly only.
struct PlainHit {
  int64_t i;  // position of the k-mer in the read
  int64_t scaffold;
  int64_t contig;
  int64_t offset;  // contig position of the read's first base

  bool operator==(const PlainHit&) const = default;
};

/// Where a read that is tried comes from: entry of the batch, 0 or 1 for its first or second read
/// as sequenced, and whether the reverse complement of that was tried.
struct PlainOrigin {
  int64_t entry = 0;
  int mate = 0;
  bool isReversed = false;

  bool operator==(const PlainOrigin&) const = default;
};

/// A read as it is tried.
struct PlainRead {
  PlainRead(std::string letters, PlainOrigin from = {}) : bases(std::move(letters)), origin(from) {}

  std::string bases;
  PlainOrigin origin;
};

/// One thing that is found of a read.
struct PlainEvent {
  std::string what;  // "anchored", "record: KIND" or "refused: REASON"
  PlainOrigin origin;
  int64_t scaffold;  // of the hit
  int64_t contig;
  int64_t offset;
  int64_t gap = -1;     // number of the contig behind the gap
  int64_t unmoved = 0;  // position in it, before a mate was moved to the gap's end
  TestRecord record{};  // of a record

  bool operator==(const PlainEvent&) const = default;
};

class PlainPlacement {
 public:
  PlainPlacement(std::vector<TestScaffold> assembly, const PlainSettings& settings);

  /// The unique hits of `read` in its order.
  std::vector<PlainHit> hitsOf(const std::string& read) const;

  // Each appends what it finds to `records` and returns where the walk stopped.
  int64_t single(const PlainRead& read, std::vector<TestRecord>& records);
  int64_t forward(const PlainRead& anchor, const PlainRead& mate, std::vector<TestRecord>& records);
  int64_t reverse(const PlainRead& anchor, const PlainRead& mate, std::vector<TestRecord>& records);

  /// What worker `t` of `workers` records of a batch of single reads.
  std::vector<TestRecord> scan(const std::vector<std::string>& reads, std::size_t t,
                               std::size_t workers);

  /// The same for pairs, which may be rewritten (inout).
  std::vector<TestRecord> scan(std::vector<std::string>& first, std::vector<std::string>& second,
                               std::size_t t, std::size_t workers);

  /// What was found since the last call, in order.
  std::vector<PlainEvent> takeEvents() { return std::exchange(events_, {}); }

  /// How often each rule was met, by its name.
  const std::map<std::string, int>& met() const { return met_; }

 private:
  struct Place {
    int64_t scaffold;
    int64_t contig;
    int64_t start;
    bool unique;
  };

  // Each returns why the read does not lie there; nothing when it does.
  std::string overRightEnd(const std::string& contig, const std::string& read, int64_t offset);
  std::string overLeftEnd(const std::string& contig, const std::string& read, int64_t offset);
  std::string onContig(const std::string& contig, const std::string& read, int64_t offset) const;

  // Each handles one hit and returns whether the walk ends.
  bool placeSingle(const PlainHit& hit, const PlainRead& read, std::vector<TestRecord>& records);
  bool placeForward(const PlainHit& hit, const PlainRead& anchor, const PlainRead& mate,
                    std::vector<TestRecord>& records);
  bool placeReverse(const PlainHit& hit, const PlainRead& anchor, const PlainRead& mate,
                    std::vector<TestRecord>& records);
  void recordForwardAnchor(const PlainHit& hit, const PlainRead& anchor,
                           std::vector<TestRecord>& records);
  void recordReverseAnchor(const PlainHit& hit, const PlainRead& anchor,
                           std::vector<TestRecord>& records);
  void scanPair(int64_t entry, std::string& a, std::string& b, std::vector<TestRecord>& records);

  // Records `read` in the gap in front of contig `right`. unmoved: see PlainEvent.
  void record(const PlainHit& hit, const char* kind, int64_t right, const PlainRead& read,
              int64_t position, int64_t unmoved, std::vector<TestRecord>& records);

  void tellAnchor(const PlainHit& hit, const PlainRead& anchor, int64_t right, int64_t position);

  // Gives a refusal, if it is the first of the walk at this place: at the gap in front of the
  // contig `right` (-1: at none), where the mate would lie at `position`.
  void refuse(const PlainHit& hit, const PlainRead& read, const std::string& reason,
              int64_t right = -1, int64_t position = 0);

  const TestContig& contigAt(int64_t scaffold, int64_t contig) const;
  void meet(const char* rule) { ++met_[rule]; }

  std::vector<TestScaffold> assembly_;
  std::vector<uint64_t> gapsBefore_;  // gaps in all scaffolds before each
  PlainSettings settings_;
  std::unordered_map<std::string, Place> index_;
  std::map<std::string, int> met_;
  std::vector<PlainEvent> events_;
  std::set<std::vector<int64_t>> refused_;  // places of the walk
};

/// The reverse complement as velk must make it, of any bytes.
std::string plainReverseComplement(const std::string& read);

}  // namespace velk::test
