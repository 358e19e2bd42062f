// A plain model of read placement, to compare velk with on random assemblies and reads.
//
// Made to be right at a glance, not fast: k-mers are strings in a map, every base is compared in a
// loop, and forward and reverse placement are two separate functions that spell out every rule. It
// shares no code with velk. It counts how often each rule was met, so that a comparison can tell
// whether its input reached them all.
#pragma once

#include <cstdint>
#include <map>
#include <string>
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

class PlainPlacement {
 public:
  PlainPlacement(std::vector<TestScaffold> assembly, const PlainSettings& settings);

  /// The unique hits of `read` in its order.
  std::vector<PlainHit> hitsOf(const std::string& read) const;

  // Each appends what it finds to `records` and returns where the walk stopped.
  int64_t single(const std::string& read, std::vector<TestRecord>& records);
  int64_t forward(const std::string& anchor, const std::string& mate,
                  std::vector<TestRecord>& records);
  int64_t reverse(const std::string& anchor, const std::string& mate,
                  std::vector<TestRecord>& records);

  /// What worker `t` of `workers` records of a batch of single reads.
  std::vector<TestRecord> scan(const std::vector<std::string>& reads, std::size_t t,
                               std::size_t workers);

  /// The same for pairs, which may be rewritten (inout).
  std::vector<TestRecord> scan(std::vector<std::string>& first, std::vector<std::string>& second,
                               std::size_t t, std::size_t workers);

  /// How often each rule was met, by its name.
  const std::map<std::string, int>& met() const { return met_; }

 private:
  struct Place {
    int64_t scaffold;
    int64_t contig;
    int64_t start;
    bool unique;
  };

  bool agreesOverRightEnd(const std::string& contig, const std::string& read, int64_t offset);
  bool agreesOverLeftEnd(const std::string& contig, const std::string& read, int64_t offset);
  bool agrees(const std::string& contig, const std::string& read, int64_t offset) const;

  // Each handles one hit and returns whether the walk ends.
  bool placeSingle(const PlainHit& hit, const std::string& read, std::vector<TestRecord>& records);
  bool placeForward(const PlainHit& hit, const std::string& anchor, const std::string& mate,
                    std::vector<TestRecord>& records);
  bool placeReverse(const PlainHit& hit, const std::string& anchor, const std::string& mate,
                    std::vector<TestRecord>& records);
  void scanPair(std::string& a, std::string& b, std::vector<TestRecord>& records);

  // Records `read` in the gap in front of contig `right`.
  void record(const PlainHit& hit, int64_t right, const std::string& read, int64_t position,
              std::vector<TestRecord>& records) const;

  const TestContig& contigAt(int64_t scaffold, int64_t contig) const;
  void meet(const char* rule) { ++met_[rule]; }

  std::vector<TestScaffold> assembly_;
  std::vector<uint64_t> gapsBefore_;  // gaps in all scaffolds before each
  PlainSettings settings_;
  std::map<std::string, Place> index_;
  std::map<std::string, int> met_;
};

/// The reverse complement as velk must make it, of any bytes.
std::string plainReverseComplement(const std::string& read);

}  // namespace velk::test
